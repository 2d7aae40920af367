#include "editing/fields/MarkedTextDelegate.h"

#include "editing/fields/SignalColors.h"

#include <QApplication>
#include <QPainter>
#include <QTextLayout>

namespace runebook {

namespace {

QList<QTextLayout::FormatRange> formatsFor(const std::vector<UnitRange> &ranges, qsizetype textLength,
                                           const QTextCharFormat &format)
{
    QList<QTextLayout::FormatRange> formats;
    for (const UnitRange &range : ranges) {
        const qsizetype length = std::min(range.length, textLength - range.location);
        if (length > 0)
            formats.append({static_cast<int>(range.location), static_cast<int>(length), format});
    }
    return formats;
}

} // namespace

void MarkedTextDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QStyle *style = item.widget ? item.widget->style() : QApplication::style();
    const QString text = std::exchange(item.text, {});
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &item, item.widget) + 1;
    const QRect area = item.rect.adjusted(margin, 0, -margin, 0);
    const QString shown = item.fontMetrics.elidedText(text, Qt::ElideRight, area.width());

    QTextCharFormat mark;
    mark.setBackground(m_mark == Mark::Removed ? SignalColors::removed(item.palette)
                                               : SignalColors::inserted(item.palette));
    mark.setForeground(item.palette.text());
    mark.setFontStrikeOut(m_mark == Mark::Removed);

    QTextLayout layout(shown, item.font);
    QTextOption lineOption;
    lineOption.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(lineOption);
    layout.setFormats(
        formatsFor(index.data(MarkedText::RangesRole).value<std::vector<UnitRange>>(), shown.size(), mark));
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(area.width());
    layout.endLayout();

    painter->save();
    painter->setClipRect(area);
    painter->setPen(
        item.palette.color(item.state & QStyle::State_Selected ? QPalette::HighlightedText : QPalette::Text));
    layout.draw(painter, {qreal(area.x()), area.y() + (area.height() - line.height()) / 2});
    painter->restore();
}

} // namespace runebook
