#include "editing/search/SearchFilter.h"

#include "model/FieldTable.h"
#include "model/StringHelpers.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Whether a search text is taken as typed when it begins with \a unit.
bool beginsNames(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9')
        || unit == u'-' || unit == u'.' || unit == u'_';
}

/// The field that a mode searches; null for a mode that there is not.
const FieldRow *searchedRow(SearchMode mode)
{
    const auto *row =
        std::find_if(std::begin(kFieldTable), std::end(kFieldTable), [mode](const FieldRow &each) {
            return each.searchTag != 0 && each.searchTag == static_cast<int>(mode);
        });
    return row == std::end(kFieldTable) ? nullptr : row;
}

QString searchKeyOf(const FieldRow &row)
{
    return row.searchKey.empty() ? keyOfField(row.field) : QString::fromUtf8(row.searchKey);
}

QString joined(const QStringList &tests)
{
    return u'(' + tests.join(") && ("_L1) + u')';
}

/// The code points from \a lowest to \a highest as a search range. The texts of code points end at
/// 0xFFFFFFF, where all higher values meet; below 0 there are none.
HexRange codePointRange(qint32 lowest, qint32 highest)
{
    constexpr qint32 kHighestText = 0xFFFFFFF;
    if (highest < 0)
        return {1, 0};
    const auto bounded = [=](qint32 value) {
        return static_cast<quint32>(std::clamp<qint32>(value, 0, kHighestText));
    };
    return {bounded(lowest), bounded(highest)};
}

} // namespace

QString SearchFilter::filterStringForKeySearch(bool matchCase, const QString &key, const QString &text)
{
    return key + " contains"_L1 + (matchCase ? "[d]"_L1 : "[cd]"_L1) + " \""_L1 + text + u'"';
}

QString SearchFilter::searchedText(const QString &text, bool regex)
{
    if (text.isEmpty())
        return text;
    qsizetype index = 0;
    const char32_t first = character32AtIndex(text, index);
    const bool isTyped = first < 0x10000 && (regex || beginsNames(static_cast<char16_t>(first)));
    return isTyped ? text : hexStringFromInt(first);
}

SearchResult SearchFilter::result(const QString &text) const
{
    if (text.isEmpty())
        return {};
    const QString searched = searchedText(text, m_settings.regex);
    if (m_settings.regex)
        return patternResult(searched);
    Error error;
    SearchResult result {plainPredicate(searched, &error), {}};
    if (!error.domain.isEmpty()) {
        error.description = tr("The search text is not understood.");
        if (error.code == Predicate::SyntaxError) {
            // The parser counts the characters of the whole test, which the user does not see.
            error.failureReason = tr("In this mode a quotation mark or backslash cannot stand alone.");
            error.recoverySuggestion = tr("Type \\\" for a quotation mark and \\\\ for a backslash.");
        }
        result.problem = error;
    }
    return result;
}

SearchResult SearchFilter::patternResult(const QString &pattern) const
{
    // Tried without regard to case and used with it: the two differ in what they match, not in what is valid.
    QString reason;
    if (!PredicatePattern::compile(pattern, Fold::Case, &reason)) {
        reason.replace(0, 1, reason.left(1).toUpper());
        return {{},
                Error {Predicate::errorDomain(),
                       Predicate::InvalidPattern,
                       tr("The regular expression is not valid."),
                       reason,
                       {}}};
    }
    Error error;
    SearchResult result {Predicate::withFormat(u"name MATCHES %@"_s, {pattern}, &error), {}};
    if (!result.predicate)
        result.problem = error;
    return result;
}

SearchFilter::MaybePredicate SearchFilter::plainPredicate(const QString &text, Error *error) const
{
    const SearchMode mode = m_settings.effectiveMode();
    const bool matchCase = m_settings.matchCase;
    if (mode == SearchMode::All) {
        return Predicate::withFormat(
            matchCase
                ? u"(name contains %@) || (unicode contains[cd] %@) || (production contains %@)"_s
                : u"(name contains[cd] %@) || (unicode contains[cd] %@) || (production contains[cd] %@)"_s,
            {text, text, text}, error);
    }
    const FieldRow *row = searchedRow(mode);
    if (!row)
        return {};
    const QString key = searchKeyOf(*row);
    switch (row->searchHabit) {
    case SearchHabit::Name:
        return namePredicate(text, error);
    case SearchHabit::CodePoints:
        return unicodePredicate(text, error);
    case SearchHabit::Production:
        return productionPredicate(text, error);
    case SearchHabit::AnyCase:
        return Predicate::withFormat(key + " contains[cd] %@"_L1, {text}, error);
    case SearchHabit::CaseAsSet:
        return Predicate::withFormat(key + (matchCase ? " contains %@"_L1 : " contains[cd] %@"_L1), {text},
                                     error);
    case SearchHabit::CaseAsSetAnyMarks:
        return Predicate::parse(filterStringForKeySearch(matchCase, key, text), error);
    }
    return {};
}

SearchFilter::MaybePredicate SearchFilter::namePredicate(const QString &text, Error *error) const
{
    const QStringList words = text.split(u' ');
    const auto test = [this](const QString &word) {
        return filterStringForKeySearch(m_settings.matchCase, u"name"_s, word);
    };
    if (words.size() < 2)
        return Predicate::parse(test(text), error);
    QStringList tests;
    for (const QString &word : words) {
        if (!word.isEmpty())
            tests += test(word);
    }
    return Predicate::parse(joined(tests), error);
}

SearchFilter::MaybePredicate SearchFilter::productionPredicate(const QString &text, Error *error) const
{
    const QString contains = m_settings.matchCase ? u"production contains "_s : u"production contains[cd] "_s;
    const QStringList words = text.split(u' ');
    if (words.size() < 2)
        return Predicate::withFormat(contains + "%@"_L1, {text}, error);
    QStringList tests;
    for (const QString &word : words) {
        if (!word.isEmpty())
            tests += contains + u'"' + word + u'"';
    }
    return Predicate::parse(joined(tests), error);
}

SearchFilter::MaybePredicate SearchFilter::unicodePredicate(const QString &text, Error *error)
{
    const QStringList ends = text.split(u'-');
    if (ends.size() == 2) {
        const auto lowest = static_cast<qint32>(hexStringToInt(ends.first()));
        const auto highest = static_cast<qint32>(hexStringToInt(ends.last()));
        if (lowest < highest) {
            const HexRange range = codePointRange(lowest, highest);
            return Predicate::withFormat(u"unicode IN %@"_s, {QVariant::fromValue(range)}, error);
        }
    }
    return Predicate::withFormat(u"unicode contains[cd] %@"_s, {text}, error);
}

} // namespace runebook
