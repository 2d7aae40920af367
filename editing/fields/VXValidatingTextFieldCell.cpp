#include "editing/fields/VXValidatingTextFieldCell.h"

#include <QFontDatabase>
#include <QPainter>
#include <QtMath>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kFontSize = 11;
constexpr qreal kRadius = 3;
constexpr int kBadgePadding = 10; // both sides together
constexpr int kBadgeLeft = 5;
constexpr int kBadgeBottom = 1;
constexpr int kBadgeGap = 6;
constexpr int kEditedButtonGap = 4;

QFont badgeFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(kFontSize);
    return font;
}

} // namespace

FormattedText VXValidatingTextFieldCell::errorBadgeString(const QString &text) const
{
    QTextCharFormat format;
    format.setFont(badgeFont());
    format.setForeground(QColor(Qt::white));
    FormattedText badge;
    badge.text = text;
    badge.formats = {{0, static_cast<int>(text.size()), format}};
    badge.alignment = Qt::AlignLeft;
    return badge;
}

int VXValidatingTextFieldCell::wantedBadgeWidth(const BadgedField &field)
{
    return qCeil(QFontMetricsF(badgeFont()).horizontalAdvance(field.errorHint())) + kBadgePadding;
}

bool VXValidatingTextFieldCell::isBadgeWhole(const BadgedField &field)
{
    const int button = field.isExtraButtonVisible() ? field.extraButton()->width() : 0;
    return wantedBadgeWidth(field) + kBadgeGap + field.textWidth() <= field.interior().width() - button;
}

QRect VXValidatingTextFieldCell::errorBadgeRectInView(const BadgedField &field) const
{
    if (field.errorHint().isEmpty())
        return {};
    const QRect interior = field.interior();
    const int button = field.isExtraButtonVisible() ? field.extraButton()->width() : 0;
    const int room = std::max(0, interior.width() - button);
    // The field's own text stays whole beside it; of a reason that leaves no room for that only a sign is
    // left.
    const int width = isBadgeWhole(field) ? wantedBadgeWidth(field) : std::min(room, interior.height());
    return {interior.right() + 1 - button - width, interior.top(), width, interior.height()};
}

QRect VXValidatingTextFieldCell::drawInteriorWithFrameInView(QPainter *painter, const QRect &frame,
                                                             const BadgedField &field) const
{
    QRect textArea = frame;
    if (!field.isEditing() && !field.errorHint().isEmpty()) {
        const QRect badge = errorBadgeRectInView(field);
        if (painter)
            drawBadge(*painter, badge, field);
        textArea.setRight(textArea.right() - badge.width() - kBadgeGap);
    }
    if (field.isExtraButtonVisible())
        textArea.setRight(textArea.right() - field.extraButton()->width());
    return textArea;
}

void VXValidatingTextFieldCell::drawBadge(QPainter &painter, const QRect &badge,
                                          const BadgedField &field) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(field.backgroundColor());
    painter.drawRoundedRect(badge, kRadius, kRadius);

    const FormattedText text = errorBadgeString(field.errorHint());
    const QTextCharFormat format = text.formats.front().format;
    painter.setFont(format.font());
    painter.setPen(format.foreground().color());
    if (isBadgeWhole(field))
        painter.drawText(badge.adjusted(kBadgeLeft, 0, kBadgeLeft - kBadgePadding, -kBadgeBottom),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text.text);
    else
        painter.drawText(badge, Qt::AlignCenter, u"!"_s);
    painter.restore();
}

QRect VXValidatingTextFieldCell::selectWithFrameInView(const QRect &frame, const BadgedField &field) const
{
    const int button = field.isExtraButtonVisible() ? field.extraButton()->width() + kEditedButtonGap : 0;
    return frame.adjusted(0, 0, -button, 0);
}

// For scripts

namespace {

QVariantList listOf(const QRect &rect)
{
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

QRect rectOf(const QVariantList &numbers)
{
    return {numbers.value(0).toInt(), numbers.value(1).toInt(), numbers.value(2).toInt(),
            numbers.value(3).toInt()};
}

} // namespace

QVariantMap VXValidatingTextFieldCell::errorBadgeString(QVariant text) const
{
    const FormattedText badge = errorBadgeString(text.toString());
    const QTextCharFormat &format = badge.formats.front().format;
    return {{u"string"_s, badge.text},
            {u"font"_s, format.font().family()},
            {u"size"_s, format.font().pixelSize()},
            {u"color"_s, format.foreground().color()}};
}

QVariantList VXValidatingTextFieldCell::errorBadgeRectInView(QObject *object) const
{
    const auto *field = qobject_cast<BadgedField *>(object);
    return field ? listOf(errorBadgeRectInView(*field)) : QVariantList();
}

QVariantList VXValidatingTextFieldCell::drawInteriorWithFrameInView(const QVariantList &frame,
                                                                    QObject *object) const
{
    const auto *field = qobject_cast<BadgedField *>(object);
    return field ? listOf(drawInteriorWithFrameInView(nullptr, rectOf(frame), *field)) : QVariantList();
}

QVariantList VXValidatingTextFieldCell::selectWithFrameInView(const QVariantList &frame,
                                                              QObject *object) const
{
    const auto *field = qobject_cast<BadgedField *>(object);
    return field ? listOf(selectWithFrameInView(rectOf(frame), *field)) : QVariantList();
}
