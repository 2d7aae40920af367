#pragma once

#include <cstddef>
#include <functional>

namespace runebook {

/// Is told now and then how much of a long work is done, from 0 to 1; answers false when it is to stop.
using WorkProgress = std::function<bool(double)>;

/// Counts the steps of a long work and tells of them from time to time.
class CountedWork
{
public:
    /// Without \a progress nobody is told and nothing stops it. Refers to it.
    CountedWork(const WorkProgress &progress, std::size_t steps) : m_progress(progress), m_steps(steps) { }

    /// Before each step; false when the work is to stop, from then on.
    bool goOn()
    {
        constexpr std::size_t kTold = 256;
        if (m_progress && !m_isStopped && m_done++ % kTold == 0)
            m_isStopped = !m_progress(static_cast<double>(m_done) / static_cast<double>(m_steps + 1));
        return !m_isStopped;
    }
    bool isStopped() const { return m_isStopped; }

private:
    const WorkProgress &m_progress;
    std::size_t m_steps;
    std::size_t m_done = 0;
    bool m_isStopped = false;
};

} // namespace runebook
