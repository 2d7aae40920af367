#include "platform/predicates/PredicateFormat.h"

#include "platform/predicates/PredicateLexer.h"
#include "platform/predicates/PredicateText.h"

#include <QLocale>
#include <cmath>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

QString codePoint(quint32 value)
{
    return u"%1"_s.arg(value, 4, 16, QLatin1Char('0')).toUpper();
}

} // namespace

std::optional<QString> PredicateFormat::text(Error *error) const
{
    const auto wrong = [error](const QString &reason) {
        fail(error,
             {PredicateText::errorDomain(),
              PredicateText::WrongArguments,
              tr("The filter is not understood."),
              reason,
              {}});
        return std::nullopt;
    };
    QString text;
    qsizetype used = 0;
    for (qsizetype at = 0; at < m_format.size();) {
        const QChar c = m_format[at];
        const QStringView place = QStringView(m_format).mid(at, 2);
        if (c == u'"' || c == u'\'') {
            const qsizetype end = endOfQuotedText(at);
            text += QStringView(m_format).mid(at, end - at);
            at = end;
            continue;
        }
        if (place != "%@"_L1 && place != "%K"_L1) {
            text += c;
            ++at;
            continue;
        }
        if (used == m_arguments.size())
            return wrong(tr("There are fewer arguments than places for them."));
        const QVariant &argument = m_arguments[used++];
        const bool isKeyPlace = place == "%K"_L1;
        if (isKeyPlace && !isKey(argument.toString()))
            return wrong(tr("“%1” cannot be the name of a field.").arg(argument.toString()));
        const std::optional<QString> inserted = isKeyPlace ? argument.toString() : literal(argument);
        if (!inserted)
            return wrong(tr("Argument %1 is neither text nor number nor a list of these.").arg(used));
        text += *inserted;
        at += place.size();
    }
    if (used < m_arguments.size())
        return wrong(tr("There are more arguments than places for them."));
    return text;
}

/// The place behind the quoted text that begins at \a start, or the end.
qsizetype PredicateFormat::endOfQuotedText(qsizetype start) const
{
    qsizetype at = start + 1;
    while (at < m_format.size() && m_format[at] != m_format[start])
        at += m_format[at] == u'\\' ? 2 : 1;
    return qMin(at + 1, m_format.size());
}

QString PredicateFormat::decimal(double number)
{
    constexpr double kExactlyWhole = 1LL << 53;
    if (number == std::trunc(number) && std::abs(number) < kExactlyWhole)
        return QString::number(qint64(number));
    return QString::number(number, 'f', QLocale::FloatingPointShortest);
}

QString PredicateFormat::quoted(QStringView text)
{
    QString literal = u"\""_s;
    literal.reserve(text.size() + 2);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const bool pair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (pair) {
            literal += text.mid(i++, 2);
        } else if (c == u'"' || c == u'\\') {
            literal += u'\\';
            literal += c;
        } else if (c == u'\n') {
            literal += "\\n"_L1;
        } else if (c == u'\r') {
            literal += "\\r"_L1;
        } else if (c == u'\t') {
            literal += "\\t"_L1;
        } else if (c.isSurrogate() || c.category() == QChar::Other_Control) {
            literal += "\\u"_L1 + codePoint(c.unicode());
        } else {
            literal += c;
        }
    }
    return literal + u'"';
}

std::optional<QString> PredicateFormat::literal(const QVariant &argument)
{
    if (argument.typeId() == qMetaTypeId<HexRange>()) {
        const HexRange range = argument.value<HexRange>();
        return u"HEXRANGE(%1, %2)"_s.arg(codePoint(range.first), codePoint(range.last));
    }
    if (argument.typeId() != QMetaType::QStringList && argument.typeId() != QMetaType::QVariantList)
        return simpleLiteral(argument);
    QStringList elements;
    for (const QVariant &element : argument.toList()) {
        const std::optional<QString> text = simpleLiteral(element);
        if (!text)
            return std::nullopt;
        elements += *text;
    }
    return u'{' + elements.join(", "_L1) + u'}';
}

std::optional<QString> PredicateFormat::simpleLiteral(const QVariant &argument)
{
    switch (argument.typeId()) {
    case QMetaType::QString:
        return quoted(argument.toString());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return argument.toString();
    case QMetaType::Double:
        // Infinity and the like have no spelling.
        return std::isfinite(argument.toDouble()) ? std::optional(decimal(argument.toDouble()))
                                                  : std::nullopt;
    default:
        return std::nullopt;
    }
}

bool PredicateFormat::isKey(QStringView text)
{
    const PredicateToken token = PredicateLexer(text).next();
    return token.kind == PredicateToken::Kind::Key && token.spelling.size() == text.size();
}

} // namespace runebook
