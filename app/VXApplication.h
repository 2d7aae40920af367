#pragma once

#include "update/SUUpdater.h"

#include <QApplication>
#include <QPointer>

/// The application: owns the updater and decides which update it offers. Scripts reach it as the shared
/// application; its documents and its delegate are reached through it.
class VXApplication : public QApplication, public SUUpdaterDelegate
{
    Q_OBJECT
public:
    VXApplication(int &argc, char **argv);
    ~VXApplication() override;

public: // updates
    /// Makes the updater and becomes its delegate; done by making the application.
    Q_INVOKABLE void awakeFromNib();
    Q_INVOKABLE SUUpdater *updater() const { return m_updater; }
    Q_INVOKABLE void checkForUpdates();
    /// The last entry when the default "SUShowCuttingEdgeVersion" is set, else the first; null when there is
    /// none. Versions are not compared here.
    Q_INVOKABLE SUAppcastItem *bestValidUpdateInAppcastForUpdater(SUAppcast *appcast,
                                                                  SUUpdater *updater) override;

public: // for scripts
    Q_INVOKABLE QList<QObject *> orderedDocuments() const;
    Q_INVOKABLE QList<QObject *> documents() const { return orderedDocuments(); }
    Q_INVOKABLE QObject *delegate() const;
    Q_INVOKABLE QObject *keyWindow() const;
    Q_INVOKABLE QString version() const;

private:
    SUUpdater *m_updater = nullptr;
};
