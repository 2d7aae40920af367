#pragma once

namespace runebook {

/// Stands in the middle of an operation of the program that a script called, for one scope on the main
/// thread. Python code that runs meanwhile (an observer, a delegate) finds the program half way: nothing may
/// be painted before the operation is over.
class OperationScope
{
public:
    OperationScope() { ++s_depth; }
    ~OperationScope() { --s_depth; }
    OperationScope(const OperationScope &) = delete;
    OperationScope &operator=(const OperationScope &) = delete;

    static bool isInside() { return s_depth > 0; }

    /// A script that runs inside of an operation whose purpose that is: for one scope the operation does not
    /// count.
    class Pause
    {
    public:
        Pause() : m_counts(s_depth > 0) { s_depth -= m_counts ? 1 : 0; }
        ~Pause() { s_depth += m_counts ? 1 : 0; }
        Pause(const Pause &) = delete;
        Pause &operator=(const Pause &) = delete;

    private:
        bool m_counts;
    };

private:
    static inline int s_depth = 0;
};

} // namespace runebook
