#include "tabbar/TabArchive.h"

#include "tabbar/PSMTabBarCell.h"

#include <QWidget>

using namespace Qt::StringLiterals;

namespace runebook {

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

/// The properties that are views or objects, and what they are.
enum class Named { View, Object };
constexpr std::pair<QLatin1StringView, Named> kNamedSettings[] = {
    {"contentView"_L1, Named::View}, {"partnerView"_L1, Named::View}, {"delegate"_L1, Named::Object}};

QString keyOfNamed(QLatin1StringView setting)
{
    return setting == "contentView"_L1 ? u"PSMContentView"_s : keyOf(setting);
}

QVariantMap recordOf(const PSMTabBarCell &cell)
{
    return {{u"title"_s, cell.title()},
            {u"frame"_s, cell.targetFrame()},
            {u"isInOverflowMenu"_s, cell.isInOverflowMenu()}};
}

/// The one of that name in the window of \a bar, the window included.
template <typename T> T *inWindowOf(const QWidget &bar, const QString &name)
{
    QWidget *window = bar.window();
    return window->objectName() == name ? qobject_cast<T *>(window) : window->findChild<T *>(name);
}

template <typename T> void restoreNamed(QWidget &bar, QLatin1StringView setting, const QString &name)
{
    T *found = name.isEmpty() ? nullptr : inWindowOf<T>(bar, name);
    bar.setProperty(setting.data(),
                    QVariant::fromValue(found ? found : bar.property(setting.data()).value<T *>()));
}

} // namespace

QStringList TabArchive::keys()
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

QVariantMap TabArchive::archived(const QWidget &bar, const QList<PSMTabBarCell *> &cells,
                                 const Moment &moment)
{
    QVariantMap archive;
    QVariantList records;
    for (const PSMTabBarCell *cell : cells)
        records.append(recordOf(*cell));
    archive[u"PSMcells"_s] = records;
    archive[u"PSMoverflowPopUpButton"_s] = QVariantMap {{u"hidden"_s, moment.isOverflowButtonHidden}};
    for (const QLatin1StringView setting : kPlainSettings)
        archive[keyOf(setting)] = bar.property(setting.data());
    archive[u"PSMorientation"_s] = bar.property("orientation").toInt();
    archive[u"PSMisHidden"_s] = bar.property("isTabBarHidden");
    archive[u"PSMawakenedFromNib"_s] = moment.isAwake;
    archive[u"PSMlastMouseDownEvent"_s] = moment.lastPress;
    for (const auto &[setting, named] : kNamedSettings) {
        const auto *object = bar.property(setting.data()).value<QObject *>();
        archive[keyOfNamed(setting)] = object ? object->objectName() : QString();
    }
    return archive;
}

void TabArchive::restore(QWidget &bar, const QVariantMap &archive)
{
    for (const QLatin1StringView setting : kPlainSettings) {
        if (const auto value = archive.constFind(keyOf(setting)); value != archive.cend())
            bar.setProperty(setting.data(), *value);
    }
    if (const auto value = archive.constFind(keyOf(kReadOnlySetting)); value != archive.cend())
        bar.setProperty(kReadOnlySetting.data(), value->toBool());
    for (const auto &[setting, named] : kNamedSettings) {
        const QString name = archive.value(keyOfNamed(setting)).toString();
        if (named == Named::View)
            restoreNamed<QWidget>(bar, setting, name);
        else
            restoreNamed<QObject>(bar, setting, name);
    }
}

std::optional<bool> TabArchive::isHidden(const QVariantMap &archive)
{
    const auto value = archive.constFind(u"PSMisHidden"_s);
    return value == archive.cend() ? std::nullopt : std::optional(value->toBool());
}

} // namespace runebook
