#include "scripting/python/ScriptRun.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentController.h"
#include "scripting/bridge/Selectors.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/PromptRun.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"
#include "tests/scripting/KeptConsole.h"

using namespace Qt::StringLiterals;
using namespace runebook::bridge;
using namespace runebook;

/// Runs in the interpreter of this very process, as in the program with windows; and how selectors are
/// written.
class ScriptRunTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
        m_handler = VXScriptingHandler::sharedHandler();
        QVERIFY(VXScriptingHandler::isPythonRunning());
        m_handler->setMacroPanelController(&m_console);
        // What every run begins with takes long only once; afterwards it is the test's own code that is
        // interrupted.
        m_handler->runMacroString(u"pass"_s);
    }

    void init()
    {
        DocumentController::shared().releaseAll();
        m_console.output.clear();
        m_console.errors.clear();
    }

    void bringsUpTheNewest()
    {
        QCOMPARE(m_handler->currentPythonPath(),
                 m_handler->pythonFrameworks().last()[u"fullPath"_s].toString());
        QCOMPARE(VXScriptingHandler::PythonMajorVersion, 3);
        QVERIFY(VXScriptingHandler::PythonMinorVersion >= 9 && VXScriptingHandler::PythonMinorVersion <= 11);
        m_handler->runMacroString(u"print(sys.version_info[:2], sys.path[0].rpartition('/')[2])"_s);
        QCOMPARE(m_console.output, u"(3, %1) Scripts3%1\n"_s.arg(VXScriptingHandler::PythonMinorVersion));
        QCOMPARE(m_console.errors, QString());
        QCOMPARE(m_handler->macroPanelController(), nullptr);
    }

    void makesOneUndoStepOfARun()
    {
        VXDocument &document = addDocument();
        VXDocument &other = addDocument();
        m_handler->runMacroString(u"for d in documents():\n"
                                  "    for info in d: info.name = info.name + info.name\n"
                                  "    d.addInfo_(newInfo('new'))\n"
                                  "    d.removeObjectFromInfosAtIndex_(0)\n"_s);
        QCOMPARE(m_console.errors, QString());
        for (VXDocument *one : {&document, &other}) {
            QCOMPARE(one->undoManager()->stack()->count(), 1);
            QCOMPARE(one->undoManager()->groupingLevel(), 0);
            QCOMPARE(one->infos().front()->name(), u"bb"_s);
            one->undoManager()->undo();
            QCOMPARE(one->countOfInfos(), 3);
            QCOMPARE(one->infos().front()->name(), u"a"_s);
            one->undoManager()->redo();
            QCOMPARE(one->infos().back()->name(), u"new"_s);
        }
    }

    void takesWhatIsBeingTyped()
    {
        VXDocument &document = addDocument();
        connect(&document, &Document::commitEditingRequested, &document,
                [&document] { document.infos()[0]->setName(u"typed"_s); });
        m_handler->runMacroString(u"print(Doc[0].name)"_s);
        QCOMPARE(m_console.output, u"typed\n"_s);
    }

    void runsFilesInTheirFolder()
    {
        write(u"scripts/beside.py"_s, u"value = 7\n"_s);
        const QString script = write(u"scripts/main.py"_s,
                                     u"import beside\nprint(beside.value, __name__, __file__ != '')\n"
                                     "print(os.getcwd() == os.path.dirname(os.path.realpath(__file__)))\n"
                                     "print(sys.path.count(os.path.dirname(__file__)))\n"_s);
        m_handler->runMacroFile(script);
        m_handler->runMacroFile(script);
        QCOMPARE(m_console.errors, QString());
        QCOMPARE(m_console.output, u"7 __main__ True\nTrue\n1\n"_s.repeated(2));
        m_handler->runMacroFile(write(u"scripts/broken.py"_s, u"x = 1\nx.y\n"_s));
        QVERIFY(m_console.errors.contains(
            u"File \"%1\", line 2, in <module>\n"_s.arg(m_folder.filePath(u"scripts/broken.py"_s))));
    }

    void runsFilesBelowAQuote()
    {
        m_handler->runMacroFile(write(u"a \" b/script.py"_s, u"print('ran')\n"_s));
        QCOMPARE(m_console.output, u"ran\n"_s);
        QVERIFY(m_console.errors.contains(u"File \"NULL\", line 1"_s));
        QVERIFY(m_console.errors.contains(u"SyntaxError"_s));
    }

    void endsOnlyTheScriptOnExit()
    {
        m_handler->runMacroString(u"print(1)\nsys.exit(3)\nprint(2)"_s);
        QCOMPARE(m_console.output, u"1\n"_s);
        QCOMPARE(m_console.errors, QString());
        QCOMPARE(ScriptRun::outcome().processStatus(), 3);
        m_handler->runMacroFile(write(u"exits.py"_s, u"raise SystemExit('why')\n"_s));
        QCOMPARE(m_console.errors, u"why\n"_s);
        QCOMPARE(ScriptRun::outcome().processStatus(), 1);
    }

    void forgetsLateInterrupts()
    {
        VXScriptingHandler::interruptRun();
        m_handler->runMacroString(u"print('runs')"_s);
        QCOMPARE(m_console.output, u"runs\n"_s);
        QCOMPARE(m_console.errors, QString());
    }

    /// What runs before the user's code may be what is interrupted.
    void runsNothingOnceInterrupted()
    {
        struct Impatient : RunObserver {
            void scriptStarted() override { ScriptRun::interrupt(); }
            void scriptEnded() override { }
        } impatient;
        const QString script = write(u"scripts/runs.py"_s, u"print('runs')\n"_s);
        ScriptRun::setObserver(&impatient);
        m_handler->runMacroString(u"print('runs')"_s);
        m_handler->runMacroFile(script);
        runPromptCode(u"print('runs')"_s);
        ScriptRun::setObserver(nullptr);
        QCOMPARE(m_console.output, u">>> print('runs')\n"_s);
        QCOMPARE(m_console.errors.count(u"KeyboardInterrupt\n"_s), 3);
    }

    void takesTextOfThreadsLater()
    {
        m_handler->runMacroString(u"import threading\n"
                                  "t = threading.Thread(target=lambda: [print(i) for i in range(1000)])\n"
                                  "t.start(); t.join(); print('main')"_s);
        QCOMPARE(m_console.output, u"main\n"_s);
        QTRY_VERIFY(m_console.output.endsWith(u"\n999\n"_s));
        QStringList lines = m_console.output.split(u'\n', Qt::SkipEmptyParts).mid(1);
        QCOMPARE(lines.size(), 1000);
        for (int i = 0; i < lines.size(); ++i)
            QCOMPARE(lines[i].toInt(), i);
    }

    void ignoresFilesThatAreNotThere()
    {
        m_handler->runMacroFile(m_folder.filePath(u"gone.py"_s));
        QCOMPARE(m_console.output + m_console.errors, QString());
    }

    TABLE(putsLabelsApart,
          (const QByteArray &name, int arguments, bool canFail, const QByteArray &usual, const QString &all),
          {
              row("no argument", "copy", 0, false, "copy", "copy copy_");
              row("a word of Python", "delete_", 0, false, "delete_", "delete_");
              row("one", "setName", 1, false, "setName_", "setName setName_");
              row("two", "objectAtRow", 2, false, "object_atRow_", "objectAtRow object_atRow_ objectAt_row_");
              row("may fail", "readURL", 1, true, "readURL_", "readURL readURL_ readURL_error_");
          })
    {
        QCOMPARE(usualSelector(name, arguments), usual);
        QStringList names;
        for (const Selector &selector : selectorsOf(name, arguments, canFail))
            names << QString::fromLatin1(selector.name);
        QCOMPARE(names.join(u' '), all);
    }

private:
    VXDocument &addDocument()
    {
        VXDocument *document = documentOf(named(u"a b c"_s)).release();
        document->undoManager()->removeAllActions();
        DocumentController::shared().addDocument(document);
        return *document;
    }

    QString write(const QString &name, const QString &text)
    {
        return runebook::write(m_folder.filePath(name), text.toUtf8());
    }

    KeptConsole m_console;
    VXScriptingHandler *m_handler = nullptr;
    QTemporaryDir m_folder;
};

RUNEBOOK_TEST_MAIN(ScriptRunTest)
#include "ScriptRunTest.moc"
