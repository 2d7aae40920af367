#include "editing/replace/ReplacePreviewModel.h"

#include "editing/fields/MarkedText.h"

#include <algorithm>

namespace runebook {

namespace {

constexpr qsizetype kContext = 20; // characters before the first change that stay
constexpr qsizetype kLongest = 300; // more than any line shows

/// A piece of a text and the marks in it.
MarkedText excerpt(const QString &text, const std::vector<UnitRange> &ranges)
{
    const qsizetype firstMark = ranges.empty() ? 0 : ranges.front().location;
    qsizetype start = firstMark > 2 * kContext ? firstMark - kContext : 0;
    if (start > 0 && text.at(start).isLowSurrogate())
        --start;
    const QString lead = start > 0 ? QString(QChar(0x2026)) : QString();

    MarkedText marked;
    marked.text = lead + text.mid(start, kLongest);
    // One unit for one, so that the marks stay where they are.
    marked.text.replace(u'\n', QChar(0x21B5)).replace(u'\t', QChar(0x2192));
    for (const UnitRange &range : ranges) {
        const qsizetype location = range.location - start + lead.size();
        if (location >= marked.text.size())
            break;
        marked.ranges.push_back({location, std::min(range.length, marked.text.size() - location)});
    }
    return marked;
}

} // namespace

void ReplacePreviewModel::setPreviews(std::vector<ReplacePreview> previews)
{
    beginResetModel();
    m_previews = std::move(previews);
    endResetModel();
}

int ReplacePreviewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_previews.size());
}

int ReplacePreviewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ReplacePreviewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != MarkedText::RangesRole))
        return {};
    const ReplacePreview &preview = m_previews[static_cast<std::size_t>(index.row())];
    if (index.column() == NameColumn)
        return role == Qt::DisplayRole ? preview.name.left(kLongest) : QVariant();
    const MarkedText marked = index.column() == BeforeColumn
        ? excerpt(preview.before, preview.places.found)
        : excerpt(preview.after, preview.places.inserted);
    return role == Qt::DisplayRole ? QVariant(marked.text) : QVariant::fromValue(marked.ranges);
}

QVariant ReplacePreviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case NameColumn:
        return tr("Record");
    case BeforeColumn:
        return tr("Before");
    case AfterColumn:
        return tr("After");
    default:
        return {};
    }
}

} // namespace runebook
