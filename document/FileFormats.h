#pragma once

#include "document/TableForm.h"
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
    TableFormPtr table = {}; ///< of formats that are tables
};

/// What a file is like that is written.
struct WrittenForm {
    quint8 fileVersion = 2;
    TableFormPtr table = {}; ///< for formats that are tables
};

struct FileFormat {
    QLatin1StringView type; ///< as the document controller names it
    /// Nothing, and an error, for files that cannot be read. The code is ENOMEM when memory ran out.
    std::optional<FileContent> (*readFile)(const QString &path, Error *error);
    /// The same from the bytes of a file, with every note of the reading: what cannot be read is left out.
    std::optional<FileContent> (*readData)(const QByteArray &bytes, Error *error);
    /// \a infos must stay as it is until the text was produced.
    ContentProducer (*writer)(const InfoList &infos, const WrittenForm &form);
    char separator = 0; ///< of tables: the usual one
};

inline constexpr QLatin1StringView kGlyphDataType("public.xml");
inline constexpr QLatin1StringView kTableType("public.plain-text");
inline constexpr QLatin1StringView kCommaTableType("public.comma-separated-values-text");

/// Null for other types.
const FileFormat *formatOfType(const QString &type);
bool isTableType(const QString &type);
/// The type of a file with that name; that of glyph data where the suffix tells nothing.
QLatin1StringView typeOfPath(const QString &path);
/// What can be read of a table that readFile() does not take: rows with too few cells are left out and noted.
std::optional<FileContent> readTableLeniently(const QString &path, Error *error);

} // namespace runebook
