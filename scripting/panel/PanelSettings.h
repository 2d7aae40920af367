#pragma once

#include "platform/defaults/Setting.h"

#include <limits>

namespace runebook::Settings {

// The window
inline const Setting<bool> kShowsMacroPanel("showMacroPanel");
inline const Setting<QByteArray> kMacroPanelGeometry("VXMacroPanelGeometry");
inline const Setting<QByteArray> kMacroPanelSplitter("VXMacroPanelSplitter");
inline const Setting<QString> kDocumentationAddress("VXDocumentationURL");
inline const Setting<int> kAfterFailedRun("VXAfterFailedRun"); ///< a RunQuestion::Answer

// Tabs
inline const Setting<QVariant>
    kMacroTabs("VXMacroViews"); ///< a list of maps; of another type before the first
inline const Setting<int> kSelectedMacroTab("VXSelectedMacroView");
inline const Setting<QString>
    kFirstMacro("macroCode", QStringLiteral("# type your Python code here and press cmd+Return to run."));

// Code
inline const Setting<int> kMacroFontSize("MacroCodeFontSize", 13); ///< in points, of the console too
inline const Setting<bool> kClosesBrackets("MacroClosesBrackets", true);
/// A JSTTextView::Indentation.
inline const Setting<int> kIndentation("MacroIndentation", 0, {0, 2});
inline const Setting<int> kWrapColumn("MacroWrapColumn", 80);

// The console
inline const Setting<int> kConsoleLineLimit("VXConsoleLineLimit", 100'000,
                                            {1, std::numeric_limits<int>::max(),
                                             OutOfRange::ReadsAsFallback});
inline const Setting<QVariantList> kPromptHistory("VXPromptHistory"); ///< of texts, the latest at the end

} // namespace runebook::Settings
