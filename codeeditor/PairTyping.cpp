#include "codeeditor/PairTyping.h"

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr QLatin1StringView kOpeners {"([{\"'"};
constexpr QLatin1StringView kClosers {")]}\"'"};
constexpr QLatin1StringView kFollowers {")]}:,;"}; // what may stand behind a pair without a blank

bool isNameUnit(QChar c)
{
    return c == u'_' || c.isLetterOrNumber() || c.isSurrogate();
}

/// The letters in front of a string: r, b, f and u, one or two of them.
bool isPrefix(QStringView word)
{
    return word.size() <= 2
        && std::all_of(word.begin(), word.end(), [](QChar c) { return "rbfu"_L1.contains(c.toLower()); });
}

} // namespace

QChar closerOf(QChar opener)
{
    const qsizetype place = kOpeners.indexOf(opener);
    return place < 0 ? QChar() : QChar(kClosers[place]);
}

bool closesItself(QStringView line, qsizetype caret, QChar typed)
{
    if (closerOf(typed).isNull())
        return false;
    if (caret < line.size() && !line[caret].isSpace() && !kFollowers.contains(line[caret]))
        return false;
    if (typed != u'"' && typed != u'\'')
        return true;
    qsizetype start = caret;
    while (start > 0 && isNameUnit(line[start - 1]))
        --start;
    const QChar before = caret > 0 ? line[caret - 1] : QChar();
    return before != typed && before != u'\\' && isPrefix(line.sliced(start, caret - start));
}

} // namespace runebook
