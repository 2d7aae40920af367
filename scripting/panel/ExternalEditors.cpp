#include "scripting/panel/ExternalEditors.h"

#include "platform/Background.h"
#include "platform/DesktopApplication.h"
#include "platform/FileBytes.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <csignal>

namespace runebook::ExternalEditors {

using namespace Qt::StringLiterals;

namespace {

/// What a command of the desktop prints; nothing when it takes too long: nobody may wait for it for ever.
QString answerOf(const QString &command, const QStringList &arguments)
{
    constexpr int kPatienceMs = 3'000;
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(command, arguments, QProcess::ReadOnly);
    if (process.waitForFinished(kPatienceMs))
        return QString::fromUtf8(process.readAllStandardOutput());
    process.kill();
    process.waitForFinished(kPatienceMs);
    return {};
}

/// Starts a command that goes on by itself, with signals as a shell would leave them.
bool startApart(const Command &command)
{
    QProcess process;
    process.setProgram(command.program);
    process.setArguments(command.arguments);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setChildProcessModifier([] {
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::signal(SIGPIPE, SIG_DFL);
    });
    return process.startDetached();
}

/// How an editor is told the line.
enum class LineOption {
    DashL, ///< -l 12 path
    Plus, ///< +12 path
    Colon, ///< path:12
    Goto, ///< -g path:12
};

struct Editor {
    const char *name;
    LineOption option;
};

// Application bundles, by a part of their name, and the command inside of them.
struct Bundle {
    Editor editor;
    const char *command;
};
constexpr Bundle kBundles[] {
    {{"TextMate", LineOption::DashL}, "/Contents/Resources/mate"},
    {{"Sublime", LineOption::Colon}, "/Contents/SharedSupport/bin/subl"},
    {{"Atom", LineOption::Colon}, "/Contents/MacOS/Atom"},
};

// Installed commands; those in the second table need a terminal.
constexpr Editor kCommands[] {
    {"mate", LineOption::DashL},         {"subl", LineOption::Colon},
    {"sublime_text", LineOption::Colon}, {"atom", LineOption::Colon},
    {"kate", LineOption::DashL},         {"kwrite", LineOption::DashL},
    {"gedit", LineOption::Plus},         {"gnome-text-editor", LineOption::Plus},
    {"code", LineOption::Goto},          {"code-oss", LineOption::Goto},
    {"codium", LineOption::Goto},        {"geany", LineOption::DashL},
    {"gvim", LineOption::Plus},
};
constexpr Editor kTerminalCommands[] {
    {"vim", LineOption::Plus},
    {"vi", LineOption::Plus},
    {"nvim", LineOption::Plus},
};

// What runs a command in a terminal window, and the option behind which the command stands.
constexpr std::pair<const char *, const char *> kTerminals[] {
    {"x-terminal-emulator", "-e"}, {"gnome-terminal", "--"}, {"konsole", "-e"},
    {"xfce4-terminal", "-x"},      {"xterm", "-e"},
};

QStringList argumentsFor(LineOption option, const QString &path, const QString &line)
{
    switch (option) {
    case LineOption::DashL:
        return {u"-l"_s, line, path};
    case LineOption::Plus:
        return {u'+' + line, path};
    case LineOption::Goto:
        return {u"-g"_s, path + u':' + line};
    case LineOption::Colon:
        break;
    }
    return {path + u':' + line};
}

template <std::size_t size> const Editor *find(const Editor (&editors)[size], const QString &name)
{
    const auto found = std::find_if(std::begin(editors), std::end(editors), [&name](const Editor &editor) {
        return name == QLatin1StringView(editor.name);
    });
    return found == std::end(editors) ? nullptr : found;
}

/// The escapes that all values of desktop files may have.
QString unescaped(const QString &value)
{
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != u'\\' || i + 1 == value.size()) {
            text += value[i];
            continue;
        }
        switch (value[++i].unicode()) {
        case 's':
            text += u' ';
            break;
        case 'n':
            text += u'\n';
            break;
        case 't':
            text += u'\t';
            break;
        case 'r':
            text += u'\r';
            break;
        case '\\':
            text += u'\\';
            break;
        default:
            text += u'\\';
            text += value[i];
        }
    }
    return text;
}

/// The words of a command: blanks separate them unless they stand in double quotes, inside of which a
/// backslash keeps the next character as it is. Places for files and the like are left out.
QStringList wordsOf(const QString &command)
{
    QStringList words;
    QString word;
    bool isQuoted = false, hasWord = false;
    for (qsizetype i = 0; i <= command.size(); ++i) {
        const QChar character = i < command.size() ? command[i] : QChar(u' ');
        if (character == u'"') {
            isQuoted = !isQuoted;
            hasWord = true;
        } else if (isQuoted && character == u'\\' && i + 1 < command.size()) {
            word += command[++i];
        } else if (!isQuoted && character.isSpace()) {
            if (hasWord && !(word.size() == 2 && word[0] == u'%' && word[1] != u'%'))
                words << word.replace("%%"_L1, "%"_L1);
            word.clear();
            hasWord = false;
        } else {
            word += character;
            hasWord = true;
        }
    }
    return words;
}

QStringList commandOf(const QString &desktopFile)
{
    constexpr qint64 kLargestFile = 1 << 20;
    const QByteArray text = bytesOfSmallFile(desktopFile, kLargestFile).value_or(QByteArray());
    bool isInEntry = false;
    for (const QString &line : QString::fromUtf8(text).split(u'\n')) {
        if (line.startsWith(u'['))
            isInEntry = line.trimmed() == "[Desktop Entry]"_L1;
        else if (isInEntry && line.section(u'=', 0, 0).trimmed() == "Exec"_L1)
            return wordsOf(unescaped(line.section(u'=', 1).trimmed()));
    }
    return {};
}

Command inTerminal(const QStringList &command)
{
    for (const auto &[name, option] : kTerminals) {
        const QString terminal = QStandardPaths::findExecutable(QLatin1StringView(name));
        if (!terminal.isEmpty())
            return {terminal, QStringList(QLatin1StringView(option)) + command};
    }
    return {};
}

Command forBundle(const QString &application, const QString &path, const QString &line)
{
    const QString name = QFileInfo(application).fileName();
    for (const Bundle &bundle : kBundles) {
        if (name.contains(QLatin1StringView(bundle.editor.name)))
            return {application + QLatin1StringView(bundle.command),
                    argumentsFor(bundle.editor.option, path, line)};
    }
    return {};
}

} // namespace

QString defaultApplication()
{
    for (const auto type : {"text/x-python"_L1, "text/plain"_L1}) {
        const QString answer = answerOf(u"xdg-mime"_s, {u"query"_s, u"default"_s, type});
        const QString id = answer.section(u';', 0, 0).trimmed();
        const QString file = DesktopApplication::desktopFile(id);
        if (!file.isEmpty())
            return file;
    }
    return {};
}

Command commandFor(const QString &application, const QString &path, const QString &line)
{
    if (line.toInt() < 1)
        return {};
    if (application.endsWith(".app"_L1))
        return forBundle(application, path, line);
    QStringList command =
        application.endsWith(".desktop"_L1) ? commandOf(application) : QStringList {application};
    for (const QString &word : std::as_const(command)) {
        const QString name = word.section(u'/', -1);
        const bool needsTerminal = find(kTerminalCommands, name) != nullptr;
        const Editor *editor = needsTerminal ? find(kTerminalCommands, name) : find(kCommands, name);
        if (!editor)
            continue; // such as "env" in front of the command
        command += argumentsFor(editor->option, path, line);
        if (needsTerminal)
            return inTerminal(command);
        return {command.takeFirst(), command};
    }
    return {};
}

void open(const QString &path, const QString &line, QObject *context, std::function<void()> instead)
{
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    // The desktop may take its time, and a window would stand still.
    const QPointer<QObject> safe(context);
    runApart([absolutePath, line, safe, instead = std::move(instead)] {
        const QString editor = defaultApplication();
        const Command command = commandFor(editor, absolutePath, line);
        if (!command.program.isEmpty()) {
            startApart(command);
            return;
        }
        const bool hasEditor = !editor.isEmpty();
        runOnMainThread([absolutePath, safe, instead, hasEditor] {
            if (hasEditor)
                QDesktopServices::openUrl(QUrl::fromLocalFile(absolutePath));
            else if (safe)
                instead();
        });
    });
}

} // namespace runebook::ExternalEditors
