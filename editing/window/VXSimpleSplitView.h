#pragma once

#include <QSplitter>

/// A split view that is its own delegate: it keeps its dividers on whole points.
class VXSimpleSplitView : public QSplitter
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit VXSimpleSplitView(QWidget *parent = nullptr) : QSplitter(parent) { }
    VXSimpleSplitView(Qt::Orientation orientation, QWidget *parent) : QSplitter(orientation, parent) { }

    /// Where the divider of that index comes to stand when \a position is proposed: rounded down.
    Q_INVOKABLE double splitViewConstrainSplitPositionOfSubviewAt(QObject *splitView, double position,
                                                                  int dividerIndex) const;
    /// Moves a divider, counted from 0, to that many points from the left or top.
    Q_INVOKABLE void setPositionOfDividerAtIndex(double position, int dividerIndex);
};
