#include "editing/window/VXSimpleSplitView.h"

#include <cmath>

double VXSimpleSplitView::splitViewConstrainSplitPositionOfSubviewAt(QObject *, double position, int) const
{
    return std::floor(position);
}

void VXSimpleSplitView::setPositionOfDividerAtIndex(double position, int dividerIndex)
{
    if (dividerIndex < 0 || dividerIndex + 1 >= count())
        return;
    // A widget's first handle stands in front of it and is never seen.
    const double point = splitViewConstrainSplitPositionOfSubviewAt(this, position, dividerIndex);
    moveSplitter(static_cast<int>(point), dividerIndex + 1);
}
