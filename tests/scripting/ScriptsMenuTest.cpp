#include "document/VXDocument.h"
#include "platform/MainMenu.h"
#include "platform/NotificationCenter.h"
#include "platform/StandardFolders.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "scripting/classes/ScriptMenuItems.h"
#include "scripting/menu/ScriptFile.h"
#include "scripting/menu/ScriptFolderWatcher.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "tests/Files.h"
#include "tests/Oddities.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/KeptConsole.h"

#include <QSignalSpy>
#include <QtWidgets>
#include <sys/stat.h>

using namespace runebook;
using namespace Qt::StringLiterals;

class ScriptsMenuTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        // The program's modules without its scripts: what is in the menu is what a test put there.
        const QString prefix = QDir::homePath() + "/program"_L1;
        const QString program = prefix + "/share/runebook"_L1;
        for (const auto folder :
             {"/Contents/Scripts39/"_L1, "/Contents/Scripts310/"_L1, "/Contents/Scripts311/"_L1}) {
            QVERIFY(QDir().mkpath(program + folder));
            const QDir modules(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/scripts"));
            for (const QString &module : modules.entryList({u"*.py"_s}, QDir::Files))
                QVERIFY(QFile::link(modules.filePath(module), program + folder + module));
        }
        QVERIFY(QFile::link(QStringLiteral(RUNEBOOK_BUILD_DIR "/libexec"), prefix + "/libexec"_L1));
        StandardFolders::setProgramData(program);
        m_handler = VXScriptingHandler::sharedHandler();
        QVERIFY(VXScriptingHandler::isPythonRunning());
        m_scripts = VXScriptingHandler::applicationSupportFolder() + "/Scripts"_L1;
        QVERIFY(VXScriptingHandler::scriptPaths().contains(VXScriptingHandler::applicationSupportPath()
                                                           + "/Scripts"_L1));
    }

    void init()
    {
        QVERIFY(QDir(m_scripts).removeRecursively() && QDir().mkpath(m_scripts));
        UserDefaults::standard().removeObjectForKey(u"runAgainScriptName"_s);
        m_handler->setMacroPanelController(&m_panel);
        m_handler->setupScriptMenu();
        m_panel.output.clear();
        m_panel.errors.clear();
        m_panel.clearings = 0;
    }

    // title: null: none
    TABLE(readsTitles, (const QString &text, const QString &title), {
        row("plain", "#MenuTitle: Tidy\nx\n", "Tidy");
        row("shortest", "#MenuTitle: AB\n", "AB");
        row("too short", "#MenuTitle:AB\n", {});
        row("without blank", "#MenuTitle:ABC\n", "ABC");
        row("blank in the marker", "# MenuTitle: AB\n", "AB");
        row("blank in the marker, too short", "# MenuTitle: A\n", {});
        row("FLM", "#FLM: ab\n", "ab");
        row("FLM, too short", "#FLM:ab\n", {});
        row("trimmed", "#MenuTitle:  a b\t \n", "a b");
        row("indented", "   #MenuTitle: Tidy\n", "Tidy");
        row("third line", "#!python\n\n \n# coding\n#MenuTitle: Tidy\n", "Tidy");
        row("fourth line", "#!python\n# coding\n# x\n#MenuTitle: Tidy\n", {});
        row("short, then a good one", "#MenuTitle:A\n#FLM: good\n", "good");
        row("the first of two", "#FLM: one\n#MenuTitle: two\n", "one");
        row("one line", "#MenuTitle: Tidy", {});
        row("last line without break", "x\n#MenuTitle: Tidy", "Tidy");
        row("other ends of lines", "x\r#MenuTitle: Tidy\r\n", "Tidy");
        row("separator", "x\xE2\x80\xA8#MenuTitle: Tidy\n", "Tidy");
        row("blanks alone", "#MenuTitle:     \nx", "");
        row("not at the start", "x #MenuTitle: Tidy\n", {});
        row("another case", "#menutitle: Tidy\n", {});
        row("empty", "", {});
        row("only blanks", " \n \n", {});
    })
    {
        const auto found = ScriptFile::menuTitle(text);
        QCOMPARE(found.value_or(QString()), title);
        QCOMPARE(found.has_value(), !title.isNull());
    }

    // toolTip: null: none
    TABLE(readsDocStrings, (const QString &text, const QString &toolTip), {
        row("line break first", "__doc__ = \"\"\"\n  Tells a lot.  \n\"\"\"\nprint()\n", "Tells a lot.");
        row("first character", "__doc__ = \"\"\"Tells a lot.\"\"\"\nprint()\n", "ells a lot.");
        row("lines and blanks inside", "__doc__='''\na\n\t b  c\n'''\nprint(1234)\n", "a\n\t b  c");
        row("double quotes first", "__doc__='''\na\n'''\nx = \"\"\"\nlater\n\"\"\"\n", "later");
        row("no end", "__doc__ = \"\"\"\nTells a lot and goes on", "Tells a lot and goes on");
        row("twenty characters", "__doc__ = '''\nabcdef", {});
        row("twenty-one characters", "__doc__ = '''\nabcdefgh", "abcdefgh");
        row("no quotes", "__doc__ = 'short' + 'and more of this'\n", {});
        row("nothing inside", "__doc__ = \"\"\"\n   \n\"\"\"\nprint(12345)\n", {});
        row("other docstring", "\"\"\"\nof the module, not looked at\n\"\"\"\n", {});
    })
    {
        const QString found = ScriptFile::docString(text, 0);
        QCOMPARE(found, toolTip);
        QCOMPARE(found.isNull(), toolTip.isNull());
    }

    TABLE(readsFiles, (const QByteArray &bytes, const QString &title, bool hasToolTip), {
        const QByteArray title("# MenuTitle: Tidy\n");
        const QByteArray doc("__doc__ = '''\nTells.\n'''\nprint(1234)\n");
        const QByteArray filler = QByteArray("# é\n").repeated(300'000);
        row("small", title + doc, u"Tidy"_s, true);
        row("empty", "", QString(), false);
        row("byte order mark", "\xEF\xBB\xBF" + title, u"Tidy"_s, false);
        row("not UTF-8 at once", "# \xE9\n" + title, QString(), false);
        row("not UTF-8 later", title + filler.left(40'000) + '\xE9', QString(), false);
        row("docstring behind the first block", title + filler.left(40'000) + doc, u"Tidy"_s, true);
        row("docstring behind what is looked at", title + filler + doc, u"Tidy"_s, false);
        row("block ends inside a character",
            title + QByteArray(16 * 1024 - 1 - title.size(), 'x') + "é\n" + doc, u"Tidy"_s, true);
        row("large, cut inside a character", title + 'x' + filler, u"Tidy"_s, false);
        row("title of 10,000 characters", "# MenuTitle: " + QByteArray(10'000, 'x') + "\n",
            QString(10'000, u'x'), false);
        row("first line of 10,000 characters", "#" + QByteArray(10'000, 'x') + "\n" + title, u"Tidy"_s,
            false);
        row("one line of 2 MB", "# MenuTitle: " + QByteArray(2 << 20, 'x'), QString(), false);
    })
    {
        write(u"a.py"_s, bytes);
        const auto found = ScriptFile::read(m_scripts + "/a.py"_L1);
        QCOMPARE(found ? found->title : QString(), title);
        QCOMPARE(found && !found->toolTip.isNull(), hasToolTip);
    }

    void tellsWhatIsNoScript()
    {
        script(u"good.py"_s, u"good"_s);
        write(u"untitled.py"_s, "import os\nprint(1)\n");
        write(u"latin.py"_s, "# MenuTitle: caf\xe9\nprint(1)\n");
        write(u"package/__init__.py"_s, "");
        write(u"package/module.py"_s, "x = 1\ny = 2\n");
        write(u"site-packages/library.py"_s, "x = 1\ny = 2\n");
        m_handler->reloadScriptMenu(); // the first time is the program's start
        m_handler->reloadScriptMenu();
        const QString &told = m_panel.output;
        QCOMPARE(told.count(u'\n'), 3);
        QVERIFY2(told.count(u"\n  /"_s) == 2
                     && told.contains(m_scripts + u"/untitled.py: it has no line “# MenuTitle: …”"_s)
                     && told.contains(m_scripts + u"/latin.py: it is not UTF-8"_s),
                 qPrintable(told));
    }

    void mirrorsFolders()
    {
        script(u"Script 10.py"_s, u"ten"_s);
        script(u"Script 2.py"_s, u"two"_s);
        script(u"b.py"_s, u"bee"_s);
        script(u"A.py"_s, u"aye"_s);
        script(u"Q/inner.py"_s, u"inner"_s);
        script(u"Q/deep/er.py"_s, u"deeper"_s);
        script(u"__init__.py"_s, u"never"_s);
        script(u".hidden.py"_s, u"never"_s);
        script(u".hidden/a.py"_s, u"never"_s);
        script(u"text.txt"_s, u"never"_s);
        script(u"PY.PY"_s, u"never"_s);
        QVERIFY(QDir().mkpath(m_scripts + "/empty/folder.py"_L1));
        write(u"plain.py"_s, "print(1)\n");
        const QString elsewhere = QDir::homePath() + "/elsewhere"_L1;
        QVERIFY(QDir().mkpath(elsewhere));
        QFile::remove(elsewhere + "/z.py"_L1);
        QVERIFY(QFile::copy(m_scripts + "/b.py"_L1, elsewhere + "/z.py"_L1));
        QVERIFY(QFile::link(elsewhere, m_scripts + "/Linked"_L1));
        QCOMPARE(::mkfifo(QFile::encodeName(m_scripts + "/pipe.py"_L1).constData(), 0600), 0);
        m_handler->reloadScriptMenu();
        QCOMPARE(shown(), u"aye, bee, Linked[bee], Q[deep[deeper], inner], two, ten"_s);

        QStringList keys = VXScriptingHandler::scriptPathDict().keys();
        QCOMPARE(keys.join(u' '), u"/aye /bee /ten /two Linked/bee Q/inner deep/deeper"_s);
        QCOMPARE(VXScriptingHandler::scriptPathDict()[u"Linked/bee"_s].toString(), elsewhere + "/z.py"_L1);
        QCOMPARE(MenuItem::tag(*item(u"Q"_s)), -1);
        QCOMPARE(MenuItem::representedObject(*item(u"deeper"_s)).toString(), u"deep/deeper"_s);

        // Again, over what is there: nothing twice, and the fixed items stay.
        m_handler->reloadScriptMenu();
        QCOMPARE(shown(), u"aye, bee, Linked[bee], Q[deep[deeper], inner], two, ten"_s);
        for (const int tag : {2, 3, 4})
            QVERIFY(MenuItem::withTag(m_handler->scriptMenu()->actions(), tag));
    }

    void endsLinkLoops()
    {
        script(u"a/one.py"_s, u"one"_s);
        script(u"b/two.py"_s, u"two"_s);
        QVERIFY(QFile::link(m_scripts, m_scripts + "/a/up"_L1));
        QVERIFY(QFile::link(m_scripts + "/b"_L1, m_scripts + "/a/b"_L1));
        QVERIFY(QFile::link(m_scripts + "/a"_L1, m_scripts + "/b/a"_L1));
        QVERIFY(QFile::link(m_scripts + "/self"_L1, m_scripts + "/self"_L1));
        m_handler->reloadScriptMenu();
        QCOMPARE(shown(), u"a[b[two], one], b[a[one], two]"_s);
    }

    TABLE(passesOverOddities, (const QString &name, const QString &kind), {
        for (const QString &kind : {u"pipe"_s, u"device"_s, u"folder"_s, u"link"_s}) {
            for (const QString &name :
                 {u"odd.py"_s, u"odd"_s, u"site-packages"_s, u"site-packages/odd.py"_s, u"__init__.py"_s})
                row(QString::asprintf("%s: %s", qPrintable(name), qPrintable(kind)), name, kind);
        }
    })
    {
        script(u"a.py"_s, u"aye"_s);
        const QString place = m_scripts + u'/' + name;
        QVERIFY(QDir().mkpath(QFileInfo(place).path()));
        if (!makeOddity(kind, place))
            QSKIP("device-node: only root may make one");
        const auto before = whatIsAt(place);
        QElapsedTimer clock;
        clock.start();
        VXScriptingHandler::scriptPaths();
        m_handler->reloadScriptMenu(); // the first time is the program's start
        m_handler->reloadScriptMenu();
        QVERIFY2(clock.elapsed() < 5'000, "it waited");
        QCOMPARE(shown(), u"aye"_s);
        QCOMPARE(whatIsAt(place), before);
        QCOMPARE(m_panel.output.contains("/odd.py"_L1), name == "odd.py"_L1);
        QVERIFY(QFileInfo(place).isDir() ? QDir().rmdir(place) : QFile::remove(place));
    }

    TABLE(showsHostileTitles, (const QString &title, const QString &text), {
        row("ampersand", "Cut && Paste & more", "Cut &&&& Paste && more");
        row("slashes", "a/b/c", "a/b/c");
        row("tab", "Run\tCtrl+R", "Run Ctrl+R");
        row("controls",
            u"a\x01"
            "b\u202Ec"_s,
            "a b c");
        row("markup", "<img src='/dev/zero'>", "<img src='/dev/zero'>");
        row("long", QString(10'000, u'x'), QString(80, u'x') + u'…');
        row("cut beside a pair", QString(79, u'x') + u"\U0001F600 tail"_s, QString(79, u'x') + u'…');
    })
    {
        write(u"a.py"_s,
              ("#MenuTitle: "_L1 + title + "\n__doc__ = '''\n<img src=\"/dev/zero\"> & "_L1 + title
               + "\n'''\nprint('ran')\n"_L1)
                  .toUtf8());
        m_handler->reloadScriptMenu();
        QAction *made = m_handler->scriptMenu()->actions().value(0);
        QCOMPARE(made->text(), text);
        QCOMPARE(MenuItem::title(*made), title);
        QCOMPARE(MenuItem::representedObject(*made).toString(), u'/' + title);
        QVERIFY(!made->toolTip().contains("<img"_L1));
        QVERIFY(made->toolTip().size() < 3000);
        QCOMPARE(MenuItem::toolTip(*made), "<img src=\"/dev/zero\"> & "_L1 + title);
        made->trigger();
        QCOMPARE(m_panel.output, u"ran\n"_s);
        QAction *again = m_handler->runAgainMenuItem();
        QCOMPARE(MenuItem::title(*again), "Run: "_L1 + title.section(u'/', -1));
    }

    void runsAndRunsAgain()
    {
        script(u"Tools/tidy.py"_s, u"Tidy"_s);
        script(u"other.py"_s, u"Other"_s);
        m_handler->reloadScriptMenu();
        QAction *again = m_handler->runAgainMenuItem();
        QVERIFY(!again->isEnabled());
        QCOMPARE(again->text(), u"Run Last Script"_s);
        item(u"Tidy"_s)->trigger();
        QCOMPARE(m_panel.output, u"ran Tidy\n"_s);
        QCOMPARE(m_panel.errors, QString());
        QCOMPARE(UserDefaults::standard().stringForKey(u"runAgainScriptName"_s), u"Tools/Tidy"_s);

        Q_EMIT m_handler->scriptMenu()->aboutToShow();
        QCOMPARE(again->text(), u"Run: Tidy"_s);
        QVERIFY(again->isEnabled());
        again->trigger();
        QCOMPARE(m_panel.output, u"ran Tidy\nran Tidy\n"_s);

        // By its key on any window that shows the menu.
        QMainWindow window;
        window.menuBar()->addMenu(m_handler->scriptMenu());
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_R, Qt::ControlModifier | Qt::AltModifier);
        QCOMPARE(m_panel.output, u"ran Tidy\nran Tidy\nran Tidy\n"_s);

        QVERIFY(QFile::remove(m_scripts + "/other.py"_L1));
        item(u"Other"_s)->trigger();
        QCOMPARE(m_panel.output.count(u'\n'), 3);
    }

    /// Of two scripts with one title in folders of one name, the one walked later runs for both.
    void runsByKey()
    {
        write(u"a/x/s.py"_s, "#MenuTitle: same\nprint('a')\n");
        write(u"b/x/s.py"_s, "#MenuTitle: same\nprint('b')\n");
        m_handler->reloadScriptMenu();
        QCOMPARE(shown(), u"a[x[same]], b[x[same]]"_s);
        for (QAction *action : m_handler->scriptMenu()->findChildren<QAction *>()) {
            if (MenuItem::title(*action) == "same"_L1)
                action->trigger();
        }
        QCOMPARE(m_panel.output, u"a\na\n"_s);
    }

    void forgetsScriptsThatAreGone()
    {
        script(u"tidy.py"_s, u"Tidy"_s);
        m_handler->reloadScriptMenu();
        item(u"Tidy"_s)->trigger();
        QCOMPARE(m_panel.clearings, 1);
        QSignalSpy told(m_handler, &VXScriptingHandler::scriptMenuReloadRequested);
        NotificationCenter::defaultCenter().postNotificationNameObject(u"VXReloadScriptMenu"_s, nullptr, {});
        QCOMPARE(m_panel.clearings, 2);
        QCOMPARE(told.size(), 1);
        QVERIFY(UserDefaults::standard().isSet(u"runAgainScriptName"_s));
        QVERIFY(QFile::remove(m_scripts + "/tidy.py"_L1));
        m_handler->reloadScriptMenu();
        QCOMPARE(shown(), QString());
        QVERIFY(!UserDefaults::standard().isSet(u"runAgainScriptName"_s));
        QVERIFY(!m_handler->runAgainMenuItem()->isEnabled());
    }

    void needsAPanel()
    {
        script(u"tidy.py"_s, u"Tidy"_s);
        m_handler->setMacroPanelController(nullptr);
        m_handler->reloadScriptMenu();
        QCOMPARE(shown(), QString());
        {
            KeptConsole other;
            m_handler->setMacroPanelController(&other);
            QCOMPARE(VXScriptingHandler::globalMacroPanelController(), &other);
            m_handler->runMacroString(u"print('there')"_s);
            QCOMPARE(other.output, u"there\n"_s);
            QCOMPARE(m_handler->macroPanelController(), nullptr);
        }
        QCOMPARE(VXScriptingHandler::globalMacroPanelController(), nullptr);
        m_handler->runMacroString(u"print('nobody hears')"_s);
        m_handler->reloadScriptMenu();
        QCOMPARE(shown(), QString());
    }

    void takesOnlyConsolesAsPanels()
    {
        QTest::ignoreMessage(QtWarningMsg, "QObject shows no text of scripts: it cannot be the macro panel");
        QObject other;
        m_handler->setMacroPanelController(&other);
        QCOMPARE(VXScriptingHandler::globalMacroPanelController(), &m_panel);
    }

    /// A run without windows writes to the process's output, but has a panel as well.
    void keepsOwnOutputApartFromThePanel()
    {
        KeptConsole output;
        setScriptConsole(&output);
        m_handler->runMacroString(u"print('out')"_s);
        m_handler->reloadScriptMenu();
        setScriptConsole(nullptr);
        QCOMPARE(output.output, u"out\n"_s);
        QCOMPARE(output.clearings, 0);
        QCOMPARE(m_panel.output, QString());
        QCOMPARE(m_panel.clearings, 1);
    }

    void isOneMenuOfAllWindows()
    {
        QMainWindow early, late;
        early.menuBar()->addMenu(MainMenu::sharedMenu(MainMenu::Scripts));
        late.menuBar()->addMenu(m_handler->scriptMenu());
        QCOMPARE(early.menuBar()->actions(), late.menuBar()->actions());
        QAction *entry = MenuItem::withTag(early.menuBar()->actions(), 15);
        QVERIFY(entry && entry->isVisible());
        QCOMPARE(MenuItem::title(*entry), u"Scripts"_s);
        QCOMPARE(entry->menu(), m_handler->scriptMenu());
        QVERIFY(m_handler->scriptMenu()->toolTipsVisible());
    }

    TABLE(offersReload, (const QString &change, bool offers), {
        for (const auto change :
             {"new script"_L1, "new title"_L1, "replaced"_L1, "removed"_L1, "new folder"_L1})
            row(change.data(), QString(change), true);
        for (const auto change : {"new body"_L1, "cache"_L1})
            row(change.data(), QString(change), false);
    })
    {
        script(u"sub/tidy.py"_s, u"Tidy"_s);
        write(u"sub/__pycache__/other.cpython-311.pyc"_s, "x");
        m_handler->reloadScriptMenu();
        QAction *reload = MenuItem::withTag(m_handler->scriptMenu()->actions(), 4);
        QCOMPARE(reload->text(), u"Re&load Scripts"_s);
        QSet<QString> looked;
        const QObject row;
        connect(m_handler->findChild<ScriptFolderWatcher *>(), &ScriptFolderWatcher::looked, &row,
                [&looked](const QSet<QString> &paths) { looked |= paths; });
        if (change == "new script"_L1)
            script(u"sub/other.py"_s, u"Other"_s);
        else if (change == "new title"_L1)
            script(u"sub/tidy.py"_s, u"Tidier"_s);
        else if (change == "replaced"_L1) {
            script(u"../new"_s, u"Tidier"_s);
            QCOMPARE(::rename(QFile::encodeName(m_scripts + "/../new"_L1).constData(),
                              QFile::encodeName(m_scripts + "/sub/tidy.py"_L1).constData()),
                     0);
        } else if (change == "removed"_L1)
            QVERIFY(QFile::remove(m_scripts + "/sub/tidy.py"_L1));
        else if (change == "new folder"_L1)
            QVERIFY(QDir().mkpath(m_scripts + "/sub/more"_L1));
        else if (change == "new body"_L1)
            write(u"sub/tidy.py"_s, "# MenuTitle: Tidy\nprint(2)\n");
        else
            write(u"sub/__pycache__/tidy.cpython-311.pyc"_s, "x");
        // What is noticed comes in its order: a change that never counts ends the row.
        if (!offers)
            write(u"sub/tidy.py"_s, "# MenuTitle: Tidy\nprint(3)\n");
        QTRY_VERIFY(offers ? m_handler->isScriptMenuOutdated()
                           : looked.contains(m_scripts + "/sub/tidy.py"_L1));
        QCOMPARE(m_handler->isScriptMenuOutdated(), offers);
        QCOMPARE(reload->text(), offers ? u"Re&load Changed Scripts"_s : u"Re&load Scripts"_s);
        // Never by itself: the console would be cleared behind the user's back.
        QCOMPARE(m_panel.clearings, 1);
        QCOMPARE(shown(), u"sub[Tidy]"_s);
        reload->trigger();
        QCOMPARE(reload->text(), u"Re&load Scripts"_s);
    }

    void answersScripts()
    {
        QVERIFY(QFile::exists(QStringLiteral(RUNEBOOK_SOURCE_DIR "/tests/scripting/checks/menu.py")));
        script(u"Tools/tidy.py"_s, u"Cut & Paste"_s);
        m_handler->reloadScriptMenu();
        m_handler->runMacroFile(QStringLiteral(RUNEBOOK_SOURCE_DIR "/tests/scripting/checks/menu.py"));
        QCOMPARE(m_panel.errors, QString());
        QVERIFY2(m_panel.output.endsWith(u"checked the menu\n"_s), qPrintable(m_panel.output));
    }

private:
    void write(const QString &name, const QByteArray &text)
    {
        runebook::write(m_scripts + u'/' + name, text);
    }

    /// A script that prints its title.
    void script(const QString &name, const QString &title)
    {
        write(name, ("# MenuTitle: "_L1 + title + "\nprint('ran "_L1 + title + "')\n"_L1).toUtf8());
    }

    /// The generated items: "A, B, Folder[C, D]".
    QString shown(QMenu *menu = nullptr) const
    {
        QStringList texts;
        for (QAction *action : (menu ? menu : m_handler->scriptMenu())->actions()) {
            if (action->isSeparator())
                break;
            texts << MenuItem::title(*action)
                    + (action->menu() ? u'[' + shown(action->menu()) + u']' : QString());
        }
        return texts.join(", "_L1);
    }

    QAction *item(const QString &title) const
    {
        for (QAction *action : m_handler->scriptMenu()->findChildren<QAction *>()) {
            if (MenuItem::title(*action) == title)
                return action;
        }
        return nullptr;
    }

    VXScriptingHandler *m_handler = nullptr;
    QString m_scripts;
    KeptConsole m_panel;
};

RUNEBOOK_TEST_MAIN(ScriptsMenuTest)
#include "ScriptsMenuTest.moc"
