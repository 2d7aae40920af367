#include "platform/documents/CommonMenus.h"

#include "platform/Appearance.h"
#include "platform/FilePath.h"
#include "platform/MainMenu.h"
#include "platform/MenuText.h"
#include "platform/UndoManager.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"

#include <QActionGroup>
#include <QCoreApplication>
#include <QFileInfo>
#include <QMenu>
#include <QPointer>
#include <algorithm>

namespace runebook::CommonMenus {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CommonMenus)
};

void fillRecentFiles(QMenu &menu, QWidget &window)
{
    menu.clear();
    const QStringList files = DocumentController::shared().recentFiles();
    for (const QString &path : files) {
        const QString text = shownPath(QFileInfo(path).fileName() + u" — "_s + QFileInfo(path).path());
        MainMenu::addCommand(menu, window, menuText(text),
                             [&window, path] { DocumentPanels::openFiles({path}, &window); });
    }
    menu.addSeparator();
    MainMenu::addCommand(menu, window, Texts::tr("Clear Menu"), [] {
        DocumentController::shared().clearRecentFiles();
    })->setEnabled(!files.isEmpty());
}

} // namespace

void addNewAndOpen(QMenu &fileMenu, QWidget &window)
{
    MainMenu::addCommand(fileMenu, window, Texts::tr("&New"), [] {
        DocumentController::shared().openUntitledDocumentAndDisplay(true);
    })->setShortcut(QKeySequence::New);
    MainMenu::addCommand(fileMenu, window, Texts::tr("&Open…"), [&window] {
        DocumentPanels::open(&window);
    })->setShortcut(QKeySequence::Open);
    addRecentFiles(fileMenu, window);
}

void addRecentFiles(QMenu &fileMenu, QWidget &window)
{
    QMenu *menu = fileMenu.addMenu(Texts::tr("Open &Recent"));
    QObject::connect(menu, &QMenu::aboutToShow, &window, [menu, &window] { fillRecentFiles(*menu, window); });
}

void fillHistory(QMenu &menu, QWidget &window, UndoManager &undo)
{
    constexpr int kShownSteps = 40;
    menu.clear();
    delete menu.findChild<QActionGroup *>();
    auto *group = new QActionGroup(&menu); // a dot, not a tick: one of many
    MainMenu::commitEditing(window); // a step of its own in the list
    const QUndoStack *stack = undo.stack();
    const auto addStep = [&](int count, const QString &text) {
        QAction *action =
            MainMenu::addCommand(menu, window, menuText(text), [manager = QPointer(&undo), count] {
                if (manager)
                    manager->goToStep(count);
            });
        action->setCheckable(true);
        action->setActionGroup(group);
        action->setChecked(count == stack->index());
    };
    for (int i = qMin(stack->count(), stack->index() + kShownSteps / 2);
         i > qMax(0, stack->index() - kShownSteps); --i) {
        const QString name = stack->text(i - 1);
        addStep(i, name.isEmpty() ? Texts::tr("Change") : name);
    }
    addStep(qMax(0, stack->index() - kShownSteps),
            stack->index() > kShownSteps ? Texts::tr("Earlier…") : Texts::tr("As Opened"));
}

void addAppearance(QMenu &viewMenu, QWidget &window)
{
    QMenu *menu = viewMenu.addMenu(Texts::tr("A&ppearance"));
    auto *group = new QActionGroup(menu);
    const auto addChoice = [&](const QString &text, Appearance::Choice choice) {
        QAction *action =
            MainMenu::addCommand(*menu, window, text, [choice] { Appearance::shared().setChoice(choice); });
        action->setCheckable(true);
        action->setActionGroup(group);
        QObject::connect(menu, &QMenu::aboutToShow, action,
                         [action, choice] { action->setChecked(Appearance::shared().choice() == choice); });
    };
    addChoice(Texts::tr("As the &System"), Appearance::System);
    addChoice(Texts::tr("&Light"), Appearance::Light);
    addChoice(Texts::tr("&Dark"), Appearance::Dark);
}

void listDocuments(QMenu &windowMenu, QWidget &window, std::function<bool(const Document &)> isShown)
{
    QAction *documents = windowMenu.addSeparator();
    QMenu *menu = &windowMenu;
    QObject::connect(menu, &QMenu::aboutToShow, &window, [=, &window, isShown = std::move(isShown)] {
        qDeleteAll(documents->findChildren<QActionGroup *>());
        const QList<Document *> &open = DocumentController::shared().documentList();
        const auto shown =
            std::count_if(open.begin(), open.end(), [&](auto *each) { return isShown(*each); });
        auto *group = new QActionGroup(documents); // a dot, not a tick: one of many
        group->setExclusionPolicy(shown > 1 ? QActionGroup::ExclusionPolicy::None
                                            : QActionGroup::ExclusionPolicy::Exclusive);
        const QList<QAction *> actions = menu->actions();
        for (qsizetype i = actions.indexOf(documents) + 1; i < actions.size(); ++i)
            delete actions.at(i);
        for (Document *document : open) {
            QAction *action = MainMenu::addCommand(
                *menu, window, menuText(document->windowTitle()), [document = QPointer<Document>(document)] {
                    if (document)
                        DocumentController::shared().bringToFront(document);
                });
            action->setCheckable(true);
            action->setActionGroup(group);
            action->setChecked(isShown(*document));
        }
    });
}

} // namespace runebook::CommonMenus
