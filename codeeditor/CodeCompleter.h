#pragma once

#include "codeeditor/Completion.h"
#include "codeeditor/CompletionSession.h"
#include "codeeditor/EditableCode.h"

#include <QObject>
#include <functional>

class QPlainTextEdit;

namespace runebook {

/// The completions of the code view: for which part of the text they are offered, when they come up, and what
/// becomes of the one that was taken.
class CodeCompleter : public QObject
{
    Q_OBJECT
public:
    /// For \a view, which is \a code and owns this.
    CodeCompleter(QPlainTextEdit *view, EditableCode &code);

    /// What there is to offer for the partial word in a range, and what is known about one of these.
    struct Source {
        std::function<CompletionList(TextRange range)> offered;
        std::function<void(TextRange range, Completion &one)> describe;
    };
    void setSource(Source source) { m_source = std::move(source); }

    /// The name before the caret, with the dotted names in front of it; empty at the caret when there is
    /// none.
    TextRange partialWord() const;
    /// Offers completions for it.
    void complete() { show(Completing::OnRequest); }
    enum class Typing { Adds, Erases };
    /// After something was \a typed: a name brings the list up, or narrows it; anything else ends it.
    void noteTyped(const QString &typed, Typing typing);

    bool isOpen() const { return m_session.isOpen(); }
    void end() { m_session.end(); }
    /// Takes a key that means something to the list.
    bool handleKey(const QKeyEvent &event) { return m_session.handleKey(event); }

private:
    enum class Completing { OnRequest, ByItself };
    void show(Completing completing);
    bool isUnwanted(TextRange range, const QString &partial) const;
    void accept(const QString &word);

    QPlainTextEdit *m_view;
    EditableCode &m_code;
    CompletionSession &m_session; ///< owned by the view
    Source m_source;
    TextRange m_range; ///< of what is completed
    QString m_partial; ///< what stood there
};

} // namespace runebook
