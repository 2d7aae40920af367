#include "platform/TurningWindows.h"

#include "platform/Background.h"
#include "platform/Unattended.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <chrono>
#include <future>

namespace runebook {

namespace {

constexpr qint64 kMuch = 32 << 20; // what takes a tenth of a second and more

TurningWindows *current = nullptr; // of the main thread, as what follows
std::shared_future<void> workApart; ///< valid while it is waited for

bool isMainThread()
{
    return QCoreApplication::instance() && QThread::currentThread() == QCoreApplication::instance()->thread();
}

TurningWindows::CurtainMaker &curtainMaker()
{
    static TurningWindows::CurtainMaker maker;
    return maker;
}

} // namespace

TurningWindows::TurningWindows(const QString &title, QObject *window) : m_title(title), m_window(window)
{
    if (!current && !isUnattended() && curtainMaker())
        current = this;
}

TurningWindows::~TurningWindows()
{
    if (current == this)
        current = nullptr;
}

void TurningWindows::setCurtainMaker(CurtainMaker maker)
{
    curtainMaker() = std::move(maker);
}

bool TurningWindows::areTurning()
{
    return workApart.valid();
}

void TurningWindows::waitForWork()
{
    constexpr std::chrono::seconds kLongest {2};
    if (workApart.valid())
        workApart.wait_for(kLongest);
}

void TurningWindows::turnUntilDone(const std::function<void()> &work)
{
    const std::unique_ptr<QObject> curtain = curtainMaker()(m_title, m_window);
    QEventLoop loop;
    const auto promise = std::make_shared<std::promise<void>>();
    workApart = promise->get_future().share();
    runApart([&work, promise, loop = QPointer<QEventLoop>(&loop)] {
        std::exception_ptr thrown;
        try {
            work();
        } catch (...) {
            thrown = std::current_exception();
        }
        runOnMainThread([loop] {
            if (loop)
                loop->quit();
        });
        if (thrown)
            promise->set_exception(thrown);
        else
            promise->set_value();
    });
    loop.exec();
    // Of a program that is ending the loop comes back at once.
    std::exchange(workApart, {}).get();
}

void doApart(qint64 bytes, const std::function<void()> &work)
{
    if (bytes < kMuch || !isMainThread() || !current || TurningWindows::areTurning())
        work();
    else
        current->turnUntilDone(work);
}

} // namespace runebook
