#pragma once

#include "update/Appcast.h"
#include "update/PageFetcher.h"

class SUUpdater;

/// Chooses from a feed what the updater offers.
class SUUpdaterDelegate
{
public:
    virtual ~SUUpdaterDelegate() = default;
    /// An entry of \a appcast, or null for none.
    virtual SUAppcastItem *bestValidUpdateInAppcastForUpdater(SUAppcast *appcast, SUUpdater *updater) = 0;
};

/// Looks for a newer version of the program in the feed at the address "SUFeedURL" of the user's defaults;
/// there is no address built in. It tells what it found and installs nothing. Main thread only.
class SUUpdater : public QObject
{
    Q_OBJECT
public:
    explicit SUUpdater(QObject *parent = nullptr);
    ~SUUpdater() override;

    /// Not owned. Without one the first entry of the feed is offered.
    void setDelegate(SUUpdaterDelegate *delegate) { m_delegate = delegate; }
    /// The version that entries are compared with; the program's own unless changed.
    Q_INVOKABLE QString currentVersion() const { return m_currentVersion; }
    void setCurrentVersion(const QString &version) { m_currentVersion = version; }
    void setLimits(const runebook::PageFetcher::Limits &limits) { m_fetcher.setLimits(limits); }

public: // settings, kept in the user's defaults
    Q_INVOKABLE QString feedURL() const;
    Q_INVOKABLE void setFeedURL(const QString &address);
    /// Whether the program looks for updates at its start ("SUEnableAutomaticChecks").
    Q_INVOKABLE bool automaticallyChecksForUpdates() const;
    Q_INVOKABLE void setAutomaticallyChecksForUpdates(bool checks);
    /// The version that is not offered again unless asked for ("SUSkippedVersion").
    Q_INVOKABLE QString skippedVersion() const;
    Q_INVOKABLE void skipVersion(const QString &version);

public: // looking
    /// Because the user asked: every outcome is told.
    Q_INVOKABLE void checkForUpdates();
    /// By itself: only a version that is newer and was not skipped is told.
    Q_INVOKABLE void checkForUpdatesInBackground();
    Q_INVOKABLE bool isChecking() const { return m_fetcher.isFetching(); }

Q_SIGNALS:
    void started();
    /// The item lives until the next check.
    void foundUpdate(SUAppcastItem *item);
    /// \a item is the newest that is offered; the program is as new.
    void foundNothingNewer(SUAppcastItem *item);
    void failed(const runebook::Error &error);

private:
    void check();
    void take(const QByteArray &page, const runebook::Error &error);
    void offer(SUAppcastItem *item);
    void tellFailure(const runebook::Error &error);

    runebook::PageFetcher m_fetcher;
    SUUpdaterDelegate *m_delegate = nullptr;
    std::unique_ptr<SUAppcast> m_appcast;
    QString m_currentVersion;
    bool m_wasAsked = false;
};
