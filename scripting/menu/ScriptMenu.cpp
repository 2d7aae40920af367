#include "scripting/menu/ScriptMenu.h"

#include "platform/MainMenu.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentController.h"
#include "scripting/classes/ScriptMenuItems.h"
#include "scripting/menu/MenuSettings.h"
#include "scripting/menu/ScriptFile.h"
#include "scripting/menu/ScriptFolderWatcher.h"
#include "scripting/python/ScriptConsole.h"

#include <QCollator>
#include <QFileInfo>
#include <QHash>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr int kMenuTag = 15;
constexpr int kRunAgainTag = 2;
constexpr int kShowFolderTag = 3;
constexpr int kReloadTag = 4;
constexpr int kSubmenuTag = -1;

/// Generous bounds, so that a disk linked into a script folder does not stop the program.
constexpr int kMaxDepth = 24;
constexpr int kMaxFolders = 5'000;
constexpr int kMaxFiles = 20'000;

/// What the menu was filled with, for the whole process.
struct Contents {
    QHash<QString, QString> pathsByKey;
    QStringList way; ///< the folders that are being walked, outermost first, without links
    QStringList lastFolders; ///< where the last script was put, and
    QPointer<QMenu> lastMenu; ///< the menu for them
    int folders = 0;
    int files = 0;
    QStringList omissions; ///< files of the user that are no scripts, with the reason
    qsizetype omitted = 0;
};

Contents &contents()
{
    static Contents shared;
    return shared;
}

constexpr qsizetype kMostOmissionsTold = 100;

void noteOmission(const QString &path, const QString &reason)
{
    // Modules are meant to be none: the program's own, installed ones, and those of a package.
    if (path.startsWith(StandardFolders::programData() + u'/') || path.contains("/site-packages/"_L1)
        || QFileInfo::exists(path.section(u'/', 0, -2) + "/__init__.py"_L1))
        return;
    Contents &all = contents();
    if (++all.omitted <= kMostOmissionsTold)
        all.omissions << path + u": "_s + reason;
}

QCollator fileBrowserOrder()
{
    // Under the locale "C" a collator ignores numbers and sorts capitals first.
    const QLocale user;
    QCollator collator(user.language() == QLocale::C ? QLocale(QLocale::English) : user);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

/// Sorts as a file browser does: "Script 2" before "Script 10".
void sortNames(QStringList &names)
{
    static const QCollator collator = fileBrowserOrder();
    std::vector<std::pair<QCollatorSortKey, QString>> keyed;
    keyed.reserve(static_cast<std::size_t>(names.size()));
    for (const QString &name : names)
        keyed.emplace_back(collator.sortKey(name), name);
    std::sort(keyed.begin(), keyed.end(), [](const auto &a, const auto &b) {
        const int order = a.first.compare(b.first);
        return order != 0 ? order < 0 : a.second < b.second;
    });
    std::transform(keyed.begin(), keyed.end(), names.begin(), [](const auto &item) { return item.second; });
}

void insertOnTop(QMenu &menu, QAction *item)
{
    // Not in one expression: the list would be copied while it is in use.
    QAction *first = menu.actions().value(0);
    menu.insertAction(first, item);
}

/// The submenu titled \a title, made on top of \a menu when there is none.
QMenu *submenu(QMenu &menu, const QString &title)
{
    for (QAction *item : menu.actions()) {
        if (item->menu() && MenuItem::title(*item) == title)
            return item->menu();
    }
    auto *made = new QMenu(&menu);
    made->setToolTipsVisible(true);
    MenuItem::setTitle(*made->menuAction(), title);
    MenuItem::setTag(*made->menuAction(), kSubmenuTag);
    insertOnTop(menu, made->menuAction());
    return made;
}

void removeGeneratedItems(QMenu &menu)
{
    for (QAction *item : menu.actions()) {
        if (item->isSeparator())
            return;
        menu.removeAction(item);
        // A submenu takes its item along. Later: a script may be what runs just now.
        QObject *owner = item->menu() ? static_cast<QObject *>(item->menu()) : item;
        owner->deleteLater();
    }
}

} // namespace

ScriptMenu::ScriptMenu(QObject *parent) : QObject(parent) { }

ScriptMenu::~ScriptMenu() = default;

// Making the menu

QMenu *ScriptMenu::menu()
{
    if (!m_menu)
        make();
    return m_menu;
}

QAction *ScriptMenu::runAgainItem()
{
    return MenuItem::withTag(menu()->actions(), kRunAgainTag);
}

void ScriptMenu::make()
{
    QMenu *made = m_menu = MainMenu::sharedMenu(MainMenu::Scripts);
    made->setTitle(tr("&Scripts"));
    made->setToolTipsVisible(true);
    made->menuAction()->setVisible(true);
    MenuItem::setTag(*made->menuAction(), kMenuTag);
    made->addSeparator();
    const auto addFixed = [made](const QString &text, int tag) {
        QAction *item = made->addAction(text);
        MenuItem::setTag(*item, tag);
        return item;
    };
    addFixed(tr("Run Last Script"), kRunAgainTag)->setShortcut(Qt::CTRL | Qt::ALT | Qt::Key_R);
    addFixed(tr("Show Scripts &Folder"), kShowFolderTag);
    addFixed(tr("Re&load Scripts"), kReloadTag);
    connect(made, &QMenu::aboutToShow, this, &ScriptMenu::validateAll);
    validateAll();
}

void ScriptMenu::wire()
{
    const QList<QAction *> items = menu()->actions();
    const auto wireItem = [&](int tag, auto operation) {
        if (QAction *item = MenuItem::withTag(items, tag)) {
            item->disconnect(this);
            connect(item, &QAction::triggered, this, [operation] {
                // Like every command of a window, these do nothing while a field refuses its text.
                if (DocumentController::shared().commitEditing())
                    operation();
            });
        }
    };
    wireItem(kRunAgainTag, [this] { choose(runAgainItem()); });
    wireItem(kShowFolderTag, [this] { Q_EMIT folderRequested(); });
    wireItem(kReloadTag, [this] { Q_EMIT reloadRequested(); });
}

// Filling it

void ScriptMenu::reload(const QStringList &folders, ScriptConsole &console)
{
    const bool isFirst = m_watcher == nullptr;
    removeGeneratedItems(*menu());
    contents() = {};
    if (!m_watcher) {
        m_watcher = std::make_unique<ScriptFolderWatcher>(this);
        connect(m_watcher.get(), &ScriptFolderWatcher::changed, this, &ScriptMenu::showReloadState);
    }
    m_watcher->clear();
    if (folders.isEmpty()) {
        auto *item = new QAction(menu());
        MenuItem::setTitle(*item, tr("No suitable Python installed"));
        item->setEnabled(false);
        insertOnTop(*menu(), item);
    }
    for (const QString &folder : folders)
        addFolder(folder, u""_s);
    m_watcher->start();
    const QString again = Settings::kLastScript.value();
    if (!folders.isEmpty() && !again.isNull() && !contents().pathsByKey.contains(again))
        Settings::kLastScript.reset();
    validateAll();
    if (!isFirst)
        tellOmissions(console);
}

/// After a reload somebody looks for a script that is not there.
void ScriptMenu::tellOmissions(ScriptConsole &console) const
{
    const QStringList &told = contents().omissions;
    if (told.isEmpty())
        return;
    QString text = tr("Not in the Scripts menu:") + u'\n';
    for (const QString &omission : told)
        text += "  "_L1 + omission + u'\n';
    if (const qsizetype more = contents().omitted - told.size(); more > 0)
        text += "  "_L1 + tr("and %1 more").arg(more) + u'\n';
    console.setWrite(text);
}

void ScriptMenu::addFolder(const QString &folder, const QString &subFolder)
{
    const QString resolved = QFileInfo(folder).canonicalFilePath();
    QStringList &way = contents().way;
    // A link may lead back to a folder that is being walked.
    if (resolved.isEmpty() || way.contains(resolved) || way.size() >= kMaxDepth
        || contents().folders >= kMaxFolders)
        return;
    ++contents().folders;
    way << resolved;
    QStringList names = ScriptFolderWatcher::namesIn(folder);
    if (m_watcher)
        m_watcher->addFolder(folder, names);
    sortNames(names);
    for (auto name = names.crbegin(); name != names.crend(); ++name) {
        if (!ScriptFolderWatcher::matters(*name))
            continue;
        if (name->endsWith(".py"_L1)) {
            addScript(*name, folder, subFolder);
            continue;
        }
        const QString inner = QFileInfo(folder + u'/' + *name).canonicalFilePath();
        if (!inner.isEmpty() && QFileInfo(inner).isDir())
            addFolder(inner, subFolder.isEmpty() ? *name : subFolder + u'/' + *name);
    }
    way.removeLast();
}

void ScriptMenu::addScript(const QString &fileName, const QString &basePath, const QString &subFolder)
{
    if (fileName.section(u'/', -1).startsWith("__"_L1))
        return;
    const QString path = basePath + u'/' + fileName;
    if (++contents().files > kMaxFiles) {
        noteOmission(path, tr("there are more than %1 scripts").arg(kMaxFiles));
        return;
    }
    ScriptFile::Omission omission {};
    const std::optional<ScriptFile> script = ScriptFile::read(path, &omission);
    if (!script) {
        noteOmission(path, ScriptFile::reasonOf(omission));
        return;
    }
    const QString folders = subFolder + u'/' + fileName.section(u'/', 0, -2);
    const QStringList parts = folders.split(u'/', Qt::SkipEmptyParts);
    // Scripts of one folder come in a row.
    if (!contents().lastMenu || contents().lastFolders != parts) {
        contents().lastFolders = parts;
        contents().lastMenu = menu();
        for (const QString &part : parts)
            contents().lastMenu = submenu(*contents().lastMenu, part);
    }
    QMenu *folder = contents().lastMenu;
    const QString key = (parts.isEmpty() ? QString() : parts.last()) + u'/' + script->title;
    contents().pathsByKey.insert(key, script->path);
    if (m_watcher)
        m_watcher->addScript(*script);

    auto *item = new QAction(folder);
    MenuItem::setTitle(*item, script->title);
    MenuItem::setRepresentedObject(*item, key);
    if (!script->toolTip.isNull())
        MenuItem::setToolTip(*item, script->toolTip);
    connect(item, &QAction::triggered, this, [this, item] { choose(item); });
    insertOnTop(*folder, item);
}

QVariantMap ScriptMenu::paths()
{
    QVariantMap paths;
    for (auto entry = contents().pathsByKey.cbegin(); entry != contents().pathsByKey.cend(); ++entry)
        paths.insert(entry.key(), entry.value());
    return paths;
}

bool ScriptMenu::isOutdated() const
{
    return m_watcher && m_watcher->hasChanged();
}

// Choosing from it

void ScriptMenu::choose(QAction *item)
{
    if (!item)
        return;
    const QString key = MenuItem::representedObject(*item).toString();
    if (item != runAgainItem())
        Settings::kLastScript.set(key);
    validateAll();
    const QFileInfo script(contents().pathsByKey.value(key));
    if (script.isFile() && script.isReadable())
        Q_EMIT scriptChosen(script.filePath());
}

bool ScriptMenu::setUpRunAgain()
{
    QAction *item = runAgainItem();
    const QString key = Settings::kLastScript.value();
    MenuItem::setRepresentedObject(*item, key.isNull() ? QVariant() : QVariant(key));
    MenuItem::setTitle(*item,
                       key.isNull() ? tr("Run Last Script") : tr("Run: %1").arg(key.section(u'/', -1)));
    return !key.isNull();
}

bool ScriptMenu::validate(QAction *item)
{
    return item && item == runAgainItem() ? setUpRunAgain() : true;
}

/// Also outside of showing: the shortcut of an item works only while the item is enabled.
void ScriptMenu::validateAll()
{
    QAction *item = runAgainItem();
    item->setEnabled(validate(item));
    showReloadState();
}

void ScriptMenu::showReloadState()
{
    if (QAction *item = MenuItem::withTag(menu()->actions(), kReloadTag))
        item->setText(isOutdated() ? tr("Re&load Changed Scripts") : tr("Re&load Scripts"));
}

} // namespace runebook
