#pragma once

#include "model/GlyphReading.h"
#include "platform/documents/FileSaver.h"

#include <QStringList>
#include <optional>
#include <string_view>
#include <vector>

namespace runebook {

/// Reads tables: fields separated by tabs, the first line names the key of each column. The rows of a large
/// one are read by several threads at the same time.
class TabbedReader
{
public:
    std::optional<InfoList> read(const QString &path, Error *error = nullptr);
    /// The records of a text in memory, which must be UTF-8.
    std::optional<InfoList> read(const QByteArray &utf8, Error *error = nullptr);

private:
    /// The field that a column fills; nothing for keys that the record drops.
    using Column = std::optional<GlyphField>;

    /// Some lines of a table, and what they gave.
    struct Rows {
        std::string_view text;
        InfoList infos;
        qsizetype lines = 0; ///< before the first that has too few fields
        bool endsShort = false;
    };

    static std::vector<Rows> partsOf(std::string_view text);
    void readRows(Rows &rows, const std::vector<Column> &columns) const;
    static std::optional<InfoList> joined(std::vector<Rows> &parts, qsizetype columns, Error *error);
    std::optional<std::vector<Column>> columnsOf(std::string_view header, Error *error) const;
    bool readRow(VXGlyphInfo::Reading &glyph, const std::vector<Column> &columns, std::string_view row) const;
    static void store(VXGlyphInfo::Reading &glyph, GlyphField target, std::string_view field);

    SourcePtr m_source;
};

/// Produces a table of thirteen columns. The last of them names no field of a record, so a list with records
/// fails there and nothing is written.
class TabbedWriter
{
public:
    explicit TabbedWriter(const InfoList &infos) : m_infos(&infos) { }
    bool operator()(const BlockSink &sink, Error *error) const;
    static QStringList exportKeys();

private:
    const InfoList *m_infos;
};

} // namespace runebook
