#pragma once

#include <QWheelEvent>

namespace runebook {

/// The steps that a wheel is turned by: fine turns add up to whole ones.
class WheelSteps
{
public:
    /// With those of \a wheel, as many as are whole now; positive away from the user.
    int take(const QWheelEvent &wheel)
    {
        m_delta += wheel.angleDelta().y();
        const int steps = m_delta / QWheelEvent::DefaultDeltasPerStep;
        m_delta -= steps * QWheelEvent::DefaultDeltasPerStep;
        return steps;
    }

private:
    int m_delta = 0; ///< not yet a step
};

} // namespace runebook
