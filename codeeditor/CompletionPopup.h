#pragma once

#include <QListWidget>

namespace runebook {

/// The list of completions beside the caret. It never takes the focus: the editor hands it the keys it sees.
class CompletionPopup : public QListWidget
{
    Q_OBJECT
public:
    explicit CompletionPopup(QWidget *editor);

    /// Shows \a words, the one at \a selected chosen, below \a caret (in screen coordinates), or above it
    /// when there is no room. Hides when there are none.
    void popUp(const QStringList &words, int selected, const QRect &caret);
    /// Takes a key that means something to the list: arrows and pages choose, Tab, Return and Enter accept,
    /// Escape dismisses. False for all others, and when the list is not shown.
    bool handleKey(const QKeyEvent &event);

Q_SIGNALS:
    void accepted(const QString &word);

private:
    void choose(int row);
    void takeLooksOf(const QWidget &editor);
    void place(const QRect &caret);
};

} // namespace runebook
