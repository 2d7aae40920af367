#include "editing/EditingClasses.h"

#include "editing/TableDrag.h"
#include "editing/VXCompareDataWindow.h"
#include "editing/VXFindReplaceWindowController.h"
#include "editing/VXMenuButton.h"
#include "editing/VXSearchField.h"
#include "editing/VXSimpleSplitView.h"
#include "editing/VXUnicodeFormatter.h"
#include "editing/VXValidatingTextField.h"
#include "editing/VXWhiteView.h"
#include "editing/VXWindowController.h"

namespace {

template <typename... Classes> void registerClasses()
{
    (qRegisterMetaType<Classes *>(), ...);
}

} // namespace

void registerEditingClasses()
{
    registerClasses<RSRTVArrayController, TableDrag, VXCompareDataWindow, VXFindReplaceWindowController,
                    VXMenuButton, VXSearchField, VXSimpleSplitView, VXSplitViewWindowController,
                    VXUnicodeFormatter, VXValidatingTextField, VXValidatingTextFieldCell, VXWhiteView,
                    VXWindowController>();
}
