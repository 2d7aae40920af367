#pragma once

#include "editing/tables/PastedTable.h"
#include "model/VXGlyphInfo.h"

#include <QMimeData>
#include <memory>

namespace runebook {

// Tables on the clipboard and in drags, in the forms that spreadsheets know.

/// The records as cells under headings: separated by tabs as plain text, and by commas. Null without records.
std::unique_ptr<QMimeData> tableData(const InfoList &infos, const std::vector<GlyphField> &fields);
/// The same, made only when somebody asks for it: for drags. The records are those of now.
std::unique_ptr<QMimeData> tableDataOnDemand(InfoList infos, std::vector<GlyphField> fields);

/// Whether there may be cells; nothing is read for that.
bool mayHoldTable(const QMimeData &clipboard);
/// The cells of a text. Without tabs, commas or semicolons are what separates them when they separate
/// headings.
PastedTable tableOfText(const QString &text);
/// The same of a clipboard; empty when there are none.
PastedTable tableOfClipboard(const QMimeData &clipboard);

} // namespace runebook
