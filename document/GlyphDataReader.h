#pragma once

#include "model/ReadNotes.h"
#include "model/VXGlyphInfo.h"
#include "platform/Error.h"

#include <QIODevice>
#include <optional>
#include <string_view>

namespace runebook {

/// Reads the whole of a file; null and an error when it cannot be read. Folders, devices and files that grow
/// while being read are refused. The code is ENOMEM when memory ran out.
std::optional<QByteArray> readWholeFile(const QString &path, Error *error);
/// The same for a file that must be UTF-8; null and an error when it is not.
std::optional<QByteArray> readUtf8File(const QString &path, Error *error);

/// The version that the header of a glyph data file tells; 0 where it does not.
quint8 versionOfHeader(std::string_view header);

/// Reads glyph data files line by line. Damaged lines never stop the reading; what the records cannot keep
/// is noted.
class GlyphDataReader
{
public:
    std::optional<InfoList> read(const QString &path, Error *error = nullptr);
    /// Keeps every note of the readings that follow, not only the first thousand.
    void keepAllNotes() { m_mostNotes = std::size_t(-1); }
    /// The records of a text in memory, which must be UTF-8.
    InfoList read(const QByteArray &utf8);

    /// The version of the file read last: from its header, else from what its lines used, else 2.
    quint8 fileVersion() const { return m_fileVersion; }
    const ReadNotes &notes() const { return m_notes; }

private:
    quint8 m_fileVersion = 2;
    std::size_t m_mostNotes = ReadNotes().mostNotes;
    ReadNotes m_notes;
};

} // namespace runebook
