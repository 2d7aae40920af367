#include "codeeditor/VXCodeTextStorage.h"

#include "codeeditor/CodeLayout.h"
#include "codeeditor/DottedWords.h"
#include "codeeditor/FormatOverlay.h"
#include "codeeditor/KeywordTable.h"

#include <QTextBlock>
#include <QTextCursor>

using namespace runebook;

namespace {

/// The paragraph of \a index as a text of its own, with its break, and where it begins.
QString paragraphAt(const QTextDocument &document, int index, int *start)
{
    const QTextBlock block = document.findBlock(index);
    *start = block.position();
    QString text = block.text();
    if (block.next().isValid())
        text += u'\n';
    return text;
}

} // namespace

VXCodeTextStorage::VXCodeTextStorage(QObject *parent) : VXCodeTextStorage(nullptr, parent) { }

VXCodeTextStorage::VXCodeTextStorage(const QTextDocument *contents, QObject *parent)
    : QTextDocument(parent), m_layout(new CodeLayout(this))
{
    registerTextRangeConversions();
    setDocumentLayout(m_layout);
    if (contents) {
        setPlainText(contents->toRawText());
        for (const AttributeRun &run : attributeRuns(*contents, {0, length()})) {
            if (!run.attributes.isEmpty())
                setAttributesRange(run.attributes, run.range);
        }
    }
    m_length = length();
    connect(this, &QTextDocument::contentsChange, this, &VXCodeTextStorage::reportCharacters);
}

QString VXCodeTextStorage::string() const
{
    // Not toPlainText(): that makes blanks of no-break spaces and newlines of line separators.
    return toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

int VXCodeTextStorage::length() const
{
    return characterCount() - 1;
}

QString VXCodeTextStorage::substringWithRange(TextRange range) const
{
    // Not by a cursor: that lays out what it steps on.
    const TextRange wanted = range.clampedTo(length());
    QString result;
    result.reserve(wanted.length);
    for (QTextBlock block = findBlock(wanted.location); result.size() < wanted.length; block = block.next()) {
        const int first = std::max(wanted.location - block.position(), 0);
        result += QStringView(block.text()).sliced(first).left(wanted.length - result.size());
        if (result.size() < wanted.length)
            result += u'\n';
    }
    return result;
}

void VXCodeTextStorage::replaceCharactersInRangeWithString(TextRange range, const QString &string)
{
    const TextRange replaced = range.clampedTo(length());
    QTextCursor cursor(this);
    cursor.setPosition(replaced.location);
    cursor.setPosition(replaced.end(), QTextCursor::KeepAnchor);
    cursor.insertText(string);
}

void VXCodeTextStorage::reportCharacters(int from, int removed, int added)
{
    // A change of everything counts the end of the last paragraph, which is no character, or counts nothing.
    const int before = std::exchange(m_length, length());
    const int change = m_length - before;
    const TextRange replaced = TextRange {from, std::max(removed, -change)}.clampedTo(before);
    moveAttributes(replaced.location, replaced.length, replaced.length + change);
    Q_UNUSED(added)
    Q_EMIT edited(EditKind::Characters, replaced, change);
}

/// Keeps the attributes with their characters when \a removed of them at \a from became \a added others.
void VXCodeTextStorage::moveAttributes(int from, int removed, int added)
{
    if (m_attributes.isEmpty())
        return;
    const int heir = removed > 0 || from == 0 ? from : from - 1; // whose attributes the new characters get
    const int shift = added - removed;
    QList<QTextLayout::FormatRange> moved;
    for (const QTextLayout::FormatRange &range : std::as_const(m_attributes)) {
        const int end = range.start + range.length;
        const bool inherits = added > 0 && heir >= range.start && heir < end;
        const int front = std::min(end, from) - range.start; // characters in front of the change
        const int back = end - std::max(range.start, from + removed); // and behind it
        int start = front > 0 ? range.start : inherits ? from : std::max(range.start, from + removed) + shift;
        int length = std::max(front, 0) + std::max(back, 0) + (inherits ? added : 0);
        if (!inherits && front > 0 && back > 0 && added > 0) { // the new ones stand between
            moved.append({range.start, front, range.format});
            start = from + added;
            length = back;
        }
        if (length > 0)
            moved.append({start, length, range.format});
    }
    m_attributes = moved;
    showAttributes({from, added});
}

/// Lays the attributes over the paragraphs of \a range, where no document colours them.
void VXCodeTextStorage::showAttributes(TextRange range)
{
    if (m_blankAttributes)
        return;
    for (QTextBlock block = findBlock(range.location); block.isValid() && block.position() <= range.end();
         block = block.next()) {
        const TextRange own {block.position(), block.length() - 1};
        FormatRanges formats;
        for (const QTextLayout::FormatRange &given : std::as_const(m_attributes)) {
            const TextRange shared = own.intersected({given.start, given.length});
            if (shared.length > 0)
                formats.append({shared.location - own.location, shared.length, given.format});
        }
        setOverlay(block, formats);
    }
}

QVariantMap VXCodeTextStorage::attributesAtIndexEffectiveRange(int index, TextRange *effectiveRange) const
{
    TextRange range;
    QVariantMap attributes = attributesAt(*this, index, &range);
    if (range.length > 0)
        complete(attributes, index, &range);
    if (effectiveRange)
        *effectiveRange = range;
    return attributes;
}

/// Fills in what does not lie over the text: the looks of blanks, and the defaults.
void VXCodeTextStorage::complete(QVariantMap &attributes, int index, TextRange *range) const
{
    if (attributes.isEmpty() && m_blankAttributes)
        attributes = m_blankAttributes(index, range);
    if (!attributes.contains(foregroundColorAttributeName))
        attributes.insert(foregroundColorAttributeName, m_defaultForegroundColor);
    if (!attributes.contains(fontAttributeName))
        attributes.insert(fontAttributeName, defaultFont());
}

void VXCodeTextStorage::forEachRun(TextRange range,
                                   const std::function<void(TextRange, const QVariantMap &)> &visit) const
{
    const QList<AttributeRun> runs = attributeRuns(*this, range.clampedTo(length()));
    for (const AttributeRun &run : runs) {
        for (int at = run.range.location; at < run.range.end();) {
            TextRange piece {at, run.range.end() - at};
            QVariantMap attributes = run.attributes;
            complete(attributes, at, &piece);
            const int end = std::max(piece.end(), at + 1);
            visit({at, end - at}, attributes);
            at = end;
        }
    }
}

QVariantList VXCodeTextStorage::attributesAtIndexEffectiveRange(int index) const
{
    TextRange range;
    const QVariantMap attributes = attributesAtIndexEffectiveRange(index, &range);
    return {attributes, QVariantList {range.location, range.length}};
}

void VXCodeTextStorage::setAttributesRange(const QVariantMap &attributes, TextRange range)
{
    const TextRange changed = range.clampedTo(length());
    const QTextCharFormat format = formatFromAttributes(attributes);
    if (!m_blankAttributes)
        m_attributes = withFormat(m_attributes, changed.location, changed.length, format);
    for (QTextBlock block = findBlock(changed.location); block.isValid() && block.position() < changed.end();
         block = block.next()) {
        const int first = std::max(changed.location - block.position(), 0);
        const int last = std::min(changed.end() - block.position(), block.length() - 1);
        if (last > first)
            setOverlay(block, withFormat(overlayOf(block), first, last - first, format));
    }
    markContentsDirty(changed.location, changed.length);
    Q_EMIT edited(EditKind::Attributes, changed, 0);
}

TextRange VXCodeTextStorage::doubleClickAtIndex(int index) const
{
    int start = 0;
    const QString paragraph = paragraphAt(*this, std::clamp(index, 0, length()), &start);
    TextRange range = dottedComponent(paragraph, index - start);
    range.location += start;
    return range;
}

int VXCodeTextStorage::nextWord(int index, Way way) const
{
    const int from = std::clamp(index, 0, length());
    int start = 0;
    if (way == Way::Forward) {
        const QString paragraph = paragraphAt(*this, from, &start);
        return start + nextComponent(paragraph, from - start);
    }
    if (from == 0)
        return 0;
    const QString paragraph = paragraphAt(*this, from - 1, &start);
    return start + previousComponent(paragraph, from - start);
}
