#include "app/VXApplication.h"

#include "app/AppSettings.h"
#include "scripting/classes/ScriptApplication.h"
#include "update/UpdateWindow.h"

using namespace runebook;
using namespace Qt::StringLiterals;

VXApplication::VXApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    awakeFromNib();
    ScriptApplication::setObject(this);
}

VXApplication::~VXApplication()
{
    ScriptApplication::setObject(nullptr);
    // With the windows that it shows, which need the application.
    delete m_updater;
}

void VXApplication::awakeFromNib()
{
    if (m_updater)
        return;
    m_updater = new SUUpdater(this);
    m_updater->setDelegate(this);
    new UpdatePresenter(*m_updater);
}

void VXApplication::checkForUpdates()
{
    m_updater->checkForUpdates();
}

SUAppcastItem *VXApplication::bestValidUpdateInAppcastForUpdater(SUAppcast *appcast, SUUpdater *updater)
{
    Q_UNUSED(updater)
    if (!appcast || appcast->itemList().isEmpty())
        return nullptr;
    const bool wantsNewest = Settings::kOffersNewestVersion.value();
    return wantsNewest ? appcast->itemList().last() : appcast->itemList().first();
}

QList<QObject *> VXApplication::orderedDocuments() const
{
    return ScriptApplication::shared().orderedDocuments();
}

QObject *VXApplication::delegate() const
{
    return ScriptApplication::shared().delegate();
}

QObject *VXApplication::keyWindow() const
{
    return ScriptApplication::shared().keyWindow();
}

QString VXApplication::version() const
{
    return ScriptApplication::shared().version();
}
