#pragma once

#include <QString>
#include <QStringList>

namespace runebook {

/// Names that live objects have for \a partial, a name or dotted names such as "Doc.inf", each with what
/// stands in front of it ("Doc.infos"), sorted. Names with a leading underscore only when one was typed. Runs
/// no code of anybody: no property, no __getattr__, no descriptor is asked. Empty while a script runs, and
/// when the interpreter does not answer within 40 ms because a thread of a script keeps it. Main thread only.
QStringList liveCompletions(const QString &partial);

} // namespace runebook
