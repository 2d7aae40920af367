#include "codeeditor/FormatOverlay.h"

#include "codeeditor/KeywordTable.h"

#include <QColor>
#include <QFont>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>

namespace runebook {

namespace {

/// A text being composed stands in the layout but not in the block: positions behind it are shifted, and its
/// own formats are the input method's.
struct Preedit {
    int start;
    int length;

    explicit Preedit(const QTextLayout &layout)
        : start(layout.preeditAreaPosition()), length(int(layout.preeditAreaText().size()))
    {
    }
    bool owns(const QTextLayout::FormatRange &range) const
    {
        return length > 0 && range.start >= start && range.start + range.length <= start + length;
    }
};

bool sameRanges(const FormatRanges &a, const FormatRanges &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto &x, const auto &y) {
        return x.start == y.start && x.length == y.length && x.format == y.format;
    });
}

FormatRanges aroundPreedit(const FormatRanges &formats, const Preedit &preedit, const FormatRanges &current)
{
    FormatRanges result;
    for (const auto &range : current) {
        if (preedit.owns(range))
            result.append(range);
    }
    for (const auto &range : formats) {
        const int before = std::clamp(preedit.start - range.start, 0, range.length);
        if (before > 0)
            result.append({range.start, before, range.format});
        if (before < range.length)
            result.append({range.start + before + preedit.length, range.length - before, range.format});
    }
    return result;
}

} // namespace

FormatRanges overlayOf(const QTextBlock &block)
{
    const QTextLayout &layout = *block.layout();
    FormatRanges formats = layout.formats();
    const Preedit preedit(layout);
    if (preedit.length == 0)
        return formats;
    FormatRanges result;
    for (QTextLayout::FormatRange range : formats) {
        if (preedit.owns(range))
            continue;
        if (range.start >= preedit.start + preedit.length)
            range.start -= preedit.length;
        result.append(range);
    }
    return result;
}

bool setOverlay(const QTextBlock &block, const FormatRanges &formats)
{
    QTextLayout &layout = *block.layout();
    const FormatRanges current = layout.formats();
    const Preedit preedit(layout);
    const FormatRanges &wanted = preedit.length > 0 ? aroundPreedit(formats, preedit, current) : formats;
    if (sameRanges(current, wanted))
        return false;
    layout.setFormats(wanted);
    return true;
}

FormatRanges withFormat(const FormatRanges &formats, int start, int length, const QTextCharFormat &format)
{
    const int end = start + length;
    FormatRanges result;
    for (const auto &range : formats) {
        const int rangeEnd = range.start + range.length;
        if (range.start < start)
            result.append({range.start, std::min(rangeEnd, start) - range.start, range.format});
        if (rangeEnd > end)
            result.append({std::max(range.start, end), rangeEnd - std::max(range.start, end), range.format});
    }
    if (length > 0 && !format.isEmpty())
        result.append({start, length, format});
    std::sort(result.begin(), result.end(), [](const auto &a, const auto &b) { return a.start < b.start; });
    return result;
}

QTextCharFormat formatFromAttributes(const QVariantMap &attributes)
{
    QTextCharFormat format;
    const QVariant color = attributes.value(foregroundColorAttributeName);
    if (color.canConvert<QColor>() && color.value<QColor>().isValid()) {
        format.setForeground(color.value<QColor>());
        format.setProperty(kGivenColorProperty, color.value<QColor>());
    }
    const QVariant font = attributes.value(fontAttributeName);
    if (font.canConvert<QFont>())
        format.setFont(font.value<QFont>());
    if (const QVariant link = attributes.value(linkAttributeName); link.isValid()) {
        format.setAnchor(true);
        format.setAnchorHref(link.toString());
    }
    return format;
}

QVariantMap attributesFromFormat(const QTextCharFormat &format)
{
    QVariantMap attributes;
    if (format.hasProperty(kGivenColorProperty))
        attributes.insert(foregroundColorAttributeName, format.property(kGivenColorProperty));
    else if (format.hasProperty(QTextFormat::ForegroundBrush))
        attributes.insert(foregroundColorAttributeName, format.foreground().color());
    // A format that only leans on the document's font says nothing of its own about it.
    if (format.hasProperty(QTextFormat::FontFamilies))
        attributes.insert(fontAttributeName, format.font());
    if (format.isAnchor())
        attributes.insert(linkAttributeName, format.anchorHref());
    return attributes;
}

QVariantMap attributesAt(const QTextDocument &document, int index, TextRange *effectiveRange)
{
    TextRange range;
    QVariantMap attributes;
    if (index >= 0 && index < document.characterCount() - 1) {
        const QTextBlock block = document.findBlock(index);
        const int inBlock = index - block.position();
        int first = 0;
        int last = block.length();
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const TextRange fragment {it.fragment().position(), it.fragment().length()};
            if (!fragment.contains(index))
                continue;
            first = fragment.location - block.position();
            last = first + fragment.length;
            attributes = attributesFromFormat(it.fragment().charFormat());
        }
        const FormatRanges overlay = overlayOf(block);
        for (const auto &over : overlay) {
            const int end = over.start + over.length;
            if (end <= inBlock) {
                first = std::max(first, end);
            } else if (over.start > inBlock) {
                last = std::min(last, over.start);
            } else {
                first = std::max(first, over.start);
                last = std::min(last, end);
                attributes.insert(attributesFromFormat(over.format));
            }
        }
        range = {block.position() + first, last - first};
    }
    if (effectiveRange)
        *effectiveRange = range;
    return attributes;
}

QList<AttributeRun> attributeRuns(const QTextDocument &document, TextRange range)
{
    QList<AttributeRun> runs;
    for (QTextBlock block = document.findBlock(range.location);
         block.isValid() && block.position() < range.end(); block = block.next()) {
        const int start = block.position();
        const int end = std::min(start + block.length(), range.end());
        const FormatRanges overlay = overlayOf(block);
        auto over = overlay.cbegin();
        auto fragment = block.begin();
        for (int at = std::max(start, range.location); at < end;) {
            while (over != overlay.cend() && start + over->start + over->length <= at)
                ++over;
            while (!fragment.atEnd() && fragment.fragment().position() + fragment.fragment().length() <= at)
                ++fragment;
            int next = end;
            QVariantMap attributes;
            if (!fragment.atEnd()) {
                attributes = attributesFromFormat(fragment.fragment().charFormat());
                next = std::min(next, fragment.fragment().position() + fragment.fragment().length());
            }
            if (over != overlay.cend() && start + over->start <= at) {
                attributes.insert(attributesFromFormat(over->format));
                next = std::min(next, start + over->start + over->length);
            } else if (over != overlay.cend()) {
                next = std::min(next, start + over->start);
            }
            runs.append({{at, next - at}, attributes});
            at = next;
        }
    }
    return runs;
}

} // namespace runebook
