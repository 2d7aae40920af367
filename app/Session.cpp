#include "app/Session.h"

#include "app/AppSettings.h"
#include "editing/window/VXWindowController.h"
#include "platform/FilePath.h"
#include "platform/TurningWindows.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"

#include <QFileInfo>

namespace runebook::Session {

using namespace Qt::StringLiterals;

namespace {

VXWindowController *windowOf(const Document &document)
{
    return qobject_cast<VXWindowController *>(document.windowController());
}

} // namespace

QVariantList capture()
{
    QVariantList windows;
    const QList<Document *> documents = DocumentController::shared().documentList();
    for (auto document = documents.crbegin(); document != documents.crend(); ++document) {
        const VXWindowController *window = windowOf(**document);
        if ((*document)->fileURL().isEmpty() || !window)
            continue;
        windows << QVariantMap {{u"path"_s, (*document)->fileURL()},
                                {u"geometry"_s, window->saveGeometry()},
                                {u"state"_s, window->windowWillEncodeRestorableState()}};
    }
    return windows;
}

void store(const QVariantList &windows)
{
    Settings::kOpenWindows.setOrReset(windows);
    UserDefaults::standard().synchronize();
}

int restore()
{
    return open(Settings::kOpenWindows.value());
}

int open(const QVariantList &windows)
{
    int opened = 0;
    for (const QVariant &entry : windows) {
        const QVariantMap stored = entry.toMap();
        const QString path = stored.value(u"path"_s).toString();
        if (path.isEmpty() || fileKind(path) != FileKind::Regular)
            continue;
        const TurningWindows turning(DocumentPanels::openingTitle(path));
        Document *document = DocumentController::shared().openDocumentWithContentsOfURLDisplay(path, true);
        VXWindowController *window = document ? windowOf(*document) : nullptr;
        if (!window)
            continue;
        ++opened;
        window->restoreGeometry(stored.value(u"geometry"_s).toByteArray());
        window->windowDidDecodeRestorableState(stored.value(u"state"_s).toMap());
    }
    return opened;
}

} // namespace runebook::Session
