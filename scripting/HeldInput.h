#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <vector>

namespace runebook {

/// Turns the event loop while a script runs on its thread, and keeps what must wait: keys, the mouse,
/// requests to close a window. Windows are painted; input to stop controls and to dialogs that the script
/// shows itself is answered.
class HeldInput : public QObject
{
    Q_OBJECT
public:
    explicit HeldInput(QObject *parent = nullptr) : QObject(parent) { }

    void addStopControl(QWidget *widget) { m_stopControls << widget; }
    /// One turn.
    void processEvents();
    /// Deletes what was to go meanwhile, and delivers what was kept, in its order. From the event loop.
    void giveBack();

Q_SIGNALS:
    /// Ctrl+. was pressed, or Escape twice within a second.
    void stopRequested();

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    struct Held {
        QPointer<QObject> receiver;
        std::unique_ptr<QEvent> event;
    };

    bool isAnswered(const QObject *receiver, const QEvent &event) const;
    bool isOnStopControl(const QObject *window, const QPointF &globalPosition) const;
    bool isStop(const QEvent &event);
    void keep(QObject *receiver, const QEvent &event);

    std::vector<Held> m_held;
    QList<QPointer<QObject>> m_deletions;
    QList<QPointer<QWidget>> m_stopControls;
    QElapsedTimer m_sinceEscape;
};

} // namespace runebook
