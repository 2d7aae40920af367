#pragma once

#include <QObject>

namespace runebook {

/// How many conflicts of a merge are open in \a document, which holds our side for each of them: a save asks.
inline qsizetype openConflicts(const QObject &document)
{
    return document.property("openConflicts").toLongLong();
}
inline void setOpenConflicts(QObject &document, qsizetype count)
{
    document.setProperty("openConflicts", qlonglong(count));
}

} // namespace runebook
