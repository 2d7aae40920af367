#include "codeeditor/LineEditing.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr int kMaximumUnindent = 4;

/// Gathers edits at line starts and moves the selection along with them.
class LineEditor
{
public:
    LineEditor(int textLength, TextRange selection)
        : m_selection(selection.clampedTo(textLength)), m_edit {{}, m_selection}
    {
    }

    void insert(int at, const QString &text)
    {
        m_edit.edits.append({{at, 0}, text});
        adjust(at, int(text.size()));
    }

    void remove(int at, int count)
    {
        if (count <= 0)
            return;
        m_edit.edits.append({{at, count}, QString()});
        adjust(at, -count);
    }

    /// Each character on its own: those before the selection move its start, all others shorten it.
    void removeCharacters(int at, int count)
    {
        if (count <= 0)
            return;
        m_edit.edits.append({{at, count}, QString()});
        const int before = std::clamp(m_selection.location - at, 0, count);
        m_edit.selection.location -= before;
        m_edit.selection.length -= count - before;
    }

    LineEdit result() const
    {
        LineEdit edit = m_edit;
        edit.selection.location = std::max(edit.selection.location, 0);
        edit.selection.length = std::max(edit.selection.length, 0);
        return edit;
    }

private:
    void adjust(int at, int change)
    {
        if (at < m_selection.location)
            m_edit.selection.location += change;
        else if (at < m_selection.end())
            m_edit.selection.length += change;
    }

    const TextRange m_selection; // as it was, in the positions of the edits
    LineEdit m_edit;
};

/// The index behind the "\n" that ends the line at \a start, or -1 when none stands before \a limit.
int startOfNextLine(QStringView text, int start, int limit)
{
    const qsizetype found = text.first(limit).indexOf(u'\n', start);
    return found < 0 ? -1 : int(found) + 1;
}

int lengthOfUnindent(QStringView text, int lineStart, int limit)
{
    if (lineStart < limit && text[lineStart] == u'\t')
        return 1;
    int count = 0;
    while (count < kMaximumUnindent && lineStart + count < limit && text[lineStart + count] == u' ')
        ++count;
    return count;
}

} // namespace

QString LineEdit::appliedTo(const QString &text) const
{
    QString result;
    result.reserve(text.size());
    int kept = 0;
    for (const TextEdit &edit : edits) {
        result += QStringView(text).sliced(kept, edit.replaced.location - kept);
        result += edit.replacement;
        kept = edit.replaced.end();
    }
    return result += QStringView(text).sliced(kept);
}

TextRange lineBlock(QStringView text, TextRange range)
{
    const TextRange clamped = range.clampedTo(int(text.size()));
    const QStringView before = text.first(clamped.location);
    const int first = int(before.lastIndexOf(u'\n')) + 1;
    const int lastTouched = std::max(clamped.location, clamped.end() - 1);
    const int next = startOfNextLine(text, lastTouched, int(text.size()));
    return {first, (next < 0 ? int(text.size()) : next) - first};
}

QString indentationAfter(QStringView endedLine)
{
    const auto isIndent = [](QChar c) { return c == u' ' || c == u'\t'; };
    const auto end = std::find_if_not(endedLine.cbegin(), endedLine.cend(), isIndent);
    QString indentation = endedLine.first(end - endedLine.cbegin()).toString();
    if (endedLine.trimmed().endsWith(u':'))
        indentation += u'\t';
    return indentation;
}

LineEdit toggleComment(QStringView text, TextRange selection)
{
    const TextRange block = lineBlock(text, selection);
    const bool uncomment = block.length > 0 && text[block.location] == u'#';
    LineEditor editor(int(text.size()), selection);
    int line = block.location;
    do {
        if (!uncomment)
            editor.insert(line, u"# "_s);
        else if (text[line] == u'#')
            editor.remove(line, line + 1 < block.end() && text[line + 1] == u' ' ? 2 : 1);
        line = startOfNextLine(text, line, block.end());
        if (line >= 0)
            line = startOfNextLine(text, line, block.end());
    } while (line >= 0 && line < block.end());
    return editor.result();
}

LineEdit shiftRight(QStringView text, TextRange selection)
{
    const TextRange block = lineBlock(text, selection);
    LineEditor editor(int(text.size()), selection);
    int line = block.location;
    int next = startOfNextLine(text, line, block.end());
    editor.insert(line, u"\t"_s);
    while (next >= 0) {
        line = next;
        next = startOfNextLine(text, line, block.end());
        if (next >= 0)
            editor.insert(line, u"\t"_s);
    }
    return editor.result();
}

LineEdit shiftLeft(QStringView text, TextRange selection)
{
    const TextRange block = lineBlock(text, selection);
    LineEditor editor(int(text.size()), selection);
    for (int line = block.location; line >= 0 && line < block.end();
         line = startOfNextLine(text, line, block.end()))
        editor.removeCharacters(line, lengthOfUnindent(text, line, block.end()));
    return editor.result();
}

LineEdit duplicateLines(QStringView text, TextRange selection)
{
    const TextRange chosen = selection.clampedTo(int(text.size()));
    const TextRange block = lineBlock(text, chosen);
    QString copy = text.sliced(block.location, block.length).toString();
    const bool isLast = !copy.endsWith(u'\n');
    if (isLast)
        copy.prepend(u'\n');
    return {{{{block.end(), 0}, copy}}, {chosen.location + int(copy.size()), chosen.length}};
}

namespace {

/// Exchanges two neighbouring blocks of lines; the break between them stays where the text had one.
TextEdit exchanged(QStringView text, TextRange first, TextRange second)
{
    QString front = text.sliced(second.location, second.length).toString();
    QString back = text.sliced(first.location, first.length).toString();
    if (!front.endsWith(u'\n')) {
        front += u'\n';
        back.chop(1);
    }
    return {{first.location, first.length + second.length}, front + back};
}

} // namespace

LineEdit moveLinesUp(QStringView text, TextRange selection)
{
    const TextRange chosen = selection.clampedTo(int(text.size()));
    const TextRange block = lineBlock(text, chosen);
    if (block.location == 0)
        return {{}, chosen};
    const TextRange before = lineBlock(text, {block.location - 1, 0});
    const TextEdit edit = exchanged(text, before, block);
    const TextRange moved {chosen.location - before.length, chosen.length};
    return {{edit}, moved.clampedTo(int(text.size()))};
}

LineEdit moveLinesDown(QStringView text, TextRange selection)
{
    const TextRange chosen = selection.clampedTo(int(text.size()));
    const TextRange block = lineBlock(text, chosen);
    const bool hasNext = block.length > 0 && text[block.end() - 1] == u'\n' && block.end() < text.size();
    if (!hasNext)
        return {{}, chosen};
    const TextRange behind = lineBlock(text, {block.end(), 0});
    const TextEdit edit = exchanged(text, block, behind);
    const int shift = behind.length + (text[behind.end() - 1] == u'\n' ? 0 : 1);
    return {{edit}, TextRange {chosen.location + shift, chosen.length}.clampedTo(int(text.size()))};
}

LineEdit joinLines(QStringView text, TextRange selection)
{
    const TextRange chosen = selection.clampedTo(int(text.size()));
    const TextRange block = lineBlock(text, chosen);
    const bool isOne = text.sliced(block.location, block.length).count(u'\n') < 2;
    const TextRange lines = isOne ? block.united(lineBlock(text, {block.end(), 0})) : block;
    LineEdit join {{}, chosen};
    int shortened = 0;
    for (int at = lines.location; at < lines.end(); ++at) {
        if (text[at] != u'\n' || at + 1 >= lines.end())
            continue;
        int first = at;
        int last = at + 1;
        const auto isBlank = [&](int place) { return text[place] == u' ' || text[place] == u'\t'; };
        while (first > lines.location && isBlank(first - 1))
            --first;
        // Over empty lines as well: one gap, or the next one would begin in this.
        while (last < lines.end() && (isBlank(last) || (text[last] == u'\n' && last + 1 < lines.end())))
            ++last;
        const bool stands =
            first > lines.location && text[first - 1] != u'\n' && last < lines.end() && text[last] != u'\n';
        join.edits.append({{first, last - first}, stands ? u" "_s : QString()});
        join.selection = {first - shortened, 0};
        shortened += last - first - (stands ? 1 : 0);
        at = last - 1;
    }
    return join;
}

QString indentStep(QStringView text)
{
    constexpr int kLinesLookedAt = 1000;
    int step = 0;
    qsizetype start = 0;
    for (int line = 0; line < kLinesLookedAt && start >= 0 && start < text.size(); ++line) {
        qsizetype blanks = 0;
        while (start + blanks < text.size() && text[start + blanks] == u' ')
            ++blanks;
        if (blanks == 0 && text[start] == u'\t')
            return u"\t"_s;
        // One blank is no step: the lines of a comment are set in like that.
        const bool isEmpty = start + blanks >= text.size() || text[start + blanks] == u'\n';
        if (blanks > 1 && !isEmpty)
            step = step == 0 ? int(blanks) : std::min(step, int(blanks));
        start = text.indexOf(u'\n', start) + 1;
        if (start == 0)
            break;
    }
    return step == 0 ? u"\t"_s : QString(std::min(step, 8), u' ');
}

} // namespace runebook
