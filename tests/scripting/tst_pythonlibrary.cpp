#include "platform/StandardFolders.h"
#include "platform/UserDefaults.h"
#include "scripting/PythonFunctions.h"
#include "scripting/PythonProbe.h"
#include "scripting/VXScriptingHandler.h"
#include "tests/TestMain.h"

#include <QFile>

using namespace runebook;
using namespace Qt::StringLiterals;

/// The library and its functions, without an interpreter that is started in this process.
class PythonLibraryTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void opensNothingElse_data();
    void opensNothingElse();
    void fillsPairs_data();
    void fillsPairs();
    void refusesLibrariesThatLackFunctions();
    void staysUpWithBrokenInterpreters_data();
    void staysUpWithBrokenInterpreters();

private:
    QString fake(const QString &name)
    {
        return QStringLiteral(RUNEBOOK_BUILD_DIR "/tests/fakepython/") + name;
    }
    void choose(const QString &library);
    QTemporaryDir m_folder;
};

void PythonLibraryTest::initTestCase()
{
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
}

void PythonLibraryTest::init()
{
    clearPythonFunctions();
    UserDefaults::standard().removeObjectForKey(u"VXPythonFrameworkPath"_s);
}

/// Puts a library into the place of one in a framework, since only there it may have any content.
void PythonLibraryTest::choose(const QString &library)
{
    const QString folder = m_folder.filePath(u"Python.framework/Versions/"_s + library.section(u'/', -1));
    QDir().mkpath(folder);
    QFile::remove(folder + "/Python"_L1);
    QFile::copy(library, folder + "/Python"_L1);
    UserDefaults::standard().setObjectForKey(folder, u"VXPythonFrameworkPath"_s);
}

void PythonLibraryTest::opensNothingElse_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("none") << QString();
    QTest::newRow("not there") << u"/no/such/Python.framework/Versions/3.11"_s;
    QTest::newRow("no library") << u"no library/Python"_s;
    QTest::newRow("empty library") << u"empty/libpython3.11.so.1.0"_s;
    QTest::newRow("a folder") << u"folder/libpython3.11.so"_s;
}

void PythonLibraryTest::opensNothingElse()
{
    QFETCH(QString, path);
    for (const auto name : {"no library/Python"_L1, "empty/libpython3.11.so.1.0"_L1}) {
        QDir(m_folder.path()).mkpath(QString(name).section(u'/', 0, -2));
        QFile file(m_folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(name.startsWith(u'n') ? "print('no library')" : "");
    }
    QDir(m_folder.path()).mkpath(u"folder/libpython3.11.so"_s);
    const VXScriptingHandler handler({});
    const QString place = path.isEmpty() || path.startsWith(u'/') ? path : m_folder.filePath(path);
    QCOMPARE(handler.pythonLibForPath(place), nullptr);
}

void PythonLibraryTest::fillsPairs_data()
{
    QTest::addColumn<QString>("library");
    QTest::addColumn<bool>("sharesTexts");
    QTest::newRow("one symbol fills both text slots") << u"old"_s << true;
    QTest::newRow("newer names come first") << u"partial"_s << false;
}

void PythonLibraryTest::fillsPairs()
{
    QFETCH(QString, library);
    QFETCH(bool, sharesTexts);
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

void PythonLibraryTest::refusesLibrariesThatLackFunctions()
{
    choose(fake(u"partial"_s));
    VXScriptingHandler handler({});
    handler.loadPythonFunctions();
    QVERIFY(missingPythonFunctions().contains(u"PyEval_EvalCode"_s));
    // What is there, and what is only a comfort.
    for (const QString &name : {u"Py_GetVersion"_s, u"PySys_AddAuditHook"_s, u"PyUnicode_FromKindAndData"_s})
        QVERIFY(!missingPythonFunctions().contains(name));
    handler.initPython();
    QVERIFY(!VXScriptingHandler::isPythonRunning());
    QCOMPARE(handler.startError().code, 2);
    QVERIFY(!vxPyImport_AppendInittab);
    handler.runMacroString(u"x = 1"_s);
}

void PythonLibraryTest::staysUpWithBrokenInterpreters_data()
{
    QTest::addColumn<QString>("library");
    QTest::newRow("ends the process") << u"crashing"_s;
    QTest::newRow("no interpreter") << u"old"_s;
}

void PythonLibraryTest::staysUpWithBrokenInterpreters()
{
    QFETCH(QString, library);
    choose(fake(library));
    VXScriptingHandler handler({});
    handler.initOnce();
    QVERIFY(!VXScriptingHandler::isPythonRunning());
    QCOMPARE(handler.startError().domain, u"PythonError"_s);
    QCOMPARE(handler.startError().code, 1);
    QVERIFY(VXScriptingHandler::scriptPaths().isEmpty());
}

RUNEBOOK_TEST_MAIN(PythonLibraryTest)
#include "tst_pythonlibrary.moc"
