#include "platform/CallLater.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <deque>
#include <utility>

namespace runebook {

namespace {

int holds = 0;

/// Queued calls of the framework's own cannot be kept back once the event loop turns; these can.
class LaterCalls : public QObject
{
public:
    void add(QObject *context, std::function<void()> work)
    {
        m_calls.push_back({context, std::move(work)});
        announce();
    }

    void announce()
    {
        if (!m_calls.empty() && !std::exchange(m_isAnnounced, true))
            QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

protected:
    void customEvent(QEvent *) override
    {
        m_isAnnounced = false;
        if (holds > 0)
            return;
        // What is added meanwhile waits for the next turn.
        for (const Call &call : std::exchange(m_calls, {})) {
            if (call.context)
                call.work();
        }
    }

private:
    struct Call {
        QPointer<QObject> context;
        std::function<void()> work;
    };
    std::deque<Call> m_calls;
    bool m_isAnnounced = false;
};

LaterCalls &laterCalls()
{
    // Never destroyed: documents may go later than any static object.
    static LaterCalls &calls = *new LaterCalls;
    return calls;
}

} // namespace

void callLater(QObject *context, std::function<void()> work)
{
    laterCalls().add(context, std::move(work));
}

LaterCallsHold::LaterCallsHold()
{
    ++holds;
}

LaterCallsHold::~LaterCallsHold()
{
    if (--holds == 0)
        laterCalls().announce();
}

} // namespace runebook
