#include "scripting/panel/ExternalEditors.h"
#include "scripting/panel/CommandRunner.h"
#include "tests/Files.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <csignal>

using namespace runebook;
using namespace Qt::StringLiterals;

/// Desktop files, editors and terminals in a folder of the test's own.
class ExternalEditorsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        // Fakes that tell what they were given; the first terminal of the list is found first.
        const QByteArray tells =
            "#!/bin/sh\nfor word in \"$0\" \"$@\"; do printf '%s\\n' \"$word\"; done > \"$SEEN.new\"\n"
            "mv \"$SEEN.new\" \"$SEEN\"\n";
        for (const auto name : {"kate"_L1, "x-terminal-emulator"_L1})
            QVERIFY(!write("bin/"_L1 + name, tells, true).isEmpty());
        m_bin = m_folder.filePath(u"bin"_s);
        qputenv("PATH", m_bin.toUtf8() + ':' + qgetenv("PATH"));
        qputenv("SEEN", m_folder.filePath(u"seen"_s).toUtf8());
        // Nothing of the machine's own.
        for (const char *place : {"XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"})
            qputenv(place, m_folder.filePath(u"data"_s).toUtf8());
    }

    // output: null: none
    TABLE(runsCommands, (QStringList command, const QString &output), {
        row("found in PATH", QStringList {u"printf"_s, u"%s|"_s, u"a b"_s, u"$HOME;*"_s, u"é"_s},
            "a b|$HOME;*|é|");
        row("no output", QStringList {u"true"_s}, "");
        row("fails", QStringList {u"sh"_s, u"-c"_s, u"echo before; exit 3"_s}, "before\n");
        row("killed", QStringList {u"sh"_s, u"-c"_s, u"kill -9 $$"_s}, "");
        row("more than a pipe holds",
            QStringList {u"sh"_s, u"-c"_s, u"head -c 300000 /dev/zero | tr '\\0' x"_s},
            QString(300'000, u'x'));
        row("not there", QStringList {u"/no/such/command"_s}, QString());
        row("no program", QStringList {u"/etc/passwd"_s}, QString());
    })
    {
        const QString program = command.takeFirst();
        const QString result =
            CommandRunner::taskWithCommandWithAruments(program, command).runAndReturnResultAsString();
        QCOMPARE(result, output);
        QCOMPARE(result.isNull(), output.isNull());
        const auto data = CommandRunner::callCommandArguments(program, command);
        QCOMPARE(data.has_value(), !output.isNull());
        QCOMPARE(data.value_or(QByteArray()), output.toUtf8());
    }

    void leavesSignalsAsTheyAre()
    {
        ::signal(SIGPIPE, SIG_IGN);
        const auto shown = CommandRunner::callCommandArguments(
            u"sh"_s, {u"-c"_s, u"yes | head -1; grep SigIgn /proc/self/status"_s});
        ::signal(SIGPIPE, SIG_DFL);
        QVERIFY(shown && shown->startsWith("y\nSigIgn:"));
        constexpr qulonglong kBrokenPipe = 1ULL << (SIGPIPE - 1);
        QCOMPARE(shown->trimmed().split('\t').last().toULongLong(nullptr, 16) & kBrokenPipe, 0ULL);
    }

    TABLE(knowsTheLineOption, (const QString &application, QString command), {
        row("/Apps/TextMate 2.app", "/Apps/TextMate 2.app/Contents/Resources/mate|-l|7|/a b/c.py");
        row("/Apps/Sublime Text.app", "/Apps/Sublime Text.app/Contents/SharedSupport/bin/subl|/a b/c.py:7");
        row("/Apps/Atom.app", "/Apps/Atom.app/Contents/MacOS/Atom|/a b/c.py:7");
        row("/Apps/Other.app", "");
        row("mate", "mate|-l|7|/a b/c.py");
        row("/opt/sublime_text/sublime_text", "/opt/sublime_text/sublime_text|/a b/c.py:7");
        row("subl", "subl|/a b/c.py:7");
        row("atom", "atom|/a b/c.py:7");
        row("/usr/bin/kate", "/usr/bin/kate|-l|7|/a b/c.py");
        row("gedit", "gedit|+7|/a b/c.py");
        row("gnome-text-editor", "gnome-text-editor|+7|/a b/c.py");
        row("code", "code|-g|/a b/c.py:7");
        row("geany", "geany|-l|7|/a b/c.py");
        row("vim", "BIN/x-terminal-emulator|-e|vim|+7|/a b/c.py");
        row("gimp", "");
    })
    {
        const auto found = ExternalEditors::commandFor(application, u"/a b/c.py"_s, u"7"_s);
        QCOMPARE((QStringList(found.program) + found.arguments).join(u'|'), command.replace("BIN"_L1, m_bin));
        QVERIFY(ExternalEditors::commandFor(application, u"/a.py"_s, QString()).program.isEmpty());
        QVERIFY(ExternalEditors::commandFor(application, u"/a.py"_s, u"0"_s).program.isEmpty());
    }

    TABLE(readsDesktopFiles, (const QByteArray &file, const QString &command), {
        const QString kate = u"kate|-l|7|/c.py"_s;
        row("plain", "[Desktop Entry]\nName=Kate\nExec=kate -b %U\n", "kate|-b|-l|7|/c.py");
        row("blanks around", "[Desktop Entry]\nExec = kate %F\n", kate);
        row("quoted", "[Desktop Entry]\nExec=\"/opt/my \\\\\"b\\\\\"/kate\" %f\n",
            "/opt/my \"b\"/kate|-l|7|/c.py");
        row("other group first", "[Desktop Action new]\nExec=gimp\n[Desktop Entry]\nExec=kate\n", kate);
        row("behind another command", "[Desktop Entry]\nExec=env A=1 kate %F\n", "env|A=1|kate|-l|7|/c.py");
        row("per cents", "[Desktop Entry]\nExec=env A=100%% %% kate %F\n", "env|A=100%|%|kate|-l|7|/c.py");
        row("no command", "[Desktop Entry]\nName=Kate\n", QString());
        row("empty", QByteArray(), QString());
        row("open quote, no text", QByteArray("[Desktop Entry]\nExec=\"kate\xff\\\n"), QString());
    })
    {
        const auto found = ExternalEditors::commandFor(write(u"some.desktop"_s, file), u"/c.py"_s, u"7"_s);
        QCOMPARE((QStringList(found.program) + found.arguments).join(u'|'), command);
    }

    void opensTheLineInTheDefaultEditor()
    {
        QCOMPARE(ExternalEditors::defaultApplication(), QString());
        write(u"data/applications/mimeapps.list"_s,
              "[Default Applications]\ntext/x-python=org.kde.kate.desktop\n");
        QCOMPARE(ExternalEditors::defaultApplication(), QString()); // not installed
        const QString file = write(u"data/applications/org.kde.kate.desktop"_s,
                                   "[Desktop Entry]\nType=Application\nName=Kate\nExec=kate -b %U\n");
        QTRY_COMPARE(ExternalEditors::defaultApplication(), file);
        const QString script = write(u"it's; $(a) script.py"_s, "pass\n");
        int instead = 0;
        QDir::setCurrent(m_folder.path()); // editors have a folder of their own
        ExternalEditors::open(QFileInfo(script).fileName(), u"12"_s, this, [&instead] { ++instead; });
        QTRY_VERIFY(QFile::exists(m_folder.filePath(u"seen"_s)));
        QCOMPARE(QString::fromUtf8(runebook::contentOf(m_folder.filePath(u"seen"_s))),
                 m_bin + "/kate\n-b\n-l\n12\n"_L1 + script + u'\n');
        QCOMPARE(instead, 0);
        QVERIFY(QFile::remove(file)); // now no desktop has an editor
        QTRY_COMPARE(ExternalEditors::defaultApplication(), QString());
        ExternalEditors::open(script, u"12"_s, this, [&instead] { ++instead; });
        QTRY_COMPARE(instead, 1);
    }

private:
    QString write(const QString &name, const QByteArray &text, bool isProgram = false)
    {
        const QString path = runebook::write(m_folder.filePath(name), text);
        if (isProgram)
            QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOwner | QFile::ExeUser);
        return path;
    }

    QTemporaryDir m_folder;
    QString m_bin;
};

RUNEBOOK_TEST_MAIN(ExternalEditorsTest)
#include "ExternalEditorsTest.moc"
