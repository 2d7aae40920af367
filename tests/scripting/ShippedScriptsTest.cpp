#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/HeadlessFixture.h"
#include "tests/scripting/Interpreters.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

using namespace Qt::StringLiterals;
using namespace runebook;

/// What ships for scripts, run as users run it: the examples, the guide, the stubs, and the checks from
/// inside.
class ShippedScriptsTest : public QObject, HeadlessFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { setUp(); }

    void comforts()
    {
        m_program = u"runebook"_s;
        check(u"comfort"_s, {m_file});
        // As the pane lists them.
        const QString before = content(m_file);
        write(u"sample.xml"_s, QString(before).replace("name=\"Aacute\""_L1, "name=\"A\""_L1));
        QCOMPARE(
            run({u"--eval"_s,
                 u"print([(p['kind'], p['index'], p['info'].name) for p in Doc.problems() if p['name'] == 'A'])"_s,
                 m_file})
                .output,
            u"[('duplicate-name', 0, 'A'), ('duplicate-name', 1, 'A'), "
            "('self-component', 1, 'A'), ('ambiguous-component', 1, 'A')]\n"_s);
    }

    /// The examples and the guide, as a type checker sees them with the stubs that the program writes.
    void writesStubsThatHold()
    {
        const QString checker = QStandardPaths::findExecutable(u"mypy"_s);
        if (checker.isEmpty())
            QSKIP("mypy: tools/install-packages brings it");
        m_program = u"runebook"_s;
        const QString stubs = m_folder->filePath(u"stubs"_s), scripts = m_folder->filePath(u"scripts"_s);
        const Ended written = run({u"--python-stubs"_s, stubs});
        QVERIFY2(written.status == 0, qPrintable(written.errors));
        // Those that lie beside the program are the same.
        const QStringList names = QDir(stubs).entryList(QDir::Files);
        QVERIFY(names.contains(u"MainApp.pyi"_s));
        for (const QString &name : names)
            QCOMPARE(content(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook/python/") + name),
                     content(stubs + u'/' + name));
        QVERIFY(QDir().mkpath(scripts));
        const QString prelude = u"import sys, objc, os\nfrom AppKit import *\nfrom Foundation import *\n"
                                "from MainApp import *\n"_s;
        int count = 0;
        const auto add = [&](const QString &text) {
            write(u"scripts/s%1.py"_s.arg(count++), prelude + text);
        };
        for (const QFileInfo &example :
             QDir(source(u"resources/scripts/examples"_s)).entryInfoList({u"*.py"_s}))
            add(content(example.filePath()));
        static const QRegularExpression block(u"```python\n(.*?)```"_s,
                                              QRegularExpression::DotMatchesEverythingOption);
        for (const QString &guide : {u"docs/scripting.md"_s, u"docs/comparing.md"_s}) {
            for (auto found = block.globalMatch(content(source(guide))); found.hasNext();)
                add(found.next().captured(1));
        }
        add(u"Doc.noSuchOperation_(1)\n"_s);
        add(u"Doc.insertObject_inInfosAtIndex_('x', 3)\n"_s);
        add(u"Doc['A'].name = 3\n"_s);
        QStringList arguments {u"--no-incremental"_s, u"--check-untyped-defs"_s,
                               u"--disable-error-code=var-annotated"_s, u"--no-error-summary"_s};
        for (int i = 0; i < count; ++i)
            arguments << scripts + u"/s%1.py"_s.arg(i);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"MYPYPATH"_s, stubs);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder->path());
        process.start(checker, arguments);
        QVERIFY(process.waitForFinished(300'000));
        QStringList complaints =
            QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError())
                .split(u'\n', Qt::SkipEmptyParts);
        complaints.sort();
        // The three that are wrong, and no other.
        QVERIFY2(complaints.size() == 3, qPrintable(complaints.join(u'\n')));
        for (int i = 0; i < 3; ++i)
            QVERIFY2(complaints[i].contains(u"s%1.py:5: error"_s.arg(count - 3 + i)),
                     qPrintable(complaints[i]));
    }

    /// Everything that scripts reach, with arguments that nobody would give: RUNEBOOK_SEEDS runs more of
    /// them.
    TABLE(standsHostileCalls, (int seed), {
        const int seeds =
            qEnvironmentVariableIsSet("RUNEBOOK_SEEDS") ? qEnvironmentVariableIntValue("RUNEBOOK_SEEDS") : 2;
        for (int seed = 1; seed <= seeds; ++seed)
            row(QString::asprintf("seed %d", seed), seed);
    })
    {
        m_program = u"runebook"_s;
        const Ended ended = run({u"--run"_s, source(u"tests/scripting/checks/hostile.py"_s), m_file, u"--"_s,
                                 QString::number(seed), u"2000"_s});
        QVERIFY2(ended.output.contains(u"called 2000"_s),
                 qPrintable(ended.output + ended.errors.right(3000)));
    }

    TABLE(runsOnEveryInterpreter, (const QString &minor), {
        for (const char *minor : {"3.9", "3.10", "3.11"})
            row(minor, minor);
    })
    {
        const QStringList libraries = Interpreters::libraries(minor);
        if (libraries.isEmpty())
            SKIP_WITHOUT_PYTHON(minor);
        for (const QString &library : libraries) {
            // Packages of the interpreter's own, and of the user's folder for scripts.
            write(u"data/runebook/Scripts/site-packages/ours.py"_s, u"answer = 'found'\n"_s);
            m_environment[u"XDG_DATA_HOME"_s] = m_folder->filePath(u"data"_s);
            const Ended modules =
                run({u"--eval"_s,
                     u"import math, json, sqlite3, ctypes, site, os, subprocess, sys\n"
                     "print(sqlite3.connect(':memory:').execute('select 41+1').fetchone()[0])\n"
                     "print(ctypes.sizeof(ctypes.c_int), json.loads('[1]'), math.floor(2.5))\n"
                     "print([p for p in site.getsitepackages() if os.path.isdir(p) and p not in sys.path])\n"
                     "own = '%s/bin/python%d.%d' % ((sys.prefix,) + sys.version_info[:2])\n"
                     "print(not os.path.exists(own) or subprocess.check_output([sys.executable, "
                     "'-c', 'import sys; print(sys.version)'], text=True).strip() == sys.version)\n"
                     "import ours\nprint(ours.answer)"_s},
                    library);
            QCOMPARE(modules.errors, QString());
            QCOMPARE(modules.output, u"42\n4 [1] 2\n[]\nTrue\nfound\n"_s);
            check(u"bridge"_s, {m_file}, library);
            check(u"trust"_s, {m_file}, library); // arguments and callbacks that no script should use
        }
    }

    void drivesTheEditor()
    {
        m_program = u"runebook"_s; // with the panel and its classes
        check(u"editor"_s, {m_file});
    }

    /// With the program itself, which has the windows.
    void drivesTheWindows()
    {
        m_program = u"runebook"_s;
        check(u"editing"_s, {m_file});
        // How windows look and what was searched for stays the user's.
        const Ended windows = run(
            {u"--eval"_s,
             u"Doc.makeWindowControllers()\nw = "
             u"Doc.windowController()\nw.searchField().setStringValue_('a')\n"
             "w.filterInfos()\nw.setProblemsShown_(True)\nw.searchMode_(3)\nprint(len(w.infolistController()."
             "arrangedObjects()))"_s,
             m_file});
        QVERIFY2(windows.status == 0, qPrintable(windows.errors));
        QCOMPARE(content(m_folder->filePath(u"defaults.ini"_s)), QString());
    }

    /// Those that are not supported run when they are chosen, with a word of warning.
    TABLE(runsOnChosenInterpreters, (const QString &minor), {
        for (const char *minor : {"3.8", "3.12", "3.13"})
            row(minor, QString::fromLatin1(minor));
    })
    {
        const QStringList libraries = Interpreters::libraries(minor);
        if (libraries.isEmpty())
            SKIP_WITHOUT_PYTHON(minor);
        for (const QString &library : libraries) {
            const Ended ended = check(u"bridge"_s, {m_file}, library);
            QVERIFY2(ended.errors.count(u'\n') == 1 && ended.errors.contains(u"is not supported"_s),
                     qPrintable(ended.errors));
        }
    }

    // replaced: in the sample, so that there is something to do
    TABLE(runsExamples, (const QString &replaced, const QString &by), {
        row("add_small_caps", "", "");
        row("check_glyph_data", "", "");
        row("export_selection", "", "");
        row("fill_production_names", " production=\"[^\"]*\"", "");
        row("fill_sort_names", "", "");
        row("find_duplicates", "name=\"(Abreve|Acaron)\"", "name=\"A\"");
        row("list_missing_code_points", "unicode=\"03[AB].\"", "");
        row("rename_by_pattern", "name=\"b\\.sc\"", "name=\"a.smcp\"");
        row("renumber_sort_names", "", "");
    })
    {
        const QString example = QString::fromUtf8(QTest::currentDataTag());
        QString sample = content(m_file);
        if (!replaced.isEmpty())
            write(u"sample.xml"_s, sample.replace(QRegularExpression(replaced), by));
        const Ended ended =
            run({u"--run"_s, source(u"resources/scripts/examples/"_s + example + ".py"_L1), m_file});
        QCOMPARE(ended.errors, QString());
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.output, content(source(u"tests/scripting/expected/"_s + example + ".txt"_L1)));
    }

    /// Every example that ships with the program is tested.
    void testsAllExamples()
    {
        const QStringList shipped =
            QDir(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook/Contents/Scripts311/Examples"))
                .entryList({u"*.py"_s}, QDir::Files, QDir::Name);
        QCOMPARE(
            shipped,
            QDir(source(u"resources/scripts/examples"_s)).entryList({u"*.py"_s}, QDir::Files, QDir::Name));
        QCOMPARE(QDir(source(u"tests/scripting/expected"_s)).entryList(QDir::Files).size(), shipped.size());
    }

    /// Every example of the guide runs, and prints what the guide says below it.
    void runsTheGuide()
    {
        const QString guide = content(source(u"docs/scripting.md"_s));
        static const QRegularExpression block(
            u"```python\\n(.*?)```\\n(?:\\nprints\\n\\n```text\\n(.*?)```)?"_s,
            QRegularExpression::DotMatchesEverythingOption);
        int count = 0;
        for (auto found = block.globalMatch(guide); found.hasNext(); ++count) {
            const QRegularExpressionMatch match = found.next();
            const Ended ended = run({u"--run"_s, write(u"example.py"_s, match.captured(1)), m_file});
            QVERIFY2(ended.status == 0, qPrintable(match.captured(1) + ended.errors));
            QCOMPARE(ended.errors, QString());
            if (match.hasCaptured(2))
                QCOMPARE(ended.output, match.captured(2));
        }
        QVERIFY(count >= 7);
    }
};

RUNEBOOK_TEST_MAIN(ShippedScriptsTest)
#include "ShippedScriptsTest.moc"
