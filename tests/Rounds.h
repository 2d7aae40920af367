#pragma once

#include <QtGlobal>
#include <algorithm>

namespace runebook {

/// How often a test leaves something to chance: \a usual rounds, and many times as many in tools/long.
inline int rounds(int usual)
{
    return usual * std::max(1, qEnvironmentVariableIntValue("RUNEBOOK_ROUNDS"));
}

/// True in tools/long, which has time for what is large.
inline bool isLongProof()
{
    return qEnvironmentVariableIsSet("RUNEBOOK_ROUNDS");
}

} // namespace runebook
