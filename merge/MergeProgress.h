#pragma once

#include <atomic>

namespace runebook {

/// How far a merge has come, for who shows that meanwhile; and whether somebody wants it to end. Any thread.
class MergeProgress
{
public:
    int percent() const { return int(m_done.load(std::memory_order_relaxed) / (kWhole / 100)); }
    /// Another part of the whole, which is 1, is done.
    void advance(double part) { m_done.fetch_add(unsigned(part * kWhole), std::memory_order_relaxed); }
    void cancel() { m_isCancelled.store(true, std::memory_order_relaxed); }
    bool isCancelled() const { return m_isCancelled.load(std::memory_order_relaxed); }

private:
    static constexpr unsigned kWhole = 1'000'000'000;
    std::atomic<unsigned> m_done = 0;
    std::atomic<bool> m_isCancelled = false;
};

} // namespace runebook
