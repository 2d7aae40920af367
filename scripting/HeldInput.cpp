#include "scripting/HeldInput.h"

#include "platform/CallLater.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>
#include <algorithm>

// The doors through which the test library, too, lets input into the window system's queue. Input that comes
// back goes through them: only from there does a key become a shortcut.
QT_BEGIN_NAMESPACE
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow *window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString &text, bool isRepeated,
                                    ushort count);
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow *window, const QPointF &local, const QPointF &global,
                                      Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers, int timestamp);
QT_END_NAMESPACE

namespace runebook {

namespace {

constexpr qint64 kEscapePairMs = 1000;
constexpr std::size_t kMostHeld = 5000;

enum class Handling { Pass, Drop, Keep };

Handling handlingOf(const QObject *receiver, const QEvent &event)
{
    switch (event.type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::Close:
        // A window's own is the first to get them; below it they are on their way to who may have them.
        return receiver->isWindowType() ? Handling::Keep : Handling::Pass;
    case QEvent::InputMethod:
        return Handling::Keep;
    case QEvent::MouseButtonDblClick: // comes by itself when the presses come back
    case QEvent::NativeGesture:
    case QEvent::TouchBegin: // untaken touches become the mouse's
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        return receiver->isWindowType() ? Handling::Drop : Handling::Pass;
    default:
        return Handling::Pass;
    }
}

const QObject *windowOf(const QObject *receiver)
{
    const auto *widget = qobject_cast<const QWidget *>(receiver);
    return widget ? widget->window()->windowHandle() : receiver;
}

} // namespace

void HeldInput::processEvents()
{
    // Three kinds of the program's own work would come along, and none may go on while a script stands in the
    // middle of its own: timers (an autosave) come again when they were dropped here, later calls know how to
    // wait, and objects that are to go are kept until the end of the run. Sockets are left alone.
    const LaterCallsHold hold;
    qApp->installEventFilter(this);
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    qApp->removeEventFilter(this);
}

bool HeldInput::eventFilter(QObject *receiver, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Timer:
        return !receiver->isWindowType(); // a window's own timer is for its painting
    case QEvent::DeferredDelete:
        m_deletions << receiver;
        return true;
    case QEvent::ShortcutOverride:
        if (isAnswered(receiver, *event))
            return false;
        // Taken, so that the key is no shortcut now and comes to its window.
        event->accept();
        return true;
    default:
        break;
    }
    const Handling handling = handlingOf(receiver, *event);
    if (handling == Handling::Pass)
        return false;
    if (handling == Handling::Keep) {
        if (isStop(*event)) {
            Q_EMIT stopRequested();
            return true;
        }
        if (isAnswered(receiver, *event))
            return false;
        keep(receiver, *event);
    }
    event->ignore();
    return true;
}

bool HeldInput::isAnswered(const QObject *receiver, const QEvent &event) const
{
    const QObject *window = windowOf(receiver);
    const QWidget *dialog = QApplication::activeModalWidget();
    if (dialog && window == dialog->windowHandle())
        return true;
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        return isOnStopControl(window, static_cast<const QMouseEvent &>(event).globalPosition());
    default:
        return false;
    }
}

bool HeldInput::isOnStopControl(const QObject *window, const QPointF &globalPosition) const
{
    return std::any_of(m_stopControls.cbegin(), m_stopControls.cend(), [&](const QPointer<QWidget> &control) {
        if (!control || !control->isVisible() || control->window()->windowHandle() != window)
            return false;
        const auto *button = qobject_cast<const QAbstractButton *>(control.data());
        return control->rect().contains(control->mapFromGlobal(globalPosition.toPoint()))
            || (button && button->isDown());
    });
}

bool HeldInput::isStop(const QEvent &event)
{
    if (event.type() != QEvent::KeyPress)
        return false;
    const auto &key = static_cast<const QKeyEvent &>(event);
    if (key.key() == Qt::Key_Period && key.modifiers() == Qt::ControlModifier)
        return true;
    if (key.key() != Qt::Key_Escape || key.modifiers() != Qt::NoModifier || key.isAutoRepeat())
        return false;
    if (m_sinceEscape.isValid() && m_sinceEscape.elapsed() < kEscapePairMs) {
        m_sinceEscape.invalidate();
        // The first of the two was meant for the script as well.
        std::erase_if(m_held, [](const Held &held) {
            return (held.event->type() == QEvent::KeyPress || held.event->type() == QEvent::KeyRelease)
                && static_cast<const QKeyEvent &>(*held.event).key() == Qt::Key_Escape;
        });
        return true;
    }
    m_sinceEscape.start();
    return false;
}

void HeldInput::keep(QObject *receiver, const QEvent &event)
{
    if (event.type() == QEvent::MouseMove) {
        if (static_cast<const QMouseEvent &>(event).buttons() == Qt::NoButton)
            return;
        if (!m_held.empty() && m_held.back().event->type() == QEvent::MouseMove)
            m_held.pop_back();
    }
    const bool isRepeat =
        event.type() == QEvent::KeyPress && static_cast<const QKeyEvent &>(event).isAutoRepeat();
    if (!isRepeat && m_held.size() < kMostHeld)
        m_held.push_back({receiver, std::unique_ptr<QEvent>(event.clone())});
}

void HeldInput::giveBack()
{
    for (const QPointer<QObject> &object : std::exchange(m_deletions, {}))
        delete object.data();
    for (Held &held : std::exchange(m_held, {})) {
        if (!held.receiver)
            continue;
        auto *window = qobject_cast<QWindow *>(held.receiver.data());
        switch (held.event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease: {
            const auto &key = static_cast<const QKeyEvent &>(*held.event);
            qt_handleKeyEvent(window, key.type(), key.key(), key.modifiers(), key.text(), key.isAutoRepeat(),
                              static_cast<ushort>(key.count()));
            break;
        }
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseMove: {
            const auto &mouse = static_cast<const QMouseEvent &>(*held.event);
            qt_handleMouseEvent(window, mouse.position(), mouse.globalPosition(), mouse.buttons(),
                                mouse.button(), mouse.type(), mouse.modifiers(),
                                static_cast<int>(mouse.timestamp()));
            break;
        }
        default:
            QCoreApplication::sendEvent(held.receiver, held.event.get());
        }
    }
    m_sinceEscape.invalidate();
}

} // namespace runebook
