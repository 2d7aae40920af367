// Takes pictures of document windows in states that are hard to meet by hand: `WindowDemo PICTURES FILE.xml`,
// with QT_SCALE_FACTOR and the word "dark" as wanted.
#include "editing/problems/ProblemsPane.h"
#include "editing/records/GlyphTableView.h"
#include "editing/replace/VXFindReplaceWindowController.h"
#include "editing/search/SearchFilter.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/DetailPane.h"
#include "editing/window/VXWindowController.h"
#include "platform/Appearance.h"
#include "platform/WindowPlacement.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/UnsavedPanel.h"

#include <QCheckBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

void take(const QString &folder, const QString &name)
{
    QTest::qWait(400);
    QGuiApplication::primaryScreen()->grabWindow(0).save(folder + u'/' + name + u".png"_s);
}

QWidget *dialog()
{
    return QApplication::activeModalWidget();
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir own;
    qputenv("RUNEBOOK_DEFAULTS", QFile::encodeName(own.filePath(u"defaults.conf"_s)));
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const QString folder = arguments.value(1);
    Appearance::shared().setChoice(arguments.contains(u"dark"_s) ? Appearance::Dark : Appearance::Light);
    DocumentController &controller = DocumentController::shared();
    controller.addType({u"public.xml"_s, {u"xml"_s}, u"Glyph data files"_s});
    controller.setDocumentFactory([] { return new VXDocument; });
    controller.setWindowMaker([](Document &document) -> QWidget * {
        auto *made = new VXWindowController(static_cast<VXDocument &>(document));
        WindowPlacement::fitIntoScreen(*made);
        made->show();
        return made;
    });
    const auto windowOf = [](Document *document) {
        return qobject_cast<VXWindowController *>(document->windowController());
    };

    Document *untitled = controller.openUntitledDocumentAndDisplay(true);
    take(folder, u"empty"_s);
    untitled->close();
    auto *document =
        qobject_cast<VXDocument *>(controller.openDocumentWithContentsOfURLDisplay(arguments.value(2), true));
    VXWindowController &window = *windowOf(document);
    take(folder, u"usual"_s);
    const auto choose = [&](const QString &name) { window.showInfo(document->infoForName(name)); };
    choose(u"gravecomb"_s);
    take(folder, u"mark"_s);
    choose(u"Aringacute"_s);
    document->infoForName(u"Aringacute"_s)->setName(u"A ring with an acute"_s);
    take(folder, u"badge"_s);
    document->undoManager()->undo();
    choose(u"A"_s);
    document->infoForName(u"A"_s)->setUnicode(u"F1234"_s);
    take(folder, u"missing"_s);
    document->undoManager()->undo();

    SearchSettings {int(SearchMode::Script), false, false}.store();
    window.searchField()->setStringValue(u"uppercase"_s);
    window.filterInfos();
    take(folder, u"nothing-found"_s);
    window.searchField()->clearSearch();
    window.searchField()->searchEverywhere();
    window.setProblemsShown(true);
    document->infoForName(u"B"_s)->setScript(u"Latin"_s);
    document->infoForName(u"C"_s)->setDecompose(u"C, nobody"_s);
    take(folder, u"problems"_s);
    window.setProblemsShown(false);

    window.infolistController()->setSelectionIndexes({2, 3, 4});
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(window.tableView()->viewport(), &event);
    take(folder, u"row-menu"_s);
    delete window.findChild<QMenu *>(u"rowMenu"_s);
    window.removeSelectedInfos();
    take(folder, u"remove"_s);
    dialog()->close();
    QTimer::singleShot(200, &window, [&] {
        dialog()->findChild<QLineEdit *>(u"findField"_s)->setText(u"^A(.*)"_s);
        dialog()->findChild<QLineEdit *>(u"replaceField"_s)->setText(u"Alpha\\1"_s);
        dialog()->findChild<QCheckBox *>(u"isPattern"_s)->setChecked(true);
        take(folder, u"replace"_s);
        dialog()->close();
    });
    window.performFindPanelAction(12);
    auto *other = qobject_cast<VXDocument *>(controller.openUntitledDocumentAndDisplay(true));
    other->addInfo(VXGlyphInfo::init());
    auto *panel = new UnsavedPanel({document, other}, &window); // goes with the window
    panel->show();
    take(folder, u"unsaved"_s);
    controller.releaseAll();
    return 0;
}
