#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QMainWindow;

namespace runebook {

class MessageBar;
class RunSteps;
class RunSummary;

/// After a script that ended by an error or was stopped half-way: asks in a bar whether what it changed is
/// kept or taken back, or does what the user prefers always. The bar stands where the run was started: in the
/// macro panel, else in the frontmost window of a document that changed. It goes with the next edit, as a
/// plain undo would take back something else from then on; until it is answered everything is kept. Main
/// thread only.
class RunQuestion : public QObject
{
    Q_OBJECT
public:
    /// What the setting "VXAfterFailedRun" says, by number.
    enum Answer { Ask, Keep, TakeBack };

    /// \a summary counts what the same runs change.
    RunQuestion(const RunSummary &summary, QObject *parent);

    /// Bars of runs that were started in it stand in \a panel. Not owned, may go.
    void setPanel(QMainWindow *panel) { m_panel = panel; }
    /// A run begins; and it is over, with its undo steps not closed yet.
    void begin();
    void end();

Q_SIGNALS:
    /// Something was taken back; \a text says what, for a status bar.
    void tookBack(const QString &text);

private:
    void decide(const QString &question);
    void takeBack();
    MessageBar *barInPlace();
    QMainWindow *placeForBar() const;

    const RunSummary &m_summary;
    RunSteps *m_steps; // owned as a child
    QPointer<QMainWindow> m_panel;
    QPointer<MessageBar> m_bar; // owned by its window
    bool m_isOfPanel = false;
};

} // namespace runebook
