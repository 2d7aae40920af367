#pragma once

#include <QPlainTextEdit>
#include <QPointer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QToolButton;

namespace runebook {

/// A bar to look for a text in one of several text views, and to replace it where the view can be edited.
/// Hidden until it is asked for.
class FindBar : public QWidget
{
    Q_OBJECT
public:
    /// What the bar is told to do, with the tags that text-finder commands have.
    enum Command { Show = 1, Next = 2, Previous = 3, UseSelection = 7, Hide = 11 };
    Q_ENUM(Command)

    explicit FindBar(QWidget *parent = nullptr);

    /// Carries out the command with the number \a tag in \a view; other numbers do nothing.
    Q_INVOKABLE void performTextFinderAction(int tag, QPlainTextEdit *view);
    Q_INVOKABLE QString searchString() const;
    Q_INVOKABLE void setSearchString(const QString &text);
    /// Replaces the selection when it is what is looked for, and goes on to the next; false without a change.
    Q_INVOKABLE bool replace();
    /// Replaces in the whole text, as one undoable step; answers how often.
    Q_INVOKABLE int replaceAll();
    /// The view that was searched last; none when it is gone.
    QPlainTextEdit *searchedView() const { return m_view; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Start { BehindSelection, AtSelection };

    QToolButton *addButton(const QString &text, Command command);
    QWidget *makeFindRow();
    QWidget *makeReplaceRow();
    bool find(bool backward, Start start);
    bool isFound(const QTextCursor &cursor) const;
    void tellCount(bool hasWrapped);
    void hideBar();

    QLineEdit *m_text;
    QLineEdit *m_replacement;
    QWidget *m_replaceRow = nullptr;
    QToolButton *m_caseButton;
    QLabel *m_note;
    QPointer<QPlainTextEdit> m_view;
};

} // namespace runebook
