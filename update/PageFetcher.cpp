#include "update/PageFetcher.h"

#include "update/Appcast.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMaxRedirects = 5;
constexpr qsizetype kLongestReason = 300;

bool isHttps(const QUrl &url)
{
    return url.isValid() && url.scheme() == "https"_L1 && !url.host().isEmpty();
}

bool isThisMachine(const QUrl &url)
{
    return url.host() == "localhost"_L1 || QHostAddress(url.host()).isLoopback();
}

QNetworkRequest requestFor(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(kMaxRedirects);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Nothing is unpacked, so a small answer stays small.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Runebook/"_s + QStringLiteral(RUNEBOOK_VERSION));
    return request;
}

} // namespace

PageFetcher::PageFetcher(QObject *parent) : QObject(parent)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this,
            [this] { giveUp(UpdateError::kTooSlow, tr("The server took too long to answer.")); });
}

PageFetcher::~PageFetcher()
{
    cancel();
}

bool PageFetcher::isAllowed(const QUrl &url)
{
    return isHttps(url) || (url.isValid() && url.scheme() == "http"_L1 && isThisMachine(url));
}

bool PageFetcher::mayBeOpened(const QUrl &url)
{
    return isAllowed(url) || (url.isValid() && url.scheme() == "http"_L1 && !url.host().isEmpty())
        || (url.isValid() && url.scheme() == "mailto"_L1);
}

void PageFetcher::fetch(const QUrl &url, Then then)
{
    cancel();
    m_then = std::move(then);
    if (!isAllowed(url)) {
        const QString shown = url.toDisplayString().left(kLongestReason);
        QMetaObject::invokeMethod(
            this,
            [this, shown] {
                giveUp(UpdateError::kAddress,
                       tr("“%1” is no address that begins with “https://”.").arg(shown));
            },
            Qt::QueuedConnection);
        return;
    }
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    m_page.clear();
    m_deadline.start(m_limits.milliseconds);
    m_reply = m_network->get(requestFor(url));
    m_reply->setReadBufferSize(m_limits.bytes);
    connect(m_reply, &QNetworkReply::redirected, this, &PageFetcher::followRedirect);
    connect(m_reply, &QNetworkReply::readyRead, this, &PageFetcher::receive);
    connect(m_reply, &QNetworkReply::finished, this, &PageFetcher::finish);
}

void PageFetcher::cancel()
{
    m_then = {};
    m_deadline.stop();
    if (QNetworkReply *reply = std::exchange(m_reply, nullptr)) {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

void PageFetcher::followRedirect(const QUrl &url)
{
    // To this machine neither: a server elsewhere has no business with what runs here.
    if (isHttps(url) && !isThisMachine(url)) {
        Q_EMIT m_reply->redirectAllowed();
        return;
    }
    giveUp(UpdateError::kAddress,
           tr("The server leads to “%1”, which is no address that begins with “https://”.")
               .arg(url.toDisplayString().left(kLongestReason)));
}

void PageFetcher::receive()
{
    m_page += m_reply->readAll();
    if (m_page.size() > m_limits.bytes)
        giveUp(UpdateError::kTooLarge,
               tr("The answer is larger than %1.").arg(QLocale().formattedDataSize(m_limits.bytes)));
}

void PageFetcher::finish()
{
    receive();
    if (!m_reply)
        return;
    if (m_reply->error() != QNetworkReply::NoError) {
        giveUp(UpdateError::kNetwork, m_reply->errorString().left(kLongestReason));
        return;
    }
    const QByteArray packed = m_reply->rawHeader("Content-Encoding").trimmed().toLower();
    if (!packed.isEmpty() && packed != "identity") {
        giveUp(UpdateError::kNetwork, tr("The answer is compressed, which was not asked for."));
        return;
    }
    answer(m_page, {});
}

void PageFetcher::giveUp(int code, const QString &reason)
{
    answer({}, {u"UpdateError"_s, code, tr("The page could not be fetched."), reason, {}});
}

void PageFetcher::answer(const QByteArray &page, const Error &error)
{
    const Then then = std::exchange(m_then, {});
    const QByteArray kept = page;
    cancel();
    m_page.clear();
    if (then)
        then(kept, error);
}

} // namespace runebook
