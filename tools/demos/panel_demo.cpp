// The macro panel with a document behind it, to look at: panel_demo [--dark] [--grab FILE.png]. With --grab
// it runs a macro that fails, saves a picture and quits.
#include "document/VXDocument.h"
#include "platform/Appearance.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentController.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/ConsoleView.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/RunPump.h"
#include "tabbar/VXTabBarControl.h"
#include "tests/TestMain.h"
#include "ui_VXMacroWindow_11.h"

#include <QCommandLineParser>
#include <QStyleFactory>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const char16_t sample[] = uR"PY(# Renames small capitals and fills in their production names.
import re

PATTERN = re.compile(r"^(?P<base>\w+)\.sc$")

def renamed(info):
    """The new name of a record, or None."""
    match = PATTERN.match(info.name or "")
    return match and match.group("base") + ".smcp"

count = 0
for info in Doc:
    name = renamed(info)
    if name and name not in Doc:
        info.name = name
        count += 1
print(count, "records renamed")
print("first:", Doc["A.sc"].name)
)PY";

void prepare(VXMacroWindowController &panel)
{
    panel.activeMacroController()->setTitle(u"Small Caps"_s);
    panel.activeMacroController()->setCode(QString::fromUtf16(sample));
    panel.addMacroTitle(u"# production names"_s, u"Production Names"_s);
    panel.addMacroTitle(u"# statistics"_s, u"Statistics"_s);
    panel.runMacro();
    static_cast<ConsoleView *>(panel.consoleText())->showPending();
}

} // namespace

int main(int argc, char *argv[])
{
    static const QTemporaryDir home; // static: see TestMain.h
    useTestHome(home.path());
    QApplication app(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOptions({{u"dark"_s, u"Light text on a dark ground"_s},
                        {u"grab"_s, u"Save a picture and quit"_s, u"file"_s}});
    options.process(app);
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    Appearance::shared().setChoice(options.isSet(u"dark"_s) ? Appearance::Dark : Appearance::Light);
    VXScriptingHandler::sharedHandler();

    auto *document = new VXDocument;
    DocumentController::shared().addDocument(document);
    (void)document->readFromURLOfType(StandardFolders::resource(u"sample.xml"_s), u"public.xml"_s);
    VXMacroWindowController panel;
    VXScriptingHandler::sharedHandler()->setMacroPanelController(&panel);
    panel.showPanel();
    prepare(panel);
    int status = 0;
    if (options.isSet(u"grab"_s)) {
        QTest::qWait(200);
        status = panel.window()->grab().save(options.value(u"grab"_s)) ? 0 : 1;
    } else {
        status = QApplication::exec();
    }
    DocumentController::shared().releaseAll();
    return status;
}
