#pragma once

#include "platform/IndexSet.h"

#include <QString>
#include <memory>

class QMimeData;

namespace runebook {

/// Rows of a list while they are dragged: their numbers, and which list of which process they belong to, so
/// that no other takes them for its own.
class RowDrag
{
public:
    /// The private type; its data never leave the table.
    static QString type();
    std::unique_ptr<QMimeData> dataOf(const IndexSet &rows) const;
    /// None where the data are not of this list.
    IndexSet rowsOf(const QMimeData &data) const;

private:
    static quint64 nextNumber();

    const quint64 m_number = nextNumber(); ///< of the list, in this process
};

} // namespace runebook
