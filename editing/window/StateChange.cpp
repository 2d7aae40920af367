#include "editing/window/StateChange.h"

#include "platform/CallLater.h"

#include <utility>

namespace runebook {

void StateChange::note()
{
    m_isNoted = true;
    if (std::exchange(m_isTellingQueued, true))
        return;
    callLater(this, [this] {
        m_isTellingQueued = false;
        tell();
    });
}

void StateChange::tell()
{
    if (std::exchange(m_isNoted, false))
        Q_EMIT changed();
}

} // namespace runebook
