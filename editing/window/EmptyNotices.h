#pragma once

#include "editing/window/EmptyTable.h"
#include "editing/window/SearchOffers.h"
#include "editing/window/WindowParts.h"

#include <QPointer>

namespace runebook {

class RecordCommands;
class WindowProblems;
class WindowSearch;

/// What a document window shows in place of rows: how to begin in an empty document, where else a search
/// would find something, how to get rid of what hides everything.
class EmptyNotices : public QObject
{
    Q_OBJECT
public:
    EmptyNotices(const WindowParts &parts, RecordCommands &commands, WindowSearch &search,
                 WindowProblems &problems, QObject *parent);
    /// To be called when what the table shows may have changed.
    void update();

private:
    EmptyTable::Notice forEmptyDocument();
    EmptyTable::Notice forSearch();
    void searchElsewhere(const SearchSettings &settings);
    void openSample();

    WindowParts m_parts;
    RecordCommands &m_commands;
    WindowSearch &m_search;
    WindowProblems &m_problems;
    QPointer<EmptyTable> m_table; ///< the table's
    SearchOffers m_offers;
};

} // namespace runebook
