#pragma once

#include "tabbar/PSMTabStyle.h"

/// Tabs that fill the bar from edge to edge: the selected one is the lit continuation of the view below, the
/// others lie in the shade, parted by hairlines.
class PSMYosemiteStyle : public PSMTabStyle
{
public:
    QString name() const override;
    qreal leftMargin() const override { return 0; }
    qreal topMargin() const override { return 0; }
    Colors colors(const QPalette &palette, bool isActive) const override;
    void drawBar(QPainter &painter, const QRectF &rect, const PSMTabBarState &bar) const override;

protected:
    qreal extraCellHeight() const override { return 12; }
    void drawTab(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar) const override;
    QRectF focusRect(const QRectF &frame) const override;
};
