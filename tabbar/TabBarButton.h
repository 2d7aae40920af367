#pragma once

#include <QToolButton>

namespace runebook {

/// The flat plate under the bar's own buttons, as hovering, pressing and the keyboard ask for it.
void drawTabBarButtonPlate(QPainter &painter, const QToolButton &button);

/// What is drawn on the plate: as quiet as the titles of unselected tabs until the user turns to it.
QColor tabBarGlyphColor(const QToolButton &button);

/// The button with a plus after the last tab.
class AddTabButton : public QToolButton
{
    Q_OBJECT
public:
    explicit AddTabButton(QWidget *parent);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace runebook
