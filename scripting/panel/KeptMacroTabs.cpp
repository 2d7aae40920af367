#include "scripting/panel/KeptMacroTabs.h"

#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "scripting/panel/MacroTabs.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/VXMacroViewController.h"
#include "tabbar/VXTabBarControl.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace runebook {

namespace {

constexpr auto kCode = "code"_L1;
constexpr auto kTitle = "title"_L1;
constexpr auto kPath = "path"_L1; ///< of the script file that the tab belongs to, with
constexpr auto kSaved = "saved"_L1; ///< the text that the file had
constexpr qsizetype kKeptClosedTabs = 20;

QVariantMap recordOf(const VXMacroViewController &tab)
{
    QVariantMap record {{kCode, tab.code()}, {kTitle, tab.title()}};
    if (!tab.filePath().isEmpty())
        record.insert({{kPath, tab.filePath()}, {kSaved, tab.savedText()}});
    return record;
}

/// A text from the defaults; null for a value of another type.
QString textIn(const QVariantMap &record, QLatin1StringView key)
{
    const QVariant value = record.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

/// How long after the last edit the tabs are written, should the program never come to its proper end.
constexpr auto kSaveDelay = 3s;
/// The same after the first edit, when one comes after the other: the text is to be on the disk by the bound
/// that documents have.
std::chrono::milliseconds latestSave()
{
    constexpr double kShare = 0.7;
    return std::chrono::milliseconds(qint64(DocumentController::shared().autosavingBound() * 1000 * kShare));
}

} // namespace

KeptMacroTabs::KeptMacroTabs(MacroTabs &panel, QObject *parent) : QObject(parent), m_panel(panel)
{
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(kSaveDelay);
    m_latestSaveTimer.setSingleShot(true);
    for (QTimer *timer : {&m_saveTimer, &m_latestSaveTimer})
        connect(timer, &QTimer::timeout, this, &KeptMacroTabs::save);
}

VXMacroViewController *KeptMacroTabs::addTab(const QVariantMap &record, const QString &title)
{
    VXMacroViewController *tab = m_panel.addMacroTitle(textIn(record, kCode), title);
    if (const QString path = textIn(record, kPath); !path.isEmpty())
        tab->setFile(path, textIn(record, kSaved));
    return tab;
}

void KeptMacroTabs::save()
{
    m_saveTimer.stop();
    m_latestSaveTimer.stop();
    const VXTabBarControl *bar = m_panel.tabBarControl();
    QVariantList records;
    for (QObject *item : bar->tabItems()) {
        if (const auto *tab = qobject_cast<VXMacroViewController *>(item))
            records << recordOf(*tab);
    }
    Settings::kMacroTabs.set(records);
    if (bar->selectionIndex() < records.size())
        Settings::kSelectedMacroTab.set(bar->selectionIndex());
}

void KeptMacroTabs::restore()
{
    VXTabBarControl *bar = m_panel.tabBarControl();
    const QVariant saved = Settings::kMacroTabs.value();
    if (saved.typeId() != QMetaType::QVariantList) {
        m_panel.addMacroTitle(Settings::kFirstMacro.value(), tr("Macro %1").arg(1));
    } else if (!saved.toList().isEmpty()) {
        for (QObject *item : bar->tabItems()) {
            bar->removeTabItem(item);
            item->deleteLater();
        }
        int number = 0;
        for (const QVariant &each : saved.toList()) {
            const QVariantMap record = each.toMap();
            if (record.isEmpty())
                continue;
            ++number;
            const QString title = textIn(record, kTitle);
            addTab(record, title.isEmpty() ? tr("Macro %1").arg(number) : title);
        }
    }
    const int selected = Settings::kSelectedMacroTab.value();
    const bool isThere = selected >= 0 && uint(selected) < bar->countOfTabItems();
    bar->selectTabItemAtIndex(isThere ? uint(selected) : 0);
}

void KeptMacroTabs::noteEdit()
{
    m_saveTimer.start();
    if (m_latestSaveTimer.isActive())
        return; // started anew at every edit it would never end
    m_latestSaveTimer.start(latestSave());
    m_sinceEdit.start();
}

void KeptMacroTabs::saveBeforeRun()
{
    if (m_latestSaveTimer.isActive())
        save();
    UserDefaults::standard().synchronize();
}

void KeptMacroTabs::saveWhatIsDue()
{
    if (m_latestSaveTimer.isActive() && m_sinceEdit.hasExpired(latestSave().count()))
        saveBeforeRun();
}

void KeptMacroTabs::keepClosed(const VXMacroViewController &tab)
{
    m_closed << recordOf(tab);
    if (m_closed.size() > kKeptClosedTabs)
        m_closed.removeFirst();
}

VXMacroViewController *KeptMacroTabs::reopenLast()
{
    if (m_closed.isEmpty())
        return nullptr;
    const QVariantMap record = m_closed.takeLast();
    return addTab(record, textIn(record, kTitle));
}

} // namespace runebook
