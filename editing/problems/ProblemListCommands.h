#pragma once

#include "editing/problems/ProblemListText.h"

#include <QObject>

class QWidget;

namespace runebook {

/// Copies and saves lists of problems. Very long ones show their progress, and Esc stops them.
class ProblemListCommands : public QObject
{
    Q_OBJECT
public:
    ProblemListCommands(const Problems &problems, QWidget &window);
    /// As a table with tabs, which is text as well.
    void copy(const std::vector<Problem> &list);
    /// Asks for a file; its suffix tells the form.
    void askWhereToSave(const std::vector<Problem> &list);
    /// False, and the reason shown, when it cannot be written or was stopped.
    bool save(const QString &path, std::span<const Problem> list);

private:
    QString textWithProgress(std::span<const Problem> list, ProblemListForm form, const QString &title);

    const Problems &m_problems;
    QWidget &m_window;
};

} // namespace runebook
