#pragma once

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#ifdef QT_WIDGETS_LIB
#include <QApplication>
#else
#include <QGuiApplication>
#endif

/// The main function of a test program: offscreen, and with folders of its own for defaults, data and
/// settings, so that tests run in parallel and never touch what belongs to the user.
#define RUNEBOOK_TEST_MAIN(TestClass)                                                                        \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        static const QTemporaryDir home; /* goes after the settings, which write a last time as they go */   \
        runebook::useTestHome(home.path());                                                                  \
        runebook::TestApplication app(argc, argv);                                                           \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }

namespace runebook {

#ifdef QT_WIDGETS_LIB
using TestApplication = QApplication;
#else
using TestApplication = QGuiApplication; ///< of the tests of rules
#endif

/// Points every place where the program keeps something of the user's into the folder \a path.
inline void useTestHome(const QString &path)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Some tests try what a plain user may do; the files are theirs to see.
    QFile::setPermissions(path, QFile::Permissions(0x7055));
    const QDir home(path);
    const auto sub = [&home](const char *name) {
        const QString folder = home.filePath(QString::fromLatin1(name));
        QDir().mkpath(folder);
        return folder.toLocal8Bit();
    };
    qputenv("HOME", path.toLocal8Bit());
    qputenv("XDG_DATA_HOME", sub("data"));
    qputenv("XDG_CONFIG_HOME", sub("config"));
    qputenv("XDG_CACHE_HOME", sub("cache"));
    // Wherever a test makes a file by itself, it lies in here too.
    qputenv("TMPDIR", sub("tmp"));
    qputenv("XDG_RUNTIME_DIR", sub("run"));
    QFile::setPermissions(home.filePath(QStringLiteral("run")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    qputenv("RUNEBOOK_DEFAULTS", home.filePath(QStringLiteral("defaults.ini")).toLocal8Bit());
    qputenv("LC_ALL", "C.UTF-8");
}

} // namespace runebook
