"""What scripts may ask menus; the Scripts menu holds one script, "Cut & Paste" in the folder "Tools"."""

handler = VXScriptingHandler.sharedHandler()
menu = handler.scriptMenu()
assert menu.title() == "Scripts", menu.title()
assert menu.numberOfItems() == len(menu.itemArray()) == menu.itemArray().count()

tools = menu.itemAtIndex_(0)
assert (tools.title(), tools.tag(), tools.isSeparatorItem()) == ("Tools", -1, False)
assert menu.itemWithTitle_("Tools") == tools
assert menu.itemAtIndex_(1).isSeparatorItem()
try:
    menu.itemAtIndex_(99)
    raise AssertionError("no item at 99")
except IndexError:
    pass

tidy = tools.submenu().itemArray().firstObject()
assert tidy.title() == "Cut & Paste", tidy.title()
assert tidy.representedObject() == "Tools/Cut & Paste", tidy.representedObject()
assert tidy.submenu() is None and tidy.isEnabled() and tidy.toolTip() is None
assert list(handler.scriptPathDict()) == ["Tools/Cut & Paste"]
assert handler.validateMenuItem_(tidy)

again = menu.itemWithTag_(2)
assert again == handler.runAgainMenuItem() and not again.isEnabled()
assert menu.itemWithTag_(77) is None
handler.runScriptMenu_(tidy)
assert again.isEnabled() and again.title() == "Run: Cut & Paste", again.title()
assert NSUserDefaults.standardUserDefaults().stringForKey_("runAgainScriptName") == "Tools/Cut & Paste"

# A delegate fills the menu before it is shown.
class Filler(NSObject):
    shown = ()

    def menuNeedsUpdate_(self, shown):
        self.shown += (shown,)

filler = Filler.alloc().init()
menu.setDelegate_(filler)
menu.setDelegate_(filler) # which is still one
assert menu.delegate() == filler
menu.itemArray()
assert filler.shown == (menu,), filler.shown
menu.setDelegate_(None)

tidy.setRepresentedObject_("another")
assert tidy.representedObject() == "another"
assert "itemWithTag_" in dir(menu) and "representedObject" in dir(tidy)
print("checked the menu")
