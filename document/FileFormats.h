#pragma once

#include "model/ReadNotes.h"
#include "model/VXGlyphInfo.h"
#include "platform/documents/FileSaver.h"

#include <optional>

/// The forms in which lists of records stand in files. A new one is a row of the table in FileFormats.cpp.
namespace runebook {

/// What reading a file gives.
struct FileContent {
    InfoList infos;
    std::optional<quint8> fileVersion; ///< of formats that have versions
    ReadNotes notes;
};

struct FileFormat {
    QLatin1StringView type; ///< as the document controller names it
    /// Nothing, and an error, for files that cannot be read. The code is ENOMEM when memory ran out.
    std::optional<FileContent> (*readFile)(const QString &path, Error *error);
    /// The same from the bytes of a file, which must be UTF-8, with every note of the reading.
    std::optional<FileContent> (*readData)(const QByteArray &utf8, Error *error);
    /// \a infos must stay as it is until the text was produced.
    ContentProducer (*writer)(const InfoList &infos, quint8 fileVersion);
};

inline constexpr QLatin1StringView kGlyphDataType("public.xml");
inline constexpr QLatin1StringView kTableType("public.plain-text");

/// Null for other types.
const FileFormat *formatOfType(const QString &type);

} // namespace runebook
