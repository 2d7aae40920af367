#include "scripting/panel/MacroSnippets.h"
#include "scripting/panel/SnippetsPopup.h"
#include "scripting/python/ScriptConsole.h"
#include "scripting/python/ScriptRun.h"
#include "tests/Files.h"
#include "tests/Oddities.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/PanelFixture.h"

#include <QMenu>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

QByteArray xml(const QByteArray &content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">"
        + content + "</plist>\n";
}

QByteArray snippet(const QByteArray &code, const QByteArray &title)
{
    return "<dict><key>code</key><string>" + code + "</string><key>title</key><string>" + title
        + "</string></dict>";
}

/// A binary property list in which array \a i holds array i + 1 \a times times, \a depth levels deep.
QByteArray nestedBinary(int depth, int times)
{
    QByteArray bytes("bplist00");
    QByteArray offsets;
    const auto number = [](quint64 value, int size) {
        QByteArray digits;
        for (int i = size - 1; i >= 0; --i)
            digits += char(value >> (8 * i));
        return digits;
    };
    for (int i = 0; i <= depth; ++i) {
        offsets += number(quint64(bytes.size()), 4);
        bytes += char(0xA0 + (i < depth ? times : 0));
        for (int reference = 0; i < depth && reference < times; ++reference)
            bytes += number(quint64(i) + 1, 3);
    }
    const auto table = quint64(bytes.size());
    return bytes + offsets + QByteArray(6, 0) + number(4, 1) + number(3, 1) + number(quint64(depth) + 1, 8)
        + number(0, 8) + number(table, 8);
}

} // namespace

class MacroSnippetsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { startPanels(); }

    TABLE(reads, (const QByteArray &file, const QString &titles), {
        row("title", xml("<array>" + snippet("x = 1", "Set x") + "</array>"), "Set x");
        row("no title: the first line",
            xml("<array><dict><key>code</key><string>  # a &amp; b  \nx</string></dict></array>"), "# a & b");
        row("no title, first line of one character", xml("<array>" + snippet("x\n# more", "") + "</array>"),
            "");
        row("title of one character", xml("<array>" + snippet("print(1)", "P") + "</array>"), "");
        row("no code", xml("<array>" + snippet("", "Title") + snippet("ok", "Other") + "</array>"), "Other");
        row("code that is no text",
            xml("<array><dict><key>code</key><integer>5</integer><key>title</key><string>T5</string></dict>"
                "</array>"),
            "");
        row("elements that are no records",
            xml("<array><string>a</string><array/><integer>1</integer>" + snippet("c", "Left") + "</array>"),
            "Left");
        row("further keys",
            xml("<array><dict><key>tags</key><array><string>t</string></array><key>code</key>"
                "<string>cc</string></dict></array>"),
            "cc");
        row("a record as root", xml(snippet("c", "Title")), "");
        row("no property list", "[{'code': 'x'}]", "");
        row("empty", "", "");
        row("cut off", xml("<array>" + snippet("c", "Title")).left(150), "");
        row("nested too deep", xml(QByteArray("<array>").repeated(100'000)), "");
        row("nested too deep, closed",
            xml(QByteArray("<array>").repeated(200'000) + QByteArray("</array>").repeated(200'000)), "");
        row("closed in comments only",
            xml(QByteArray("<array><!-- </array> -->").repeated(200'000) + "<array></array>"), "");
        row("binary, nested too deep", nestedBinary(200'000, 1), "");
        row("binary, 2^40 elements in few bytes", nestedBinary(40, 2), "");
        row("more than 16 MB", xml("<array>" + snippet(QByteArray(17 << 20, 'x'), "Big") + "</array>"), "");
    })
    {
        const QTemporaryDir folder;
        const QString written = write(folder.filePath(u"MacroSnippets.plist"_s), file);
        VXMacroWindowController panel;
        panel.snippetsPopup()->removeAllItems();
        panel.addSnippets(snippetsOfFile(written));
        QCOMPARE(panel.snippetsPopup()->itemTitles().join(u'|'), titles);
    }

    void listsTheProgramsAndTheUsersOwn()
    {
        VXMacroWindowController panel;
        const QStringList shipped = panel.snippetsPopup()->itemTitles();
        QVERIFY(shipped.size() >= 6);
        QVERIFY(snippetsOfFile(u"/no/such/file"_s).isEmpty());
        QVERIFY(snippetsOfFile(QDir::rootPath()).isEmpty());

        const QString folder = VXScriptingHandler::applicationSupportFolder();
        const QString own = write(folder + "/MacroSnippets.plist"_L1,
                                  xml("<array>" + snippet("mine()", "A &amp; B\tC") + "</array>"));
        panel.loadSnippets();
        QCOMPARE(panel.snippetsPopup()->itemTitles(), shipped + QStringList {u"A & B\tC"_s});
        QVERIFY(QFile::remove(own));
        panel.loadSnippets();
        QCOMPARE(panel.snippetsPopup()->itemTitles(), shipped);
        for (const QString &kind : {u"pipe"_s, u"device"_s, u"folder"_s, u"link"_s}) {
            if (!makeOddity(kind, own))
                continue; // only root makes devices
            const auto before = whatIsAt(own);
            panel.loadSnippets();
            QCOMPARE(panel.snippetsPopup()->itemTitles(), shipped);
            QCOMPARE(whatIsAt(own), before);
            QVERIFY(kind == "folder"_L1 ? QDir().rmdir(own) : QFile::remove(own));
        }
    }

    void insertsWhatIsChosen()
    {
        VXMacroWindowController panel;
        panel.addSnippets({QVariantMap {{u"code"_s, u"new\n"_s}, {u"title"_s, u"New"_s}}});
        panel.showPanel();
        JSTTextView &editor = *panel.activeMacroController()->macroText();
        editor.setString(u"before old after"_s);
        editor.setSelectedRange({7, 3});
        panel.snippetsPopup()->menu()->actions().last()->trigger();
        QCOMPARE(editor.string(), u"before new\n after"_s);
        editor.undo();
        QCOMPARE(editor.string(), u"before old after"_s);
        panel.snippedClicked(nullptr);
        QCOMPARE(editor.string(), u"before old after"_s);
    }

    TABLE(worksOnTheSample, (const QString &title, const QString &lastLine, bool edits), {
        row("Go Through the Selected Records", "colontriangularmod ['02D0']", false);
        row("Rename by Pattern", "125 records renamed", true);
        row("Find Duplicates", "done", false);
        row("Fill Production Names", "541 production names filled", true);
        row("List Missing Code Points of a Script", "220 letters missing", false);
        row("Renumber Sort Names", "2395 sort names set", true);
        row("Export the Selection", "2395 records written to ~/glyphs.txt", false);
        row("Show Progress", "", false);
    })
    {
        QVERIFY(VXScriptingHandler::isPythonRunning());
        VXMacroWindowController panel;
        setScriptConsole(&panel);
        auto *document = new VXDocument;
        DocumentController::shared().addDocument(document);
        QVERIFY(document->readFromURLOfType(StandardFolders::resource(u"sample.xml"_s), u"public.xml"_s));
        document->undoManager()->stack()->setClean();

        const qsizetype place = panel.snippetsPopup()->itemTitles().indexOf(title);
        QVERIFY(place >= 0);
        panel.activeMacroController()->setCode({});
        panel.snippedClicked(panel.snippetsPopup()->itemAtIndex(int(place)));
        panel.runMacro();
        setScriptConsole(nullptr);
        const QString output = panel.write().replace(QDir::homePath(), u"~"_s);
        const bool isEdited = document->isDocumentEdited();
        DocumentController::shared().releaseAll();
        QVERIFY2(!output.contains(u"Traceback"_s), qPrintable(output));
        QCOMPARE(output.trimmed().section(u'\n', -1), lastLine);
        QCOMPARE(isEdited, edits);
    }
};

RUNEBOOK_TEST_MAIN(MacroSnippetsTest)
#include "MacroSnippetsTest.moc"
