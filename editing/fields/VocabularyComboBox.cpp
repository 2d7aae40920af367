#include "editing/fields/VocabularyComboBox.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWheelEvent>
#include <limits>

namespace runebook {

VocabularyComboBox::VocabularyComboBox(QWidget *parent) : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(NoInsert);
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(8);
    lineEdit()->setMaxLength(std::numeric_limits<int>::max());
    // The box would turn a word into the like one of its list that differs in case.
    disconnect(lineEdit(), &QLineEdit::editingFinished, this, nullptr);
    completer()->setCompletionMode(QCompleter::PopupCompletion);
    completer()->setFilterMode(Qt::MatchContains);
    completer()->setCaseSensitivity(Qt::CaseInsensitive);

    connect(this, &QComboBox::editTextChanged, this, [this] {
        if (lineEdit()->isModified())
            m_isTouched = true;
    });
    const auto chosen = [this] {
        m_isTouched = true;
        commitEditing();
    };
    connect(this, &QComboBox::textActivated, this, chosen);
    // After the line edit has taken the word.
    connect(completer(), qOverload<const QString &>(&QCompleter::activated), this, chosen,
            Qt::QueuedConnection);
}

void VocabularyComboBox::setVocabulary(const QStringList &words)
{
    const QSignalBlocker quiet(this);
    clear();
    addItems(words);
    revert();
}

void VocabularyComboBox::setText(const QString &text)
{
    m_isMixed = false;
    m_text = text;
    lineEdit()->setPlaceholderText({});
    revert();
}

void VocabularyComboBox::setMultipleValues()
{
    m_isMixed = true;
    m_text.clear();
    lineEdit()->setPlaceholderText(tr("Multiple values"));
    revert();
}

void VocabularyComboBox::revert()
{
    const QSignalBlocker quiet(this);
    // The list opens at the word that stands in the field.
    setCurrentIndex(findText(m_text, Qt::MatchExactly | Qt::MatchCaseSensitive));
    setEditText(m_text);
    lineEdit()->setModified(false);
    m_isTouched = false;
}

void VocabularyComboBox::commitEditing()
{
    if (!m_isTouched)
        return;
    const QString typed = currentText();
    // Nothing typed over several values is no wish to empty them all.
    const bool isChange = m_isMixed ? !typed.isEmpty() : typed != m_text;
    if (isChange) {
        m_text = typed;
        m_isMixed = false;
    }
    revert();
    if (isChange)
        Q_EMIT textCommitted(m_text);
}

void VocabularyComboBox::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (m_isTouched && event->key() == Qt::Key_Escape) {
        revert();
        event->accept();
    } else if (m_isTouched && isReturn) {
        commitEditing();
        event->accept();
    } else {
        QComboBox::keyPressEvent(event);
    }
}

void VocabularyComboBox::wheelEvent(QWheelEvent *event)
{
    // Scrolling a pane must not edit the field that happens to pass under the pointer.
    event->ignore();
}

void VocabularyComboBox::focusOutEvent(QFocusEvent *event)
{
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        commitEditing();
    QComboBox::focusOutEvent(event);
}

} // namespace runebook
