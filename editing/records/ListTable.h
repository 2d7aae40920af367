#pragma once

#include <QModelIndex>
#include <QObject>

namespace runebook {

/// The table that shows the rows of a list controller, as the controller sees it.
class ListTable
{
public:
    /// The object by which scripts know it.
    virtual QObject *object() = 0;
    /// What draws the cell at \a index.
    virtual QObject *cellAt(const QModelIndex &index) const = 0;
    virtual void repaintCells() = 0;
    /// Beside the header.
    virtual void repaintCorner() = 0;

protected:
    ~ListTable() = default;
};

} // namespace runebook
