// Takes the pictures of the compare window for the documentation: two versions of the sample, light and dark.
//
//     CompareWindowDemo FOLDER    writes compare-light.png and compare-dark.png
#include "document/GlyphDataReader.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "platform/documents/DocumentController.h"
#include "tests/TestMain.h"

#include <QStyleFactory>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

VXDocument *openSample(const QString &name)
{
    auto *document = new VXDocument;
    document->readFromURLOfType(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml"), u"public.xml"_s);
    document->setFileURL(name);
    DocumentController::shared().addDocument(document);
    return document;
}

/// What a release of a reference table brings: some new glyphs, some gone, some corrected.
void revise(VXDocument &document)
{
    const auto record = [&](const QString &name) { return document.infoForName(name); };
    record(u"Aacute"_s)->setMarks(u"acutecomb, ogonekcomb"_s);
    const InfoPtr a = record(u"A"_s);
    a->setMarks(a->marks().replace(u"caroncomb, "_s, QString()) + u", tildebelowcomb"_s);
    a->setDesc(u"LATIN CAPITAL LETTER A, also Roman capital"_s);
    a->setSubCategory(u"Basic"_s);
    a->setAnchors(u"bottom, center, ogonek, top"_s);
    a->setCase(VXGlyphInfo::other);
    for (const QString &name :
         {u"Abreve"_s, u"Abreveacute"_s, u"Acaron"_s, u"Adieresis"_s, u"Agrave"_s, u"Amacron"_s})
        record(name)->setAnchors(u"bottom, ogonek, top"_s);
    document.removeInfos({record(u"Abrevetilde"_s), record(u"Acircumflex"_s)});
    for (const QString &name : {u"Aringbelow"_s, u"Abreveinverted.alt"_s, u"Aogonek.loclNAV"_s}) {
        const InfoPtr added = VXGlyphInfo::init();
        added->setName(name);
        document.addInfo(added);
    }
}

void setDark()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2A, 0x2A, 0x2C));
    dark.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x20));
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x28));
    dark.setColor(QPalette::Button, QColor(0x3A, 0x3A, 0x3C));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(role, QColor(0xEC, 0xEC, 0xEE));
    dark.setColor(QPalette::Highlight, QColor(0x2F, 0x6F, 0xD0));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::PlaceholderText, QColor(0x9A, 0x9A, 0xA0));
    QApplication::setPalette(dark);
}

} // namespace

int main(int argc, char *argv[])
{
    static const QTemporaryDir home; // static: see TestMain.h
    useTestHome(home.path());
    QApplication app(argc, argv);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const QString folder = app.arguments().value(1, u"."_s);
    Settings::kCompareMode.set(CompareMode::Different);
    openSample(u"/home/user/GlyphData-2.xml"_s);
    VXDocument *left = openSample(u"/home/user/GlyphData-1.xml"_s);
    revise(*static_cast<VXDocument *>(DocumentController::shared().documentList().at(1)));
    VXCompareDataWindow window;
    window.showWindow();
    window.filteredKeys()->setSelectionIndexes({0});
    QTest::qWait(200);
    bool ok = left->countOfInfos() > 0 && window.grab().save(folder + u"/compare-light.png"_s);
    setDark();
    QTest::qWait(200);
    ok = window.grab().save(folder + u"/compare-dark.png"_s) && ok;
    return ok ? 0 : 1;
}
