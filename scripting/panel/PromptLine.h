#pragma once

#include "scripting/panel/PromptHistory.h"

#include <QLineEdit>

namespace runebook {

class CompletionSession;
struct CompletionContext;
struct KnownNames;

/// One line of Python below the console: Return evaluates it in "__main__" and shows the value as an
/// interactive session does. Up and Down walk through what was entered before. Names of live objects are
/// offered as in a tab; Tab without a list completes at once what is certain.
class PromptLine : public QLineEdit
{
    Q_OBJECT
public:
    explicit PromptLine(QWidget *parent = nullptr);

public Q_SLOTS:
    /// Runs what is in the line, keeps it in the history and empties the line.
    void submit();
    /// Puts the line that ran last into the empty line again and takes the keyboard.
    void recallLast();
    /// Offers names for the one before the caret; takes it when there is only one.
    void complete();

Q_SIGNALS:
    /// Before \a code runs.
    void aboutToRun(const QString &code);
    void hasRun();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool handleHistoryKey(const QKeyEvent &event);
    QString nameBeforeCaret() const;
    void replaceName(const QString &name);
    CompletionContext contextAtCaret() const;
    void offerByItself();
    void offer(const KnownNames &known, bool onRequest);

    PromptHistory m_history;
    CompletionSession *m_completions; // owned as a child
    bool m_isTyping = false;
};

} // namespace runebook
