#pragma once

#include "platform/Error.h"
#include "platform/predicates/PredicateNodes.h"
#include "platform/predicates/PredicateText.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVariantList>
#include <memory>
#include <optional>
#include <variant>

namespace runebook {

/// What a predicate sees under a key: nothing, a text, several texts, or a number.
using PredicateValue = std::variant<std::monostate, QString, QStringList, double>;

/// A test of records, made from a text and kept with it. Copies are cheap; all of it is thread-safe.
///
/// The language, keywords in either case:
///
///     name contains "alt"                 the text occurs in the value; a list contains what one of its
///                                         elements equals
///     name BEGINSWITH "a", ENDSWITH, ==, !=, =, <>
///     name contains[cd] "alt"             [c] overlooks case, [d] diacritics, after any relation of texts
///     name MATCHES "a.*"                  a regular expression matches the whole value
///     script IN {"latin", "greek"}        the value equals one of them
///     unicode IN HEXRANGE(0041, 005A)     the value is the canonical text of a code point in the range
///     index >= 10, <, <=, >, ==, !=       a number; a value that is text counts as what it spells
///     a && b, a || b, !a, AND, OR, NOT    ! binds closest, then &&, then ||; parentheses
///     TRUEPREDICATE, FALSEPREDICATE
///
/// Texts stand between " or ', with \" \' \\ \n \r \t and \uXXXX (a UTF-16 unit). A number in place of a text
/// is taken as it is spelled; a number under a key is compared with texts in its decimal form. Other tests of
/// a list ask for one element that passes, "!=" that none equals. Nothing, an empty text and an empty list
/// pass no test, "!=" included; only NOT turns that round.
class Predicate : public PredicateText
{
public: // making
    /// Always true.
    Predicate();
    [[nodiscard]] static std::optional<Predicate> parse(const QString &text, Error *error = nullptr);
    /// Parses \a format with each %@ outside quotation marks replaced by the next of \a arguments as a
    /// literal, so that no argument can break out: a text, a number, a list of these, or a HexRange (after
    /// IN). %K takes a key. Too few, too many or other arguments are errors.
    [[nodiscard]] static std::optional<Predicate>
    withFormat(const QString &format, const QVariantList &arguments, Error *error = nullptr);
    /// True where all of \a parts are.
    static Predicate all(const QList<Predicate> &parts);
    /// \a text as a literal of the language, in double quotation marks. Control characters and lone
    /// surrogates are spelled out, so the literal survives being saved as UTF-8.
    static QString quoted(QStringView text);

public: // asking
    /// The text that was parsed.
    QString predicateFormat() const { return m_format; }
    /// The parsed tree; valid as long as a copy of this predicate is.
    const PredicateNode &root() const { return *m_root; }
    /// The error of \a test having given up on \a value, for those who walk the tree.
    static Error gaveUpError(const PatternTest &test, QStringView value);

private:
    Predicate(QString format, PredicateNode root);

    QString m_format;
    std::shared_ptr<const PredicateNode> m_root;
};

} // namespace runebook
