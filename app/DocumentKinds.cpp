#include "app/DocumentKinds.h"

#include "document/DocumentSettings.h"
#include "document/FileFormats.h"
#include "document/VXDocument.h"
#include "editing/fields/PendingTexts.h"
#include "editing/window/VXWindowController.h"
#include "platform/WindowPlacement.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentWindows.h"
#include "scripting/panel/RunIndicator.h"

#include <QCoreApplication>
#include <QStatusBar>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(DocumentKinds)
};

void applyAutosaveDelay()
{
    DocumentController::shared().setAutosavingDelay(VXDocument::usualAutosavingDelay());
}

/// The first file takes the place of the untouched new document; other windows stand beside each other.
void place(QWidget &window, const Document &document)
{
    constexpr qsizetype kLookedAt = 60; // more than have places of their own
    QList<QWidget *> others;
    const Document *front = nullptr;
    for (const Document *other : DocumentController::shared().documentList()) {
        QWidget *otherWindow = other == &document ? nullptr : DocumentWindows::of(*other);
        if (others.size() == kLookedAt)
            break;
        if (!otherWindow || !otherWindow->isVisible() || otherWindow->isMinimized())
            continue;
        front = front ? front : other;
        others << otherWindow;
    }
    if (front && front->isPlaceholder() && !document.fileURL().isEmpty())
        WindowPlacement::takePlaceOf(window, *others.front());
    else
        WindowPlacement::cascade(window, others);
    WindowPlacement::fitIntoScreen(window);
}

QObject *makeWindow(Document &document)
{
    auto *window = new VXWindowController(static_cast<VXDocument &>(document));
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    place(*window, document);
    window->statusBar()->insertPermanentWidget(1, new RunIndicator(RunIndicator::Stop::WithButton));
    if (!DocumentController::shared().isOpeningMany()) {
        window->show();
        return window;
    }
    window->setAttribute(Qt::WA_ShowWithoutActivating);
    window->show();
    window->lower();
    window->setAttribute(Qt::WA_ShowWithoutActivating, false);
    return window;
}

} // namespace

void registerDocumentKinds()
{
    DocumentController &controller = DocumentController::shared();
    if (controller.types().isEmpty()) {
        controller.addType({kGlyphDataType, {u"xml"_s}, Texts::tr("Glyph data files")});
        controller.addType({kTableType, {u"txt"_s, u"tsv"_s}, Texts::tr("Tab-separated tables")});
        controller.addType({kCommaTableType, {u"csv"_s}, Texts::tr("Comma-separated tables")});
    }
    controller.setDocumentFactory([] {
        auto *document = new VXDocument;
        applyAutosaveDelay();
        return document;
    });
    controller.setWindowMaker(makeWindow);
    controller.setPendingTextTaker([](Document &document, const QJsonArray &texts) {
        return takePendingTexts(static_cast<VXDocument &>(document), texts);
    });
    Settings::kAutosaveDelay.onChange(&controller, applyAutosaveDelay);
}

} // namespace runebook
