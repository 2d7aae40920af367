#pragma once

#include "model/StringHelpers.h"

#include <QValidator>

class QLineEdit;
Q_MOC_INCLUDE(<QLineEdit>)

/// Keeps a code point field to hexadecimal digits, at most five of them. As a validator of a line edit it
/// refuses keystrokes; attached with attachTo() it also says why. Without state but for the last refusal.
class VXUnicodeFormatter : public QValidator
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit VXUnicodeFormatter(QObject *parent = nullptr) : QValidator(parent) { }
    /// Checks what is typed into \a field and shows there why it was refused. The formatter must live as long
    /// as the field.
    Q_INVOKABLE void attachTo(QLineEdit *field);

public: // formatting
    /// A text in upper case, a list of texts joined with ", " and in upper case; any other value as it
    /// describes itself.
    Q_INVOKABLE QString stringForObjectValue(const QVariant &value) const;
    /// The value of a typed text: the text. Never fails.
    Q_INVOKABLE bool getObjectValueForStringErrorDescription(QVariant *value, const QString &string,
                                                             QString *errorDescription = nullptr) const;

public: // checking
    /// Whether \a partialString may stand in the field while it is typed; the message says why not. The
    /// ranges and the old text do not matter.
    Q_INVOKABLE bool
    isPartialStringValidProposedSelectedRangeOriginalStringOriginalSelectedRangeErrorDescription(
        const QString &partialString, runebook::UnitRange *proposedSelectedRange,
        const QString &originalString, runebook::UnitRange originalSelectedRange,
        QString *errorDescription = nullptr) const;
    State validate(QString &input, int &position) const override;
    /// Shows a refusal at \a control: domain "Runebook", code 1.
    Q_INVOKABLE void controlDidFailToValidatePartialStringErrorDescription(QWidget *control,
                                                                           const QString &string,
                                                                           const QString &errorDescription);

private:
    mutable QString m_refused; ///< the last text that was refused, and why
    mutable QString m_reason;
};
