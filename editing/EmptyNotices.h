#pragma once

#include "editing/EmptyTable.h"
#include "editing/SearchOffers.h"

#include <QPointer>

class VXWindowController;

namespace runebook {

/// What a document window shows in place of rows: how to begin in an empty document, where else a search
/// would find something, how to get rid of what hides everything.
class EmptyNotices : public QObject
{
    Q_OBJECT
public:
    explicit EmptyNotices(VXWindowController &window);

private:
    void update();
    EmptyTable::Notice forEmptyDocument();
    EmptyTable::Notice forSearch();
    void search(const SearchSettings &settings);
    void openSample();

    VXWindowController &m_window;
    QPointer<EmptyTable> m_table; ///< the table's
    SearchOffers m_offers;
};

} // namespace runebook
