#include "editing/window/PreviewLabel.h"

#include "model/StringHelpers.h"

#include <QPainter>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr double kRadius = 6;
constexpr qsizetype kNamed = 4; // of the characters that no font has

} // namespace

PreviewLabel::PreviewLabel(QWidget *parent) : QWidget(parent), m_picture(FormattedText())
{
    setAccessibleName(tr("Preview"));
    setMinimumHeight(84);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
}

QSize PreviewLabel::sizeHint() const
{
    return {260, 150};
}

void PreviewLabel::setFormattedText(const FormattedText &text)
{
    m_text = text;
    m_picture = PreviewPicture(text);
    const QString remark = this->remark();
    setAccessibleDescription(remark.isEmpty() ? text.text : text.text + u'\n' + remark);
    update();
}

QString PreviewLabel::remark() const
{
    const QList<char32_t> &missing = m_picture.missing();
    if (missing.isEmpty())
        return {};
    QStringList names;
    for (qsizetype i = 0; i < qMin(kNamed, missing.size()); ++i)
        names << u"U+"_s + hexStringFromInt(missing.at(i));
    const QString list = names.join(u", "_s);
    return tr("no installed font has %1").arg(missing.size() > kNamed ? tr("%1 and others").arg(list) : list);
}

void PreviewLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    QRectF room = QRectF(rect()).adjusted(12, 8, -12, -8);
    const QString remark = m_text.text.isEmpty() ? QStringLiteral("–") : this->remark();
    const bool isWordsOnly = m_text.text.isEmpty() || m_picture.isNothingThere();
    if (!remark.isEmpty()) {
        const int flags =
            Qt::AlignHCenter | Qt::TextWordWrap | (isWordsOnly ? Qt::AlignVCenter : Qt::AlignBottom);
        painter.setPen(palette().color(QPalette::PlaceholderText));
        QRectF words;
        painter.drawText(room, flags, remark, &words);
        if (isWordsOnly)
            return;
        room.setBottom(words.top() - 2);
    }
    // Laid out at its full size and scaled down to the room there is: the font keeps its proportions.
    const QRectF natural = m_picture.bounds();
    const double scale = qMin(1.0, qMin(room.width() / natural.width(), room.height() / natural.height()));
    painter.translate(room.center());
    painter.scale(scale, scale);
    painter.translate(-natural.center());
    painter.setPen(palette().color(QPalette::Text));
    m_picture.draw(painter);
}

} // namespace runebook
