#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QRectF>
#include <QString>
#include <memory>

class PSMTabBarCell;
class QPainter;

/// What a style needs to know of the bar it draws in.
struct PSMTabBarState {
    QPalette palette;
    QFont font;
    Qt::Orientation orientation = Qt::Horizontal;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    bool isActive = true; ///< The bar's window has the keyboard.
    bool hasFocus = false; ///< The bar itself has it.
    qreal devicePixelRatio = 1;
};

/// How a tab bar looks: its margins, the height of its cells, the geometry inside a cell and the drawing.
/// Geometry is common to the styles; each brings its colours and shapes. Stateless; colours come from the
/// palette, so light and dark need nothing else. All measures in points.
class PSMTabStyle
{
public:
    /// Every colour of the bar, made from a palette.
    struct Colors {
        QColor bar;
        QColor selectedTab;
        QColor hoveredTab;
        QColor line;
        QColor title;
        QColor selectedTitle;
        QColor closeHover;
        QColor focus;
    };

    virtual ~PSMTabStyle() = default;
    /// The name that setStyleNamed of the bar knows, "Yosemite" for one.
    virtual QString name() const = 0;

public: // measures of the bar
    virtual qreal leftMargin() const = 0;
    /// Room to the right of the tabs, with the buttons that stand there.
    qreal rightMargin(bool addTabButton, bool overflowButton) const;
    qreal tabCellHeight(const QFont &font) const;
    /// The part of the cell height, from the top, that the tabs leave free.
    virtual qreal topMargin() const = 0;
    /// Points each of the buttons in the right margin takes along the bar.
    static constexpr qreal kButtonExtent = 28;

public: // measures inside a cell
    /// The width that shows the whole title, at least \a minimum.
    qreal desiredWidthOfTabCell(const PSMTabBarCell &cell, const QFont &font, qreal minimum) const;
    /// Where the close button of a cell with \a frame is drawn and clicked.
    QRectF closeButtonRect(const QRectF &frame, Qt::LayoutDirection direction) const;

public: // drawing
    virtual Colors colors(const QPalette &palette, bool isActive) const = 0;
    /// The bar's ground; \a rect is the whole bar.
    virtual void drawBar(QPainter &painter, const QRectF &rect, const PSMTabBarState &bar) const = 0;
    /// One tab with everything on it, at the cell's frame.
    void drawCell(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar) const;

protected:
    virtual qreal extraCellHeight() const = 0;
    /// The tab's shape, under its title.
    virtual void drawTab(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar) const = 0;
    /// The shape the focus ring follows.
    virtual QRectF focusRect(const QRectF &frame) const = 0;

    static QColor mixed(const QColor &from, const QColor &to, qreal part);
    static bool isDark(const QPalette &palette);
    /// \a rect moved to whole device pixels, so that edges stay crisp at every scale.
    static QRectF onPixels(const QRectF &rect, qreal devicePixelRatio);

private:
    void drawTitle(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar,
                   const QColor &color) const;
    void drawCloseButton(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar,
                         const Colors &colors) const;
};
