#pragma once

#include "app/VXAppDelegate.h"
#include "app/VXApplication.h"
#include "platform/StandardFolders.h"
#include "tests/TestMain.h"

/// The main function of a test of the whole program: its application and its delegate, with the data folder
/// of the build.
#define RUNEBOOK_APP_TEST_MAIN(TestClass)                                                                    \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        static const QTemporaryDir home; /* static: see TestMain.h */                                        \
        runebook::useTestHome(home.path());                                                                  \
        VXApplication app(argc, argv);                                                                       \
        QCoreApplication::setApplicationName(QStringLiteral("runebook"));                                    \
        QApplication::setQuitOnLastWindowClosed(false);                                                      \
        runebook::StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));     \
        VXAppDelegate delegate;                                                                              \
        TestClass test(delegate);                                                                            \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
