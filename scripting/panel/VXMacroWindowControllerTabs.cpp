// The tabs of the panel: adding, closing, naming, and where they are kept.
#include "scripting/panel/VXMacroWindowController.h"

#include "codeeditor/JSTTextView.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "tabbar/VXTabBarControl.h"
#include "ui_VXMacroWindow_11.h"

#include <QApplication>
#include <QInputDialog>
#include <QMenu>

using namespace runebook;
using namespace Qt::StringLiterals;

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

/// Selects a tab that was asked for; whoever asks wants to type in it, wherever the focus was. A window that
/// is not shown gives the focus when it is, and makes no editor before.
void showToType(VXMacroViewController *tab, VXTabBarControl &bar)
{
    bar.selectTabItem(tab);
    if (bar.window()->isVisible())
        tab->macroText()->setFocus(Qt::OtherFocusReason);
}

} // namespace

VXMacroViewController *VXMacroWindowController::activeMacroController()
{
    return qobject_cast<VXMacroViewController *>(tabBarControl()->selectedTabItem());
}

void VXMacroWindowController::newTab()
{
    const QString title = tr("Macro %1").arg(tabBarControl()->countOfTabItems() + 1);
    showToType(addMacroTitle(u"# add code here"_s, title), *tabBarControl());
    saveMacroTabs();
}

VXMacroViewController *VXMacroWindowController::addMacroTitle(const QString &code, const QString &title)
{
    auto *tab = new VXMacroViewController(this);
    tab->setTitle(title);
    if (!code.isNull())
        tab->setCode(code);
    connect(tab, &VXMacroViewController::restorableStateChanged, this, &VXMacroWindowController::noteEdit);
    tabBarControl()->addTabItem(tab);
    return tab;
}

VXMacroViewController *VXMacroWindowController::addTab(const QVariantMap &record, const QString &title)
{
    VXMacroViewController *tab = addMacroTitle(textIn(record, kCode), title);
    if (const QString path = textIn(record, kPath); !path.isEmpty())
        tab->setFile(path, textIn(record, kSaved));
    return tab;
}

void VXMacroWindowController::closeTab()
{
    if (tabBarControl()->countOfTabItems() > 1)
        tabBarControl()->closeTabItem(tabBarControl()->selectedTabItem());
    else
        window()->close();
}

void VXMacroWindowController::reopenTab()
{
    if (m_closedTabs.isEmpty())
        return;
    const QVariantMap record = m_closedTabs.takeLast();
    showToType(addTab(record, textIn(record, kTitle)), *tabBarControl());
    saveMacroTabs();
}

void VXMacroWindowController::renameTab()
{
    rename(activeMacroController());
}

void VXMacroWindowController::rename(VXMacroViewController *tab)
{
    tabBarControl()->hideTabBarAnimate(false, false);
    tabBarControl()->editTitleOfTabItem(tab);
}

void VXMacroWindowController::takeTitle(QObject *item, const QString &title)
{
    if (auto *tab = qobject_cast<VXMacroViewController *>(item)) {
        tab->setTitle(title);
        saveMacroTabs();
    }
    if (QApplication::focusWidget() == tabBarControl() || !QApplication::focusWidget())
        activeMacroController()->macroText()->setFocus(Qt::OtherFocusReason);
}

/// The title and where the code begins.
QString VXMacroWindowController::tabBarToolTipForTabItem(VXTabBarControl *, QObject *item) const
{
    constexpr qsizetype kLongest = 100;
    const auto *tab = qobject_cast<const VXMacroViewController *>(item);
    if (!tab)
        return {};
    const QString line = tab->code().trimmed().section(u'\n', 0, 0).left(kLongest);
    return line.isEmpty() ? tab->title() : tab->title() + u'\n' + line;
}

void VXMacroWindowController::goToLine()
{
    VXMacroViewController *tab = activeMacroController();
    if (!tab)
        return;
    JSTTextView *editor = tab->macroText();
    auto *dialog = new QInputDialog(window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setWindowTitle(tr("Go to Line"));
    dialog->setLabelText(tr("Line:"));
    dialog->setMinimumWidth(dialog->fontMetrics().averageCharWidth() * 50); // or the title is cut
    dialog->setInputMode(QInputDialog::IntInput);
    dialog->setIntRange(1, std::max(1, editor->blockCount()));
    dialog->setIntValue(editor->textCursor().blockNumber() + 1);
    connect(dialog, &QInputDialog::intValueSelected, tab, [tab](int line) {
        tab->macroText()->setSelectedRange({tab->rangeForLine(line).location, 0});
        tab->macroText()->centerCursor();
    });
    dialog->open();
}

void VXMacroWindowController::saveMacroTabs()
{
    m_saveTimer.stop();
    m_latestSaveTimer.stop();
    QVariantList records;
    for (QObject *item : tabBarControl()->tabItems()) {
        if (const auto *tab = qobject_cast<VXMacroViewController *>(item))
            records << recordOf(*tab);
    }
    Settings::kMacroTabs.set(records);
    if (tabBarControl()->selectionIndex() < records.size())
        Settings::kSelectedMacroTab.set(tabBarControl()->selectionIndex());
}

void VXMacroWindowController::restoreMacroTabs()
{
    const QVariant saved = Settings::kMacroTabs.value();
    if (saved.typeId() != QMetaType::QVariantList) {
        addMacroTitle(Settings::kFirstMacro.value(), tr("Macro %1").arg(1));
    } else if (!saved.toList().isEmpty()) {
        for (QObject *item : tabBarControl()->tabItems()) {
            tabBarControl()->removeTabItem(item);
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
    const bool isThere = selected >= 0 && uint(selected) < tabBarControl()->countOfTabItems();
    tabBarControl()->selectTabItemAtIndex(isThere ? uint(selected) : 0);
}

void VXMacroWindowController::tabBarDidSelectTabItem(VXTabBarControl *, QObject *)
{
    setUpEmphasis();
    saveMacroTabs();
}

void VXMacroWindowController::tabBarWillCloseTabItem(VXTabBarControl *, QObject *item)
{
    const auto *tab = qobject_cast<VXMacroViewController *>(item);
    if (!tab)
        return;
    m_closedTabs << recordOf(*tab);
    if (m_closedTabs.size() > kKeptClosedTabs)
        m_closedTabs.removeFirst();
}

void VXMacroWindowController::tabBarDidCloseTabItem(VXTabBarControl *, QObject *item)
{
    saveMacroTabs();
    if (qobject_cast<VXMacroViewController *>(item))
        item->deleteLater();
}

QMenu *VXMacroWindowController::tabViewMenuForTabItem(VXTabBarControl *, QObject *item)
{
    tabBarControl()->selectTabItem(item); // its commands mean the selected tab
    if (!m_tabMenu) {
        const Ui::VXMacroWindow_11 &parts = m_window->parts();
        m_tabMenu = new QMenu(m_window.get());
        m_tabMenu->addActions({parts.newTabAction, parts.renameTabAction, parts.closeTabAction});
    }
    return m_tabMenu;
}
