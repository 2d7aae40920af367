#include "scripting/panel/ExternalEditors.h"

#include "platform/DesktopApplication.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <csignal>

namespace runebook::ExternalEditors {

using namespace Qt::StringLiterals;

namespace {

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
    const QString forPython = DesktopApplication::defaultFor(u"text/x-python"_s);
    return forPython.isEmpty() ? DesktopApplication::defaultFor(u"text/plain"_s) : forPython;
}

Command commandFor(const QString &application, const QString &path, const QString &line)
{
    if (line.toInt() < 1)
        return {};
    if (application.endsWith(".app"_L1))
        return forBundle(application, path, line);
    QStringList command = application.endsWith(".desktop"_L1) ? DesktopApplication::commandOf(application)
                                                              : QStringList {application};
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
    const QString editor = defaultApplication();
    const Command command = commandFor(editor, absolutePath, line);
    if (!command.program.isEmpty())
        startApart(command);
    else if (!editor.isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(absolutePath));
    else
        QMetaObject::invokeMethod(context, std::move(instead), Qt::QueuedConnection);
}

} // namespace runebook::ExternalEditors
