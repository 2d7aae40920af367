#pragma once

#include "editing/fields/BadgedField.h"
#include "model/StringHelpers.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QPointer>

class QCompleter;

/// A text field that asks a delegate after every change whether its content is valid, and shows a short
/// error text as a badge at its right end while it is not being edited.
///
/// The delegate is any object; these invokable operations of it are used where it has them:
///   bool textFieldHasValidContent(VXValidatingTextField *field)
///       sets or clears the field's errorHint and shows or hides its extraButton. A QObject * will do, too.
///   QStringList textFieldTextViewCandidatesForSelectedRange(VXValidatingTextField *field,
///       QObject *textView, QStringList candidates, runebook::UnitRange selectedRange)
///   QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(QObject *textView,
///       QStringList completions, runebook::UnitRange partialWordRange)
class VXValidatingTextField : public QLineEdit, public runebook::BadgedField
{
    Q_OBJECT
    Q_INTERFACES(runebook::BadgedField)
    Q_PROPERTY(QString errorHint READ errorHint WRITE setErrorHint)
    Q_PROPERTY(QString stringValue READ stringValue WRITE setStringValue)
public:
    Q_INVOKABLE explicit VXValidatingTextField(QWidget *parent = nullptr);

public: // delegate
    /// Not owned.
    Q_INVOKABLE void setDelegate(QObject *delegate) { m_secodaryDelegate = delegate; }
    Q_INVOKABLE QObject *secodaryDelegate() const { return m_secodaryDelegate; }
    /// Asks the delegate, unless the text is the one that was asked about last.
    Q_INVOKABLE void callDelegateValidation();
    /// Asks it whatever it was asked before: something else than the text has changed.
    void validateAgain();

public: // content
    Q_INVOKABLE QString stringValue() const { return text(); }
    /// Sets the text, then validates it.
    Q_INVOKABLE void setStringValue(const QString &string);
    /// The text that was validated last; null before the first time.
    Q_INVOKABLE QString oldText() const { return m_oldText; }

public: // error
    Q_INVOKABLE QString errorHint() const override { return m_errorHint; }
    Q_INVOKABLE void setErrorHint(const QString &hint);
    Q_INVOKABLE QAbstractButton *extraButton() const override { return m_extraButton; }
    /// A button for the right end of the field, of which it becomes a part; null for none. Hidden at first.
    Q_INVOKABLE void setExtraButton(QAbstractButton *button);
    Q_INVOKABLE bool isExtraButtonVisible() const override;
    /// The fill of the badge; the field does not paint it.
    Q_INVOKABLE QColor backgroundColor() const override;
    /// Whether the user is in the field; the badge is not shown then.
    Q_INVOKABLE bool isEditing() const override { return hasFocus() && !isReadOnly(); }
    QRect interior() const override;
    int textWidth() const override;

public: // completion
    /// The completions that the delegate has for a part of the text; none without such an operation.
    Q_INVOKABLE QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(
        QObject *textView, const QStringList &completions, runebook::UnitRange partialWordRange,
        int *index = nullptr) const;

public Q_SLOTS:
    /// The text has changed: validates.
    void textDidChange();

Q_SIGNALS:
    /// The error hint has no room in the field, or is to be seen there again (empty).
    void hiddenHintChanged(const QString &hint);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool askDelegate();
    void makeRoom();
    void placeExtraButton();
    void showCompletions();

    QPointer<QObject> m_secodaryDelegate;
    QPointer<QAbstractButton> m_extraButton;
    QCompleter *m_completer = nullptr; ///< of the last time that completions were shown
    QString m_oldText;
    QString m_errorHint;
    QString m_hiddenHint;
    bool m_isValid = true;
    bool m_isValidationScheduled = false;
};
