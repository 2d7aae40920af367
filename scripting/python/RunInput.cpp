#include "scripting/python/RunInput.h"

#include "platform/CallLater.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QApplication>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextEdit>
#include <QWindow>
#include <algorithm>

namespace runebook {

namespace {

constexpr qint64 kEscapePairMs = 1000;

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::Close:
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
        return true;
    default:
        return false;
    }
}

/// Whether somebody meant to do something by it, and should see that it was not done.
bool isMeant(const QEvent &event)
{
    switch (event.type()) {
    case QEvent::KeyPress: {
        const auto &key = static_cast<const QKeyEvent &>(event);
        const bool isModifier = key.key() >= Qt::Key_Shift && key.key() <= Qt::Key_ScrollLock;
        return !isModifier && !key.isAutoRepeat();
    }
    case QEvent::InputMethod:
        return !static_cast<const QInputMethodEvent &>(event).commitString().isEmpty();
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
    case QEvent::TabletPress:
    case QEvent::Close:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

const QObject *windowOf(const QObject *receiver)
{
    const auto *widget = qobject_cast<const QWidget *>(receiver);
    return widget ? widget->window()->windowHandle() : receiver;
}

QWidget *widgetAt(const QObject *window, const QPointF &position)
{
    const QWidgetList topLevels = QApplication::topLevelWidgets();
    const auto found = std::find_if(topLevels.begin(), topLevels.end(), [window](const QWidget *widget) {
        return widget->windowHandle() == window;
    });
    return found == topLevels.end() ? nullptr : (*found)->childAt(position.toPoint());
}

template <typename T> T *parentOf(QWidget *widget)
{
    return widget ? qobject_cast<T *>(widget->parentWidget()) : nullptr;
}

/// A part whose content the wheel moves and does not change.
bool scrolls(QWidget *widget)
{
    for (; widget && !widget->isWindow(); widget = widget->parentWidget()) {
        if (qobject_cast<QScrollBar *>(widget) || qobject_cast<QAbstractScrollArea *>(widget))
            return true;
        // A closed list and a number take the wheel for a change of their value.
        if (widget->inherits("QComboBox") || widget->inherits("QAbstractSpinBox")
            || qobject_cast<QAbstractSlider *>(widget))
            return false;
    }
    return false;
}

/// Whether \a position in a text lies in its selection, from where a press would begin to drag it away.
template <typename TextEdit> bool isInSelection(const TextEdit &edit, const QPoint &position)
{
    const QTextCursor selected = edit.textCursor();
    const int at = edit.cursorForPosition(position).position();
    return selected.hasSelection() && at >= selected.selectionStart() && at <= selected.selectionEnd();
}

/// Whether a press of the left button on \a widget selects or scrolls and does nothing else.
bool selects(QWidget *widget, const QPointF &globalPosition)
{
    if (qobject_cast<QScrollBar *>(widget))
        return true;
    const QPoint position = widget ? widget->mapFromGlobal(globalPosition).toPoint() : QPoint();
    if (const auto *edit = parentOf<QPlainTextEdit>(widget))
        return edit->viewport() == widget && !isInSelection(*edit, position);
    if (const auto *edit = parentOf<QTextEdit>(widget))
        return edit->viewport() == widget && !isInSelection(*edit, position);
    const auto *view = parentOf<QAbstractItemView>(widget);
    return view && view->viewport() == widget && !qobject_cast<const QHeaderView *>(view);
}

/// Whether \a key moves, selects or copies in the part that has the keyboard.
bool isReadingKey(const QKeyEvent &key)
{
    const QWidget *focus = QApplication::focusWidget();
    const bool isText = qobject_cast<const QPlainTextEdit *>(focus) || qobject_cast<const QTextEdit *>(focus)
        || qobject_cast<const QLineEdit *>(focus);
    if (!isText && !qobject_cast<const QAbstractItemView *>(focus))
        return false;
    if (key.matches(QKeySequence::Copy) || key.matches(QKeySequence::SelectAll))
        return true;
    switch (key.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        return !(key.modifiers() & (Qt::AltModifier | Qt::MetaModifier));
    default:
        return false;
    }
}

} // namespace

void RunInput::processEvents()
{
    // Three kinds of the program's own work would come along, and none may go on while a script stands in the
    // middle of its own: timers (an autosave) come again when they were dropped here, later calls know how to
    // wait, and objects that are to go are kept until the end of the run. Sockets are left alone.
    const LaterCallsHold hold;
    qApp->installEventFilter(this);
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    qApp->removeEventFilter(this);
}

void RunInput::drain()
{
    const LaterCallsHold hold;
    qApp->installEventFilter(this);
    QGuiApplication::sync();
    qApp->removeEventFilter(this);
    m_pressed.clear();
    m_sinceEscape.invalidate();
}

void RunInput::deleteWaiting()
{
    for (const QPointer<QObject> &object : std::exchange(m_deletions, {}))
        delete object.data();
}

bool RunInput::eventFilter(QObject *receiver, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Timer:
        return !receiver->isWindowType(); // a window's own timer is for its painting
    case QEvent::SockAct:
        return true; // comes again
    case QEvent::DeferredDelete:
        m_deletions << receiver;
        return true;
    case QEvent::ShortcutOverride:
        if (isAllowed(receiver, *event))
            return false;
        // Taken, so that the key is no shortcut now and comes to its window.
        event->accept();
        return true;
    case QEvent::InputMethod:
        break;
    default:
        // A window's own is the first to get input; below it, it is on its way to who may have it.
        if (!isInput(event->type()) || !receiver->isWindowType())
            return false;
    }
    if (!filterInput(receiver, *event))
        return false;
    event->ignore();
    return true;
}

/// True when the event must not go further.
bool RunInput::filterInput(QObject *receiver, const QEvent &event)
{
    if (isStop(event)) {
        Q_EMIT stopRequested();
        return true;
    }
    if (isAllowed(receiver, event))
        return false;
    // The first Escape of two is no refused key: it may become a stop.
    const bool mayBecomeStop =
        event.type() == QEvent::KeyPress && static_cast<const QKeyEvent &>(event).key() == Qt::Key_Escape;
    if (isMeant(event) && !mayBecomeStop)
        Q_EMIT refused();
    return true;
}

bool RunInput::isAllowed(const QObject *receiver, const QEvent &event)
{
    const QObject *window = windowOf(receiver);
    const QWidget *dialog = QApplication::activeModalWidget();
    if (dialog && window == dialog->windowHandle())
        return true;
    switch (event.type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
        return isReadingKey(static_cast<const QKeyEvent &>(event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return isMouseAllowed(window, event);
    case QEvent::Wheel: {
        const auto &wheel = static_cast<const QWheelEvent &>(event);
        return !wheel.modifiers().testFlag(Qt::ControlModifier)
            && scrolls(widgetAt(window, wheel.position()));
    }
    default:
        return false;
    }
}

bool RunInput::isMouseAllowed(const QObject *window, const QEvent &event)
{
    const auto &mouse = static_cast<const QMouseEvent &>(event);
    if (isOnStopControl(window, mouse.globalPosition()))
        return true;
    QWidget *widget = widgetAt(window, mouse.position());
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        m_pressed =
            mouse.button() == Qt::LeftButton && selects(widget, mouse.globalPosition()) ? widget : nullptr;
        return m_pressed;
    case QEvent::MouseButtonDblClick: // of an item it would begin to edit
        return m_pressed && !parentOf<QAbstractItemView>(m_pressed);
    case QEvent::MouseMove: // of an item it would begin to drag
        return m_pressed && !parentOf<QAbstractItemView>(m_pressed);
    default:
        return std::exchange(m_pressed, nullptr);
    }
}

bool RunInput::isOnStopControl(const QObject *window, const QPointF &globalPosition) const
{
    return std::any_of(m_stopControls.cbegin(), m_stopControls.cend(), [&](const QPointer<QWidget> &control) {
        if (!control || !control->isVisible() || control->window()->windowHandle() != window)
            return false;
        const auto *button = qobject_cast<const QAbstractButton *>(control.data());
        return control->rect().contains(control->mapFromGlobal(globalPosition.toPoint()))
            || (button && button->isDown());
    });
}

bool RunInput::isStop(const QEvent &event)
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
        return true;
    }
    m_sinceEscape.start();
    return false;
}

} // namespace runebook
