#pragma once

#include "platform/defaults/Setting.h"

#include <QStringList>
#include <limits>

namespace runebook {

/// The settings that document windows write by themselves, by being used: how they look and what was searched
/// for. Whoever makes windows that nobody sees keeps them away from the user's.
QStringList windowSettingKeys();

/// What happens elsewhere when a record gets another name.
namespace RenamesElsewhere {
enum Choice { Ask, Always, Never };
} // namespace RenamesElsewhere

namespace Settings {

/// A height or width in pixels that was once stored; others count as none.
inline constexpr SettingRange<int> kPixels {1, std::numeric_limits<int>::max(), OutOfRange::ReadsAsFallback};

inline const Setting<QByteArray> kWindowGeometry("WindowGeometry");
inline const Setting<int> kSidebarWidth("MainSplitView", 320, kPixels);
inline const Setting<bool> kSidebarHidden("MainSplitViewSidebarHidden");
inline const Setting<bool> kProblemsShown("ProblemsPaneShown");
inline const Setting<int> kProblemsHeight("ProblemsPaneHeight", 220, kPixels);
inline const Setting<int> kRenamesElsewhere("VXRenameElsewhere", RenamesElsewhere::Ask,
                                            {RenamesElsewhere::Ask, RenamesElsewhere::Never,
                                             OutOfRange::ReadsAsFallback});
inline const Setting<bool> kReloadsChangedFiles("VXReloadChangedFiles", true);
/// Desktop file id of the program that shows a code point.
inline const Setting<QString> kCharacterApplication("VXUnicodeCheckerApplication");

} // namespace Settings

} // namespace runebook
