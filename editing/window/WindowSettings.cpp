#include "editing/window/WindowSettings.h"

namespace runebook {

using namespace Qt::StringLiterals;

QStringList windowSettingKeys()
{
    return {u"WindowGeometry"_s,
            u"MainSplitView"_s,
            u"MainSplitViewSidebarHidden"_s,
            u"ProblemsPaneShown"_s,
            u"ProblemsPaneHeight"_s,
            u"TableHeaderState"_s,
            u"TableFontSize"_s,
            u"TableSorts"_s,
            u"RecentSearches"_s,
            u"SearchState"_s,
            u"SearchStateMatchCase"_s,
            u"SearchStateRegex"_s,
            u"FilterMode"_s,
            u"FilterKey"_s,
            u"FindAndReplaceSearch"_s,
            u"FindAndReplaceReplace"_s,
            u"FindAndReplaceField"_s};
}

} // namespace runebook
