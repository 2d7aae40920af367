#include "scripting/panel/CommandRunner.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t kBlock = 4096;

/// Calls \a function again for as long as signals interrupt it.
template <typename Function> auto retried(Function function)
{
    decltype(function()) result;
    do {
        result = function();
    } while (result == -1 && errno == EINTR);
    return result;
}

/// What the child starts with: our environment, and signals as a shell would leave them. The interpreter has
/// SIGPIPE ignored, and threads that run commands have signals blocked; both would be inherited.
class SpawnSettings
{
public:
    explicit SpawnSettings(int output)
    {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
        ::posix_spawnattr_init(&m_attributes);
        sigset_t none, pipe;
        ::sigemptyset(&none);
        ::sigemptyset(&pipe);
        ::sigaddset(&pipe, SIGPIPE);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &pipe);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings()
    {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }
    Q_DISABLE_COPY_MOVE(SpawnSettings)

    const posix_spawn_file_actions_t *actions() const { return &m_actions; }
    const posix_spawnattr_t *attributes() const { return &m_attributes; }

private:
    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

/// Everything until the other end is closed; nothing when reading fails.
std::optional<QByteArray> readAll(int descriptor)
{
    QByteArray all;
    char block[kBlock];
    for (;;) {
        const ssize_t count = retried([&] { return ::read(descriptor, block, kBlock); });
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return all;
        all.append(block, count);
    }
}

} // namespace

std::optional<QByteArray> CommandRunner::callCommandArguments(const QString &command,
                                                              const QStringList &arguments)
{
    std::vector<QByteArray> words {command.toUtf8()};
    for (const QString &argument : arguments)
        words.push_back(argument.toUtf8());
    std::vector<char *> vector;
    for (QByteArray &word : words)
        vector.push_back(word.data());
    vector.push_back(nullptr);

    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return std::nullopt;
    pid_t child = 0;
    int failure = 0;
    {
        const SpawnSettings settings(ends[1]);
        failure = ::posix_spawnp(&child, vector[0], settings.actions(), settings.attributes(), vector.data(),
                                 environ);
    }
    ::close(ends[1]);
    std::optional<QByteArray> output = failure == 0 ? readAll(ends[0]) : std::nullopt;
    ::close(ends[0]);
    if (failure == 0 && retried([child] { return ::waitpid(child, nullptr, 0); }) == -1)
        return std::nullopt;
    return output;
}

CommandRunner::CommandRunner(QString command, QStringList arguments)
    : m_command(std::move(command)), m_arguments(std::move(arguments))
{
}

CommandRunner CommandRunner::taskWithCommandWithAruments(const QString &command, const QStringList &arguments)
{
    return {command, arguments};
}

QString CommandRunner::runAndReturnResultAsString() const
{
    const std::optional<QByteArray> output = runAndReturnResultAsData();
    return output ? QString::fromUtf8(output->isNull() ? QByteArrayView("") : QByteArrayView(*output))
                  : QString();
}

std::optional<QByteArray> CommandRunner::runAndReturnResultAsData() const
{
    return callCommandArguments(m_command, m_arguments);
}
