// Takes the pictures of the problems pane for the documentation: the sample with some things gone wrong.
//
//     ProblemsDemo FOLDER    writes problems.png and problems-dark.png
#include "editing/problems/ProblemsPane.h"
#include "editing/window/VXWindowController.h"
#include "platform/Appearance.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/TestMain.h"

#include <QStyleFactory>
#include <QTableView>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// What a file has after some years of work with several tools.
void spoil(VXDocument &document)
{
    const auto record = [&](const QString &name) { return document.infoForName(name); };
    record(u"Aacute"_s)->setUnicode(u"U+00C1"_s);
    record(u"Abreve"_s)->setUnicode(u"102"_s);
    record(u"Acaron"_s)->setDesc(u"LATIN CAPITAL LETTER A \"WITH CARON\""_s);
    record(u"Adieresis"_s)->setName(u"A dieresis"_s);
    record(u"Agrave"_s)->setUnicodes({u"00C0"_s, u"00C1"_s, u"00C2"_s});
    record(u"Amacron"_s)->setName(u"A"_s);
    record(u"Aogonek"_s)->setName(u" Aogonek"_s);
    record(u"Aring"_s)->setScript(u" latin"_s);
    record(u"Atilde"_s)->setUnicode(u"00C4"_s);
}

} // namespace

int main(int argc, char *argv[])
{
    static const QTemporaryDir home; // static: see TestMain.h
    useTestHome(home.path());
    QApplication app(argc, argv);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const QString folder = app.arguments().value(1, u"."_s);
    Appearance::shared().setChoice(Appearance::Light);
    VXDocument document;
    document.readFromURLOfType(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml"), u"public.xml"_s);
    document.setFileURL(u"/home/user/GlyphData.xml"_s);
    spoil(document);
    VXWindowController window(document);
    window.resize(1240, 760);
    window.show();
    window.problems().finish();
    window.setProblemsShown(true);
    window.goToProblem(1);
    window.goToProblem(1);
    QTest::qWait(300);
    bool ok = window.grab().save(folder + u"/problems.png"_s);
    Appearance::shared().setChoice(Appearance::Dark);
    window.problemsPane()->showKind(ProblemKind::InvalidCodePoint);
    QTest::qWait(300);
    ok = window.grab().save(folder + u"/problems-dark.png"_s) && ok;
    return ok ? 0 : 1;
}
