#pragma once

#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QToolButton;

namespace runebook {

/// Says in a window that a script runs, with a button that stops it; nothing is seen when none runs. Input
/// that has to wait for the end of the run is answered here, so that nobody thinks it was taken.
class RunIndicator : public QWidget
{
    Q_OBJECT
public:
    /// Without a button for a window that has one of its own.
    enum class Stop { WithButton, WithoutButton };

    explicit RunIndicator(Stop stop, QWidget *parent = nullptr);

    /// What stands there now.
    QString text() const;

private:
    void showRun();
    void showRefusal();
    void look();

    QLabel *m_label;
    QElapsedTimer m_sinceRefusal;
};

} // namespace runebook
