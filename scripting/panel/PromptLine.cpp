#include "scripting/panel/PromptLine.h"

#include "codeeditor/CompletionPopup.h"
#include "scripting/LiveCompletion.h"
#include "scripting/PromptRun.h"

#include <QKeyEvent>
#include <limits>

namespace runebook {

namespace {

/// What all words begin with.
QString commonStart(const QStringList &words)
{
    QString start = words.value(0);
    for (const QString &word : words) {
        while (!word.startsWith(start))
            start.chop(1);
    }
    return start;
}

} // namespace

PromptLine::PromptLine(QWidget *parent) : QLineEdit(parent), m_popup(new CompletionPopup(this))
{
    setMaxLength(std::numeric_limits<int>::max());
    setPlaceholderText(tr("Python expression"));
    setTextMargins(10, 2, 10, 2); // in line with the text of the console above
    setAccessibleName(tr("Python prompt"));
    setToolTip(tr("Return evaluates, Up and Down go through what was entered, Tab completes"));
    connect(m_popup, &CompletionPopup::accepted, this, &PromptLine::replaceName);
}

void PromptLine::submit()
{
    const QString code = text();
    m_popup->hide();
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
    if (isOverride && key.key() == Qt::Key_Escape && m_popup->isVisible()) {
        event->accept();
        return true;
    }
    const bool isTab = !isOverride && key.key() == Qt::Key_Tab && key.modifiers() == Qt::NoModifier;
    if (isTab && (m_popup->isVisible() || !nameBeforeCaret().isEmpty())) {
        if (!m_popup->handleKey(key))
            complete();
        return true;
    }
    return QLineEdit::event(event);
}

void PromptLine::keyPressEvent(QKeyEvent *event)
{
    if (m_popup->handleKey(*event) || handleHistoryKey(*event))
        return;
    const bool wasOffering = m_popup->isVisible();
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        submit();
        return;
    }
    QLineEdit::keyPressEvent(event);
    if (wasOffering)
        narrowCompletions();
}

void PromptLine::focusOutEvent(QFocusEvent *event)
{
    m_popup->hide();
    QLineEdit::focusOutEvent(event);
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

void PromptLine::complete()
{
    const QString partial = nameBeforeCaret();
    const QStringList words = liveCompletions(partial);
    if (words.isEmpty())
        return;
    if (const QString start = commonStart(words); start.size() > partial.size())
        replaceName(start);
    if (words.size() > 1) {
        const QRect caret = cursorRect();
        m_popup->popUp(words, 0, QRect(mapToGlobal(caret.topLeft()), caret.size()));
    }
}

void PromptLine::narrowCompletions()
{
    const QString partial = nameBeforeCaret();
    const QStringList words = partial.isEmpty() ? QStringList() : liveCompletions(partial);
    const QRect caret = cursorRect();
    m_popup->popUp(words, 0, QRect(mapToGlobal(caret.topLeft()), caret.size()));
}

} // namespace runebook
