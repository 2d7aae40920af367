#pragma once

#include "tabbar/PSMTabStyle.h"

/// Tabs as rounded plates on a plain ground: only the selected one and the one under the pointer have a
/// plate, so the bar stays quiet.
class PSMBigSurStyle : public PSMTabStyle
{
public:
    QString name() const override;
    qreal leftMargin() const override { return 4; }
    qreal topMargin() const override { return 0; }
    Colors colors(const QPalette &palette, bool isActive) const override;
    void drawBar(QPainter &painter, const QRectF &rect, const PSMTabBarState &bar) const override;

protected:
    qreal extraCellHeight() const override { return 18; }
    void drawTab(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar) const override;
    QRectF focusRect(const QRectF &frame) const override;
};
