#include "editing/search/OnlyRecords.h"

#include "editing/search/SavedFilters.h"
#include "editing/search/SearchFilter.h"
#include "platform/predicates/PredicateLexer.h"

namespace runebook {

namespace {

bool isRelation(PredicateToken::Kind kind)
{
    using enum PredicateToken::Kind;
    return (kind >= Contains && kind <= In) || (kind >= Equal && kind <= GreaterOrEqual);
}

/// Whether \a text can only be meant as a filter: it begins with a field and what is asked of it.
bool beginsAsFilter(const QString &text)
{
    PredicateLexer lexer(text);
    PredicateToken token = lexer.next();
    while (token.kind == PredicateToken::Kind::LeftParenthesis || token.kind == PredicateToken::Kind::Not)
        token = lexer.next();
    return token.kind == PredicateToken::Kind::Key
        && SearchKey::of(token.spelling).kind != SearchKey::Kind::Unknown && isRelation(lexer.next().kind);
}

} // namespace

std::optional<OnlyRecords> OnlyRecords::of(const QString &text, Error *error)
{
    if (!SavedFilters::textOf(text).isNull() || beginsAsFilter(text)) {
        Error reason;
        const std::optional<RecordFilter> filter = SavedFilters::find(text, &reason);
        if (filter)
            return OnlyRecords {filter->predicate(error)};
        fail(error, reason);
        return {};
    }
    const SearchResult search = SearchFilter(SearchSettings()).result(text);
    if (search.problem) {
        fail(error, *search.problem);
        return {};
    }
    return OnlyRecords {search.predicate};
}

} // namespace runebook
