#include "editing/tables/PastedTable.h"

#include "document/DelimitedText.h"
#include "document/TableFields.h"

#include <algorithm>

namespace runebook {

std::vector<std::optional<GlyphField>> PastedTable::namedFields() const
{
    std::vector<std::optional<GlyphField>> fields(static_cast<std::size_t>(columns));
    for (qsizetype column = 0; column < columns && !rows.empty(); ++column) {
        const std::optional<GlyphField> field = fieldOfHeading(cell(0, column));
        if (field && std::find(fields.begin(), fields.end(), field) == fields.end())
            fields[static_cast<std::size_t>(column)] = field;
    }
    return fields;
}

bool PastedTable::seemsToHaveHeadings() const
{
    if (rows.empty())
        return false;
    const auto fields = namedFields();
    const auto named = std::count_if(fields.begin(), fields.end(), [](const auto &field) { return field; });
    const auto filled = std::count_if(rows.front().begin(), rows.front().end(),
                                      [](const QString &cell) { return !cell.trimmed().isEmpty(); });
    return named > 0 && 2 * named > filled;
}

} // namespace runebook
