#pragma once

#include <QDialog>

namespace runebook {

/// Lies before all windows while work is done apart (TurningWindows): they are drawn behind it, and take no
/// input. It says what is being done, and stays, whatever is pressed.
class Curtain : public QDialog
{
    Q_OBJECT
public:
    explicit Curtain(const QString &title, QWidget *parent = nullptr);
    void reject() override { }

    /// Has windows turn behind curtains; without this they wait for the work.
    static void hang();
};

} // namespace runebook
