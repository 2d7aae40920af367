#include "platform/UserDefaults.h"
#include "scripting/PythonDiscovery.h"
#include "scripting/VXScriptingHandler.h"
#include "tests/TestMain.h"

#include <QFile>
#include <QFileInfo>

using namespace runebook;
using namespace Qt::StringLiterals;

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

    void addFile(const QString &below, const QString &text = {})
    {
        QDir().mkpath(QFileInfo(path(below)).path());
        QFile file(path(below));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }

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

class PythonDiscoveryTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void labelsFrameworksByPlace_data();
    void labelsFrameworksByPlace();
    void sortsByVersionThenName();
    void countsLinkedVersionsOnce();
    void walksCellars();
    void endsInLoopsOfLinks();
    void keepsToSupportedVersions_data();
    void keepsToSupportedVersions();
    void findsSharedLibraries();
    void addsTheChosenOne_data();
    void addsTheChosenOne();
    void addsAChosenLibrary();
    void choosesTheNewestOrTheUsers();
    void readsNoVersionFromBrokenLists_data();
    void readsNoVersionFromBrokenLists();
    void nestsTheSupportFolder();
};

void PythonDiscoveryTest::labelsFrameworksByPlace_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("name");
    QTest::newRow("Apple") << u"System/Library/Frameworks"_s << u"3.11 (Apple)"_s;
    QTest::newRow("Python.org") << u"Library/Frameworks"_s << u"3.11 (Python.org)"_s;
    QTest::newRow("MacPorts") << u"opt/local/Library/Frameworks"_s << u"3.11 (MacPorts)"_s;
    QTest::newRow("Homebrew") << u"opt/homebrew/Cellar/python@3.11/3.11.4/Frameworks"_s
                              << u"3.11 (Homebrew)"_s;
    QTest::newRow("old Homebrew") << u"usr/local/Cellar/python3/3.11.4/Frameworks"_s << u"3.11 (Homebrew)"_s;
    QTest::newRow("user") << u"home/Library/Frameworks"_s << u"3.11 (DEBUG)"_s;
    QTest::newRow("elsewhere") << u"srv/Library/Frameworks"_s << QString();
}

void PythonDiscoveryTest::labelsFrameworksByPlace()
{
    QFETCH(QString, folder);
    InstallationTree tree;
    tree.addFramework(folder, u"3.11"_s, u"3.11"_s);
    QTEST(tree.found(), "name");
}

void PythonDiscoveryTest::sortsByVersionThenName()
{
    InstallationTree tree;
    tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
    tree.addFramework(u"Library/Frameworks"_s, u"3.10"_s, u"3.10"_s);
    tree.addFramework(u"Library/Frameworks"_s, u"3.9"_s, u"3.9.18"_s);
    tree.addFramework(u"opt/homebrew/Cellar/python@3.11/3.11.4/Frameworks"_s, u"3.11"_s, u"3.11"_s);
    QCOMPARE(tree.found(), u"3.9.18 (Python.org)\n3.10 (Python.org)\n3.11 (Homebrew)\n3.11 (Python.org)"_s);
}

void PythonDiscoveryTest::countsLinkedVersionsOnce()
{
    InstallationTree tree;
    tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
    tree.addLink(u"3.11"_s, u"Library/Frameworks/Python.framework/Versions/Current"_s);
    QCOMPARE(tree.found({}, true),
             u"3.11 (Python.org): /Library/Frameworks/Python.framework/Versions/3.11"_s);
}

void PythonDiscoveryTest::walksCellars()
{
    InstallationTree tree;
    const QString cellar = u"opt/homebrew/Cellar/python@3.10/"_s;
    tree.addFramework(cellar + "3.10.1/Frameworks"_L1, u"3.10"_s, u"3.10"_s);
    for (const auto skipped : {"bin"_L1, "libexec"_L1, "lib"_L1, "share"_L1, "IDLE 3.app"_L1, ".hidden"_L1})
        tree.addFramework(cellar + "3.10.1/"_L1 + skipped, u"3.9"_s, u"3.9"_s);
    QCOMPARE(tree.found(), u"3.10 (Homebrew)"_s);
}

void PythonDiscoveryTest::endsInLoopsOfLinks()
{
    InstallationTree tree;
    const QString cellar = u"usr/local/Cellar/python3/"_s;
    tree.addFramework(cellar + "3.10.1"_L1, u"3.10"_s, u"3.10"_s);
    tree.addLink(tree.path(cellar), cellar + "again"_L1);
    tree.addLink(tree.path(cellar), cellar + "3.10.1/above"_L1);
    QCOMPARE(tree.found(), u"3.10 (Homebrew)"_s);
}

void PythonDiscoveryTest::keepsToSupportedVersions_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("isSupported");
    for (const auto version : {"3.9"_L1, "3.9.18"_L1, "3.10.13"_L1, "3.11"_L1, "3.11.999"_L1})
        QTest::newRow(version.data()) << QString(version) << true;
    for (const auto version :
         {"3.8"_L1, "3.8.99"_L1, "3.11.1000"_L1, "3.12"_L1, "2.7.18"_L1, "4.0"_L1, ""_L1})
        QTest::newRow(version.data()) << QString(version) << false;
}

void PythonDiscoveryTest::keepsToSupportedVersions()
{
    QFETCH(QString, version);
    QFETCH(bool, isSupported);
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

void PythonDiscoveryTest::findsSharedLibraries()
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
    tree.addFile(u"home/.local/share/uv/python/cpython-3.10.14-linux-x86_64-gnu/lib/libpython3.10.so.1.0"_s);
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

void PythonDiscoveryTest::addsTheChosenOne_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("added");
    QTest::newRow("nothing chosen") << QString() << QString();
    QTest::newRow("another framework")
        << u"srv/Python.framework/Versions/3.12"_s << u"\n3.12.1 (manually) without version"_s;
    QTest::newRow("by its folder") << u"srv/Python.framework"_s << u"\n3.12.1 (manually) without version"_s;
    QTest::newRow("listed") << u"Library/Frameworks/Python.framework/Versions/3.11"_s << QString();
    QTest::newRow("prefix of a listed one")
        << u"Library/Frameworks/Python.framework/Versions/3"_s << QString();
    QTest::newRow("below a listed one")
        << u"Library/Frameworks/Python.framework/Versions/3.11/x"_s << QString();
    QTest::newRow("not there") << u"gone/Python.framework/Versions/3.11"_s << QString();
    QTest::newRow("no bundle") << u"empty/Python.framework/Versions/3.11"_s << QString();
}

void PythonDiscoveryTest::addsTheChosenOne()
{
    QFETCH(QString, chosen);
    QFETCH(QString, added);
    InstallationTree tree;
    tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
    tree.addFramework(u"srv"_s, u"3.12"_s, u"3.12.1"_s);
    tree.addFile(u"empty/Python.framework/Versions/3.11/Python"_s);
    QCOMPARE(tree.found(chosen.isEmpty() ? chosen : tree.path(chosen)), u"3.11 (Python.org)"_s + added);
}

void PythonDiscoveryTest::addsAChosenLibrary()
{
    InstallationTree tree;
    tree.addFile(u"usr/lib/libpython3.11.so.1.0"_s);
    tree.addFile(u"home/.pyenv/versions/3.12.1/lib/libpython3.12.so.1.0"_s);
    QCOMPARE(tree.found(tree.path(u"home/.pyenv/versions/3.12.1/lib/libpython3.12.so.1.0"_s)),
             u"3.11 (System)\n3.12.1 (manually) without version"_s);
    QCOMPARE(tree.found(tree.path(u"usr/lib/libpython3.11.so.1.0"_s)), u"3.11 (System)"_s);
}

void PythonDiscoveryTest::choosesTheNewestOrTheUsers()
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
    QCOMPARE(handler.currentPythonPath(), tree.path(u"Library/Frameworks/Python.framework/Versions/3.10"_s));
    UserDefaults::standard().setObjectForKey(u"/nowhere"_s, u"VXPythonFrameworkPath"_s);
    QCOMPARE(handler.currentPythonPath(), u"/nowhere"_s);
    UserDefaults::standard().removeObjectForKey(u"VXPythonFrameworkPath"_s);
}

void PythonDiscoveryTest::readsNoVersionFromBrokenLists_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no list") << QByteArray("3.11");
    QTest::newRow("cut off") << QByteArray("<plist version=\"1.0\"><dict><key>CFBundleVersion</key><str");
    QTest::newRow("an array") << QByteArray(
        "<plist version=\"1.0\"><array><string>3.11</string></array></plist>");
    QTest::newRow("a number") << QByteArray("<plist version=\"1.0\"><dict><key>CFBundleVersion</key>"
                                            "<integer>3</integer></dict></plist>");
    QTest::newRow("binary, cut off") << QByteArray("bplist00\xd1\x01\x02", 11);
}

void PythonDiscoveryTest::readsNoVersionFromBrokenLists()
{
    QFETCH(QByteArray, list);
    InstallationTree tree;
    tree.addFramework(u"Library/Frameworks"_s, u"3.11"_s, u"3.11"_s);
    QFile file(tree.path(u"Library/Frameworks/Python.framework/Versions/3.11/Resources/Info.plist"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(list);
    file.close();
    QCOMPARE(tree.found(), QString());
}

void PythonDiscoveryTest::nestsTheSupportFolder()
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

RUNEBOOK_TEST_MAIN(PythonDiscoveryTest)
#include "tst_pythondiscovery.moc"
