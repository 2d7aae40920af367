// The bar's settings as a record under given keys.
#include "tabbar/PSMOverflowPopUpButton.h"
#include "tabbar/TabBarMouse.h"
#include "tabbar/VXTabBarControl.h"

using namespace Qt::StringLiterals;

namespace {

/// The settings whose key is "PSM" and the name of the property.
constexpr QLatin1StringView kPlainSettings[] = {"canCloseOnlyTab"_L1,       "disableTabClose"_L1,
                                                "hideForSingleTab"_L1,      "allowsBackgroundTabClosing"_L1,
                                                "allowsResizing"_L1,        "selectsTabsOnMouseDown"_L1,
                                                "showAddTabButton"_L1,      "sizeCellsToFit"_L1,
                                                "cellMinWidth"_L1,          "cellMaxWidth"_L1,
                                                "cellOptimumWidth"_L1,      "useOverflowMenu"_L1,
                                                "automaticallyAnimates"_L1, "alwaysShowActiveTab"_L1,
                                                "orientation"_L1,           "style"_L1};

/// Read but never written: older archives have it.
constexpr QLatin1StringView kReadOnlySetting = "useFullWidth"_L1;

QString keyOf(QLatin1StringView setting)
{
    return u"PSM"_s + setting;
}

QString nameOf(const QObject *object)
{
    return object ? object->objectName() : QString();
}

QVariantMap recordOf(const PSMTabBarCell &cell)
{
    return {{u"title"_s, cell.title()},
            {u"frame"_s, cell.targetFrame()},
            {u"isInOverflowMenu"_s, cell.isInOverflowMenu()}};
}

} // namespace

QStringList VXTabBarControl::archiveKeys()
{
    return {u"PSMcells"_s,
            u"PSMContentView"_s,
            u"PSMoverflowPopUpButton"_s,
            u"PSMstyle"_s,
            u"PSMorientation"_s,
            u"PSMcanCloseOnlyTab"_s,
            u"PSMdisableTabClose"_s,
            u"PSMhideForSingleTab"_s,
            u"PSMallowsBackgroundTabClosing"_s,
            u"PSMallowsResizing"_s,
            u"PSMselectsTabsOnMouseDown"_s,
            u"PSMshowAddTabButton"_s,
            u"PSMsizeCellsToFit"_s,
            u"PSMcellMinWidth"_s,
            u"PSMcellMaxWidth"_s,
            u"PSMcellOptimumWidth"_s,
            u"PSMisHidden"_s,
            u"PSMpartnerView"_s,
            u"PSMawakenedFromNib"_s,
            u"PSMlastMouseDownEvent"_s,
            u"PSMdelegate"_s,
            u"PSMuseOverflowMenu"_s,
            u"PSMautomaticallyAnimates"_s,
            u"PSMalwaysShowActiveTab"_s};
}

QVariantMap VXTabBarControl::archive() const
{
    QVariantMap archive;
    QVariantList cells;
    for (const PSMTabBarCell *cell : m_cells)
        cells.append(recordOf(*cell));
    archive[u"PSMcells"_s] = cells;
    archive[u"PSMContentView"_s] = nameOf(m_contentView);
    archive[u"PSMoverflowPopUpButton"_s] = QVariantMap {{u"hidden"_s, m_overflowButton->isHidden()}};
    for (const QLatin1StringView setting : kPlainSettings)
        archive[keyOf(setting)] = property(setting.data());
    archive[u"PSMorientation"_s] = int(m_orientation);
    archive[u"PSMisHidden"_s] = m_isTabBarHidden;
    archive[u"PSMpartnerView"_s] = nameOf(m_partnerView);
    archive[u"PSMawakenedFromNib"_s] = m_isAwake;
    archive[u"PSMlastMouseDownEvent"_s] = m_mouse->lastPress();
    archive[u"PSMdelegate"_s] = nameOf(m_delegate.object());
    return archive;
}

void VXTabBarControl::restoreFromArchive(const QVariantMap &archive)
{
    const auto named = [this, &archive]<typename T>(const QString &key, T *present) -> T * {
        const QString name = archive.value(key).toString();
        if (name.isEmpty())
            return present;
        T *found =
            window()->objectName() == name ? qobject_cast<T *>(window()) : window()->findChild<T *>(name);
        return found ? found : present;
    };
    setDisableUpdates(true);
    for (const QLatin1StringView setting : kPlainSettings) {
        if (const auto value = archive.constFind(keyOf(setting)); value != archive.cend())
            setProperty(setting.data(), *value);
    }
    if (const auto value = archive.constFind(keyOf(kReadOnlySetting)); value != archive.cend())
        setUseFullWidth(value->toBool());
    setContentView(named(u"PSMContentView"_s, m_contentView.data()));
    setPartnerView(named(u"PSMpartnerView"_s, m_partnerView.data()));
    setDelegate(named(u"PSMdelegate"_s, delegate()));
    setDisableUpdates(false);
    if (archive.contains(u"PSMisHidden"_s))
        hideTabBarAnimate(archive.value(u"PSMisHidden"_s).toBool(), false);
}
