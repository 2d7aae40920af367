#include "scripting/panel/FindBar.h"

#include "codeeditor/JSTTextView.h"
#include "platform/PlainText.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTextBlock>
#include <QToolButton>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

FindBar::FindBar(QWidget *parent)
    : QWidget(parent), m_text(new QLineEdit), m_caseButton(new QToolButton), m_note(plainLabel({}))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 4, 8, 4);
    layout->setSpacing(4);
    m_text->setPlaceholderText(tr("Find"));
    m_text->setAccessibleName(tr("Find"));
    m_text->setMaxLength(std::numeric_limits<int>::max());
    m_text->setClearButtonEnabled(true);
    m_text->installEventFilter(this);
    connect(m_text, &QLineEdit::textEdited, this, [this] { find(false, Start::AtSelection); });
    layout->addWidget(m_text, 1);
    m_note->setMinimumWidth(m_note->fontMetrics().horizontalAdvance(tr("Not found")));
    layout->addWidget(m_note);
    m_caseButton->setText(u"Aa"_s);
    m_caseButton->setCheckable(true);
    m_caseButton->setAutoRaise(true);
    m_caseButton->setToolTip(tr("Match upper and lower case"));
    m_caseButton->setAccessibleName(m_caseButton->toolTip());
    connect(m_caseButton, &QToolButton::toggled, this, [this] { find(false, Start::AtSelection); });
    layout->addWidget(m_caseButton);
    layout->addWidget(addButton(tr("Previous"), Previous));
    layout->addWidget(addButton(tr("Next"), Next));
    layout->addWidget(addButton(tr("Done"), Hide));
    hide();
}

QToolButton *FindBar::addButton(const QString &text, Command command)
{
    auto *button = new QToolButton;
    button->setText(text);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &QToolButton::clicked, this,
            [this, command] { performTextFinderAction(command, m_view); });
    return button;
}

QString FindBar::searchString() const
{
    return m_text->text();
}

void FindBar::setSearchString(const QString &text)
{
    m_text->setText(text);
    m_note->clear();
}

void FindBar::performTextFinderAction(int tag, QPlainTextEdit *view)
{
    m_view = view;
    switch (tag) {
    case Show:
        show();
        m_text->selectAll();
        m_text->setFocus(Qt::ShortcutFocusReason);
        break;
    case Next:
    case Previous:
        find(tag == Previous, Start::BehindSelection);
        break;
    case UseSelection:
        // A search is for one line: of several that are selected the first one counts.
        if (view && view->textCursor().hasSelection())
            setSearchString(view->textCursor().selectedText().section(QChar::ParagraphSeparator, 0, 0));
        break;
    case Hide:
        hideBar();
        break;
    default:
        break;
    }
}

void FindBar::find(bool backward, Start start)
{
    m_note->clear();
    if (!m_view || m_text->text().isEmpty())
        return;
    QTextDocument::FindFlags flags;
    flags.setFlag(QTextDocument::FindBackward, backward);
    flags.setFlag(QTextDocument::FindCaseSensitively, m_caseButton->isChecked());
    const QTextDocument &document = *m_view->document();
    QTextCursor from = m_view->textCursor();
    if (start == Start::AtSelection)
        from.setPosition(from.selectionStart());
    QTextCursor found = document.find(m_text->text(), from, flags);
    if (found.isNull()) {
        from.movePosition(backward ? QTextCursor::End : QTextCursor::Start);
        found = document.find(m_text->text(), from, flags);
        m_note->setText(found.isNull() ? tr("Not found") : tr("Wrapped"));
    }
    if (found.isNull())
        return;
    m_view->setTextCursor(found);
    m_view->ensureCursorVisible();
    // While the text is being typed the plates would pile up.
    if (auto *editor = qobject_cast<JSTTextView *>(m_view); editor && start == Start::BehindSelection)
        editor->showFindIndicatorForRange(editor->selectedRange());
}

void FindBar::hideBar()
{
    hide();
    if (m_view)
        m_view->setFocus(Qt::OtherFocusReason);
}

bool FindBar::eventFilter(QObject *watched, QEvent *event)
{
    const auto isKeyOfBar = [event] {
        const int key = static_cast<QKeyEvent *>(event)->key();
        return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape;
    };
    if (event->type() == QEvent::ShortcutOverride && isKeyOfBar()) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::KeyPress && isKeyOfBar()) {
        const auto *press = static_cast<QKeyEvent *>(event);
        if (press->key() == Qt::Key_Escape)
            hideBar();
        else
            find(press->modifiers().testFlag(Qt::ShiftModifier), Start::BehindSelection);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace runebook
