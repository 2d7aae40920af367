#include "scripting/panel/FindBar.h"

#include "codeeditor/JSTTextView.h"
#include "platform/PlainLabel.h"

#include <QApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTextBlock>
#include <QToolButton>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kLongestCounted = 5'000'000; // characters, at every key
constexpr qsizetype kMostCounted = 10'000;

/// As clear as with the keyboard, which the bar has.
void letSelectionStandOut(QWidget &view)
{
    QPalette colors;
    for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText})
        colors.setBrush(QPalette::Inactive, role, QApplication::palette().brush(QPalette::Active, role));
    view.setPalette(colors);
}

} // namespace

FindBar::FindBar(QWidget *parent)
    : QWidget(parent),
      m_text(new QLineEdit),
      m_replacement(new QLineEdit),
      m_caseButton(new QToolButton),
      m_note(plainLabel({}))
{
    auto *rows = new QGridLayout(this);
    rows->setContentsMargins(8, 4, 8, 4);
    rows->setSpacing(4);
    rows->setColumnStretch(0, 1);
    rows->addWidget(m_text, 0, 0);
    rows->addWidget(makeFindRow(), 0, 1);
    rows->addWidget(m_replacement, 1, 0);
    rows->addWidget(m_replaceRow = makeReplaceRow(), 1, 1);
    hide();
}

/// What stands behind the field.
QWidget *FindBar::makeFindRow()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    m_text->setPlaceholderText(tr("Find"));
    m_text->setAccessibleName(tr("Find"));
    m_text->setMaxLength(std::numeric_limits<int>::max());
    m_text->setClearButtonEnabled(true);
    m_text->installEventFilter(this);
    connect(m_text, &QLineEdit::textEdited, this, [this] { find(false, Start::AtSelection); });
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
    return row;
}

QWidget *FindBar::makeReplaceRow()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    m_replacement->setPlaceholderText(tr("Replace With"));
    m_replacement->setAccessibleName(tr("Replace with"));
    m_replacement->setMaxLength(std::numeric_limits<int>::max());
    m_replacement->installEventFilter(this);
    const auto add = [&](const QString &text, auto command) {
        auto *button = new QToolButton;
        button->setText(text);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QToolButton::clicked, this, command);
        layout->addWidget(button);
    };
    add(tr("Replace"), &FindBar::replace);
    add(tr("Replace All"), &FindBar::replaceAll);
    layout->addStretch(1);
    return row;
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
    if (m_view && m_view != view)
        m_view->setPalette({});
    m_view = view;
    switch (tag) {
    case Show:
        m_replacement->setVisible(view && !view->isReadOnly());
        m_replaceRow->setVisible(view && !view->isReadOnly());
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

bool FindBar::find(bool backward, Start start)
{
    m_note->clear();
    if (!m_view || m_text->text().isEmpty())
        return false;
    QTextDocument::FindFlags flags;
    flags.setFlag(QTextDocument::FindBackward, backward);
    flags.setFlag(QTextDocument::FindCaseSensitively, m_caseButton->isChecked());
    const QTextDocument &document = *m_view->document();
    QTextCursor from = m_view->textCursor();
    if (start == Start::AtSelection)
        from.setPosition(from.selectionStart());
    QTextCursor found = document.find(m_text->text(), from, flags);
    const bool hasWrapped = found.isNull();
    if (hasWrapped) {
        from.movePosition(backward ? QTextCursor::End : QTextCursor::Start);
        found = document.find(m_text->text(), from, flags);
    }
    if (found.isNull()) {
        m_note->setText(tr("Not found"));
        return false;
    }
    m_view->setTextCursor(found);
    m_view->ensureCursorVisible();
    letSelectionStandOut(*m_view);
    tellCount(hasWrapped);
    // While the text is being typed the plates would pile up.
    if (auto *editor = qobject_cast<JSTTextView *>(m_view); editor && start == Start::BehindSelection)
        editor->showFindIndicatorForRange(editor->selectedRange());
    return true;
}

/// Says which of how many the selection is.
void FindBar::tellCount(bool hasWrapped)
{
    const QString text = m_view->document()->toRawText();
    QString note = hasWrapped ? tr("Wrapped") : QString();
    if (text.size() <= kLongestCounted) {
        const auto sensitivity = m_caseButton->isChecked() ? Qt::CaseSensitive : Qt::CaseInsensitive;
        const QString wanted = m_text->text();
        const qsizetype selected = m_view->textCursor().selectionStart();
        qsizetype count = 0;
        qsizetype place = 0;
        for (qsizetype at = text.indexOf(wanted, 0, sensitivity); at >= 0 && count <= kMostCounted;
             at = text.indexOf(wanted, at + wanted.size(), sensitivity)) {
            ++count;
            if (at <= selected)
                place = count;
        }
        const QString counted = count > kMostCounted ? tr("more than %L1").arg(kMostCounted)
                                                     : tr("%L1 of %L2").arg(place).arg(count);
        note += (note.isEmpty() ? QString() : u", "_s) + counted;
    }
    m_note->setText(note);
}

// Replacing

/// Case as the bar has it.
bool FindBar::isFound(const QTextCursor &cursor) const
{
    const auto sensitivity = m_caseButton->isChecked() ? Qt::CaseSensitive : Qt::CaseInsensitive;
    return cursor.hasSelection() && cursor.selectedText().compare(m_text->text(), sensitivity) == 0;
}

bool FindBar::replace()
{
    if (!m_view || m_view->isReadOnly())
        return false;
    const bool isThere = isFound(m_view->textCursor());
    if (isThere) {
        if (auto *editor = qobject_cast<JSTTextView *>(m_view))
            editor->insertText(m_replacement->text());
        else
            m_view->insertPlainText(m_replacement->text());
    }
    find(false, Start::BehindSelection);
    return isThere;
}

int FindBar::replaceAll()
{
    if (!m_view || m_view->isReadOnly() || m_text->text().isEmpty())
        return 0;
    QTextDocument::FindFlags flags;
    flags.setFlag(QTextDocument::FindCaseSensitively, m_caseButton->isChecked());
    QTextDocument &document = *m_view->document();
    QTextCursor group(&document);
    group.beginEditBlock();
    int count = 0;
    for (QTextCursor found = document.find(m_text->text(), 0, flags); !found.isNull();
         found = document.find(m_text->text(), found, flags)) {
        found.insertText(m_replacement->text());
        ++count;
    }
    group.endEditBlock();
    m_note->setText(count == 0 ? tr("Not found") : tr("%Ln replaced", nullptr, count));
    return count;
}

void FindBar::hideBar()
{
    hide();
    if (!m_view)
        return;
    m_view->setFocus(Qt::OtherFocusReason);
    m_view->setPalette({});
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
        else if (watched == m_replacement)
            replace();
        else
            find(press->modifiers().testFlag(Qt::ShiftModifier), Start::BehindSelection);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace runebook
