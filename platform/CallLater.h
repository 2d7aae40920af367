#pragma once

#include <QObject>
#include <functional>

namespace runebook {

/// Calls \a work from the event loop unless \a context has gone by then, in the order of the calls. For what
/// a queued call or a timer of 0 would do, too, if it may touch documents: while a script runs the event loop
/// turns only to keep windows alive, and work of this kind waits for the script's end. Main thread only.
void callLater(QObject *context, std::function<void()> work);

/// No later call is made while one of these lives.
class LaterCallsHold
{
public:
    LaterCallsHold();
    ~LaterCallsHold();
    Q_DISABLE_COPY_MOVE(LaterCallsHold)
};

} // namespace runebook
