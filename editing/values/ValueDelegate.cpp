#include "editing/values/ValueDelegate.h"

#include <QLineEdit>
#include <QPainter>

namespace runebook {

namespace {

using State = ValuesModel::State;

constexpr int kMargin = 6;

QColor inkOf(const QStyleOptionViewItem &option)
{
    const bool isSelected = option.state & QStyle::State_Selected;
    const auto group = option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    return option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
}

/// Where the tick or the cross stands.
QRectF markRect(const QRect &row)
{
    const double side = qMin(row.height() - 8.0, 14.0);
    return {row.left() + double(kMargin), row.center().y() - side / 2 + 0.5, side, side};
}

void drawMark(QPainter &painter, const QRectF &box, State state)
{
    if (state == State::Only) {
        painter.drawPolyline(QPolygonF({{box.left() + box.width() * 0.1, box.top() + box.height() * 0.55},
                                        {box.left() + box.width() * 0.4, box.top() + box.height() * 0.85},
                                        {box.left() + box.width() * 0.9, box.top() + box.height() * 0.15}}));
    } else if (state == State::Without) {
        const QRectF cross = box.adjusted(2, 2, -2, -2);
        painter.drawLine(cross.topLeft(), cross.bottomRight());
        painter.drawLine(cross.topRight(), cross.bottomLeft());
    }
}

QRect textRect(const QRect &row)
{
    return row.adjusted(int(markRect(row).right()) - row.left() + kMargin, 0, -kMargin, 0);
}

void drawValue(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const auto state = State(index.data(ValuesModel::StateRole).toInt());
    painter.setPen(QPen(inkOf(option), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setRenderHint(QPainter::Antialiasing);
    drawMark(painter, markRect(option.rect), state);
    QFont font = option.font;
    font.setBold(state == State::Only);
    font.setStrikeOut(state == State::Without);
    font.setItalic(index.data(ValuesModel::TextRole).toString().isEmpty());
    painter.setFont(font);
    painter.setPen(inkOf(option));
    const QRect place = textRect(option.rect);
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                     QFontMetrics(font).elidedText(option.text, Qt::ElideRight, place.width()));
}

void drawCount(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    QRect place = option.rect.adjusted(kMargin, 0, -kMargin, 0);
    painter.setPen(inkOf(option));
    painter.setFont(option.font);
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignRight | Qt::TextSingleLine, option.text);
    // All bars begin at one line and leave room for the longest number.
    place.setWidth(place.width() - option.fontMetrics.horizontalAdvance(QStringLiteral("9,999,999"))
                   - kMargin);
    const double share = index.data(ValuesModel::ShareRole).toDouble();
    if (share <= 0 || place.width() <= 0)
        return;
    constexpr double kHeight = 6;
    const QRectF bar(place.left(), place.center().y() - kHeight / 2 + 0.5, qMax(2.0, share * place.width()),
                     kHeight);
    const bool isSelected = option.state & QStyle::State_Selected;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isSelected ? inkOf(option) : option.palette.color(QPalette::Highlight));
    painter.drawRoundedRect(bar, 2, 2);
}

} // namespace

QSize ValueDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return {80, option.fontMetrics.height() + 8};
}

void ValueDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const
{
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    const QWidget *view = option.widget;
    view->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &row, painter, view);
    painter->save();
    painter->setClipRect(option.rect);
    if (index.column() == ValuesModel::ValueColumn)
        drawValue(*painter, row, index);
    else
        drawCount(*painter, row, index);
    painter->restore();
}

QWidget *ValueDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const
{
    auto *editor = new QLineEdit(parent);
    editor->setAccessibleName(tr("New value, in all records that have this one"));
    Q_EMIT editorOpened();
    return editor;
}

void ValueDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                         const QModelIndex &) const
{
    QRect place = option.rect;
    place.setLeft(textRect(option.rect).left() - 4);
    editor->setGeometry(place);
}

void ValueDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    QStyledItemDelegate::destroyEditor(editor, index);
    Q_EMIT editorClosed();
}

} // namespace runebook
