#include "app/VXPreferencesController.h"
#include "app/preferences/FontsPane.h"
#include "app/preferences/PythonPane.h"
#include "scripting/menu/SitePackages.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/PythonPlaces.h"
#include "tests/ShownTexts.h"
#include "tests/app/AppMain.h"

using namespace runebook;

namespace {

/// Python that writes a package of one module, as pip installs it without any network.
const char kMakeWheel[] = R"(
import sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w") as wheel:
    about = "runebook_trial-1.0.dist-info/"
    wheel.writestr("runebook_trial.py", "there = 5\n")
    wheel.writestr(about + "METADATA", "Metadata-Version: 2.1\nName: runebook_trial\nVersion: 1.0\n")
    wheel.writestr(about + "WHEEL", "Wheel-Version: 1.0\nRoot-Is-Purelib: true\nTag: py3-none-any\n")
    wheel.writestr(about + "RECORD", "")
)";

} // namespace

/// The preferences, driven by keys and mouse.
class PreferencesTest : public QObject
{
    Q_OBJECT
public:
    explicit PreferencesTest(VXAppDelegate &delegate) : m_delegate(delegate) { }

private Q_SLOTS:
    void init()
    {
        m_window.reset();
        forget({"VXRestoreWindows", "VXReloadChangedFiles", "VXRenameElsewhere", "VXAutosaveDelay",
                "MacroCodeFontSize", "MacroWrapColumn", "MacroIndentation", "MacroClosesBrackets",
                "VXAfterFailedRun", "VXConsoleLineLimit", "SUFeedURL", "VXUpdateServer",
                "SUShowCuttingEdgeVersion", "SUEnableAutomaticChecks", "VXPythonFrameworkPath",
                "VXScriptToPreviewFontPath"});
        m_window = std::make_unique<VXPreferencesController>();
        m_window->showWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void leadsToItsPanes()
    {
        const QStringList panes {u"general"_s, u"python"_s, u"fonts"_s, u"code"_s, u"updates"_s};
        QCOMPARE(identifiers(), panes);
        QCOMPARE(m_window->toolbarAllowedItemIdentifiers(), panes);
        QCOMPARE(m_window->toolbarDefaultItemIdentifiers(), panes); // no spaces around them
        QCOMPARE(m_window->selectedItemIdentifier(), u"general"_s);
        auto *bar = m_window->findChild<QToolBar *>();
        for (const QString &pane : panes) {
            QAction *item = m_window->toolbarItemForItemIdentifier(pane);
            QVERIFY(QFile::exists(":/icons/"_L1 + pane + ".svg"_L1));
            QTest::mouseClick(bar->widgetForAction(item), Qt::LeftButton);
            QCOMPARE(m_window->tabView()->currentWidget()->objectName(), pane);
            QCOMPARE(m_window->tabView()->tabText(m_window->tabView()->currentIndex()), item->text());
            QCOMPARE(m_window->selectedItemIdentifier(), pane);
            if (pane != "python"_L1) // which tells what it finds on the machine
                COMPARE_TEXTS(u"preferences-"_s + pane, *m_window);
        }
        m_window->showPrefpaneWithIdentifier(u"python"_s);
        QCOMPARE(m_window->selectedItemIdentifier(), u"python"_s);
        m_window->showPrefpaneWithIdentifier(u"colours"_s);
        QCOMPARE(m_window->selectedItemIdentifier(), u"python"_s);
        QTest::keyClick(m_window.get(), Qt::Key_4, Qt::ControlModifier);
        QCOMPARE(m_window->selectedItemIdentifier(), u"code"_s);
        QVERIFY(
            m_window->tabView()->currentWidget()->isAncestorOf(m_window->focusWidget())); // ready for keys
        QVERIFY(!m_window->toolbarItemForItemIdentifier(u"colours"_s));
    }

    void commitsWhenItCloses()
    {
        m_window->showPrefpaneWithIdentifier(u"updates"_s);
        auto *feed = find<QLineEdit>("feed");
        feed->setFocus();
        QTest::keyClicks(feed, u"https://example.org/feed"_s);
        QCOMPARE(UserDefaults::standard().stringForKey(u"SUFeedURL"_s), QString());
        QTest::keyClick(feed, Qt::Key_Escape);
        QVERIFY(!m_window->isVisible());
        QCOMPARE(UserDefaults::standard().stringForKey(u"SUFeedURL"_s), u"https://example.org/feed"_s);
    }

    void scrollsOnSmallScreens()
    {
        QVERIFY(m_window->frameGeometry().height() <= m_window->screen()->availableSize().height());
        m_window->resize(600, 250);
        m_window->showPrefpaneWithIdentifier(u"python"_s);
        find<QLineEdit>("package")->setFocus();
        typeKeys(m_window.get(), u"<Tab><Tab>"_s);
        QCOMPARE(m_window->focusWidget()->objectName(), u"openFolder"_s);
        QTRY_COMPARE(m_window->focusWidget()->visibleRegion().boundingRect(),
                     m_window->focusWidget()->rect());
        QCOMPARE(m_window->height(), 250);
        QTest::keyClick(m_window.get(), Qt::Key_4, Qt::ControlModifier);
        QTRY_VERIFY(!find<QSpinBox>("fontSize")->visibleRegion().isEmpty());
    }

    void namesAndKeysEveryControl()
    {
        for (QWidget *control : m_window->findChildren<QWidget *>()) {
            const bool isControl = control->focusPolicy() != Qt::NoFocus && !control->objectName().isEmpty()
                && !control->objectName().startsWith("qt_"_L1) && control->window() == m_window.get();
            if (!isControl || qobject_cast<QTabWidget *>(control))
                continue;
            QAccessibleInterface *spoken = QAccessible::queryAccessibleInterface(control);
            QVERIFY2(spoken && !spoken->text(QAccessible::Name).isEmpty(), qPrintable(control->objectName()));
            if (auto *button = qobject_cast<QAbstractButton *>(control);
                button && !qobject_cast<QToolButton *>(button))
                QVERIFY2(!button->shortcut().isEmpty(), qPrintable(control->objectName()));
        }
    }

    // typed: empty: a click
    TABLE(keepsSettings,
          (const QByteArray &control, const QString &key, const QString &typed, const QVariant &stored), {
              row("windows", "restoreWindows", "VXRestoreWindows", "", QVariant(true));
              row("reload", "reloadChangedFiles", "VXReloadChangedFiles", "",
                  QVariant(false)); // on unless somebody wants to be asked
              row("renamed", "renamesElsewhere", "VXRenameElsewhere", "Nev", QVariant(2));
              row("autosave", "autosaveDelay", "VXAutosaveDelay", "42", QVariant(42));
              row("no autosave", "autosaveDelay", "VXAutosaveDelay", "0", QVariant(0));
              row("font size", "fontSize", "MacroCodeFontSize", "20", QVariant(20));
              row("column", "wrapColumn", "MacroWrapColumn", "100", QVariant(100));
              row("indentation", "indentation", "MacroIndentation", "Blanks", QVariant(2));
              row("brackets", "closesBrackets", "MacroClosesBrackets", "", QVariant(false));
              row("console", "consoleLines", "VXConsoleLineLimit", "5000", QVariant(5000));
              row("failed runs", "afterFailedRun", "VXAfterFailedRun", "Al", QVariant(1));
              row("feed", "feed", "SUFeedURL", "https://a/", QVariant(u"https://a/"_s));
              row("server", "server", "VXUpdateServer", "https://b", QVariant(u"https://b"_s));
              row("newest", "newest", "SUShowCuttingEdgeVersion", "", QVariant(true));
          })
    {
        auto *widget = m_window->findChild<QWidget *>(QString::fromLatin1(control));
        QVERIFY(widget);
        for (const QString &pane : identifiers()) {
            if (m_window->tabView()->findChild<QWidget *>(pane)->isAncestorOf(widget))
                m_window->showPrefpaneWithIdentifier(pane);
        }
        QVERIFY(!UserDefaults::standard().isSet(key));
        const auto click = [widget] {
            QTest::mouseClick(widget, Qt::LeftButton, {}, QPoint(8, widget->height() / 2));
        };
        if (typed.isEmpty()) {
            click();
            if (qobject_cast<QCheckBox *>(widget)) { // and there and back
                click();
                QCOMPARE(UserDefaults::standard().objectForKey(key), QVariant(!stored.toBool()));
                click();
            }
        } else {
            widget->setFocus();
            typeKeys(widget,
                     (qobject_cast<QComboBox *>(widget) ? u""_s : u"<Ctrl+A>"_s) + typed + u"<Return>"_s);
        }
        QCOMPARE(UserDefaults::standard().objectForKey(key), stored);
    }

    void followsSettingsFromElsewhere()
    {
        UserDefaults::standard().setObjectForKey(25, u"MacroCodeFontSize"_s);
        UserDefaults::standard().setObjectForKey(true, u"SUShowCuttingEdgeVersion"_s);
        UserDefaults::standard().setObjectForKey(u"https://c/"_s, u"SUFeedURL"_s);
        QCOMPARE(find<QSpinBox>("fontSize")->value(), 25);
        QVERIFY(find<QRadioButton>("newest")->isChecked());
        QCOMPARE(find<QLineEdit>("feed")->text(), u"https://c/"_s);
        UserDefaults::standard().setObjectForKey(u"no number"_s, u"MacroCodeFontSize"_s);
        QCOMPARE(find<QSpinBox>("fontSize")->value(), 7); // the smallest there is
        UserDefaults::standard().removeObjectForKey(u"MacroCodeFontSize"_s);
        QCOMPARE(find<QSpinBox>("fontSize")->value(), 13);
        QVERIFY(!UserDefaults::standard().isSet(u"MacroCodeFontSize"_s)); // showing it stores nothing
        for (const auto &[stored, shown] : {std::pair(1, 1), {99, 2}, {-5, 0}}) { // as near as there is
            UserDefaults::standard().setObjectForKey(stored, u"MacroIndentation"_s);
            QCOMPARE(find<QComboBox>("indentation")->currentIndex(), shown);
        }
    }

    void showsTheCodeFont()
    {
        find<QSpinBox>("fontSize")->setValue(30);
        QCOMPARE(find<QWidget>("sample")->window(), m_window.get());
        QCOMPARE(m_window->tabView()->widget(3)->findChild<QWidget *>(u"sample"_s)->font().pointSize(), 30);
    }

    TABLE(checksAddresses, (const QString &feed, bool isGood), {
        row("https", "https://example.org/feed.xml", true);
        row("http", "http://example.org/feed.xml", false);
        row("a file", "/etc/passwd", false);
        row("none", "", false);
    })
    {
        find<QLineEdit>("feed")->setText(feed);
        const auto *status = m_window->tabView()->widget(4)->findChild<QLabel *>(u"status"_s);
        QCOMPARE(status->text().isEmpty(), isGood);
        QCOMPARE(find<QCheckBox>("checksAtStart")->isEnabled(), !feed.isEmpty());
    }

    void choosesAPreviewFont()
    {
        auto *pane = m_window->findChild<FontsPane *>();
        auto *list = pane->findChild<QTreeWidget *>(u"scripts"_s);
        const QList<QTreeWidgetItem *> items = list->findItems(u"greek"_s, Qt::MatchFixedString, 0);
        QCOMPARE(items.size(), 1);
        QVERIFY(list->topLevelItemCount() > 20);
        list->setCurrentItem(items.front());
        const QString font = u"/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf"_s;
        QVERIFY(QFile::exists(font));
        m_window->showPrefpaneWithIdentifier(u"fonts"_s);
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(chooseInPanel(pane, font), u"Fonts (*.otf *.ttf *.otc *.ttc *.pfb)|All files (*)"_s);
        QCOMPARE(VXDocument::previewFontForScript(u"greek"_s), font);
        QTest::mouseClick(pane->findChild<QPushButton *>(u"choose"_s), Qt::LeftButton);
        QCOMPARE(pane->findChild<QFileDialog *>()->directory().path(), QFileInfo(font).path());
        chooseInPanel(pane, font);
        QCOMPARE(items.front()->text(1), u"DejaVuSerif.ttf"_s);
        QVERIFY(pane->findChild<QLabel *>(u"sample"_s)->font().family().startsWith(u"DejaVu Serif"_s));
        // What is no font changes nothing.
        QVERIFY(!pane->useFontFile(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml")));
        QCOMPARE(VXDocument::previewFontForScript(u"greek"_s), font);
        QVERIFY(pane->findChild<QLabel *>(u"status"_s)->text().contains("no font"_L1));
        QTest::mouseClick(pane->findChild<QPushButton *>(u"remove"_s), Qt::LeftButton);
        QCOMPARE(VXDocument::previewFontForScript(u"greek"_s), QString());
        QVERIFY(!pane->findChild<QPushButton *>(u"remove"_s)->isEnabled());
    }

    void choosesAPython()
    {
        m_window->showPrefpaneWithIdentifier(u"python"_s);
        auto *pane = m_window->findChild<PythonPane *>();
        auto *list = pane->findChild<QListWidget *>(u"installations"_s);
        const QList<QVariantMap> found = VXScriptingHandler::sharedHandler()->pythonFrameworks();
        QCOMPARE(list->count(), 1 + found.size());
        QCOMPARE(list->currentRow(), 0);
        QVERIFY(!pane->findChild<QAbstractButton *>(u"remove"_s)->isEnabled());
        QVERIFY(!found.isEmpty());
        const QString newest = found.last().value(u"fullPath"_s).toString();
        QVERIFY(pane->findChild<QLabel *>(u"inUse"_s)->text().contains(newest));
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Down);
        QCOMPARE(UserDefaults::standard().stringForKey(u"VXPythonFrameworkPath"_s), newest);
        const auto *status = pane->findChild<QLabel *>(u"status"_s);
        QVERIFY(status->text().contains("next start"_L1));
        QTest::keyClick(list, Qt::Key_Up);
        QVERIFY(!UserDefaults::standard().isSet(u"VXPythonFrameworkPath"_s));

        const QSignalSpy tried(pane, &PythonPane::tried);
        QTest::mouseClick(pane->findChild<QPushButton *>(u"add"_s), Qt::LeftButton);
        QCOMPARE(chooseInPanel(pane, newest),
                 u"Shared libraries of Python (libpython3*.so*)|All files (*)"_s);
        QTRY_COMPARE_WITH_TIMEOUT(tried.size(), 1, 30'000);
        QVERIFY(tried.at(0).at(0).toBool());
        QCOMPARE(UserDefaults::standard().stringForKey(u"VXPythonFrameworkPath"_s), newest);
        QCOMPARE(list->currentRow(), 1);
        QVERIFY(status->text().contains("next start"_L1));
    }

    /// What was added by hand stands in the list, and can go again.
    void goesBackToTheNewestPython()
    {
        UserDefaults::standard().setObjectForKey(u"/opt/libpython3.8.so.1.0"_s, u"VXPythonFrameworkPath"_s);
        m_window = std::make_unique<VXPreferencesController>();
        m_window->showWindow();
        m_window->showPrefpaneWithIdentifier(u"python"_s);
        const auto *list = find<QListWidget>("installations");
        QCOMPARE(list->currentItem()->text(), u"3.8 (manually) — /opt/libpython3.8.so.1.0"_s);
        QTest::mouseClick(m_window->findChild<PythonPane *>()->findChild<QAbstractButton *>(u"remove"_s),
                          Qt::LeftButton);
        QCOMPARE(list->currentRow(), 0);
        QVERIFY(!UserDefaults::standard().isSet(u"VXPythonFrameworkPath"_s));
    }

    void installsPackages()
    {
        VXMacroWindowController panelOfTheTest;
        VXMacroWindowController *panel = &panelOfTheTest;
        VXScriptingHandler::sharedHandler()->setMacroPanelController(panel);
        // A Python without site-packages has no pip; the one that was found has its own.
        const QString python =
            VXScriptingHandler::sharedHandler()->pythonFrameworks().last().value(u"fullPath"_s).toString();
        const QString program = SitePackages::pythonProgram(python);
        if (QProcess::execute(program, {u"-m"_s, u"pip"_s, u"--version"_s}) != 0)
            QSKIP("python-pip: tools/install-packages brings it");
        const QTemporaryDir prefix;
        QVERIFY(QDir(prefix.path()).mkpath(u"bin"_s) && QDir(prefix.path()).mkpath(u"lib"_s));
        const QString library = prefix.filePath(u"lib/libpython3.11.so.1.0"_s);
        QVERIFY(QFile::copy(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml"), library));
        const QString wheel = prefix.filePath(u"runebook_trial-1.0-py3-none-any.whl"_s);
        QCOMPARE(QProcess::execute(program, {u"-c"_s, QString::fromLatin1(kMakeWheel), wheel}), 0);
        m_window->showPrefpaneWithIdentifier(u"python"_s);
        auto *pane = m_window->findChild<PythonPane *>();
        auto *package = pane->findChild<QLineEdit *>(u"package"_s);
        const auto *status = pane->findChild<QLabel *>(u"packagesStatus"_s);
        UserDefaults::standard().setObjectForKey(library, u"VXPythonFrameworkPath"_s);
        const auto install = [&](const QString &name) {
            package->setText(name);
            QTest::keyClick(package, Qt::Key_Return);
            typeKeys(package, u"<Return>"_s); // while one is installed nothing else begins
            [&] {
                QTRY_VERIFY_WITH_TIMEOUT(pane->findChild<QPushButton *>(u"install"_s)->isEnabled(), 60'000);
            }();
            return status->text();
        };
        QVERIFY2(install(u"absent"_s).contains(u"no program beside its library"_s),
                 qPrintable(status->text()));

        QFile bare(prefix.filePath(u"bin/python3.11"_s));
        QVERIFY(bare.open(QIODevice::WriteOnly));
        bare.write("#!/bin/sh\nexec " + program.toUtf8() + " -S \"$@\"\n");
        bare.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        bare.close();
        QVERIFY2(install(wheel).contains(u"has no pip"_s), qPrintable(status->text()));
        UserDefaults::standard().setObjectForKey(python, u"VXPythonFrameworkPath"_s);
        QVERIFY2(install(wheel + u"x"_s).contains(u"was not installed"_s), qPrintable(status->text()));
        QVERIFY2(install(u"  "_s + wheel).contains(u"“%1” is installed"_s.arg(wheel)),
                 qPrintable(status->text()));
        QVERIFY(package->text().isEmpty());
        QCOMPARE(panel->write().count(u"Successfully installed runebook"_s), 1);
        QVERIFY(panel->write().contains(u"ERROR:"_s));
        // Without a restart.
        VXScriptingHandler::sharedHandler()->runMacroString(
            u"import runebook_trial; print(runebook_trial.there + 1)"_s);
        QTRY_VERIFY(panel->write().endsWith(u"6\n"_s));
        const UrlTaker opened({u"file"_s});
        QTest::mouseClick(pane->findChild<QPushButton *>(u"openFolder"_s), Qt::LeftButton);
        QVERIFY(QFile::exists(opened.urls.last().toLocalFile() + u"/runebook_trial.py"_s));
        find<QPushButton>("showOriginals")->click();
        QVERIFY(opened.urls.last().path().endsWith(u"/runebook/Originals"_s)
                && QFileInfo(opened.urls.last().toLocalFile()).isDir());
    }

    void refusesWhatIsNoPython()
    {
        const QTemporaryDir folder;
        const QString fake = folder.filePath(u"libpython3.11.so.1.0"_s);
        QVERIFY(QFile::copy(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml"), fake));
        auto *pane = m_window->findChild<PythonPane *>();
        const QSignalSpy tried(pane, &PythonPane::tried);
        int count = 0;
        for (const QString &path : {QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml"), fake,
                                    folder.filePath(u"libpython3.11.so"_s), QString()}) {
            pane->addInstallation(path);
            ++count;
            QTRY_COMPARE_WITH_TIMEOUT(tried.size(), count, 30'000);
            QVERIFY(!tried.last().at(0).toBool());
            QVERIFY(!UserDefaults::standard().isSet(u"VXPythonFrameworkPath"_s));
            QVERIFY(pane->findChild<QPushButton *>(u"add"_s)->isEnabled());
        }
    }

private:
    /// Names a file in the panel that \a pane has opened; what that offers besides.
    static QString chooseInPanel(QWidget *pane, const QString &path)
    {
        auto *panel = pane->findChild<QFileDialog *>();
        if (!panel)
            return u"no panel"_s;
        const QString offered = panel->nameFilters().join(u'|');
        panel->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        static_cast<QDialog *>(panel)->accept();
        QCoreApplication::sendPostedEvents(panel, QEvent::DeferredDelete);
        return offered;
    }
    template <typename Widget> Widget *find(const char *name)
    {
        return m_window->findChild<Widget *>(QString::fromLatin1(name));
    }
    QStringList identifiers() const { return m_window->toolbarSelectableItemIdentifiers(); }

    VXAppDelegate &m_delegate;
    std::unique_ptr<VXPreferencesController> m_window;
};

RUNEBOOK_APP_TEST_MAIN(PreferencesTest)
#include "PreferencesTest.moc"
