#include "editing/fields/VXUnicodeFormatter.h"

#include "editing/fields/ErrorBubble.h"
#include "model/FieldValue.h"

#include <QDebug>
#include <QLineEdit>
#include <algorithm>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMostDigits = 5;

} // namespace

QString VXUnicodeFormatter::stringForObjectValue(const QVariant &value) const
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString().toUpper();
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return value.toStringList().join(kListSeparator).toUpper();
    default:
        break;
    }
    if (value.canConvert<QString>())
        return value.toString();
    QString description;
    QDebug(&description).nospace() << value;
    return description;
}

bool VXUnicodeFormatter::getObjectValueForStringErrorDescription(QVariant *value, const QString &string,
                                                                 QString *) const
{
    if (value)
        *value = string;
    return true;
}

bool VXUnicodeFormatter::
    isPartialStringValidProposedSelectedRangeOriginalStringOriginalSelectedRangeErrorDescription(
        const QString &partialString, UnitRange *, const QString &, UnitRange,
        QString *errorDescription) const
{
    QString reason;
    if (!std::all_of(partialString.begin(), partialString.end(), isHexDigit))
        reason = tr("Only Numbers from 0–9 and letters from A-F are allowed");
    else if (partialString.size() > kMostDigits)
        reason = tr("Only maximal five digits are allowd");
    if (errorDescription && !reason.isNull())
        *errorDescription = reason;
    return reason.isNull();
}

QValidator::State VXUnicodeFormatter::validate(QString &input, int &) const
{
    const bool isValid =
        isPartialStringValidProposedSelectedRangeOriginalStringOriginalSelectedRangeErrorDescription(
            input, nullptr, {}, {}, &m_reason);
    if (isValid)
        return Acceptable;
    m_refused = input;
    return Invalid;
}

void VXUnicodeFormatter::attachTo(QLineEdit *field)
{
    field->setValidator(this);
    connect(field, &QLineEdit::inputRejected, this, [this, field] {
        controlDidFailToValidatePartialStringErrorDescription(field, m_refused, m_reason);
    });
}

void VXUnicodeFormatter::controlDidFailToValidatePartialStringErrorDescription(
    QWidget *control, const QString &, const QString &errorDescription)
{
    ErrorBubble::show(control, {u"Runebook"_s, 1, errorDescription, {}, {}});
}
