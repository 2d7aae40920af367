#include "platform/documents/DocumentWindows.h"

#include "platform/documents/DocumentController.h"

#include <QWidget>

namespace runebook::DocumentWindows {

QWidget *of(const Document &document)
{
    return qobject_cast<QWidget *>(document.windowController());
}

QWidget *front()
{
    const QList<Document *> &documents = DocumentController::shared().documentList();
    return documents.isEmpty() ? nullptr : of(*documents.front());
}

void bringToFront(QWidget &window)
{
    // Windows tell when they become active, late at times: one that is active already must not ask again, or
    // two of them take turns for ever.
    if (window.isActiveWindow())
        return;
    window.raise();
    window.activateWindow();
}

} // namespace runebook::DocumentWindows
