#include "update/SUUpdater.h"

#include "platform/VXVersionComparator.h"
#include "update/UpdateSettings.h"

using namespace runebook;
using namespace Qt::StringLiterals;

SUUpdater::SUUpdater(QObject *parent)
    : QObject(parent), m_currentVersion(QStringLiteral(RUNEBOOK_VERSION)) { }

SUUpdater::~SUUpdater() = default;

QString SUUpdater::feedURL() const
{
    return Settings::kUpdateFeed.value().trimmed();
}

void SUUpdater::setFeedURL(const QString &address)
{
    Settings::kUpdateFeed.setOrReset(address.trimmed());
}

bool SUUpdater::automaticallyChecksForUpdates() const
{
    return Settings::kChecksForUpdatesAtStart.value();
}

void SUUpdater::setAutomaticallyChecksForUpdates(bool checks)
{
    Settings::kChecksForUpdatesAtStart.set(checks);
}

QString SUUpdater::skippedVersion() const
{
    return Settings::kSkippedVersion.value();
}

void SUUpdater::skipVersion(const QString &version)
{
    Settings::kSkippedVersion.set(version);
}

void SUUpdater::checkForUpdates()
{
    m_wasAsked = true;
    check();
}

void SUUpdater::checkForUpdatesInBackground()
{
    if (isChecking() || feedURL().isEmpty())
        return;
    m_wasAsked = false;
    check();
}

void SUUpdater::check()
{
    if (feedURL().isEmpty()) {
        tellFailure({u"UpdateError"_s,
                     UpdateError::kNoFeed,
                     tr("No address of an update feed is set."),
                     {},
                     tr("Set one in the preferences under Updates, where the program came from.")});
        return;
    }
    Q_EMIT started();
    m_fetcher.fetch(QUrl(feedURL(), QUrl::StrictMode),
                    [this](const QByteArray &page, const Error &error) { take(page, error); });
}

void SUUpdater::take(const QByteArray &page, const Error &error)
{
    if (!error.domain.isEmpty()) {
        tellFailure(error);
        return;
    }
    Error problem;
    m_appcast = readAppcast(page, &problem);
    if (!m_appcast) {
        tellFailure(problem);
        return;
    }
    offer(m_delegate ? m_delegate->bestValidUpdateInAppcastForUpdater(m_appcast.get(), this)
                     : m_appcast->itemList().value(0));
}

void SUUpdater::offer(SUAppcastItem *item)
{
    if (!item) {
        tellFailure(
            {u"UpdateError"_s, UpdateError::kNoEntry, tr("The update feed lists no version."), {}, {}});
        return;
    }
    if (item->versionString.isEmpty()) {
        tellFailure({u"UpdateError"_s,
                     UpdateError::kNoVersion,
                     tr("The update feed does not tell the version of what it offers."),
                     {},
                     {}});
        return;
    }
    if (!VXVersionComparator::isVersionGreaterThanVersion(item->versionString, m_currentVersion)) {
        if (m_wasAsked)
            Q_EMIT foundNothingNewer(item);
    } else if (m_wasAsked || item->versionString != skippedVersion()) {
        Q_EMIT foundUpdate(item);
    }
}

void SUUpdater::tellFailure(const Error &error)
{
    if (m_wasAsked)
        Q_EMIT failed(error);
}
