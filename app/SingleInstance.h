#pragma once

#include <QLockFile>
#include <QObject>
#include <QStringList>
#include <memory>

class QLocalServer;
class QLocalSocket;

namespace runebook {

/// Makes one running program out of several starts: the first listens on a socket that only its user can
/// reach, later ones hand it their files. Programs with different defaults do not know each other. Where no
/// socket can be made, each start stands alone.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    enum class Role {
        First, ///< listens from now on
        Second, ///< the first one has taken the files
        Alone ///< there is no first one that answers, and none can be told of this one
    };

    /// \a socketPath is where the first one listens.
    explicit SingleInstance(const QString &socketPath = standardSocketPath(), QObject *parent = nullptr);
    ~SingleInstance() override;

    /// Listens, or hands \a files (absolute paths) to who does. Waits no longer than a few seconds.
    Role claim(const QStringList &files);

    /// In the user's runtime folder, or in the cache where there is none; empty where neither can be used.
    static QString standardSocketPath();
    /// How long the other program may take to answer.
    void setTimeLimit(int milliseconds) { m_timeLimitMs = milliseconds; }

Q_SIGNALS:
    /// A second start came, with files or without.
    void filesReceived(const QStringList &files);

private:
    bool listen();
    bool handOver(const QStringList &files);
    void serve(QLocalSocket *socket);

    QString m_socketPath;
    QLockFile m_lock;
    std::unique_ptr<QLocalServer> m_server;
    int m_timeLimitMs = 3'000;
};

} // namespace runebook
