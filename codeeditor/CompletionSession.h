#pragma once

#include "codeeditor/Completion.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <functional>

class QKeyEvent;
class QWidget;

namespace runebook {

class CompletionPopup;

/// From the moment a list of completions comes up beside the caret of an editor until it goes: what it
/// offers, what of it was chosen, and what ends it. A list that came up by itself leaves Return to the text
/// until an arrow key has chosen a row; Tab takes the row that stands out. It ends when the editor loses the
/// keyboard, is hidden, or its window moves; the editor ends it when caret, text or place changes in another
/// way than by typing on.
class CompletionSession : public QObject
{
    Q_OBJECT
public:
    enum class Origin { ByItself, OnRequest };
    Q_ENUM(Origin)
    /// So many characters of a name make a list come up by itself.
    static constexpr int kLettersToBegin = 2;

    /// For \a editor, which owns it.
    explicit CompletionSession(QWidget *editor);
    ~CompletionSession() override;

public:
    /// Offers \a offered for \a partial below \a caret (in screen coordinates): opens, or goes on, or ends
    /// when there is nothing to offer. Asking again chooses.
    void offer(const CompletionList &offered, const QString &partial, const QRect &caret, Origin origin,
               int current = 0);
    void end();
    /// Takes a key that means something to the list: arrows and pages choose, Tab accepts, Return and Enter
    /// accept what was chosen, Escape dismisses. False for all others, and when there is no list.
    bool handleKey(const QKeyEvent &event);

    bool isOpen() const { return m_popup != nullptr; }
    /// True when Return takes the current row.
    bool isChosen() const { return m_isChosen; }
    const CompletionList &offered() const { return m_offered; }
    /// The one that stands out; without a text when there is no list.
    Completion current() const;

    /// Asked once for each row that comes to stand out, to fill in what is not known about it.
    using Describe = std::function<void(Completion &)>;
    void setDescribe(const Describe &describe) { m_describe = describe; }

Q_SIGNALS:
    void accepted(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void open();
    void choose(int row);
    void acceptCurrent();
    void describe(int row);

    QWidget *m_editor;
    QPointer<QWidget> m_window; // watched while there is a list
    CompletionPopup *m_popup = nullptr; // owned by the editor
    CompletionList m_offered;
    QString m_partial;
    Describe m_describe;
    bool m_isChosen = false;
};

} // namespace runebook
