#pragma once

#include "editing/window/EmptyTable.h"
#include "editing/window/SearchOffers.h"
#include "editing/window/WindowParts.h"

#include <QPointer>

namespace runebook {

class RecordCommands;
class WindowFilters;
class WindowProblems;
class WindowSearch;

/// What a document window shows in place of rows: how to begin in an empty document, where else a search
/// would find something, how to get rid of what hides everything.
class EmptyNotices : public QObject
{
    Q_OBJECT
public:
    EmptyNotices(const WindowParts &parts, RecordCommands &commands, WindowSearch &search,
                 WindowFilters &filters, WindowProblems &problems, QObject *parent);
    /// To be called when what the table shows may have changed.
    void update();

private:
    EmptyTable::Notice forEmptyDocument();
    EmptyTable::Notice forSearch();
    EmptyTable::Notice forFilter();
    /// What can be done about conditions that are in force.
    QList<EmptyTable::Offer> filterOffers();
    /// What regular expressions look at, and how to look elsewhere with them.
    void addPatternHelp(EmptyTable::Notice &notice, const QString &text);
    void searchElsewhere(const SearchSettings &settings);
    void openSample();

    WindowParts m_parts;
    RecordCommands &m_commands;
    WindowSearch &m_search;
    WindowFilters &m_filters;
    WindowProblems &m_problems;
    QPointer<EmptyTable> m_table; ///< the table's
    SearchOffers m_offers;
};

} // namespace runebook
