#pragma once

#include <algorithm>
#include <chrono>

namespace runebook {

/// How long windows have not turned, added up in short steps: time in which the whole process stood still
/// (the machine slept, a debugger or the shell stopped it) hardly counts, since nobody looked meanwhile.
class Standstill
{
public:
    using Duration = std::chrono::milliseconds;

    /// One look, \a sinceLast after the one before.
    void look(Duration sinceLast, bool hasTurned)
    {
        constexpr Duration kLongestStep {100};
        m_length = hasTurned ? Duration::zero() : m_length + std::min(sinceLast, kLongestStep);
    }
    Duration length() const { return m_length; }

private:
    Duration m_length {};
};

/// Is told of windows that stand still during a run. Called on a thread of its own, never on the main one.
class StandstillWatcher
{
public:
    virtual ~StandstillWatcher() = default;
    /// Windows have not turned for \a length; called again and again until they do.
    virtual void windowsStand(Standstill::Duration length) = 0;
    /// They turn again, or the run is over; called once after windowsStand().
    virtual void windowsTurn() = 0;
};

} // namespace runebook
