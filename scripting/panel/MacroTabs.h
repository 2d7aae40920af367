#pragma once

class QString;
class VXMacroViewController;
class VXMacroWindow;
class VXTabBarControl;

namespace runebook {

/// The tabs of the macro panel and the window that they are in, for what works with them.
class MacroTabs
{
public:
    virtual VXMacroWindow *window() = 0;
    virtual VXTabBarControl *tabBarControl() = 0;
    /// The selected tab; null when there is none.
    virtual VXMacroViewController *activeMacroController() = 0;
    /// Appends a tab; a null \a code leaves it empty.
    virtual VXMacroViewController *addMacroTitle(const QString &code, const QString &title) = 0;
    /// Keeps them for the next start.
    virtual void saveMacroTabs() = 0;

protected:
    ~MacroTabs() = default;
};

} // namespace runebook
