#pragma once

#include <QCoreApplication>
#include <QThread>

namespace runebook {

/// False also once the application object is gone: threads of scripts may outlive it.
inline bool isOnMainThread()
{
    const QCoreApplication *application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

} // namespace runebook
