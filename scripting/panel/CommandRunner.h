#pragma once

#include <QByteArray>
#include <QStringList>
#include <optional>

/// Runs a command with arguments and waits for its end, never through a shell.
class CommandRunner
{
public:
    /// What \a command, looked for in PATH unless it has a slash, wrote to its standard output until it
    /// ended; nothing when it could not be started. It gets the environment of this process.
    static std::optional<QByteArray> callCommandArguments(const QString &command,
                                                          const QStringList &arguments);

    /// A command that is run later.
    static CommandRunner taskWithCommandWithAruments(const QString &command, const QStringList &arguments);
    /// Runs it; what it wrote, as text in UTF-8. Null when it could not be started.
    QString runAndReturnResultAsString() const;
    std::optional<QByteArray> runAndReturnResultAsData() const;

private:
    CommandRunner(QString command, QStringList arguments);

    QString m_command;
    QStringList m_arguments;
};
