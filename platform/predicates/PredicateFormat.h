#pragma once

#include "platform/Error.h"

#include <QCoreApplication>
#include <QString>
#include <QStringView>
#include <QVariantList>
#include <optional>

namespace runebook {

/// Puts arguments into a predicate text. Behind Predicate::withFormat().
class PredicateFormat
{
    Q_DECLARE_TR_FUNCTIONS(PredicateFormat)
public:
    /// Both must outlive it.
    PredicateFormat(const QString &format, const QVariantList &arguments)
        : m_format(format), m_arguments(arguments)
    {
    }

    /// The text with literals in the places of the arguments; or nothing, and \a error filled when given.
    std::optional<QString> text(Error *error) const;

    /// See Predicate::quoted().
    static QString quoted(QStringView text);
    /// What stands for \a argument in a text; nothing when a predicate has no literal for its type.
    static std::optional<QString> literal(const QVariant &argument);
    /// A finite number as the language and people write it, without an exponent.
    static QString decimal(double number);
    /// True when \a text can stand as the key of a test.
    static bool isKey(QStringView text);

private:
    static std::optional<QString> simpleLiteral(const QVariant &argument);
    qsizetype endOfQuotedText(qsizetype start) const;

    const QString &m_format;
    const QVariantList &m_arguments;
};

} // namespace runebook
