#include "editing/search/SearchSettings.h"

namespace runebook {

SearchSettings SearchSettings::current()
{
    return {Settings::kSearchState.value(), Settings::kSearchMatchesCase.value(),
            Settings::kSearchIsRegex.value()};
}

void SearchSettings::store() const
{
    const SearchSettings old = current();
    if (state != old.state)
        Settings::kSearchState.set(state);
    if (matchCase != old.matchCase)
        Settings::kSearchMatchesCase.set(matchCase);
    if (regex != old.regex)
        Settings::kSearchIsRegex.set(regex);
}

SearchMode SearchSettings::effectiveMode() const
{
    if (regex)
        return SearchMode::Name;
    return state == 0 ? SearchMode::All : static_cast<SearchMode>(state);
}

} // namespace runebook
