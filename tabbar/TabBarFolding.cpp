#include "tabbar/TabBarFolding.h"

#include <QLayout>
#include <cmath>

namespace runebook {

TabBarFolding::TabBarFolding(QWidget *bar) : QObject(bar), m_bar(bar)
{
    constexpr int kFoldMs = 200;
    m_fold.setDuration(kFoldMs);
    connect(&m_fold, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &part) { foldTo(part.toReal()); });
    connect(&m_fold, &QVariantAnimation::finished, this, &TabBarFolding::finish);
}

void TabBarFolding::setHidden(bool isHidden, Way way)
{
    if (isHidden == m_isHidden)
        return;
    m_isHidden = isHidden;
    m_fold.stop();
    m_fold.setStartValue(isHidden ? 1.0 : 0.0);
    m_fold.setEndValue(isHidden ? 0.0 : 1.0);
    if (way == Way::Animated)
        m_fold.start();
    else
        finish();
}

void TabBarFolding::foldTo(qreal shownPart)
{
    const QSize full = m_bar->sizeHint();
    const int across = m_orientation == Qt::Horizontal ? full.height() : full.width();
    setThickness(int(std::round(across * shownPart)));
}

void TabBarFolding::finish()
{
    refresh();
    if (m_isHidden)
        Q_EMIT hidden();
}

void TabBarFolding::setThickness(int thickness)
{
    const QRect before = m_bar->geometry();
    if (m_orientation == Qt::Horizontal) {
        m_bar->setMinimumWidth(0);
        m_bar->setMaximumWidth(QWIDGETSIZE_MAX);
        m_bar->setFixedHeight(thickness);
    } else {
        m_bar->setMinimumHeight(0);
        m_bar->setMaximumHeight(QWIDGETSIZE_MAX);
        m_bar->setFixedWidth(thickness);
    }
    const QWidget *parent = m_bar->parentWidget();
    const bool inLayout = parent && parent->layout();
    if (!m_partner || m_partner->parentWidget() != parent || inLayout)
        return;
    // The partner gives and takes at the edge it shares with the bar; the opposite edge stays.
    QRect partner = m_partner->geometry();
    const QSize change = m_bar->size() - before.size();
    if (m_orientation == Qt::Horizontal)
        partner.setTop(partner.top() + change.height());
    else
        partner.setLeft(partner.left() + change.width());
    m_partner->setGeometry(partner);
}

} // namespace runebook
