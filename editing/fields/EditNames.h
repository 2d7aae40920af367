#pragma once

#include <QLocale>
#include <QString>

namespace runebook {

/// The name of an edit for the Edit menu and the history: \a one for one record, \a many with the number in
/// the place of %1 for several.
inline QString editName(const QString &one, const QString &many, qsizetype count)
{
    return count == 1 ? one : many.arg(QLocale().toString(static_cast<qlonglong>(count)));
}

} // namespace runebook
