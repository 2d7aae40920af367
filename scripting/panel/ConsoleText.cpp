#include "scripting/panel/ConsoleText.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr auto kTraceback = "Traceback (most recent call last):"_L1;
constexpr qsizetype kTracebackWord = 9;
constexpr auto kString = "<string>"_L1;
constexpr auto kPrompt = "<prompt>"_L1;
constexpr auto kPanelLabel = "macro panel"_L1;

/// False when none of the names can be in \a text: most output has none, and there is much of it.
bool mayHaveNames(const QString &text)
{
    return text.contains("Error"_L1) || text.contains("Interrupt"_L1) || text.contains("Exit"_L1)
        || text.contains("StopIteration"_L1);
}

QList<UnitRange> emphasisIn(const QString &text)
{
    QList<UnitRange> ranges;
    if (!mayHaveNames(text) && !text.contains(kTraceback))
        return ranges;
    for (const QString &name : errorNames()) {
        const qsizetype place = text.indexOf(name);
        if (place >= 0)
            ranges << UnitRange {place, name.size()};
    }
    const qsizetype traceback = text.indexOf(kTraceback);
    if (traceback >= 0)
        ranges << UnitRange {traceback, kTracebackWord};
    return ranges;
}

/// Where the ranges lie once \a replaced has become so many units; those inside of it go.
void adapt(QList<UnitRange> &ranges, UnitRange replaced, qsizetype newLength)
{
    const qsizetype end = replaced.location + replaced.length;
    ranges.removeIf([&](const UnitRange &range) {
        return range.location < end && range.location + range.length > replaced.location;
    });
    for (UnitRange &range : ranges) {
        if (range.location >= end)
            range.location += newLength - replaced.length;
    }
}

} // namespace

const QStringList &errorNames()
{
    static const QStringList names {
        u"AssertionError"_s,    u"AttributeError"_s,     u"EOFError"_s,           u"FloatingPointError"_s,
        u"GeneratorExit"_s,     u"ImportError"_s,        u"IndexError"_s,         u"KeyError"_s,
        u"KeyboardInterrupt"_s, u"MemoryError"_s,        u"NameError"_s,          u"NotImplementedError"_s,
        u"OSError"_s,           u"OverflowError"_s,      u"ReferenceError"_s,     u"RuntimeError"_s,
        u"StopIteration"_s,     u"SyntaxError"_s,        u"IndentationError"_s,   u"TabError"_s,
        u"SystemError"_s,       u"SystemExit"_s,         u"TypeError"_s,          u"UnboundLocalError"_s,
        u"UnicodeError"_s,      u"UnicodeEncodeError"_s, u"UnicodeDecodeError"_s, u"UnicodeTranslateError"_s,
        u"ValueError"_s,        u"ZeroDivisionError"_s,  u"BadPrototypeError"_s};
    return names;
}

QString cleanupErrorMessage(const QString &message)
{
    constexpr auto kInModule = ", in <module>"_L1;
    QString text = message;
    const qsizetype place = text.indexOf(kInModule);
    return place < 0 ? text : text.remove(place, kInModule.size());
}

ConsoleText ConsoleText::fromOutput(const QString &output)
{
    static const QRegularExpression reference(u"File:? \"(.*)\", line (\\d*)"_s);
    ConsoleText console {output, emphasisIn(output), {}};
    if (!output.contains("\", line "_L1))
        return console;
    QList<QRegularExpressionMatch> matches;
    for (auto found = reference.globalMatch(output); found.hasNext();)
        matches << found.next();
    // From the last to the first: replacing a path leaves the places before it as they are.
    for (auto match = matches.crbegin(); match != matches.crend(); ++match) {
        QString path = match->captured(1);
        if (path == kPanelLabel)
            path = kString;
        const bool isMacro = path == kString;
        if (!isMacro && path != kPrompt && !QFileInfo(path).isReadable())
            continue;
        const QString shown = isMacro ? u"<macro>"_s : path.section(u'/', -1);
        const UnitRange replaced {match->capturedStart(1), match->capturedLength(1)};
        console.text.replace(replaced.location, replaced.length, shown);
        adapt(console.emphasised, replaced, shown.size());
        const qsizetype change = shown.size() - replaced.length;
        for (FileLink &link : console.links)
            link.range.location += change;
        console.links.prepend(
            {{match->capturedStart(), match->capturedLength() + change}, path, match->captured(2)});
    }
    return console;
}

} // namespace runebook
