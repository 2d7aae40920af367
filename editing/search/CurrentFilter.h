#pragma once

#include "editing/search/RecordFilter.h"

#include <QObject>

namespace runebook {

/// The conditions that the rows of a window have to meet, for all that show or change them: chips, values,
/// scripts.
class CurrentFilter : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    const RecordFilter &filter() const { return m_filter; }
    void setFilter(const RecordFilter &filter)
    {
        if (filter == m_filter)
            return;
        m_filter = filter;
        Q_EMIT changed();
    }

Q_SIGNALS:
    /// The rows that are shown follow.
    void changed();

private:
    RecordFilter m_filter;
};

} // namespace runebook
