#include "codeeditor/FindIndicator.h"

#include <QPainter>

namespace runebook {

namespace {

constexpr int kDurationMs = 700;
constexpr int kGrowthMargin = 6;
constexpr qreal kGrowthShare = 0.25; // of the time: grow and fall back; the rest stands, then fades
constexpr qreal kFadeShare = 0.6;

/// How far the plate stands out at \a time (0 to 1), in pixels.
qreal growthAt(qreal time)
{
    if (time >= kGrowthShare)
        return 0;
    const qreal part = time / kGrowthShare;
    return (kGrowthMargin - 2) * (part < 0.5 ? part * 2 : (1 - part) * 2);
}

} // namespace

FindIndicator::FindIndicator(QWidget *viewport, const QRect &rect, const QString &text, const QFont &font)
    : QWidget(viewport), m_text(text)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    setFont(font);
    setGeometry(rect.adjusted(-kGrowthMargin, -kGrowthMargin, kGrowthMargin, kGrowthMargin));
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setDuration(kDurationMs);
    connect(&m_animation, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&m_animation, &QVariantAnimation::finished, this, &QObject::deleteLater);
    m_animation.start();
    show();
}

void FindIndicator::paintEvent(QPaintEvent *)
{
    const qreal time = m_animation.currentValue().toReal();
    const qreal growth = growthAt(time);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(time < kFadeShare ? 1 : (1 - time) / (1 - kFadeShare));
    const QRectF text = QRectF(rect()).adjusted(kGrowthMargin, kGrowthMargin, -kGrowthMargin, -kGrowthMargin);
    const QRectF plate = text.adjusted(-1 - growth, -growth, 1 + growth, growth);
    painter.setPen(QColor(0xC7, 0x9A, 0x00));
    painter.setBrush(QColor(0xFF, 0xE0, 0x4A));
    painter.drawRoundedRect(plate, 3, 3);
    painter.setPen(Qt::black);
    painter.drawText(text, Qt::AlignCenter | Qt::TextDontClip, m_text);
}

} // namespace runebook
