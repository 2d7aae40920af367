#include "editing/window/FileDrop.h"

#include "platform/FilePath.h"
#include "platform/documents/DocumentPanels.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

namespace runebook {

FileDrop::FileDrop(QWidget &window) : QObject(&window)
{
    window.setAcceptDrops(true);
    window.installEventFilter(this);
}

bool FileDrop::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto *drop = static_cast<QDropEvent *>(event);
    if (event->type() == QEvent::DragEnter) {
        if (drop->mimeData()->hasUrls())
            drop->acceptProposedAction();
        return true;
    }
    QStringList paths;
    for (const QUrl &url : drop->mimeData()->urls()) {
        if (url.isLocalFile())
            paths << pathFromURL(url.toString(QUrl::FullyEncoded));
    }
    if (!paths.isEmpty())
        DocumentPanels::openFiles(paths, static_cast<QWidget *>(watched));
    return true;
}

} // namespace runebook
