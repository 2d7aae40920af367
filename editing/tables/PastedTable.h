#pragma once

#include "model/GlyphField.h"

#include <QStringList>
#include <optional>
#include <vector>

namespace runebook {

/// Cells as a spreadsheet, or the program itself, has put them on the clipboard. Rows may differ in length.
struct PastedTable {
    std::vector<QStringList> rows;
    qsizetype columns = 0; ///< of the longest row
    qsizetype faultyRows = 0; ///< that could not be read: quotes without end

    bool isEmpty() const { return rows.empty(); }
    bool isOneCell() const { return rows.size() == 1 && columns == 1; }
    /// The cell there, null where the row is too short.
    QString cell(qsizetype row, qsizetype column) const
    {
        return rows[static_cast<std::size_t>(row)].value(column);
    }
    /// The fields that the cells of the first row name, by column; nothing where one names none.
    std::vector<std::optional<GlyphField>> namedFields() const;
    /// Whether most of what stands in the first row are headings.
    bool seemsToHaveHeadings() const;
};

} // namespace runebook
