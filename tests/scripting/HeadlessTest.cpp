#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/EndlessLoop.h"
#include "tests/scripting/HeadlessFixture.h"
#include "tests/scripting/Interpreters.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace runebook;

/// What comes out of runs without windows: statuses, output, files.
class HeadlessTest : public QObject, HeadlessFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { setUp(); }

    // errors: a part of them
    TABLE(givesStatuses, (const QString &code, int status, const QString &output, const QString &errors), {
        row("runs", "print('é', len(Doc))", 0, "é 2395\n", "");
        row("raises", "print(1)\n1/0", 1, "1\n", "File \"macro panel\", line 2, in <module>\n    1/0\n");
        row("does not compile", "if:", 1, "", "SyntaxError");
        row("zero characters",
            "import _runebook as r\nr.sharedObject('scriptingHandler').runMacroString_('x = \\0')", 1, "",
            "null bytes");
        row("exits", "import sys; sys.exit()", 0, "", "");
        row("exits with a number", "import sys; sys.exit(7)", 7, "", "");
        row("exits with a text", "import sys; sys.exit('no\\ngood')", 1, "", "no\ngood\n");
        row("imports what is missing", "import no_such_module", 1, "", "ModuleNotFoundError");
        row("recurses without end", "def f(): f()\nf()", 1, "",
            "\nRecursionError: maximum recursion depth exceeded");
        row("recurses through the program",
            "from Foundation import NSNotificationCenter as C\n"
            "c = C.defaultCenter()\n"
            "c.addObserverForName_object_queue_usingBlock_('x', None, None, lambda n: "
            "c.postNotificationName_object_('x', None))\n"
            "c.postNotificationName_object_('x', None)\nprint('alive')",
            0, "alive\n", "RecursionError"); // so deep that the interpreter itself can only name it
        row("no such operation", "Doc.noSuch_(1)", 1, "", "AttributeError");
        row("forks",
            "import os, multiprocessing as m\nprint(1)\n"
            "if os.fork() == 0:\n    print('child')\n    os._exit(0)\n"
            "os.wait()\np = m.get_context('fork').Process(target=print, args=('kid',)); p.start(); "
            "p.join()\nprint(2)",
            0, "1\nchild\nkid\n2\n", "");
        row("forks and goes on",
            "import os\ninfo, pid = Doc.infos[0], os.fork()\n"
            "def attempt(what):\n    try: print(what() and 'taken')\n    except RuntimeError as error: "
            "print(error)\n"
            "if pid: print(os.waitpid(pid, 0)[1] >> 8)\n"
            "attempt(lambda: info.name)\nattempt(lambda: info.setName_('x') or 1)\nattempt(lambda: "
            "len(Doc))\n"
            "if not pid: 1/0",
            0,
            "documents and windows belong to the process that opened them\n"
            "documents and windows belong to the process that opened them\n"
            "documents and windows belong to the process that opened them\n1\ntaken\ntaken\ntaken\n",
            "ZeroDivisionError");
        row("a clean environment, all texts UTF-8",
            "import os, subprocess, sys\nprint('PYTHONHOME' in os.environ, sys.flags.utf8_mode, "
            "subprocess.getoutput('echo ${PYTHONHOME-none}'))",
            0, "False 1 none\n", "");
        row("at the end",
            "import atexit, threading, time\natexit.register(print, 'last')\n"
            "said = threading.Event()\n"
            "threading.Thread(target=lambda: (said.wait(), time.sleep(.1), print('thread'))).start()\n"
            "print('first')\nsaid.set()",
            0, "first\nthread\nlast\n", "");
    })
    {
        const Ended ended = run({u"--eval"_s, code, m_file});
        QCOMPARE(ended.status, status);
        QCOMPARE(ended.output, output);
        QVERIFY2(ended.errors.contains(errors), qPrintable(ended.errors));
        QCOMPARE(ended.errors.isEmpty(), errors.isEmpty());
    }

    /// What the interpreter does at the end of its own program.
    // code: writes "hello" to the file at "path", and closes nothing
    TABLE(endsWholly, (QString code), {
        row("a variable", "f = open(path, 'w'); f.write('hello')");
        row("in a cycle", "class C: pass\nc = C(); c.c = c; c.f = open(path, 'w'); c.f.write('hello')");
        row("in a module", "import logging; logging.f = open(path, 'w'); logging.f.write('hello')");
        row("in a frame of a daemon",
            "import threading, time\ndef work():\n    f = open(path, 'w'); f.write('hello'); e.set(); "
            "time.sleep(60)\n"
            "e = threading.Event(); threading.Thread(target=work, daemon=True).start(); e.wait()");
        row("by a thread at the end",
            "import threading, time\ndef work():\n    global f\n    time.sleep(.1); f = open(path, 'w'); "
            "f.write('hello')\nthreading.Thread(target=work).start()");
        row("at exit",
            "import atexit\natexit.register(lambda: globals().update(f=open(path, 'w')) or "
            "f.write('hello'))");
        row("behind an error at exit",
            "import atexit\nf = open(path, 'w'); f.write('hello')\natexit.register(lambda: 1/0)");
        row("when it is let go",
            "class C:\n    def __del__(self): open(self.p, 'w').write('hello')\nc = C(); c.p = path");
        row("without __main__",
            "f = open(path, 'w'); f.write('hello'); import sys; del sys.modules['__main__']");
        row("with another __main__",
            "f = open(path, 'w'); f.write('hello'); import sys, types; sys.modules['__main__'] = "
            "types.ModuleType('m')");
        row("with no module as __main__",
            "f = open(path, 'w'); f.write('hello'); sys.modules['__main__'] = 3");
    })
    {
        const QString path = m_folder->filePath(u"written"_s);
        code = u"import sys\npath = '%1'\n"_s.arg(path) + code;
        for (const QStringList &arguments : {QStringList {u"--eval"_s, code},
                                             QStringList {u"--run"_s, write(u"script.py"_s, code + u'\n')}}) {
            const Ended ended = run(arguments);
            QVERIFY2(ended.status == 0, qPrintable(ended.errors));
            QCOMPARE(content(path), u"hello"_s);
            QVERIFY(QFile::remove(path));
        }
    }

    /// However many groups a script leaves open.
    void leavesOneUndoStep()
    {
        const Ended ended =
            run({u"--eval"_s,
                 u"import _runebook as r\nm = Doc.undoManager()\n"
                 "r.sharedObject('scriptingHandler').runMacroString_('')\n"
                 "m.beginUndoGrouping(); m.beginUndoGrouping(); Doc[0].name = 'x'\n"
                 "own = VXDocument.alloc().init(); n = own.undoManager() # nobody else knows of it\n"
                 "n.beginUndoGrouping(); n.beginUndoGrouping(); own.addInfo_(newInfo('x'))\n"
                 "import atexit\natexit.register(lambda: print(m.groupingLevel(), m.canUndo(), m.undo(), "
                 "Doc[0].name != 'x',\n"
                 "    n.groupingLevel(), n.undo(), len(own)))"_s,
                 m_file});
        QCOMPARE(ended.errors, QString());
        QCOMPARE(ended.output, u"0 True None True 0 None 0\n"_s);
    }

    /// From the standard input, with arguments, for a version, by a line of its own.
    void takesScriptsAsTheyCome()
    {
        m_program = u"runebook"_s;
        QProcess process;
        start(process, {u"--run"_s, u"-"_s, m_file, u"--"_s, u"--verbose"_s, u"a b"_s});
        process.write("import sys\nprint(sys.argv, len(Doc))\n1/0\n");
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(60'000));
        QCOMPARE(process.exitCode(), 1);
        QCOMPARE(process.readAllStandardOutput(), QByteArray("['-', '--verbose', 'a b'] 2395\n"));
        QVERIFY(process.readAllStandardError().contains("File \"<stdin>\", line 3"));

        const QString script =
            write(u"tool.py"_s,
                  u"#!/usr/bin/env -S %1 --run\nimport sys\nprint(len(sys.argv), len(Doc))\n"_s.arg(
                      QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook")));
        QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner));
        QProcess tool;
        tool.start(script, {m_file});
        QVERIFY(tool.waitForFinished(60'000));
        QCOMPARE(tool.readAllStandardOutput(), QByteArray("1 2395\n"));
        QCOMPARE(run({u"--eval"_s, u"print(sys.argv)"_s, u"--"_s, u"x"_s}).output, u"['-c', 'x']\n"_s);

        QCOMPARE(run({u"--require-python"_s, u"3.9"_s, u"--eval"_s, u"print(1)"_s}).output, u"1\n"_s);
        const Ended old = run({u"--require-python"_s, u"3.99"_s, u"--eval"_s, u"print(1)"_s});
        QCOMPARE(old.status, 3);
        QCOMPARE(old.output, QString());
        QCOMPARE(run({u"--require-python"_s, u"new"_s, u"--eval"_s, u"print(1)"_s}).status, 2);
    }

    /// With the program itself: what would show a box says its line.
    void waitsForNobody()
    {
        m_program = u"runebook"_s;
        const Ended ended =
            run({u"--eval"_s,
                 u"app = NSApplication.sharedApplication()\n"
                 "app.delegate().checkForUpdates()\napp.checkForUpdates_(None)\napp.aboutQt()\n"
                 "box = NSClassFromString('QMessageBox')\n"
                 "NSClassFromString('VXPreferencesController').registerDefaults()\n"
                 "w = app.delegate().compareWindow()\n"
                 "print(w.colorForValues_others_key_(None, None, 'name')\n"
                 "      != w.colorForValues_others_key_([newInfo('a')], None, 'name'))"_s,
                 m_file});
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.output, u"True\n"_s);
        QCOMPARE(ended.errors.count(u'\n'), 3);
        QCOMPARE(ended.errors.count(u"No address of an update feed"_s), 2);
        QVERIFY(ended.errors.contains(u"nothing was done"_s));
    }

    TABLE(savesOnlyWhatWorked, (const QString &code, bool saves, bool isSaved), {
        row("saved", "Doc['A'].name = 'Changed'", true, true);
        row("not asked for", "Doc['A'].name = 'Changed'", false, false);
        row("failed", "Doc['A'].name = 'Changed'; 1/0", true, false);
        row("ended well", "Doc['A'].name = 'Changed'; sys.exit(0)", true, true);
        const auto inObserver = [](const char *end) {
            return QString(
                u"Doc['A'].name = 'Changed'\nc = NSNotificationCenter.defaultCenter()\n"
                "c.addObserverForName_object_queue_usingBlock_('x', None, None, lambda n: exec('''%1'''))\n"
                "c.postNotificationName_object_('x', None)\nprint('goes on')"_s.arg(QLatin1StringView(end)));
        };
        row("interrupted in an observer", inObserver("raise KeyboardInterrupt"), true, false);
        row("ended in an observer", inObserver("sys.exit(4)"), true, false);
        row("an error in an observer is its own", inObserver("1/0"), true, true);
        row("taken back", "Doc['A'].name = 'Changed'; Doc.undoManager().undo()", true, false);
    })
    {
        const QString before = content(m_file);
        QStringList arguments {u"--eval"_s, code, m_file};
        if (saves)
            arguments.prepend(u"--save"_s);
        run(arguments);
        const QString changed = QString(before).replace("name=\"A\" "_L1, "name=\"Changed\" "_L1);
        QVERIFY(changed != before);
        QCOMPARE(content(m_file), isSaved ? changed : before);
    }

    /// Two runs change a record each and save at the same moment.
    void twoRunsMeetInOneFile()
    {
        const QString code = u"import os, time\n"
                             "def wait(name):\n"
                             "    while not os.path.exists(name): time.sleep(0.001)\n"
                             "Doc[%1].production = 'written.by%1'\n"
                             "open('%2/ready%1', 'w').close()\n"
                             "wait('%2/ready0'); wait('%2/ready1')\n"_s;
        const int rounds = runebook::rounds(5);
        int refused = 0;
        for (int round = 0; round < rounds; ++round) {
            init();
            QProcess runs[2];
            m_program = u"runebook"_s;
            for (int who : {0, 1})
                start(runs[who], {u"--save"_s, u"--eval"_s, code.arg(who).arg(m_folder->path()), m_file});
            for (int who : {0, 1})
                QVERIFY(runs[who].waitForFinished(60'000));
            const QString text = content(m_file);
            QCOMPARE(text.count(u"<glyph "), 2395);
            for (int who : {0, 1}) {
                const QByteArray errors = runs[who].readAllStandardError();
                QCOMPARE(text.contains(u"written.by%1"_s.arg(who)), runs[who].exitCode() == 0);
                QVERIFY2(
                    runs[who].exitCode() == 0 ? errors.isEmpty()
                                              : runs[who].exitCode() == 1
                            && (errors.contains("Another program") && errors.contains("was not touched")),
                    errors.constData());
                refused += runs[who].exitCode();
            }
        }
        QVERIFY(refused > 0 && refused <= rounds);
        qInfo("%d saves at the same time in pairs, %d refused with the reason, none lost", 2 * rounds,
              refused);
    }

    void opensNamesThatAreNoUtf8()
    {
        const QByteArray name = QFile::encodeName(m_folder->path()) + "/caf\xE9 \xFF.xml";
        QCOMPARE(::rename(QFile::encodeName(m_file).constData(), name.constData()), 0);
        // QProcess would spell the name anew.
        const QString command =
            u"exec \"$0\" --save --eval \"$1\" \"$(printf '%s/caf\\351 \\377.xml' \"$2\")\""_s;
        const QString code = u"import os\nDoc[0].production = 'kept'\n"
                             "print(os.path.exists(Doc.fileURL()), os.fsencode(Doc.fileURL())[-11:])"_s;
        QProcess process;
        process.start(
            u"sh"_s,
            {u"-c"_s, command, QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook"), code, m_folder->path()});
        QVERIFY(process.waitForFinished(60'000));
        QCOMPARE(process.readAllStandardError(), QByteArray());
        QCOMPARE(process.readAllStandardOutput(), QByteArray("True b'/caf\\xe9 \\xff.xml'\n"));
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(::rename(name.constData(), QFile::encodeName(m_file).constData()), 0);
        QVERIFY(content(m_file).contains(u"production=\"kept\""_s));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden | QDir::System),
                 QStringList {u"sample.xml"_s});
    }

    // errors: a part of them
    TABLE(savesOnlyWhatFilesCanHold,
          (const QString &code, const QStringList &options, int status, bool isSaved, const QString &errors),
          {
              const auto add = [&](const char *name, const QByteArray &code, const char *options, int status,
                                   bool isSaved, const char *errors) {
                  row(name, QString::fromUtf8(code),
                      QString::fromLatin1(options).split(u' ', Qt::SkipEmptyParts), status, isSaved,
                      QString::fromUtf8(errors));
              };
              const char *comment = "Doc['A'].sortName = 'q <!-- c'";
              const char *quote = "Doc['A'].sortName = 'q \"c'";
              add("harmless", "Doc['A'].sortName = 'q - c'", "--save", 0, true, "");
              add("a comment", comment, "--save", 1, false, "A: Sort Name holds");
              add("a comment, lossy", comment, "--save --lossy", 1, false, "A: Sort Name holds");
              add("a quote", quote, "--save", 1, false, "A: Sort Name holds a double quote");
              add("a quote, lossy", quote, "--save --lossy", 0, true, "A copy of the file as it was is kept");
              add("the script saves", "Doc['A'].sortName = 'q <!-- c'\nDoc.saveDocument()", "--lossy", 1,
                  false, "A: Sort Name holds");
              const auto writes = [](const char *value, const char *how) {
                  return QByteArray("Doc['A'].sortName = '") + value + "'\nDoc.writeToURL_ofType_" + how;
              };
              const QByteArray writesQuote = writes("q \"c", "(Doc.fileURL(), 'public.xml')");
              add("the script writes", writesQuote, "", 1, true, "A: Sort Name holds a double quote");
              add("the script writes and ends by itself", writesQuote + "\nraise SystemExit(3)", "", 3, true,
                  "A: Sort Name holds a double quote");
              add("the script writes, lossy", writesQuote, "--lossy", 0, true,
                  "A: Sort Name holds a double quote");
              add("the script writes a comment", writes("q <!-- c", "(Doc.fileURL(), 'public.xml')"),
                  "--lossy", 1, false, "A: Sort Name holds “<!--”");
              add("a legacy code point, without a step", "Doc['A'].unicodeLegacy = 'E000'", "--save", 0, true,
                  "");
              add("another version, without a step", "Doc.setFileVersion_(1)", "--save", 1, false, "Case");
          })
    {
        const QString before = content(m_file);
        m_program = u"runebook"_s;
        const Ended ended = run(QStringList(options) << u"--eval"_s << code << m_file);
        QCOMPARE(ended.status, status);
        QCOMPARE(content(m_file) != before, isSaved);
        QVERIFY2(ended.errors.contains(errors), qPrintable(ended.errors));
        QCOMPARE(ended.errors.isEmpty(), errors.isEmpty());
        QCOMPARE(content(m_file).count(u"<glyph "_s), before.count(u"<glyph "_s));
    }

    void opensTheFirstFileInFront()
    {
        const QString table = write(u"table.txt"_s, u"name\tcategory\nA\tLetter\n"_s);
        const QString code =
            u"print([len(d) for d in documents()], Doc.fileURL() == documents()[0].fileURL())"_s;
        QCOMPARE(run({u"--eval"_s, code, table, m_file}).output, u"[1, 2395] True\n"_s);
        QCOMPARE(run({u"--eval"_s, code, m_file, table}).output, u"[2395, 1] True\n"_s);
        QCOMPARE(run({u"--eval"_s, u"print(Doc)"_s}).output, u"None\n"_s);
        const QString latin = m_folder->filePath(u"latin1.xml"_s);
        runebook::write(latin, "<glyphData>\n<glyph name=\"\xe9\" />\n</glyphData>\n");
        for (const QString &bad : {latin, m_folder->filePath(u"missing.xml"_s), write(u"a.doc"_s, u"x"_s)}) {
            const Ended ended = run({u"--save"_s, u"--eval"_s, u"print(1)"_s, m_file, bad});
            QCOMPARE(ended.status, 2);
            QCOMPARE(ended.output, QString());
            QCOMPARE(ended.errors.count(u'\n'), 1);
        }
        QCOMPARE(run({u"--run"_s, m_folder->filePath(u"missing.py"_s), m_file}).status, 2);
        QCOMPARE(run({m_file}).status, 2);
    }

    /// A session that has ended leaves its variables behind. What a script starts sees them as they were.
    TABLE(needsNoDisplay, (const QString &platform), {
        row("dead display", QString());
        row("and the platform that needs it", "xcb");
    })
    {
        m_program = u"runebook"_s;
        m_environment = {{u"DISPLAY"_s, u":9999"_s}, {u"QT_QPA_PLATFORM"_s, platform}};
        QProcess process;
        start(
            process,
            {u"--eval"_s, u"import os\nprint(os.popen('echo $DISPLAY $QT_QPA_PLATFORM').read().strip())"_s});
        QVERIFY(process.waitForFinished(60'000));
        QCOMPARE(process.readAllStandardError(), QByteArray());
        QCOMPARE(process.readAllStandardOutput().trimmed(), (":9999 "_L1 + platform).trimmed().toLatin1());
        QCOMPARE(process.exitCode(), 0);
    }

    TABLE(endsWithoutPython, (QString library), {
        row("not there", "/no/such/libpython3.11.so.1.0");
        row("no library", source(u"resources/sample.xml"_s));
        row("no standard library", "copy");
    })
    {
        if (library == "copy"_L1) {
            // A library far from everything that belongs to it.
            const QString original = Interpreters::libraries(u"3.11"_s).value(0);
            QVERIFY(!original.isEmpty());
            QDir(m_folder->path()).mkpath(u"lib"_s);
            library = m_folder->filePath(u"lib/"_s + QFileInfo(original).fileName());
            QVERIFY(QFile::copy(original, library));
        }
        const Ended ended = run({u"--eval"_s, u"print(1)"_s, m_file}, library);
        QCOMPARE(ended.status, 3);
        QCOMPARE(ended.output, QString());
        QVERIFY(ended.errors.startsWith(u"runebook: "_s));
    }

    void keepsOutputInOrder()
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        start(process,
              {u"--eval"_s,
               u"import os, sys, subprocess\n"
               "print('1', end=' ')\nprint('2', file=sys.stderr, end=' ')\nprint('3', end=' ')\n"
               "os.system('printf \"4 \"')\nprint('5', end=' ')\nsubprocess.call(['printf', '6 '])\n"
               "print('7', end='')\nsys.stderr.write(' 8')"_s});
        QVERIFY(process.waitForFinished(60'000));
        QCOMPARE(process.readAll(), QByteArray("1 2 3 4 5 6 7 8"));
    }

    void printsWithoutWaiting()
    {
        QProcess process;
        start(process, {u"--eval"_s, u"print('now', end='')\nimport time\ntime.sleep(60)"_s});
        QVERIFY(process.waitForReadyRead(30'000));
        QCOMPARE(process.readAllStandardOutput(), QByteArray("now"));
        process.kill();
        process.waitForFinished();
    }

    TABLE(writesEveryText, (const QString &code, const QByteArray &output), {
        row("astral", u"print('\\U0001F600')"_s, QByteArray("\xF0\x9F\x98\x80\n"));
        row("byte order mark", "print('\\ufeffx')", QByteArray("\xEF\xBB\xBFx\n"));
        row("zero", u"print('a\\0b')"_s, QByteArray("a\0b\n", 4));
        row("half a pair is replaced", "print('a\\ud800b')", "a?b\n");
        row("nothing", "print('', end='')", QByteArray());
    })
    {
        QProcess process;
        start(process, {u"--eval"_s, code});
        QVERIFY(process.waitForFinished(60'000));
        QCOMPARE(process.readAllStandardOutput(), output);
        QCOMPARE(process.exitCode(), 0);
    }

    void printsFiftyMegabytes()
    {
        constexpr qint64 kLines = 500'000;
        constexpr qint64 kLineLength = 105; // "é" takes two
        QProcess process;
        const QString path = m_folder->filePath(u"output"_s);
        process.setStandardOutputFile(path);
        start(process,
              {u"--eval"_s,
               u"import resource\n"
               "before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss\n"
               "for i in range(500000): print('%06d' % i + 'é' + 'x' * 96)\n"
               "sys.stderr.write(str(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before))"_s});
        QVERIFY(process.waitForFinished(120'000));
        QCOMPARE(process.exitCode(), 0);
        QFile output(path);
        QVERIFY(output.open(QIODevice::ReadOnly));
        QCOMPARE(output.size(), kLines * kLineLength);
        for (const qint64 line : {qint64(0), kLines / 3, kLines - 1}) {
            output.seek(line * kLineLength);
            QCOMPARE(output.readLine().left(8), QByteArray::number(line).rightJustified(6, '0') + "é");
        }
        // In kilobytes: nothing of it is kept.
        const QByteArray grown = process.readAllStandardError();
        QVERIFY2(grown.toInt() < 8192, grown.constData());
    }

    /// What cannot be written counts, at once or at the end.
    TABLE(failsWhereOutputCannotBeWritten, (const QString &code), {
        row("at the end", "print('x')");
        row("at once", "print('x', flush=True)");
        row("much of it", "print('x' * 1000000)");
        row("errors of the script come first", "print('x'); 1/0");
    })
    {
        for (const auto program : {"runebook"_L1, "runebook_headless_test"_L1}) {
            m_program = program;
            QProcess process;
            process.setStandardOutputFile(u"/dev/full"_s);
            start(process, {u"--eval"_s, code});
            QVERIFY(process.waitForFinished(60'000));
            QCOMPARE(process.exitCode(), 1);
            const QByteArray errors = process.readAllStandardError();
            QVERIFY2(errors.contains("runebook: The output could not be written: "), errors);
        }
    }

    void takesTextFromThreads()
    {
        const Ended ended =
            run({u"--eval"_s,
                 u"import sys, threading\n"
                 "def work(n):\n    for i in range(2000): sys.stdout.write('%d:%d\\n' % (n, i))\n"
                 "threads = [threading.Thread(target=work, args=(n,)) for n in range(8)]\n"
                 "[t.start() for t in threads]\n[t.join() for t in threads]\n"_s});
        QHash<QString, int> next;
        const QStringList lines = ended.output.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 16000);
        for (const QString &line : lines)
            QCOMPARE(line.section(u':', 1).toInt(), next[line.section(u':', 0, 0)]++);
    }

    void endsWithItsReader()
    {
        QProcess process;
        QProcess reader;
        process.setStandardOutputProcess(&reader);
        start(process, {u"--eval"_s, u"while True: print('x')"_s});
        reader.start(u"head"_s, {u"-n1"_s});
        QVERIFY(process.waitForFinished(30'000));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QVERIFY(reader.waitForFinished(30'000));
        QCOMPARE(reader.readAllStandardOutput(), QByteArray("x\n"));
    }

    TABLE(stopsOnInterrupt, (const QString &code), {
        row("loop", kEndlessLoop);
        row("sleep", "import time; time.sleep(60)");
        row("lock", "import threading; l = threading.Lock(); l.acquire(); l.acquire()");
        row("regular expression", "import re; re.match('(a+)+$', 'a' * 60 + 'b')");
        row("bridge", "while True: Doc.countOfInfos()");
    })
    {
        QProcess process;
        start(process, {u"--save"_s, u"--eval"_s, u"Doc['A'].name = 'x'\nprint('ready')\n"_s + code, m_file});
        QVERIFY(process.waitForReadyRead(30'000));
        ::kill(static_cast<pid_t>(process.processId()), SIGINT);
        QVERIFY(process.waitForFinished(30'000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        const QString errors = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(errors.contains(u"File \"macro panel\", line "_s) && errors.contains(u"KeyboardInterrupt"_s),
                 qPrintable(errors));
        QCOMPARE(content(m_file), content(source(u"resources/sample.xml"_s)));
    }
};

RUNEBOOK_TEST_MAIN(HeadlessTest)
#include "HeadlessTest.moc"
