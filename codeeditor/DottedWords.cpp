#include "codeeditor/DottedWords.h"

#include "codeeditor/CharacterClasses.h"

namespace runebook {

namespace {

enum class Class { Word, Blank, Break, Other };

/// True for one unit of a name, whichever half of a pair it is.
bool isNameUnit(QStringView text, qsizetype index)
{
    if (index < 0 || index >= text.size())
        return false;
    if (text[index].isLowSurrogate() && index > 0 && text[index - 1].isHighSurrogate())
        --index;
    return namePartLength(text, index) > 0;
}

Class classAt(QStringView text, qsizetype index)
{
    const char16_t c = text.utf16()[index];
    if (c == u'\n')
        return Class::Break;
    if (isNameUnit(text, index) || (c == u'.' && isNameUnit(text, index - 1) && isNameUnit(text, index + 1)))
        return Class::Word;
    return isBlank(c) ? Class::Blank : Class::Other;
}

/// True when the characters at \a index - 1 and \a index belong to the same word.
bool joined(QStringView text, qsizetype index)
{
    const Class left = classAt(text, index - 1);
    if (left != classAt(text, index) || left == Class::Break)
        return false;
    if (left == Class::Other) // the halves of a pair only
        return text[index].isLowSurrogate() && text[index - 1].isHighSurrogate();
    return true;
}

} // namespace

TextRange wordRange(QStringView text, int index)
{
    if (index < 0 || index >= text.size())
        return {std::max(0, std::min(index, int(text.size()))), 0};
    int first = index;
    while (first > 0 && joined(text, first))
        --first;
    int last = index + 1;
    while (last < text.size() && joined(text, last))
        ++last;
    return {first, last - first};
}

int nextWordStart(QStringView text, int index)
{
    if (index >= text.size())
        return int(text.size());
    if (classAt(text, index) == Class::Break)
        return index + 1;
    int next = wordRange(text, index).end();
    if (next < text.size() && classAt(text, next) == Class::Blank)
        next = wordRange(text, next).end();
    return next;
}

int previousWordStart(QStringView text, int index)
{
    if (index <= 0)
        return 0;
    TextRange before = wordRange(text, index - 1);
    if (classAt(text, before.location) == Class::Blank && before.location > 0
        && classAt(text, before.location - 1) != Class::Break)
        before = wordRange(text, before.location - 1);
    return before.location;
}

TextRange dottedComponent(QStringView text, int index)
{
    const TextRange word = wordRange(text, index);
    if (word.length == 0 || text[index] == u'.')
        return {word.length == 0 ? word.location : index, std::min(word.length, 1)};
    const qsizetype before = text.sliced(word.location, index - word.location).lastIndexOf(u'.');
    const qsizetype after = text.sliced(index + 1, word.end() - index - 1).indexOf(u'.');
    const int first = before < 0 ? word.location : word.location + int(before) + 1;
    const int last = after < 0 ? word.end() : index + 1 + int(after);
    return {first, last - first};
}

int nextComponent(QStringView text, int index)
{
    const int next = nextWordStart(text, index);
    if (next - index < 2)
        return next;
    const qsizetype dot = text.sliced(index + 1, next - index - 1).indexOf(u'.');
    return dot < 0 ? next : index + 1 + int(dot);
}

int previousComponent(QStringView text, int index)
{
    const int previous = previousWordStart(text, index);
    if (index - previous < 2)
        return previous;
    const qsizetype dot = text.sliced(previous, index - previous - 1).lastIndexOf(u'.');
    return dot < 0 ? previous : previous + int(dot) + 1;
}

} // namespace runebook
