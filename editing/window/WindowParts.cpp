#include "editing/window/WindowParts.h"

#include "editing/records/GlyphCellDelegate.h"
#include "editing/records/GlyphTableView.h"
#include "editing/window/DetailPane.h"
#include "platform/MessageBar.h"
#include "platform/documents/DocumentController.h"

namespace runebook {

bool WindowParts::commitEditing(Error *refusal) const
{
    Error reason;
    if (table.cellDelegate().commitEditor(&reason) && pane.commitEditing(&reason))
        return true;
    // Where the reason is shown must be seen, whichever window was asked to save, close or run.
    if (window.isVisible() && !window.isActiveWindow())
        DocumentController::shared().bringToFront(&document);
    return fail(refusal, reason);
}

void WindowParts::showMessage(const QString &text) const
{
    messages.showMessage(text, MessageBar::Stay::ShortTime);
}

void WindowParts::showRemark(const FieldRemark &remark) const
{
    if (remark.takeOffer)
        messages.ask(remark.sentence, {{remark.offer, remark.takeOffer}});
    else
        showMessage(remark.sentence);
}

} // namespace runebook
