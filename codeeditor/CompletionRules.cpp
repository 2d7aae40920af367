#include "codeeditor/CompletionRules.h"

#include "codeeditor/CharacterClasses.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr int kLongestWay = 6; // of names bound to names
constexpr qsizetype kLongestSearch = 200'000; // characters before the caret
constexpr qsizetype kLongestHelp = 240;

QString kindName(const char *kind)
{
    return QCoreApplication::translate("Completion", kind);
}

bool isNameUnit(QChar c)
{
    return c == u'_' || c.isLetterOrNumber() || c.isSurrogate();
}

/// Where the bracket that ends before \a end begins, in the same line; -1 when it does not.
qsizetype openingBracket(QStringView line, qsizetype end)
{
    int depth = 0;
    QChar quote;
    for (qsizetype at = end - 1; at >= 0; --at) {
        const QChar c = line[at];
        if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u']') {
            ++depth;
        } else if (c == u'[' && --depth == 0) {
            return at;
        }
    }
    return -1;
}

/// The steps of the dotted name that \a expression ends with; empty when it does not end with one.
QStringList stepsBefore(QStringView expression)
{
    QStringList steps;
    qsizetype end = expression.size();
    for (;;) {
        while (end > 0 && expression[end - 1] == u']') {
            end = openingBracket(expression, end);
            if (end < 0)
                return {};
            steps.prepend(u"[]"_s);
        }
        qsizetype start = end;
        while (start > 0 && isNameUnit(expression[start - 1]))
            --start;
        if (start == end || expression[start].isDigit())
            return {};
        steps.prepend(expression.sliced(start, end - start).toString());
        if (start == 0 || expression[start - 1] != u'.')
            return steps;
        end = start - 1;
    }
}

/// The steps of what is the whole of \a expression, but for calls that hand their argument's items on.
QStringList stepsOf(QString expression)
{
    static const QRegularExpression wrapped(
        u"^(?:list|sorted|reversed|tuple|progress)\\((.*?)(?:,.*)?\\)$"_s);
    expression = expression.trimmed();
    if (const auto match = wrapped.match(expression); match.hasMatch())
        expression = match.captured(1).trimmed();
    const QStringList steps = stepsBefore(expression);
    qsizetype length = 0;
    for (const QString &step : steps)
        length += step == "[]"_L1 ? 0 : step.size() + 1;
    const bool isIndexed = steps.contains("[]"_L1);
    return isIndexed || length - 1 == expression.size() ? steps : QStringList();
}

/// The last of \a text that \a pattern matches.
QRegularExpressionMatch lastMatch(const QString &pattern, const QString &text)
{
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    QRegularExpressionMatch last;
    for (auto all = expression.globalMatch(text); all.hasNext();)
        last = all.next();
    return last;
}

/// What \a text binds \a name to, as steps; empty when it cannot be told.
QStringList bindingOf(const QString &name, const QString &text)
{
    struct Rule {
        QString pattern;
        std::function<QStringList(const QRegularExpressionMatch &)> steps;
    };
    const QString word = u"\\b"_s + QRegularExpression::escape(name) + u"\\b"_s;
    const auto items = [](const QRegularExpressionMatch &match) {
        QStringList steps = stepsOf(match.captured(1));
        return steps.isEmpty() ? steps : steps << u"[]"_s;
    };
    const QList<Rule> rules = {
        {u"\\bfor\\s+"_s + word + u"\\s+in\\s+((?:\\([^()\\n]*\\)|\\[[^\\[\\]\\n]*\\]|[^:\\n()\\[\\]])+)"_s,
         items},
        {u"\\bfor\\s+\\w+\\s*,\\s*"_s + word + u"\\s+in\\s+enumerate\\(([^,)\\n]+)"_s, items},
        {u"^[ \\t]*"_s + word + u"[ \\t]*=(?!=)[ \\t]*([^#\\n]+)"_s,
         [](const QRegularExpressionMatch &match) { return stepsOf(match.captured(1)); }},
        {u"^[ \\t]*import[ \\t]+(?:[^#\\n]*,[ \\t]*)?"_s + word + u"(?![ \\t]*\\.)"_s,
         [&name](const QRegularExpressionMatch &) { return QStringList {u'@' + name}; }},
        {u"^[ \\t]*import[ \\t]+([\\w.]+)[ \\t]+as[ \\t]+"_s + word,
         [](const QRegularExpressionMatch &match) { return QStringList {u'@' + match.captured(1)}; }},
        {u"^[ \\t]*from[ \\t]+([\\w.]+)[ \\t]+import[ \\t]+(?:[^#\\n]*,[ \\t]*)?"_s + word,
         [&name](const QRegularExpressionMatch &match) {
             return QStringList {u'@' + match.captured(1), name};
         }},
    };
    QStringList found;
    qsizetype at = -1;
    for (const Rule &rule : rules) {
        const QRegularExpressionMatch match = lastMatch(rule.pattern, text);
        if (!match.hasMatch() || match.capturedStart() <= at)
            continue;
        at = match.capturedStart();
        found = rule.steps(match);
    }
    return found;
}

/// Follows the first of \a steps through the bindings of \a text.
QString resolvedPath(QStringList steps, const QString &text)
{
    QSet<QString> seen;
    for (int way = 0; way < kLongestWay && !steps.isEmpty() && !seen.contains(steps.first()); ++way) {
        seen.insert(steps.first());
        const QStringList binding = bindingOf(steps.first(), text);
        if (binding.isEmpty() || binding.first() == steps.first())
            break;
        steps = binding + steps.sliced(1);
        if (steps.first().startsWith(u'@'))
            break;
    }
    return steps.join(u'/');
}

/// The kind and the signature that the definition of a name tells.
Completion described(const QString &name, QStringView before, QStringView behind)
{
    const QStringView line = before.sliced(before.lastIndexOf(u'\n') + 1).trimmed();
    Completion result {name, {}, {}, {}};
    if (line == "def"_L1 || line == "async def"_L1) {
        result.kind = kindName(QT_TRANSLATE_NOOP("Completion", "function"));
        const qsizetype end = behind.indexOf(u')');
        if (behind.startsWith(u'(') && end > 0 && end < kLongestHelp)
            result.signature = name + behind.first(end + 1).toString().simplified();
    } else if (line == "class"_L1) {
        result.kind = kindName(QT_TRANSLATE_NOOP("Completion", "class"));
    } else if (line == "import"_L1) {
        result.kind = kindName(QT_TRANSLATE_NOOP("Completion", "module"));
    }
    return result;
}

} // namespace

CompletionContext completionContext(const QString &text, int start, int end)
{
    CompletionContext context;
    const QStringView partial = QStringView(text).sliced(start, end - start);
    const qsizetype dot = partial.lastIndexOf(u'.');
    context.afterDot = dot >= 0;
    context.front = partial.first(dot + 1).toString();
    context.start = partial.sliced(dot + 1).toString();
    if (context.afterDot) {
        const qsizetype lineStart = start == 0 ? 0 : text.lastIndexOf(u'\n', start - 1) + 1;
        const QStringList steps = stepsBefore(QStringView(text).sliced(lineStart, start + dot - lineStart));
        const qsizetype newline = text.indexOf(u'\n', end); // a comprehension binds behind the caret
        const qsizetype lineEnd = newline < 0 ? text.size() : newline;
        const qsizetype from = std::max<qsizetype>(0, start - kLongestSearch);
        if (!steps.isEmpty())
            context.path = resolvedPath(steps, text.sliced(from, lineEnd - from));
    }
    return context;
}

CompletionList namesInText(const QString &text, const QString &start, bool afterDot, int caret,
                           const std::function<bool(int)> &isSkipped)
{
    CompletionList names;
    QHash<QString, qsizetype> places;
    const QStringView view(text);
    for (qsizetype at = 0; at < view.size();) {
        if (!isNameUnit(view[at])) {
            ++at;
            continue;
        }
        qsizetype end = at + 1;
        while (end < view.size() && isNameUnit(view[end]))
            ++end;
        const QStringView name = view.sliced(at, end - at);
        const bool isBehindDot = at > 0 && view[at - 1] == u'.';
        const bool fits = name.size() > start.size() && name.startsWith(start) && !name.front().isDigit()
            && isBehindDot == afterDot && (caret < at || caret > end);
        if (fits && !isSkipped(int(at))) {
            Completion found = described(name.toString(), view.first(at), view.sliced(end));
            const auto known = places.constFind(found.text);
            if (known == places.cend()) {
                places.insert(found.text, names.size());
                names.append(std::move(found));
            } else if (names[*known].kind.isEmpty()) {
                names[*known] = std::move(found);
            }
        }
        at = end;
    }
    return names;
}

void appendNew(CompletionList &list, const CompletionList &more)
{
    QSet<QString> known;
    for (const Completion &one : std::as_const(list))
        known.insert(one.text);
    for (const Completion &one : more) {
        if (!known.contains(one.text)) {
            known.insert(one.text);
            list.append(one);
        }
    }
}

QString firstSentence(const QString &help)
{
    const QString paragraph = help.trimmed().section(u"\n\n"_s, 0, 0).simplified();
    const qsizetype end = paragraph.indexOf(u". "_s);
    const QString sentence = end < 0 ? paragraph : paragraph.first(end + 1);
    return sentence.size() <= kLongestHelp ? sentence : sentence.first(kLongestHelp - 1) + u'\u2026';
}

} // namespace runebook
