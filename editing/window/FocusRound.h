#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <vector>

namespace runebook {

/// Leads the keyboard from one area of a window to the next and back to the first: to where it was in that
/// area when it left it.
class FocusRound : public QObject
{
    Q_OBJECT
public:
    explicit FocusRound(QObject *parent);
    /// \a area is asked for each time, since it may come later or go; \a first gets the focus where nothing
    /// in the area had it yet.
    void add(std::function<QWidget *()> area, std::function<QWidget *()> first);
    /// +1: to the next area that is shown, -1: to the one before.
    void go(int step);

private:
    struct Area {
        std::function<QWidget *()> widget;
        std::function<QWidget *()> first;
        QPointer<QWidget> last;
    };
    void remember(QWidget *focus);
    int areaOf(const QWidget *focus) const;

    std::vector<Area> m_areas;
};

} // namespace runebook
