#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <functional>

class QNetworkAccessManager;
class QNetworkReply;

namespace runebook {

/// Fetches one small page at a time from a server that is not trusted: by HTTPS only (HTTP from this machine
/// itself is allowed), redirected to HTTPS only, within bounds of size and time, without cookies, cache or
/// compression. Main thread only.
class PageFetcher : public QObject
{
    Q_OBJECT
public:
    explicit PageFetcher(QObject *parent = nullptr);
    ~PageFetcher() override;

    struct Limits {
        qint64 bytes = 1024 * 1024;
        int milliseconds = 30'000; ///< for all of it
    };
    void setLimits(const Limits &limits) { m_limits = limits; }

    /// Told once, in a later turn of the event loop: the page, or an error with the domain "UpdateError".
    using Then = std::function<void(const QByteArray &page, const Error &error)>;
    /// Starts; what was still going on before is forgotten without a word.
    void fetch(const QUrl &url, Then then);
    void cancel();
    bool isFetching() const { return !m_reply.isNull(); }

    /// Whether a page may be fetched from \a url.
    static bool isAllowed(const QUrl &url);
    /// Whether \a url may be handed to the user's browser.
    static bool mayBeOpened(const QUrl &url);

private:
    void followRedirect(const QUrl &url);
    void receive();
    void finish();
    void giveUp(int code, const QString &reason);
    void answer(const QByteArray &page, const Error &error);

    Limits m_limits;
    QNetworkAccessManager *m_network = nullptr;
    QPointer<QNetworkReply> m_reply;
    QTimer m_deadline;
    QByteArray m_page;
    Then m_then;
};

} // namespace runebook
