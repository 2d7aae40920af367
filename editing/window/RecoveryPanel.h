#pragma once

#include "platform/documents/Recovery.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace runebook {

/// Lists what a program that ended unexpectedly has left, and lets the user restore, compare or discard it,
/// or leave it for another time. Never in the way of other windows; one for the program.
class RecoveryPanel : public QDialog
{
    Q_OBJECT
public:
    /// For the start of a program with windows: shows the panel when there is something to recover, and again
    /// whenever a file is opened beside which an interrupted save has left its text. The panel, or null.
    static RecoveryPanel *offer();

    explicit RecoveryPanel(QWidget *parent = nullptr);
    Recovery &recovery() { return m_recovery; }
    /// Shows the panel when something is listed.
    void showIfNeeded();

public: // commands on the chosen rows
    void restore();
    /// Restores without asking what \a process has autosaved, which the user has ended for that.
    void restoreFrom(qint64 process);
    void compare();
    /// Asks first.
    void discard();

private:
    void build();
    void showContents();
    void showActions();
    QList<RecoverableContent> chosen() const;
    void restoreNow(const QList<RecoverableContent> &contents);
    void discardNow(const QList<RecoverableContent> &contents);
    void showErrors(const QStringList &errors);

    Recovery m_recovery;
    QTreeWidget *m_list = nullptr;
    QLabel *m_message = nullptr;
    QPushButton *m_restore = nullptr;
    QPushButton *m_compare = nullptr;
    QPushButton *m_discard = nullptr;
};

} // namespace runebook
