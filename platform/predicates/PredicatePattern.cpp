#include "platform/predicates/PredicatePattern.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

/// \a pattern between anchors and under limits. Invalid only when \a pattern cannot stand in a group.
QRegularExpression wholeExpression(const QString &pattern, QRegularExpression::PatternOptions options)
{
    // The heap limit is in KiB and counts where the just-in-time compiler does not help.
    const QString start = u"(*LIMIT_MATCH=%1)(*LIMIT_HEAP=32768)\\A(?:"_s.arg(PredicatePattern::kMaxSteps);
    // A comment or a literal passage that the expression leaves open would swallow the plain end.
    for (const QLatin1StringView end : {")\\z"_L1, "\n)\\z"_L1, "\\E)\\z"_L1}) {
        QRegularExpression whole(start + pattern + end, options);
        if (whole.isValid())
            return whole;
    }
    return QRegularExpression(start + pattern + ")\\z"_L1, options);
}

} // namespace

std::optional<PredicatePattern> PredicatePattern::compile(const QString &pattern, Folding folding,
                                                          QString *reason)
{
    QRegularExpression::PatternOptions options = QRegularExpression::UseUnicodePropertiesOption;
    if (folding.testFlag(Fold::Case))
        options |= QRegularExpression::CaseInsensitiveOption;
    const QString folded = foldForSearch(pattern, folding & Fold::Diacritics);

    const auto refuse = [reason](const QString &why) {
        if (reason)
            *reason = why;
        return std::nullopt;
    };
    // Alone first: "a)|(b" is valid between the brackets that follow, and wrong.
    const QRegularExpression alone(folded, options);
    if (!alone.isValid())
        return refuse(QCoreApplication::translate("PredicatePattern", "%1 (character %2 of the expression)")
                          .arg(alone.errorString())
                          .arg(alone.patternErrorOffset() + 1));
    // The place of an error is within the anchors now, where the user could not count it.
    const QRegularExpression whole = wholeExpression(folded, options);
    if (!whole.isValid())
        return refuse(whole.errorString());
    PredicatePattern compiled;
    compiled.m_pattern = pattern;
    compiled.m_folding = folding;
    compiled.m_whole = whole;
    return compiled;
}

Verdict PredicatePattern::match(const QString &value) const
{
    QString folded = foldForSearch(value, m_folding & Fold::Diacritics);
    if (!folded.isValidUtf16())
        folded = QString::fromUtf8(folded.toUtf8());
    const QRegularExpressionMatch match = m_whole.match(folded);
    if (!match.isValid())
        return Verdict::GaveUp;
    // (*ACCEPT) ends a match before the anchor is asked.
    return match.hasMatch() && match.capturedEnd() == folded.size() ? Verdict::Yes : Verdict::No;
}

} // namespace runebook
