#pragma once

#include "app/VXAppDelegate.h"
#include "app/VXApplication.h"
#include "platform/StandardFolders.h"
#include "tests/TestMain.h"
#include "tests/editing/Windows.h"

#include <QDesktopServices>

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

namespace runebook {

/// Takes the addresses that would go to other programs.
class UrlTaker : public QObject
{
    Q_OBJECT
public:
    explicit UrlTaker(const QStringList &schemes) : m_schemes(schemes)
    {
        for (const QString &scheme : schemes)
            QDesktopServices::setUrlHandler(scheme, this, "take");
    }
    ~UrlTaker() override
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }
    QList<QUrl> urls;
public Q_SLOTS:
    void take(const QUrl &url) { urls << url; }

private:
    QStringList m_schemes;
};

/// A test of the program's delegate, which leaves no window and no setting to the next function.
class AppTest : public QObject
{
    Q_OBJECT
public:
    explicit AppTest(VXAppDelegate &delegate) : m_delegate(delegate) { }

protected:
    static QString tinyFile(const QTemporaryDir &folder, const QString &name)
    {
        QString path = folder.filePath(name);
        writeFile(
            path,
            "<glyphData>\n\t<glyph unicode=\"0041\" name=\"A\" />\n\t<glyph name=\"B\" />\n</glyphData>\n");
        return path;
    }
    static QMessageBox *shownBox(const QString &name = {}) { return shownWindow<QMessageBox>(name); }
    static VXWindowController *frontWindow() { return windowOf(controller().documentList().front()); }

    VXAppDelegate &m_delegate;

private Q_SLOTS:
    void cleanup()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMessageBox *>(widget))
                delete widget;
        }
        controller().releaseAll();
        for (QWidget *window : QApplication::topLevelWidgets())
            window->hide();
        forget({"VXOpenWindows", "VXRestoreWindows", "VXAutosaveDelay", "VXUpdateServer",
                "SUShowCuttingEdgeVersion", "showMacroPanel"});
    }
};

} // namespace runebook
