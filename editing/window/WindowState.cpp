#include "editing/window/WindowState.h"

#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/search/CurrentFilter.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/VXSimpleSplitView.h"
#include "editing/window/VXSplitViewWindowController.h"
#include "editing/window/WindowProblems.h"
#include "editing/window/WindowSearch.h"

namespace runebook {

using namespace Qt::StringLiterals;

QVariantMap encodedState(const RestoredParts &restored)
{
    const auto &[window, parts, search, problems, contentSplit] = restored;
    QVariantList rows;
    for (const qsizetype row : parts.list.selectionIndexes())
        rows << row;
    return {{u"selectedInfos"_s, rows},
            {u"searchField"_s, parts.searchField.stringValue()},
            {u"filter"_s, parts.filter.filter().text()},
            {u"columns"_s, parts.table.columnState()},
            {u"topRow"_s, parts.table.rowAt(0)},
            {u"geometry"_s, window.saveGeometry()},
            {u"sidebar"_s, window.isSidebarShown()},
            {u"divider"_s, window.dividerState()},
            {u"problems"_s, problems.isShown()},
            {u"problemsDivider"_s, contentSplit.saveState()}};
}

void restoreState(const RestoredParts &restored, const QVariantMap &state)
{
    const auto &[window, parts, search, problems, contentSplit] = restored;
    // The rows that were selected are rows of that order and that search, so these come first.
    if (state.contains(u"geometry"_s))
        window.restoreGeometry(state.value(u"geometry"_s).toByteArray());
    if (state.contains(u"sidebar"_s)) {
        window.setSidebarShown(state.value(u"sidebar"_s).toBool());
        window.restoreDivider(state.value(u"divider"_s).toByteArray());
    }
    if (state.contains(u"problems"_s)) {
        problems.setShown(state.value(u"problems"_s).toBool());
        if (problems.isShown())
            contentSplit.restoreState(state.value(u"problemsDivider"_s).toByteArray());
    }
    if (state.contains(u"columns"_s))
        parts.table.restoreColumnState(state.value(u"columns"_s).toByteArray());
    if (const std::optional<RecordFilter> filter = RecordFilter::parse(state.value(u"filter"_s).toString()))
        parts.filter.setFilter(*filter);
    if (const QString text = state.value(u"searchField"_s).toString(); !text.isEmpty()) {
        parts.searchField.setStringValue(text);
        search.filterInfos();
    }
    parts.list.setSelectionIndexes(parts.list.indexSetFromRows(state.value(u"selectedInfos"_s).toList()));
    if (const int top = state.value(u"topRow"_s, -1).toInt(); top >= 0)
        parts.table.scrollTo(parts.list.index(top, 0), QAbstractItemView::PositionAtTop);
}

} // namespace runebook
