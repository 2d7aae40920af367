#pragma once

#include "scripting/python/Standstill.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <functional>
#include <mutex>
#include <optional>
#include <sys/types.h>

namespace runebook {

/// What a program hands on that is ended and started again: its windows, and whose unsaved changes to bring
/// back.
struct ReopenedSession {
    qint64 process = 0;
    QVariantList windows; ///< as Session::capture() gives them

    QByteArray toBytes() const;
    static std::optional<ReopenedSession> fromBytes(const QByteArray &bytes);
    /// Reads the file at \a path, a plain file of this user's, and removes it.
    static std::optional<ReopenedSession> take(const QString &path);
};

/// Gives the user a way out of a script that holds the whole program: a window of a process of its own that
/// offers to wait, or to end the program and start it again with the same windows. It comes when windows have
/// stood still for five seconds and goes when they turn; not while a debugger is attached.
class RunWatch : public QObject, private StandstillWatcher
{
    Q_OBJECT
public:
    /// \a capture tells which windows are open; asked at the start of each run.
    explicit RunWatch(std::function<QVariantList()> capture, QObject *parent = nullptr);
    ~RunWatch() override;

private:
    void windowsStand(Standstill::Duration length) override;
    void windowsTurn() override;
    void noteRun();
    void startWindow();
    void endWindow();
    bool isWindowOpen();

    std::function<QVariantList()> m_capture;
    const QByteArray m_program;

    std::mutex m_mutex; ///< for what both threads use
    QByteArray m_session;
    QByteArray m_name;
    QByteArray m_since;

    // The watching thread's.
    pid_t m_window = 0;
    QByteArray m_sessionFile;
    Standstill::Duration m_nextOffer;
};

} // namespace runebook
