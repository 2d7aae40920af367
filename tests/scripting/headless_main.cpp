#include "document/VXDocument.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentController.h"
#include "scripting/menu/HeadlessRun.h"

#include <QApplication>
#include <QCommandLineParser>
#include <cstdio>

// The smallest program that runs scripts without windows, for tests that start real processes.

using namespace runebook;
using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    QCoreApplication::setApplicationName(u"runebook"_s);
    const auto app = makeHeadless<QApplication>(argc, argv);
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    DocumentController &controller = DocumentController::shared();
    controller.addType({u"public.xml"_s, {u"xml"_s}, u"Glyph data files"_s});
    controller.addType({u"public.plain-text"_s, {u"txt"_s}, u"Tab-separated tables"_s});
    controller.setDocumentFactory([] { return new VXDocument; });

    QCommandLineParser parser;
    const QCommandLineOption run(u"run"_s, {}, u"script"_s);
    const QCommandLineOption eval(u"eval"_s, {}, u"code"_s);
    const QCommandLineOption save(u"save"_s);
    parser.addOptions({run, eval, save});
    if (!parser.parse(QCoreApplication::arguments()) || parser.isSet(run) == parser.isSet(eval)) {
        std::fputs("one of --run SCRIPT and --eval CODE is needed\n", stderr);
        return HeadlessStatus::kWrongInput;
    }
    const int status = runHeadless(
        {parser.value(run), parser.value(eval), parser.isSet(save), parser.positionalArguments()});
    controller.releaseAll();
    return status;
}
