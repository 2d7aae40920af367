#pragma once

#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

namespace runebook {

/// A web server on this machine that answers every request as it was told, well or badly.
class FeedServer : public QTcpServer
{
    Q_OBJECT
public:
    enum Manner { Whole, Endless, Slow, HangUp };

    FeedServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { take(socket); });
        });
    }

    /// What follows is answered with \a head (status line and headers) and \a body.
    void answer(const QByteArray &body, const QByteArray &head = "HTTP/1.1 200 OK", Manner manner = Whole)
    {
        m_head = head;
        m_body = body;
        m_manner = manner;
        m_requests = 0;
    }
    int requests() const { return m_requests; }
    QByteArray lastRequest() const { return m_lastRequest; }
    QString address(const QString &path = QStringLiteral("/feed.xml")) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path);
    }

private:
    void take(QTcpSocket *socket)
    {
        const QByteArray request = socket->peek(socket->bytesAvailable());
        if (!request.contains("\r\n\r\n"))
            return; // the rest of its head is on the way
        socket->readAll();
        ++m_requests;
        m_lastRequest = request;
        QByteArray head = m_head + "\r\n";
        if (m_manner == Whole)
            head += "Content-Length: " + QByteArray::number(m_body.size()) + "\r\n";
        if (m_manner == HangUp)
            head += "Content-Length: 100000\r\n";
        socket->write(head + "Connection: close\r\n\r\n");
        if (m_manner == Slow || m_manner == Endless)
            goOn(socket);
        else
            socket->write(m_body);
        if (m_manner == HangUp)
            socket->disconnectFromHost();
    }

    /// One byte now and then, or as much as the other side takes.
    void goOn(QTcpSocket *socket)
    {
        auto *timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, socket, [this, socket] {
            if (socket->bytesToWrite() < 1'000'000)
                socket->write(m_manner == Slow ? QByteArray(" ") : QByteArray(65'536, ' '));
        });
        timer->start(m_manner == Slow ? 20 : 0);
    }

    QByteArray m_head;
    QByteArray m_body;
    QByteArray m_lastRequest;
    Manner m_manner = Whole;
    int m_requests = 0;
};

} // namespace runebook
