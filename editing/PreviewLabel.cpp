#include "editing/PreviewLabel.h"

#include <QPainter>
#include <QTextLayout>

namespace runebook {

PreviewLabel::PreviewLabel(QWidget *parent) : QWidget(parent)
{
    setAccessibleName(tr("Preview"));
    setMinimumHeight(90);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
}

QSize PreviewLabel::sizeHint() const
{
    return {260, 170};
}

void PreviewLabel::setFormattedText(const FormattedText &text)
{
    m_text = text;
    setAccessibleDescription(text.text);
    update();
}

void PreviewLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    if (m_text.text.isEmpty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("–"));
        return;
    }
    QTextLayout layout(m_text.text, m_text.formats.isEmpty() ? font() : m_text.formats.front().format.font());
    layout.setFormats(m_text.formats);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(1e6);
    layout.endLayout();
    // Set at its full size and scaled down to the room there is: the font keeps its proportions.
    const QSizeF natural(qMax(1.0, line.naturalTextWidth()), qMax(1.0, line.height()));
    const QRectF room = QRectF(rect()).adjusted(12, 8, -12, -8);
    const double scale = qMin(1.0, qMin(room.width() / natural.width(), room.height() / natural.height()));
    painter.translate(room.center());
    painter.scale(scale, scale);
    painter.setPen(palette().color(QPalette::Text));
    layout.draw(&painter, QPointF(-natural.width() / 2, -natural.height() / 2));
}

} // namespace runebook
