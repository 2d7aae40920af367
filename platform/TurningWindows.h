#pragma once

#include <QPointer>
#include <QString>
#include <functional>
#include <memory>

namespace runebook {

/// Around a command that a person has given and that may have to go through very much: while one lives,
/// doApart() leaves the main thread to the windows. They are drawn, but take no input: a curtain says what is
/// being done. Without curtains, without anybody in front of the program, and inside of another one, it does
/// nothing. Main thread.
class TurningWindows
{
public:
    /// \a title says what is being done, as "Saving…".
    explicit TurningWindows(const QString &title, QObject *window = nullptr);
    ~TurningWindows();
    Q_DISABLE_COPY_MOVE(TurningWindows)

    /// Shows a curtain before \a window, which may be null, until the object is deleted.
    using CurtainMaker = std::function<std::unique_ptr<QObject>(const QString &title, QObject *window)>;
    static void setCurtainMaker(CurtainMaker maker);

    /// Whether work is being done apart: what the main thread has to do on its own can wait, and nothing that
    /// the work reads may change.
    static bool areTurning();
    /// Waits for what is being done apart, but not for long. For who would rather not end in the middle of
    /// it.
    static void waitForWork();

private:
    friend void doApart(qint64 bytes, const std::function<void()> &work);
    void turnUntilDone(const std::function<void()> &work);

    QString m_title;
    QPointer<QObject> m_window;
};

/// Does \a work, which goes through about so many bytes, and comes back when it is done: where a
/// TurningWindows lives and the bytes are many, on another thread, while windows turn; otherwise at once.
/// What \a work throws comes to the caller. From any thread.
void doApart(qint64 bytes, const std::function<void()> &work);

} // namespace runebook
