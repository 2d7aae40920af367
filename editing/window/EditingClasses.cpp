#include "editing/window/EditingClasses.h"

#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/VXUnicodeFormatter.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/fields/VXValidatingTextFieldCell.h"
#include "editing/records/TableDrag.h"
#include "editing/replace/VXFindReplaceWindowController.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/VXMenuButton.h"
#include "editing/window/VXSimpleSplitView.h"
#include "editing/window/VXWhiteView.h"
#include "editing/window/VXWindowController.h"

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
