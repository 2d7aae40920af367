#pragma once

#include "platform/defaults/Setting.h"

#include <QStringList>

namespace runebook {

/// What a search looks at: the tags of the search menu's items and the values of the default "SearchState".
enum class SearchMode {
    All = 1,
    Name,
    Unicode,
    Category,
    Subcategory,
    Script,
    Decompose,
    Anchors,
    Production,
    AlternateName,
    Accents,
    Description
};

/// The settings of searches, shared by all windows.
struct SearchSettings {
    int state =
        0; ///< a SearchMode; 0 until one was chosen, which means all. Others are kept and find nothing
    bool matchCase = false;
    bool regex = false;

    /// As they are in the user defaults now.
    static SearchSettings current();
    /// Writes them to the user defaults.
    void store() const;
    /// What is searched in the end: regular expressions always look at the name.
    SearchMode effectiveMode() const;
    friend bool operator==(const SearchSettings &, const SearchSettings &) = default;
};

namespace Settings {

inline const Setting<int> kSearchState("SearchState"); ///< SearchSettings::state
inline const Setting<bool> kSearchMatchesCase("SearchStateMatchCase");
inline const Setting<bool> kSearchIsRegex("SearchStateRegex");
inline const Setting<QVariantMap> kSavedFilters("SavedFilters"); ///< RecordFilter::text() by name
inline const Setting<QStringList> kRecentSearches("RecentSearches"); ///< the latest first

} // namespace Settings

} // namespace runebook
