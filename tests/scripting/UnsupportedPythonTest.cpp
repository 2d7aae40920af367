#include "platform/StandardFolders.h"
#include "platform/defaults/UserDefaults.h"
#include "scripting/menu/StartWarning.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "tests/TestMain.h"
#include "tests/scripting/Interpreters.h"

#include <QSignalSpy>
#include <QTimer>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// The library of an interpreter that is not supported, the newest first; empty when there is none.
QString unsupportedLibrary()
{
    for (const auto minor : {"3.13"_L1, "3.12"_L1, "3.8"_L1}) {
        const QStringList found = Interpreters::libraries(minor);
        if (!found.isEmpty())
            return found.first();
    }
    return {};
}

} // namespace

/// An interpreter outside the supported range that the user has chosen by hand: it runs, with a warning.
class UnsupportedPythonTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        const QString library = unsupportedLibrary();
        if (library.isEmpty())
            SKIP_WITHOUT_PYTHON(u"3.13"_s);
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
        UserDefaults::standard().setObjectForKey(library, u"VXPythonFrameworkPath"_s);
        VXScriptingHandler *handler = VXScriptingHandler::sharedHandler();
        QVERIFY2(VXScriptingHandler::isPythonRunning(), qPrintable(handler->startError().text()));
        QCOMPARE(handler->currentPythonPath(), library);
        QVERIFY(!handler->isSupportedPythonVersion(u"3.%1"_s.arg(VXScriptingHandler::PythonMinorVersion)));
    }

    void warnsOnce()
    {
        QSignalSpy warned(VXScriptingHandler::sharedHandler(), &VXScriptingHandler::unsupportedPythonStarted);
        QVERIFY(warned.isEmpty());
        QVERIFY(warned.wait(10'000));
        QCOMPARE(
            warned.first().at(0).toString(),
            u"The installed Python is not supported. You have version 3.%1. Versions from 3.9 to 3.11.999 "
            "are supported"_s.arg(VXScriptingHandler::PythonMinorVersion));
        QCOMPARE(warned.first().at(1).toString(),
                 u"Please install a supported version or use the Python module from Plugin Manager"_s);
        // Whoever warned again would come before this, which takes as long.
        VXScriptingHandler::sharedHandler()->runMacroString(u"pass"_s);
        QTimer later;
        later.setTimerType(Qt::PreciseTimer);
        QSignalSpy isLater(&later, &QTimer::timeout);
        later.start(kStartWarningDelayMs);
        QVERIFY(isLater.wait());
        QCOMPARE(warned.size(), 1);
    }
};

RUNEBOOK_TEST_MAIN(UnsupportedPythonTest)
#include "UnsupportedPythonTest.moc"
