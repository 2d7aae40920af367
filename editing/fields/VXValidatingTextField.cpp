#include "editing/fields/VXValidatingTextField.h"

#include "editing/fields/DelegateOperation.h"
#include "editing/fields/SignalColors.h"
#include "editing/fields/VXValidatingTextFieldCell.h"
#include "platform/ShownText.h"

#include <QAccessible>
#include <QCompleter>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <limits>

using namespace runebook;
using namespace Qt::StringLiterals;

VXValidatingTextField::VXValidatingTextField(QWidget *parent) : QLineEdit(parent)
{
    setMaxLength(std::numeric_limits<int>::max());
    connect(this, &QLineEdit::textEdited, this, &VXValidatingTextField::textDidChange);
    connect(this, &QLineEdit::textChanged, this, &VXValidatingTextField::makeRoom);
}

// Validation

void VXValidatingTextField::setStringValue(const QString &string)
{
    setText(string);
    callDelegateValidation();
}

void VXValidatingTextField::textDidChange()
{
    callDelegateValidation();
}

void VXValidatingTextField::callDelegateValidation()
{
    const QString current = text().isNull() ? u""_s : text();
    if (!m_oldText.isNull() && current == m_oldText)
        return;
    validateAgain();
}

void VXValidatingTextField::validateAgain()
{
    // Before the question: what the delegate does to the field must not lead back here.
    m_oldText = text().isNull() ? u""_s : text();
    m_isValid = askDelegate();
    update();
}

bool VXValidatingTextField::askDelegate()
{
    bool isValid = true;
    if (!m_secodaryDelegate)
        return isValid;
    QObject *delegate = m_secodaryDelegate;
    if (const QMetaMethod asked =
            delegateOperation(delegate, "textFieldHasValidContent(VXValidatingTextField*)");
        asked.isValid()) {
        asked.invoke(delegate, Qt::DirectConnection, Q_RETURN_ARG(bool, isValid),
                     Q_ARG(VXValidatingTextField *, this));
    } else if (const QMetaMethod general = delegateOperation(delegate, "textFieldHasValidContent(QObject*)");
               general.isValid()) {
        general.invoke(delegate, Qt::DirectConnection, Q_RETURN_ARG(bool, isValid), Q_ARG(QObject *, this));
    }
    return isValid;
}

QColor VXValidatingTextField::backgroundColor() const
{
    return m_isValid ? palette().color(QPalette::Base) : SignalColors::error(palette());
}

// Error hint and button

void VXValidatingTextField::setErrorHint(const QString &hint)
{
    if (shownText(hint, kMostInCell) == m_errorHint)
        return;
    m_errorHint = shownText(hint, kMostInCell);
    // The badge may be cut off, and not everybody sees it. No markup: the hint quotes what was typed.
    setToolTip(hint.isEmpty() ? QString() : "<span>"_L1 + m_errorHint.toHtmlEscaped() + "</span>"_L1);
    setAccessibleDescription(m_errorHint);
    QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&changed);
    makeRoom();
    update();
}

void VXValidatingTextField::setExtraButton(QAbstractButton *button)
{
    if (m_extraButton)
        m_extraButton->removeEventFilter(this);
    m_extraButton = button;
    if (button) {
        button->setParent(this); // and so takes over light or dark
        button->setCursor(Qt::ArrowCursor);
        button->installEventFilter(this);
        button->hide();
    }
    placeExtraButton();
    makeRoom();
}

bool VXValidatingTextField::isExtraButtonVisible() const
{
    return m_extraButton && !m_extraButton->isHidden();
}

bool VXValidatingTextField::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_extraButton
        && (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent)) {
        placeExtraButton();
        makeRoom();
        update();
    }
    return QLineEdit::eventFilter(watched, event);
}

QRect VXValidatingTextField::interior() const
{
    QStyleOptionFrame option;
    initStyleOption(&option);
    return style()->subElementRect(QStyle::SE_LineEditContents, &option, this).adjusted(0, 1, -1, -1);
}

int VXValidatingTextField::textWidth() const
{
    constexpr int kTextMargins = 6; // of the line edit itself, with room for the caret
    return fontMetrics().horizontalAdvance(text()) + kTextMargins;
}

void VXValidatingTextField::placeExtraButton()
{
    if (!m_extraButton)
        return;
    const QRect interior = this->interior();
    const int side = interior.height();
    m_extraButton->setGeometry(interior.right() + 1 - side, interior.top(), side, side);
}

/// Keeps the text out of what the badge and the button take.
void VXValidatingTextField::makeRoom()
{
    const VXValidatingTextFieldCell cell;
    const QRect area = rect();
    const QRect textArea = isEditing() ? cell.selectWithFrameInView(area, *this)
                                       : cell.drawInteriorWithFrameInView(nullptr, area, *this);
    const QMargins margins(0, 0, area.right() - textArea.right(), 0);
    if (margins != textMargins())
        setTextMargins(margins);
    const bool isTold =
        m_errorHint.isEmpty() || isEditing() || VXValidatingTextFieldCell::isBadgeWhole(*this);
    if (const QString hidden = isTold ? QString() : m_errorHint; hidden != m_hiddenHint) {
        m_hiddenHint = hidden;
        Q_EMIT hiddenHintChanged(hidden);
    }
}

void VXValidatingTextField::paintEvent(QPaintEvent *event)
{
    if (text() != m_oldText && !m_isValidationScheduled) {
        m_isValidationScheduled = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_isValidationScheduled = false;
                callDelegateValidation();
            },
            Qt::QueuedConnection);
    }
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    VXValidatingTextFieldCell().drawInteriorWithFrameInView(&painter, rect(), *this);
}

void VXValidatingTextField::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    placeExtraButton();
    makeRoom();
}

void VXValidatingTextField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    makeRoom();
    update();
}

void VXValidatingTextField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    makeRoom();
    update();
}

// Completion

QStringList VXValidatingTextField::textViewCompletionsForPartialWordRangeIndexOfSelectedItem(
    QObject *textView, const QStringList &completions, UnitRange partialWordRange, int *index) const
{
    if (index)
        *index = -1;
    QStringList answer;
    if (!m_secodaryDelegate)
        return answer;
    QObject *delegate = m_secodaryDelegate;
    const QMetaMethod candidates = delegateOperation(
        delegate,
        "textFieldTextViewCandidatesForSelectedRange(VXValidatingTextField*,QObject*,QStringList,"
        "runebook::UnitRange)");
    const QMetaMethod plain =
        delegateOperation(delegate,
                          "textViewCompletionsForPartialWordRangeIndexOfSelectedItem(QObject*,"
                          "QStringList,runebook::UnitRange)");
    const QMetaMethod general =
        delegateOperation(delegate,
                          "textFieldTextViewCandidatesForSelectedRange(QObject*,QObject*,QStringList,"
                          "runebook::UnitRange)");
    if (general.isValid()) {
        general.invoke(delegate, Qt::DirectConnection, Q_RETURN_ARG(QStringList, answer),
                       Q_ARG(QObject *, const_cast<VXValidatingTextField *>(this)),
                       Q_ARG(QObject *, textView), Q_ARG(QStringList, completions),
                       Q_ARG(runebook::UnitRange, partialWordRange));
    } else if (candidates.isValid()) {
        candidates.invoke(delegate, Qt::DirectConnection, Q_RETURN_ARG(QStringList, answer),
                          Q_ARG(VXValidatingTextField *, const_cast<VXValidatingTextField *>(this)),
                          Q_ARG(QObject *, textView), Q_ARG(QStringList, completions),
                          Q_ARG(runebook::UnitRange, partialWordRange));
    } else if (plain.isValid()) {
        plain.invoke(delegate, Qt::DirectConnection, Q_RETURN_ARG(QStringList, answer),
                     Q_ARG(QObject *, textView), Q_ARG(QStringList, completions),
                     Q_ARG(runebook::UnitRange, partialWordRange));
    }
    return answer;
}

void VXValidatingTextField::showCompletions()
{
    const qsizetype end = cursorPosition();
    const QString before = text().first(end);
    // A word of a list that is kept in one text.
    const qsizetype separator = before.lastIndexOf(kListSeparator);
    const qsizetype start = separator < 0 ? 0 : separator + kListSeparator.size();
    const QStringList words =
        textViewCompletionsForPartialWordRangeIndexOfSelectedItem(this, {}, {start, end - start});
    if (words.isEmpty())
        return;
    delete m_completer;
    m_completer = new QCompleter(words, this);
    m_completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    m_completer->setWidget(this);
    connect(m_completer, qOverload<const QString &>(&QCompleter::activated), this,
            [this, start, end](const QString &word) {
                setSelection(static_cast<int>(start), static_cast<int>(end - start));
                insert(word);
                textDidChange();
            });
    m_completer->complete();
}

void VXValidatingTextField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::ControlModifier && !isReadOnly())
        showCompletions();
    else
        QLineEdit::keyPressEvent(event);
}
