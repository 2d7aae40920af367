#pragma once

#include "platform/TextFolding.h"

#include <QRegularExpression>
#include <QString>
#include <optional>

namespace runebook {

/// What a test says about a value. A test gives up when it would take too long to tell.
enum class Verdict : quint8 { No, Yes, GaveUp };

/// A regular expression that has to match a value as a whole. Copies are cheap; matching is thread-safe.
class PredicatePattern
{
public:
    /// The steps a match may take before it gives up: 2 ms or so, far beyond what an honest expression needs.
    static constexpr int kMaxSteps = 1'000'000;

    /// Nothing when \a pattern is no valid expression; then \a reason, when given, tells why, for a person.
    /// Under Fold::Diacritics the marks of \a pattern are overlooked, too.
    static std::optional<PredicatePattern> compile(const QString &pattern, Folding folding,
                                                   QString *reason = nullptr);

    /// Lone surrogates in \a value count as the replacement character, U+FFFD.
    Verdict match(const QString &value) const;

    /// The expression as it was given.
    const QString &pattern() const { return m_pattern; }
    Folding folding() const { return m_folding; }

private:
    PredicatePattern() = default;

    QString m_pattern;
    Folding m_folding;
    QRegularExpression m_whole;
};

} // namespace runebook
