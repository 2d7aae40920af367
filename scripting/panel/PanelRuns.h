#pragma once

#include <QObject>

class VXMacroWindow;

namespace runebook {

class RunQuestion;

/// What the macro panel has to do with runs, those of the Scripts menu among them, which need no window: sums
/// up what they changed, asks after one that failed, and shows in the window that something runs.
class PanelRuns : public QObject
{
    Q_OBJECT
public:
    explicit PanelRuns(QObject *parent);

    /// Shows runs in \a window from now on.
    void showIn(VXMacroWindow &window);
    /// A run without an interpreter does nothing; somebody has to say so.
    static void tellOfMissingPython(VXMacroWindow &window);

Q_SIGNALS:
    /// A run is over, or was taken back; \a line says what that has changed.
    void summedUp(const QString &line);

private:
    RunQuestion *m_question; ///< owned as a child
};

} // namespace runebook
