#pragma once

#include <QObject>
#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>

namespace runebook {

/// How a bar is folded away and back: the bar gets thinner, and its partner view takes the room where no
/// layout does.
class TabBarFolding : public QObject
{
    Q_OBJECT
public:
    /// For \a bar, which owns this and whose size hint is what it measures unfolded.
    explicit TabBarFolding(QWidget *bar);

    void setOrientation(Qt::Orientation orientation) { m_orientation = orientation; }
    QWidget *partner() const { return m_partner; }
    void setPartner(QWidget *view) { m_partner = view; }

    bool isHidden() const { return m_isHidden; }
    enum class Way { AtOnce, Animated };
    void setHidden(bool isHidden, Way way);
    /// The bar measures something else now.
    void refresh() { foldTo(m_isHidden ? 0 : 1); }
    /// Makes the bar so many points thick.
    void setThickness(int thickness);

Q_SIGNALS:
    /// The bar has been folded away.
    void hidden();

private:
    void foldTo(qreal shownPart);
    void finish();

    QWidget *m_bar;
    QPointer<QWidget> m_partner;
    QVariantAnimation m_fold;
    Qt::Orientation m_orientation = Qt::Horizontal;
    bool m_isHidden = false;
};

} // namespace runebook
