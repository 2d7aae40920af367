#include "editing/window/WindowSettings.h"

#include "editing/compare/CompareSettings.h"
#include "editing/records/RecordSettings.h"
#include "editing/replace/ReplaceSettings.h"
#include "editing/search/SearchSettings.h"
#include "editing/values/ValueSettings.h"

namespace runebook {

using namespace Settings;

QStringList windowSettingKeys()
{
    return {kWindowGeometry.key(), kSidebarWidth.key(),   kSidebarHidden.key(),     kProblemsShown.key(),
            kProblemsHeight.key(), kTableColumns.key(),   kTableFontSize.key(),     kTableSorts.key(),
            kRecentSearches.key(), kSearchState.key(),    kSearchMatchesCase.key(), kSearchIsRegex.key(),
            kCompareMode.key(),    kCompareKey.key(),     kReplaceSearch.key(),     kReplaceBy.key(),
            kReplaceField.key(),   kValuesShown.key(),    kValuesWidth.key(),       kValuesField.key(),
            kValuesByText.key(),   kValuesAscending.key()};
}

} // namespace runebook
