#include "tabbar/PSMTabBarCell.h"

#include <QFontMetricsF>
#include <QMetaProperty>
#include <QVariant>

namespace {

// No tab is wide enough for more, and shaping a title of a million characters takes seconds.
constexpr qsizetype kDisplayTitleLength = 200;

QString oneLine(const QString &title)
{
    QString line = title.left(kDisplayTitleLength);
    if (!line.isEmpty() && line.back().isHighSurrogate())
        line.chop(1);
    for (QChar &character : line) {
        const QChar::Category category = character.category();
        if (category == QChar::Other_Control || category == QChar::Separator_Line
            || category == QChar::Separator_Paragraph)
            character = u' ';
    }
    return line;
}

} // namespace

PSMTabBarCell::PSMTabBarCell(QObject *item, QObject *parent) : QObject(parent), m_item(item)
{
    const QMetaMethod reader = staticMetaObject.method(staticMetaObject.indexOfSlot("readItem()"));
    for (const char *name : {"title", "icon"}) {
        const QMetaObject *itemType = item->metaObject();
        const QMetaProperty property = itemType->property(itemType->indexOfProperty(name));
        if (property.hasNotifySignal())
            connect(item, property.notifySignal(), this, reader);
    }
    readItem();
}

void PSMTabBarCell::readItem()
{
    if (!m_item)
        return;
    m_title = m_item->property("title").toString();
    m_displayTitle = oneLine(m_title);
    m_icon = m_item->property("icon").value<QIcon>();
    m_titleWidth = -1;
    Q_EMIT contentChanged();
}

qreal PSMTabBarCell::titleWidth(const QFont &font) const
{
    if (m_titleWidth < 0 || m_measuredFont != font) {
        m_titleWidth = QFontMetricsF(font).horizontalAdvance(m_displayTitle);
        m_measuredFont = font;
    }
    return m_titleWidth;
}

QObject *PSMTabBarCell::closeButton()
{
    if (!m_closeButton)
        m_closeButton = new PSMTabCloseButton(this);
    return m_closeButton;
}

bool PSMTabBarCell::setState(StateFlag flag, bool on)
{
    if (is(flag) == on)
        return false;
    m_state.setFlag(flag, on);
    return true;
}

void PSMTabBarCell::setTargetFrame(const QRectF &target)
{
    m_startFrame = m_frame;
    m_targetFrame = target;
}

void PSMTabBarCell::advance(qreal progress)
{
    if (is(Held))
        return;
    if (progress >= 1) {
        m_frame = m_targetFrame;
        return;
    }
    const auto between = [progress](qreal from, qreal to) { return from + (to - from) * progress; };
    m_frame =
        QRectF(between(m_startFrame.x(), m_targetFrame.x()), between(m_startFrame.y(), m_targetFrame.y()),
               between(m_startFrame.width(), m_targetFrame.width()),
               between(m_startFrame.height(), m_targetFrame.height()));
}
