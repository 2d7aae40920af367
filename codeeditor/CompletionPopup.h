#pragma once

#include "codeeditor/Completion.h"

#include <QFrame>

class QLabel;
class QListWidget;

namespace runebook {

/// The list of completions beside the caret, with what is known about the one that stands out. It never takes
/// the focus. Made anew each time: a window of this kind that was hidden with its editor once is mapped again
/// but never painted.
class CompletionPopup : public QFrame
{
    Q_OBJECT
public:
    explicit CompletionPopup(QWidget *editor);

    /// Shows \a offered, the one at \a current standing out, below \a caret (in screen coordinates), or above
    /// it when there is no room.
    void popUp(const CompletionList &offered, int current, const QRect &caret);
    int current() const;
    /// Makes the row stand out; rows beyond the ends are those at the ends.
    void setCurrent(int row);
    /// A chosen row is the one that Return takes; what only stands out looks fainter.
    void setChosen(bool isChosen);
    /// What is told beside the list about the current row; nothing when both are empty.
    void setDescription(const QString &signature, const QString &help);

    static constexpr int kVisibleRows = 10;

Q_SIGNALS:
    /// A row became the current one.
    void currentChanged(int row);
    void clicked(int row);

private:
    void takeLooksOf(const QWidget &editor);
    void place();

    QListWidget *m_list;
    QLabel *m_description;
    QRect m_caret;
};

} // namespace runebook
