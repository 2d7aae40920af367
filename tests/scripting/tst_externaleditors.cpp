#include "scripting/CommandRunner.h"
#include "scripting/ExternalEditors.h"
#include "tests/TestMain.h"

#include <QFile>
#include <QFileInfo>
#include <csignal>

using namespace runebook;
using namespace Qt::StringLiterals;

/// Desktop files, editors and terminals in a folder of the test's own.
class ExternalEditorsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void runsCommands_data();
    void runsCommands();
    void leavesSignalsAsTheyAre();
    void knowsTheLineOption_data();
    void knowsTheLineOption();
    void readsDesktopFiles_data();
    void readsDesktopFiles();
    void opensTheLineInTheDefaultEditor();

private:
    QString write(const QString &name, const QByteArray &text, bool isProgram = false);

    QTemporaryDir m_folder;
    QString m_bin;
};

QString ExternalEditorsTest::write(const QString &name, const QByteArray &text, bool isProgram)
{
    const QString path = m_folder.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        return {};
    if (isProgram)
        file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeUser);
    return path;
}

void ExternalEditorsTest::initTestCase()
{
    // Fakes that tell what they were given; the first terminal of the list is found first.
    const QByteArray tells =
        "#!/bin/sh\nfor word in \"$0\" \"$@\"; do printf '%s\\n' \"$word\"; done > \"$SEEN.new\"\n"
        "mv \"$SEEN.new\" \"$SEEN\"\n";
    for (const auto name : {"kate"_L1, "x-terminal-emulator"_L1})
        QVERIFY(!write("bin/"_L1 + name, tells, true).isEmpty());
    QVERIFY(!write(u"bin/xdg-mime"_s, "#!/bin/sh\n[ \"$3\" = text/x-python ] && cat \"$ANSWER\"\n", true)
                 .isEmpty());
    m_bin = m_folder.filePath(u"bin"_s);
    qputenv("PATH", m_bin.toUtf8() + ':' + qgetenv("PATH"));
    qputenv("SEEN", m_folder.filePath(u"seen"_s).toUtf8());
    qputenv("ANSWER", m_folder.filePath(u"answer"_s).toUtf8());
    qputenv("XDG_DATA_HOME", m_folder.filePath(u"data"_s).toUtf8());
}

void ExternalEditorsTest::runsCommands_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QString>("output"); // null: none
    QTest::newRow("found in PATH") << QStringList {u"printf"_s, u"%s|"_s, u"a b"_s, u"$HOME;*"_s, u"é"_s}
                                   << u"a b|$HOME;*|é|"_s;
    QTest::newRow("no output") << QStringList {u"true"_s} << u""_s;
    QTest::newRow("fails") << QStringList {u"sh"_s, u"-c"_s, u"echo before; exit 3"_s} << u"before\n"_s;
    QTest::newRow("killed") << QStringList {u"sh"_s, u"-c"_s, u"kill -9 $$"_s} << u""_s;
    QTest::newRow("more than a pipe holds")
        << QStringList {u"sh"_s, u"-c"_s, u"head -c 300000 /dev/zero | tr '\\0' x"_s}
        << QString(300'000, u'x');
    QTest::newRow("not there") << QStringList {u"/no/such/command"_s} << QString();
    QTest::newRow("no program") << QStringList {u"/etc/passwd"_s} << QString();
}

void ExternalEditorsTest::runsCommands()
{
    QFETCH(QStringList, command);
    QFETCH(QString, output);
    const QString program = command.takeFirst();
    const QString result =
        CommandRunner::taskWithCommandWithAruments(program, command).runAndReturnResultAsString();
    QCOMPARE(result, output);
    QCOMPARE(result.isNull(), output.isNull());
    const auto data = CommandRunner::callCommandArguments(program, command);
    QCOMPARE(data.has_value(), !output.isNull());
    QCOMPARE(data.value_or(QByteArray()), output.toUtf8());
}

void ExternalEditorsTest::leavesSignalsAsTheyAre()
{
    ::signal(SIGPIPE, SIG_IGN);
    const auto shown = CommandRunner::callCommandArguments(
        u"sh"_s, {u"-c"_s, u"yes | head -1; grep SigIgn /proc/self/status"_s});
    ::signal(SIGPIPE, SIG_DFL);
    QVERIFY(shown && shown->startsWith("y\nSigIgn:"));
    constexpr qulonglong kBrokenPipe = 1ULL << (SIGPIPE - 1);
    QCOMPARE(shown->trimmed().split('\t').last().toULongLong(nullptr, 16) & kBrokenPipe, 0ULL);
}

void ExternalEditorsTest::knowsTheLineOption_data()
{
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("command");
    const auto row = [](const char *application, const char *command) {
        QTest::newRow(application) << QString::fromUtf8(application) << QString::fromUtf8(command);
    };
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
}

void ExternalEditorsTest::knowsTheLineOption()
{
    QFETCH(QString, application);
    QFETCH(QString, command);
    const auto found = ExternalEditors::commandFor(application, u"/a b/c.py"_s, u"7"_s);
    QCOMPARE((QStringList(found.program) + found.arguments).join(u'|'), command.replace("BIN"_L1, m_bin));
    QVERIFY(ExternalEditors::commandFor(application, u"/a.py"_s, QString()).program.isEmpty());
    QVERIFY(ExternalEditors::commandFor(application, u"/a.py"_s, u"0"_s).program.isEmpty());
}

void ExternalEditorsTest::readsDesktopFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("command");
    const QString kate = u"kate|-l|7|/c.py"_s;
    QTest::newRow("plain") << QByteArray("[Desktop Entry]\nName=Kate\nExec=kate -b %U\n")
                           << u"kate|-b|-l|7|/c.py"_s;
    QTest::newRow("blanks around") << QByteArray("[Desktop Entry]\nExec = kate %F\n") << kate;
    QTest::newRow("quoted") << QByteArray("[Desktop Entry]\nExec=\"/opt/my \\\\\"b\\\\\"/kate\" %f\n")
                            << u"/opt/my \"b\"/kate|-l|7|/c.py"_s;
    QTest::newRow("other group first")
        << QByteArray("[Desktop Action new]\nExec=gimp\n[Desktop Entry]\nExec=kate\n") << kate;
    QTest::newRow("behind another command")
        << QByteArray("[Desktop Entry]\nExec=env A=1 kate %F\n") << u"env|A=1|kate|-l|7|/c.py"_s;
    QTest::newRow("no command") << QByteArray("[Desktop Entry]\nName=Kate\n") << QString();
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("open quote, no text") << QByteArray("[Desktop Entry]\nExec=\"kate\xff\\\n") << QString();
}

void ExternalEditorsTest::readsDesktopFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, command);
    const auto found = ExternalEditors::commandFor(write(u"some.desktop"_s, file), u"/c.py"_s, u"7"_s);
    QCOMPARE((QStringList(found.program) + found.arguments).join(u'|'), command);
}

void ExternalEditorsTest::opensTheLineInTheDefaultEditor()
{
    QCOMPARE(ExternalEditors::defaultApplication(), QString());
    write(u"answer"_s, "org.kde.kate.desktop\n");
    QCOMPARE(ExternalEditors::defaultApplication(), QString()); // not installed
    const QString file =
        write(u"data/applications/org.kde.kate.desktop"_s, "[Desktop Entry]\nExec=kate -b %U\n");
    QCOMPARE(ExternalEditors::defaultApplication(), file);
    const QString script = write(u"it's; $(a) script.py"_s, "pass\n");
    int instead = 0;
    ExternalEditors::open(script, u"12"_s, this, [&instead] { ++instead; });
    QTRY_VERIFY(QFile::exists(m_folder.filePath(u"seen"_s)));
    QFile seen(m_folder.filePath(u"seen"_s));
    QVERIFY(seen.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(seen.readAll()), m_bin + "/kate\n-b\n-l\n12\n"_L1 + script + u'\n');
    QCOMPARE(instead, 0);
    QVERIFY(QFile::remove(file)); // now no desktop has an editor
    ExternalEditors::open(script, u"12"_s, this, [&instead] { ++instead; });
    QTRY_COMPARE(instead, 1);
}

RUNEBOOK_TEST_MAIN(ExternalEditorsTest)
#include "tst_externaleditors.moc"
