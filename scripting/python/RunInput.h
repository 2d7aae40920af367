#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace runebook {

/// Turns the event loop while a script runs on its thread, and decides what the user may do meanwhile: stop
/// it, answer dialogs that it shows, scroll, select and copy. All other input is refused and gone: a key that
/// was pressed during a run must not act on whatever is there after it.
class RunInput : public QObject
{
    Q_OBJECT
public:
    explicit RunInput(QObject *parent = nullptr) : QObject(parent) { }

    void addStopControl(QWidget *widget) { m_stopControls << widget; }
    /// One turn.
    void processEvents();
    /// Takes what the window system has queued up to now, too; before the end of a run.
    void drain();
    /// Deletes what was to go during the run. From the event loop.
    void deleteWaiting();

Q_SIGNALS:
    /// Ctrl+. was pressed, or Escape twice within a second.
    void stopRequested();
    /// Something was pressed, dropped or closed that has to wait for the end of the run.
    void refused();

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    bool filterInput(QObject *receiver, const QEvent &event);
    bool isAllowed(const QObject *receiver, const QEvent &event);
    bool isMouseAllowed(const QObject *receiver, const QEvent &event);
    bool isOnStopControl(const QObject *window, const QPointF &globalPosition) const;
    bool isStop(const QEvent &event);

    QList<QPointer<QObject>> m_deletions;
    QList<QPointer<QWidget>> m_stopControls;
    QPointer<QWidget> m_pressed; ///< where the mouse was pressed and may be moved and released
    QElapsedTimer m_sinceEscape;
};

} // namespace runebook
