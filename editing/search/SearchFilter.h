#pragma once

#include "platform/predicates/Predicate.h"

#include "editing/search/SearchSettings.h"

#include <QCoreApplication>
#include <QString>
#include <optional>

namespace runebook {

/// What a search text stands for. Without a predicate everything is shown; a problem tells the user why
/// although a text was typed.
struct SearchResult {
    std::optional<Predicate> predicate;
    std::optional<Error> problem;
};

/// Turns the text of a search field into a predicate. The modes treat case, marks and several words
/// differently, on purpose: each row of the search menu keeps the habits of its field.
class SearchFilter
{
    Q_DECLARE_TR_FUNCTIONS(SearchFilter)
public:
    explicit SearchFilter(const SearchSettings &settings) : m_settings(settings) { }

    SearchResult result(const QString &text) const;
    /// What is searched for when \a text is typed: a first character that no glyph name begins with stands
    /// for its code point, whatever follows it.
    static QString searchedText(const QString &text, bool regex);
    /// The text of one test that overlooks diacritics, and case as well unless \a matchCase. \a text is put
    /// between the quotation marks as it stands.
    static QString filterStringForKeySearch(bool matchCase, const QString &key, const QString &text);

private:
    using MaybePredicate = std::optional<Predicate>;

    MaybePredicate plainPredicate(const QString &text, Error *error) const;
    MaybePredicate namePredicate(const QString &text, Error *error) const;
    MaybePredicate productionPredicate(const QString &text, Error *error) const;
    static MaybePredicate unicodePredicate(const QString &text, Error *error);
    SearchResult patternResult(const QString &pattern) const;

    SearchSettings m_settings;
};

} // namespace runebook
