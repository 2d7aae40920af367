#pragma once

#include <QStringView>

namespace runebook {

/// The rules by which brackets and quotes close themselves. No widgets.

/// The other half of the pair that \a opener begins; null for what begins none.
QChar closerOf(QChar opener);

/// True when \a typed, an opening bracket or a quote, gets its closer at \a caret of \a line: nothing stands
/// behind that would belong inside, and a quote does not end something.
bool closesItself(QStringView line, qsizetype caret, QChar typed);

} // namespace runebook
