#include "platform/StandardFolders.h"
#include "platform/defaults/UserDefaults.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/PythonDiscovery.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonProbe.h"
#include "tests/Files.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/KeptConsole.h"

#include <QMenu>

using namespace Qt::StringLiterals;
using namespace runebook;

/// A tree of installations built for one test, told as paths below its root.
class InstallationTree
{
public:
    InstallationTree() { QDir(m_folder.path()).mkpath(u"home"_s); }

    PythonPlaces places() const { return {root(), root() + "/home"_L1, {}}; }
    QString root() const { return QFileInfo(m_folder.path()).canonicalFilePath(); }
    QString path(const QString &below) const { return root() + u'/' + below; }

    void addFramework(const QString &folder, const QString &version, const QString &bundleVersion)
    {
        addFile(folder + "/Python.framework/Versions/"_L1 + version + "/Resources/Info.plist"_L1,
                u"<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleVersion</key>"
                "<string>%1</string></dict></plist>"_s.arg(bundleVersion));
    }

    void addFile(const QString &below, const QString &text = {}) { write(path(below), text.toUtf8()); }

    void addLink(const QString &target, const QString &below)
    {
        QDir().mkpath(QFileInfo(path(below)).path());
        QVERIFY(QFile::link(target, path(below)));
    }

    /// The names of what is found, one a line, with the path below the root when \a withPaths.
    QString found(const QString &chosen = {}, bool withPaths = false) const
    {
        QStringList lines;
        for (const QVariantMap &one : PythonDiscovery(places()).find(chosen)) {
            QString line = one[u"name"_s].toString();
            if (withPaths)
                line += ": "_L1 + one[u"fullPath"_s].toString().mid(root().size());
            if (!one.contains(u"version"_s))
                line += " without version"_L1;
            lines << line;
        }
        return lines.join(u'\n');
    }

private:
    QTemporaryDir m_folder;
};

/// Which interpreters are found, and what loads from them.
class PythonTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(labelsFrameworksByPlace, (const QString &folder, const QString &name), {
        row("Apple", "System/Library/Frameworks", "3.11 (Apple)");
        row("Python.org", "Library/Frameworks", "3.11 (Python.org)");
        row("MacPorts", "opt/local/Library/Frameworks", "3.11 (MacPorts)");
        row("Homebrew", "opt/homebrew/Cellar/python@3.11/3.11.4/Frameworks", "3.11 (Homebrew)");
        row("old Homebrew", "usr/local/Cellar/python3/3.11.4/Frameworks", "3.11 (Homebrew)");
        row("user", "home/Library/Frameworks", "3.11 (DEBUG)");
        row("elsewhere", "srv/Library/Frameworks", QString());
    })
    {
        InstallationTree tree;
        tree.addFramework(folder, u"3.11"_s, u"3.11"_s);
        QCOMPARE(tree.found(), name);
    }

    void sortsByVersionThenName()
    {
        InstallationTree tree;
        tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
        tree.addFramework(u"Library/Frameworks"_s, u"3.10"_s, u"3.10"_s);
        tree.addFramework(u"Library/Frameworks"_s, u"3.9"_s, u"3.9.18"_s);
        tree.addFramework(u"opt/homebrew/Cellar/python@3.11/3.11.4/Frameworks"_s, u"3.11"_s, u"3.11"_s);
        QCOMPARE(tree.found(),
                 u"3.9.18 (Python.org)\n3.10 (Python.org)\n3.11 (Homebrew)\n3.11 (Python.org)"_s);
    }

    void countsLinkedVersionsOnce()
    {
        InstallationTree tree;
        tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
        tree.addLink(u"3.11"_s, u"Library/Frameworks/Python.framework/Versions/Current"_s);
        QCOMPARE(tree.found({}, true),
                 u"3.11 (Python.org): /Library/Frameworks/Python.framework/Versions/3.11"_s);
    }

    void walksCellars()
    {
        InstallationTree tree;
        const QString cellar = u"opt/homebrew/Cellar/python@3.10/"_s;
        tree.addFramework(cellar + "3.10.1/Frameworks"_L1, u"3.10"_s, u"3.10"_s);
        for (const auto skipped :
             {"bin"_L1, "libexec"_L1, "lib"_L1, "share"_L1, "IDLE 3.app"_L1, ".hidden"_L1})
            tree.addFramework(cellar + "3.10.1/"_L1 + skipped, u"3.9"_s, u"3.9"_s);
        QCOMPARE(tree.found(), u"3.10 (Homebrew)"_s);
    }

    void endsInLoopsOfLinks()
    {
        InstallationTree tree;
        const QString cellar = u"usr/local/Cellar/python3/"_s;
        tree.addFramework(cellar + "3.10.1"_L1, u"3.10"_s, u"3.10"_s);
        tree.addLink(tree.path(cellar), cellar + "again"_L1);
        tree.addLink(tree.path(cellar), cellar + "3.10.1/above"_L1);
        QCOMPARE(tree.found(), u"3.10 (Homebrew)"_s);
    }

    TABLE(keepsToSupportedVersions, (const QString &version, bool isSupported), {
        for (const auto version : {"3.9"_L1, "3.9.18"_L1, "3.10.13"_L1, "3.11"_L1, "3.11.999"_L1})
            row(version.data(), QString(version), true);
        for (const auto version :
             {"3.8"_L1, "3.8.99"_L1, "3.11.1000"_L1, "3.12"_L1, "2.7.18"_L1, "4.0"_L1, ""_L1})
            row(version.data(), QString(version), false);
    })
    {
        const VXScriptingHandler handler({});
        QCOMPARE(handler.isSupportedPythonVersion(version), isSupported);
        InstallationTree tree;
        tree.addFramework(u"Library/Frameworks"_s, u"x"_s, version);
        QCOMPARE(!tree.found().isEmpty(), isSupported);
        QString told;
        const QString path = tree.path(u"Library/Frameworks/Python.framework/Versions/x"_s);
        QCOMPARE(handler.isSupportedPythonVersion(path, &told), isSupported);
        QCOMPARE(told, isSupported ? version : QString());
    }

    void findsSharedLibraries()
    {
        InstallationTree tree;
        tree.addFile(u"usr/lib/x86_64-linux-gnu/libpython3.11.so.1.0"_s);
        tree.addLink(u"libpython3.11.so.1.0"_s, u"usr/lib/x86_64-linux-gnu/libpython3.11.so"_s);
        tree.addLink(u"libpython3.11.so.1.0"_s, u"usr/lib/x86_64-linux-gnu/libpython3.11.so.1"_s);
        tree.addFile(u"usr/lib/x86_64-linux-gnu/libpython3.11.a"_s);
        tree.addFile(u"usr/lib/x86_64-linux-gnu/libpython2.7.so.1.0"_s);
        tree.addFile(u"usr/include/python3.11/patchlevel.h"_s, u"#define PY_VERSION \"3.11.2+\"\n"_s);
        tree.addFile(u"home/.pyenv/versions/3.9.18/lib/libpython3.9.so.1.0"_s);
        tree.addFile(u"home/.pyenv/versions/3.12.1/lib/libpython3.12.so.1.0"_s);
        tree.addFile(u"home/.pyenv/versions/3.8.18/lib/libpython3.8.so.1.0"_s);
        tree.addFile(
            u"home/.local/share/uv/python/cpython-3.10.14-linux-x86_64-gnu/lib/libpython3.10.so.1.0"_s);
        tree.addFile(u"home/.local/share/mise/installs/python/3.10.9/lib/libpython3.10.so.1.0"_s);
        tree.addFile(u"home/miniconda3/envs/work/lib/libpython3.9.so.1.0"_s);
        tree.addFile(u"opt/tools/lib/libpython3.10.so"_s);
        QCOMPARE(tree.found({}, true),
                 u"3.9 (Conda): /home/miniconda3/envs/work/lib/libpython3.9.so.1.0\n"
                 "3.9.18 (pyenv): /home/.pyenv/versions/3.9.18/lib/libpython3.9.so.1.0\n"
                 "3.10 (unknown): /opt/tools/lib/libpython3.10.so\n"
                 "3.10.9 (mise): /home/.local/share/mise/installs/python/3.10.9/lib/libpython3.10.so.1.0\n"
                 "3.10.14 (uv): /home/.local/share/uv/python/cpython-3.10.14-linux-x86_64-gnu/lib/"
                 "libpython3.10.so.1.0\n"
                 "3.11.2 (System): /usr/lib/x86_64-linux-gnu/libpython3.11.so.1.0"_s);
    }

    TABLE(addsTheChosenOne, (const QString &chosen, const QString &added), {
        row("nothing chosen", QString(), QString());
        row("another framework", "srv/Python.framework/Versions/3.12", "\n3.12.1 (manually) without version");
        row("by its folder", "srv/Python.framework", "\n3.12.1 (manually) without version");
        row("listed", "Library/Frameworks/Python.framework/Versions/3.11", QString());
        row("prefix of a listed one", "Library/Frameworks/Python.framework/Versions/3", QString());
        row("below a listed one", "Library/Frameworks/Python.framework/Versions/3.11/x", QString());
        row("not there", "gone/Python.framework/Versions/3.11", QString());
        row("no bundle", "empty/Python.framework/Versions/3.11", QString());
    })
    {
        InstallationTree tree;
        tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
        tree.addFramework(u"srv"_s, u"3.12"_s, u"3.12.1"_s);
        tree.addFile(u"empty/Python.framework/Versions/3.11/Python"_s);
        QCOMPARE(tree.found(chosen.isEmpty() ? chosen : tree.path(chosen)), u"3.11 (Python.org)"_s + added);
    }

    void addsAChosenLibrary()
    {
        InstallationTree tree;
        tree.addFile(u"usr/lib/libpython3.11.so.1.0"_s);
        tree.addFile(u"home/.pyenv/versions/3.12.1/lib/libpython3.12.so.1.0"_s);
        QCOMPARE(tree.found(tree.path(u"home/.pyenv/versions/3.12.1/lib/libpython3.12.so.1.0"_s)),
                 u"3.11 (System)\n3.12.1 (manually) without version"_s);
        QCOMPARE(tree.found(tree.path(u"usr/lib/libpython3.11.so.1.0"_s)), u"3.11 (System)"_s);
    }

    void choosesTheNewestOrTheUsers()
    {
        InstallationTree tree;
        VXScriptingHandler handler(tree.places());
        handler.findAllPythonFrameworks();
        QVERIFY(handler.currentPythonPath().isNull());
        QDir(tree.path(u"usr/lib"_s)).mkpath(u"."_s);
        const QString told = handler.missingPythonText();
        QVERIFY2(told.contains(tree.path(u"usr/lib"_s)) && told.contains(u"3.9 to 3.11"_s)
                     && told.contains(u"libpython3.11"_s),
                 qPrintable(told));
        tree.addFramework(u"Library/Frameworks"_s, u"3.9"_s, u"3.9"_s);
        tree.addFramework(u"Library/Frameworks"_s, u"3.10"_s, u"3.10"_s);
        handler.findAllPythonFrameworks();
        QCOMPARE(handler.currentPythonPath(),
                 tree.path(u"Library/Frameworks/Python.framework/Versions/3.10"_s));
        UserDefaults::standard().setObjectForKey(u"/nowhere"_s, u"VXPythonFrameworkPath"_s);
        QCOMPARE(handler.currentPythonPath(), u"/nowhere"_s);
        UserDefaults::standard().removeObjectForKey(u"VXPythonFrameworkPath"_s);
    }

    TABLE(readsNoVersionFromBrokenLists, (const QByteArray &list), {
        row("empty", QByteArray());
        row("no list", "3.11");
        row("cut off", "<plist version=\"1.0\"><dict><key>CFBundleVersion</key><str");
        row("an array", QByteArray("<plist version=\"1.0\"><array><string>3.11</string></array></plist>"));
        row("a number",
            QByteArray("<plist version=\"1.0\"><dict><key>CFBundleVersion</key>"
                       "<integer>3</integer></dict></plist>"));
        row("binary, cut off", QByteArray("bplist00\xd1\x01\x02", 11));
    })
    {
        InstallationTree tree;
        tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
        write(tree.path(u"Library/Frameworks/Python.framework/Versions/3.11/Resources/Info.plist"_s), list);
        QCOMPARE(tree.found(), QString());
    }

    void nestsTheSupportFolder()
    {
        const QString data = qEnvironmentVariable("XDG_DATA_HOME");
        QCOMPARE(VXScriptingHandler::applicationSupportFolder(), data + "/runebook"_L1);
        QCOMPARE(VXScriptingHandler::applicationSupportPath(), data + data + "/runebook"_L1);
        QVERIFY(VXScriptingHandler::scriptPaths().isEmpty());
        QVERIFY(!VXScriptingHandler::validateScript(data));

        const QString shown = data + "/runebook/Scripts"_L1;
        const QString searched = data + data + "/runebook/Scripts"_L1;
        VXScriptingHandler::linkScriptFolder();
        QVERIFY(!QFileInfo::exists(searched));
        QDir().mkpath(shown);
        VXScriptingHandler::linkScriptFolder();
        QCOMPARE(QFileInfo(searched).canonicalFilePath(), QFileInfo(shown).canonicalFilePath());
    }

    void menuTellsThatThereIsNoPython()
    {
        KeptConsole panel;
        VXScriptingHandler handler({});
        handler.setMacroPanelController(&panel);
        handler.setupScriptMenu();
        const QAction *only = handler.scriptMenu()->actions().value(0);
        QVERIFY(only && !only->isEnabled());
        QCOMPARE(only->text(), u"No suitable Python installed"_s);
        handler.setMacroPanelController(nullptr);
    }

    void initTestCase()
    {
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    }

    void init()
    {
        clearPythonFunctions();
        UserDefaults::standard().removeObjectForKey(u"VXPythonFrameworkPath"_s);
    }

    TABLE(opensNothingElse, (const QString &path), {
        row("none", QString());
        row("not there", "/no/such/Python.framework/Versions/3.11");
        row("no library", "no library/Python");
        row("empty library", "empty/libpython3.11.so.1.0");
        row("a folder", "folder/libpython3.11.so");
    })
    {
        for (const auto name : {"no library/Python"_L1, "empty/libpython3.11.so.1.0"_L1}) {
            write(m_folder.filePath(name), name.startsWith(u'n') ? "print('no library')" : "");
        }
        QDir(m_folder.path()).mkpath(u"folder/libpython3.11.so"_s);
        const VXScriptingHandler handler({});
        const QString place = path.isEmpty() || path.startsWith(u'/') ? path : m_folder.filePath(path);
        QCOMPARE(handler.pythonLibForPath(place), nullptr);
    }

    TABLE(fillsPairs, (const QString &library, bool sharesTexts), {
        row("one symbol fills both text slots", "old", true);
        row("newer names come first", "partial", false);
    })
    {
        choose(fake(library));
        VXScriptingHandler handler({});
        handler.loadPythonFunctions();
        QVERIFY(vxPyString_AsString && vxPyBytes_AsString && vxPyString_FromString && vxPyString_Join);
        const bool isSame =
            reinterpret_cast<void *>(vxPyString_AsString) == reinterpret_cast<void *>(vxPyBytes_AsString);
        QCOMPARE(isSame, sharesTexts);
        const char text[] = "x";
        // The older name of the same library would answer another address.
        QCOMPARE(reinterpret_cast<const char *>(vxPyString_FromString(text)), text);
        QVERIFY(!vxPyEval_EvalCode);
    }

    void refusesLibrariesThatLackFunctions()
    {
        choose(fake(u"partial"_s));
        VXScriptingHandler handler({});
        handler.loadPythonFunctions();
        QVERIFY(missingPythonFunctions().contains(u"PyEval_EvalCode"_s));
        // What is there, and what is only a comfort.
        for (const QString &name :
             {u"Py_GetVersion"_s, u"PySys_AddAuditHook"_s, u"PyUnicode_FromKindAndData"_s})
            QVERIFY(!missingPythonFunctions().contains(name));
        handler.initPython();
        QVERIFY(!VXScriptingHandler::isPythonRunning());
        QCOMPARE(handler.startError().code, 2);
        QVERIFY(!vxPyImport_AppendInittab);
        handler.runMacroString(u"x = 1"_s);
    }

    TABLE(staysUpWithBrokenInterpreters, (const QString &library), {
        row("ends the process", "crashing");
        row("no interpreter", "old");
    })
    {
        choose(fake(library));
        VXScriptingHandler handler({});
        handler.initOnce();
        QVERIFY(!VXScriptingHandler::isPythonRunning());
        QCOMPARE(handler.startError().domain, u"PythonError"_s);
        QCOMPARE(handler.startError().code, 1);
        QVERIFY(VXScriptingHandler::scriptPaths().isEmpty());
    }

private:
    QString fake(const QString &name)
    {
        return QStringLiteral(RUNEBOOK_BUILD_DIR "/tests/fakepython/") + name;
    }

    /// Puts a library into the place of one in a framework, since only there it may have any content.
    void choose(const QString &library)
    {
        const QString folder = m_folder.filePath(u"Python.framework/Versions/"_s + library.section(u'/', -1));
        QDir().mkpath(folder);
        QFile::remove(folder + "/Python"_L1);
        QFile::copy(library, folder + "/Python"_L1);
        UserDefaults::standard().setObjectForKey(folder, u"VXPythonFrameworkPath"_s);
    }

    QTemporaryDir m_folder;
};

RUNEBOOK_TEST_MAIN(PythonTest)
#include "PythonTest.moc"
