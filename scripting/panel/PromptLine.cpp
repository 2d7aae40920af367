#include "scripting/panel/PromptLine.h"

#include "codeeditor/CompletionRules.h"
#include "codeeditor/CompletionSession.h"
#include "codeeditor/PythonScanner.h"
#include "scripting/panel/LiveCompletion.h"
#include "scripting/python/PromptRun.h"

#include <QKeyEvent>
#include <algorithm>
#include <limits>

namespace runebook {

namespace {

/// What all names begin with.
QString commonStart(const CompletionList &names)
{
    QString start = names.value(0).text;
    for (const Completion &name : names) {
        while (!name.text.startsWith(start))
            start.chop(1);
    }
    return start;
}

} // namespace

PromptLine::PromptLine(QWidget *parent) : QLineEdit(parent), m_completions(new CompletionSession(this))
{
    setMaxLength(std::numeric_limits<int>::max());
    setPlaceholderText(tr("Python expression"));
    setTextMargins(10, 2, 10, 2); // in line with the text of the console above
    setAccessibleName(tr("Python prompt"));
    setToolTip(tr("Return evaluates, Up and Down go through what was entered, Tab completes"));
    connect(m_completions, &CompletionSession::accepted, this, &PromptLine::replaceName);
    m_completions->setDescribe([this](Completion &one) {
        const CompletionContext context = contextAtCaret();
        describeLiveName(context.path, one.text.sliced(context.front.size()), one);
    });
    const auto endUnlessTyping = [this] {
        if (!m_isTyping)
            m_completions->end();
    };
    connect(this, &QLineEdit::cursorPositionChanged, this, endUnlessTyping);
    connect(this, &QLineEdit::textChanged, this, endUnlessTyping);
}

void PromptLine::submit()
{
    const QString code = text();
    m_completions->end();
    if (code.trimmed().isEmpty())
        return;
    m_history.add(code);
    clear();
    Q_EMIT aboutToRun(code);
    runPromptCode(code);
    Q_EMIT hasRun();
}

void PromptLine::recallLast()
{
    if (text().isEmpty())
        setText(m_history.earlier({}));
    setFocus(Qt::OtherFocusReason);
}

bool PromptLine::event(QEvent *event)
{
    // The window's shortcuts and the way to the next control would take these first.
    const bool isOverride = event->type() == QEvent::ShortcutOverride;
    if (!isOverride && event->type() != QEvent::KeyPress)
        return QLineEdit::event(event);
    const auto &key = static_cast<const QKeyEvent &>(*event);
    if (isOverride && key.key() == Qt::Key_Escape && m_completions->isOpen()) {
        event->accept();
        return true;
    }
    const bool isTab = !isOverride && key.key() == Qt::Key_Tab && key.modifiers() == Qt::NoModifier;
    if (isTab && (m_completions->isOpen() || !nameBeforeCaret().isEmpty())) {
        if (!m_completions->handleKey(key))
            complete();
        return true;
    }
    return QLineEdit::event(event);
}

void PromptLine::keyPressEvent(QKeyEvent *event)
{
    if (m_completions->handleKey(*event) || handleHistoryKey(*event))
        return;
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::ControlModifier) {
        complete();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        submit();
        return;
    }
    m_isTyping = true;
    QLineEdit::keyPressEvent(event);
    m_isTyping = false;
    static const QList<int> modifiers {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_Meta};
    const bool erases = event->key() == Qt::Key_Backspace && m_completions->isOpen();
    const bool types = !event->text().isEmpty() && event->text().back().isPrint();
    if (types || erases)
        offerByItself();
    else if (!modifiers.contains(event->key()))
        m_completions->end();
}

bool PromptLine::handleHistoryKey(const QKeyEvent &event)
{
    if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return false;
    if (event.key() != Qt::Key_Up && event.key() != Qt::Key_Down)
        return false;
    const QString line = event.key() == Qt::Key_Up ? m_history.earlier(text()) : m_history.later(text());
    if (!line.isNull())
        setText(line);
    return true;
}

// Completion

QString PromptLine::nameBeforeCaret() const
{
    const QString before = text().left(cursorPosition());
    qsizetype start = before.size();
    while (start > 0) {
        const QChar character = before[start - 1];
        if (!character.isLetterOrNumber() && character != u'_' && character != u'.')
            break;
        --start;
    }
    const QString name = before.mid(start);
    return !name.isEmpty() && name.front().isDigit() ? QString() : name;
}

void PromptLine::replaceName(const QString &name)
{
    const int length = static_cast<int>(nameBeforeCaret().size());
    setSelection(cursorPosition() - length, length);
    insert(name);
}

CompletionContext PromptLine::contextAtCaret() const
{
    const int end = cursorPosition();
    return completionContext(text(), end - static_cast<int>(nameBeforeCaret().size()), end);
}

void PromptLine::complete()
{
    const CompletionContext context = contextAtCaret();
    if (context.afterDot && context.path.isEmpty())
        return;
    const KnownNames known = liveNames(context.path, context.start);
    if (known.names.isEmpty())
        return;
    if (const QString start = commonStart(known.names); start.size() > context.start.size())
        replaceName(context.front + start);
    if (known.names.size() > 1)
        offer(known, true);
}

/// As in a tab: from the second letter of a name on, or behind the dot of an object that is known.
void PromptLine::offerByItself()
{
    const CompletionContext context = contextAtCaret();
    const bool isBegun = context.afterDot ? !context.path.isEmpty()
                                          : context.start.size() >= CompletionSession::kLettersToBegin;
    const bool isCode = !hasSelectedText() && !python::isInStringOrComment(text(), cursorPosition());
    KnownNames known = isBegun && isCode ? liveNames(context.path, context.start) : KnownNames();
    // A name typed to its end wants no help.
    const auto isTyped = [&context](const Completion &one) { return one.text == context.start; };
    if (std::any_of(known.names.cbegin(), known.names.cend(), isTyped))
        known.names.clear();
    offer(known, false);
}

void PromptLine::offer(const KnownNames &known, bool onRequest)
{
    const QString partial = nameBeforeCaret();
    const QString front = contextAtCaret().front;
    CompletionList offered = known.names;
    for (Completion &one : offered)
        one.text.prepend(front);
    const QRect caret = cursorRect();
    m_completions->offer(offered, partial, QRect(mapToGlobal(caret.topLeft()), caret.size()),
                         onRequest ? CompletionSession::Origin::OnRequest
                                   : CompletionSession::Origin::ByItself);
}

} // namespace runebook
