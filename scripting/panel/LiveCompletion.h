#pragma once

#include "codeeditor/Completion.h"

#include <QString>
#include <QStringList>

namespace runebook {

/// Names that live objects have for \a partial, a name or dotted names such as "Doc.inf", each with what
/// stands in front of it ("Doc.infos"), sorted. Names with a leading underscore only when one was typed. Runs
/// no code of anybody: no property, no __getattr__, no descriptor is asked. Empty while a script runs, and
/// when the interpreter does not answer within 40 ms because a thread of a script keeps it. Main thread only.
QStringList liveCompletions(const QString &partial);

/// The names that begin with \a start, each with its kind: those of the object at the end of \a path, which
/// is as CompletionContext has it, or those of "__main__" and the built-in ones when it is empty. Under the
/// same conditions.
KnownNames liveNames(const QString &path, const QString &start);
/// Fills in the signature and the first sentence of help of \a name of that object, as far as they are told
/// by what the interpreter itself keeps.
void describeLiveName(const QString &path, const QString &name, Completion &one);

} // namespace runebook
