#pragma once

#include "document/DelimitedText.h"
#include "document/TableFields.h"

#include <QByteArray>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

namespace runebook {

/// One column of a table.
struct TableColumn {
    QString heading;
    std::optional<GlyphField> field; ///< nothing for a column that is kept aside
    qsizetype place = -1; ///< among the cells of the rows that were read; -1 for a column that they lack

    friend bool operator==(const TableColumn &, const TableColumn &) = default;
};

/// What a table looks like: its columns, and how they stand in bytes. One that was read knows those bytes as
/// well, so that rows nobody has touched are written as they stood, with the cells of unknown columns.
struct TableForm {
    DelimitedFormat format;
    std::vector<TableColumn> columns;
    std::string codePointPrefix {kCodePointPrefix};
    bool isChoice = false; ///< somebody has chosen the columns: fields without one are no loss

public: // of a table that was read
    /// Lines that are no records (blank ones, rows that could not be read): written where they stood.
    struct Aside {
        qsizetype behind; ///< the offset of the row in front of it; -1 for none
        qsizetype begin;
        qsizetype end;
    };

    QByteArray source; ///< as UTF-8
    char sourceSeparator = '\t';
    qsizetype headEnd = 0; ///< behind the headings
    std::vector<Aside> asides; ///< in the order of the file
    /// The rows of records that were not read from the source but stand in it: of those that were there when
    /// the file was read again, or restored.
    struct Row {
        InfoPtr info; ///< so that no other record takes its address
        qsizetype begin;
        qsizetype end;
    };
    std::unordered_map<const VXGlyphInfo *, Row> adopted;
    bool keepsLines = false; ///< columns and format are those of the source

public:
    /// A new table with those columns, called by their keys.
    static TableForm of(std::span<const GlyphField> fields, const DelimitedFormat &format = {});

    /// The same table in another format. Unknown columns stay.
    TableForm inFormat(const DelimitedFormat &other) const;
    /// The same table with columns that somebody has chosen.
    TableForm withColumns(std::vector<TableColumn> chosen) const;

    /// The column of a field; null for none.
    const TableColumn *columnOf(GlyphField field) const;
    /// Whether \a info was read from a row of this table.
    bool hasRowOf(const VXGlyphInfo &info) const
    {
        return !source.isEmpty() && info.sourceData() == source.constData() && info.lineLength() > 0;
    }
    /// Whether \a info will be written as it stands in the source.
    bool keepsLineOf(const VXGlyphInfo &info) const
    {
        return keepsLines && hasRowOf(info) && info.isAsRead();
    }
    /// Makes the row that \a read was read from the one of \a info.
    void adoptRow(const InfoPtr &info, const VXGlyphInfo &read);
    /// Whether more than separators stands there.
    bool hasText(const Aside &aside) const;
};

using TableFormPtr = std::shared_ptr<const TableForm>;

/// A value that a table does not give back.
struct TableLoss {
    GlyphField field;
    bool hasColumn = true; ///< for the field
    QString after; ///< what would be read instead; null for nothing

    /// What would become of it, in a sentence.
    QString sentence(const VXGlyphInfo &info) const;
};
/// Those of one record.
std::vector<TableLoss> tableLosses(const VXGlyphInfo &info, const TableForm &form);
/// Whether there are any, sooner.
bool hasTableLosses(const VXGlyphInfo &info, const TableForm &form);

} // namespace runebook
