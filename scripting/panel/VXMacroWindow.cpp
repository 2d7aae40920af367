#include "scripting/panel/VXMacroWindow.h"

#include "platform/MainMenu.h"
#include "platform/MessageBar.h"
#include "platform/WindowPlacement.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/RunIndicator.h"
#include "scripting/panel/SnippetsPopup.h"
#include "ui_VXMacroWindow_11.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QToolButton>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// Other keys that people know for a command, beside the one in its menu.
void addShortcuts(QAction &action, const QList<QKeySequence> &others)
{
    action.setShortcuts(QList<QKeySequence> {action.shortcut()} + others);
}

} // namespace

VXMacroWindow::VXMacroWindow(QWidget *parent)
    : QMainWindow(parent),
      m_ui(std::make_unique<Ui::VXMacroWindow_11>()),
      m_snippetsPopup(new SnippetsPopup),
      m_messageBar(new runebook::MessageBar),
      m_runIndicator(new runebook::RunIndicator(runebook::RunIndicator::Stop::WithoutButton))
{
    m_ui->setupUi(this);
    m_ui->contentsLayout->insertWidget(0, m_messageBar);
    setAttribute(Qt::WA_QuitOnClose, false);
    setContextMenuPolicy(Qt::NoContextMenu); // no menu that would hide the toolbar
    // The prompt is the last line of the console.
    m_ui->promptBar->setBackgroundRole(QPalette::Base);
    m_ui->promptSeparator->setForegroundRole(QPalette::Mid);
    m_ui->promptLabel->setForegroundRole(QPalette::PlaceholderText);
    m_ui->splitter->setSizes({3, 2});
    setUpToolBar();
    setUpMenus();
    connectTextCommands();
    setRunning(false);
    restoreLayout();
}

VXMacroWindow::~VXMacroWindow() = default;

// Set-up

void VXMacroWindow::setUpToolBar()
{
    QToolBar *bar = m_ui->toolBar;
    bar->addWidget(m_snippetsPopup);
    auto *gap = new QWidget;
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(gap);
    m_runIndicator->setContentsMargins(0, 0, 8, 0);
    // A toolbar shows its actions, whatever the widgets say; a holder keeps the place of the one that comes
    // and goes.
    auto *place = new QWidget;
    (new QHBoxLayout(place))->setContentsMargins(0, 0, 0, 0);
    place->layout()->addWidget(m_runIndicator);
    bar->addWidget(place);
    bar->addAction(m_ui->clearConsoleAction);
    bar->addAction(m_ui->helpAction);
    for (QAction *action : {m_ui->clearConsoleAction, m_ui->helpAction})
        static_cast<QToolButton *>(bar->widgetForAction(action))->setToolButtonStyle(Qt::ToolButtonIconOnly);
    // Tab leads from the code over the console to the buttons and back.
    for (QToolButton *button : bar->findChildren<QToolButton *>()) {
        button->setFocusPolicy(Qt::TabFocus);
        if (button->defaultAction())
            button->setAccessibleName(button->defaultAction()->iconText());
    }
}

void VXMacroWindow::setUpMenus()
{
    addAction(m_ui->saveAction); // in no menu: there is nothing to save
    addShortcuts(*m_ui->runAction, {QKeySequence(Qt::CTRL | Qt::Key_Enter)});
    addShortcuts(*m_ui->runSelectionAction, {QKeySequence(Qt::SHIFT | Qt::Key_Enter)});
    addShortcuts(*m_ui->redoAction, {QKeySequence(Qt::CTRL | Qt::Key_Y)});
    addShortcuts(*m_ui->findNextAction, {QKeySequence(Qt::Key_F3)});
    addShortcuts(*m_ui->findPreviousAction, {QKeySequence(Qt::SHIFT | Qt::Key_F3)});
    addShortcuts(*m_ui->zoomInAction, {QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    m_ui->macroMenu->addSeparator();
    m_ui->macroMenu->addMenu(m_snippetsPopup->menu())->setText(tr("S&nippets"));
    menuBar()->insertMenu(m_ui->windowMenu->menuAction(), MainMenu::sharedMenu(MainMenu::Scripts));
    const std::pair<MainMenu::Place, QMenu *> places[] = {{MainMenu::File, m_ui->fileMenu},
                                                          {MainMenu::Edit, m_ui->editMenu},
                                                          {MainMenu::Window, m_ui->windowMenu},
                                                          {MainMenu::Help, m_ui->helpMenu}};
    for (const auto &[place, menu] : places) {
        if (!menu->isEmpty())
            menu->addSeparator();
        MainMenu::contributeTo(place, *menu, *this);
        menu->menuAction()->setVisible(!menu->isEmpty());
    }
}

void VXMacroWindow::connectTextCommands()
{
    const std::pair<QAction *, const char *> textCommands[] = {
        {m_ui->undoAction, "undo"}, {m_ui->redoAction, "redo"},   {m_ui->cutAction, "cut"},
        {m_ui->copyAction, "copy"}, {m_ui->pasteAction, "paste"}, {m_ui->selectAllAction, "selectAll"}};
    for (const auto &[action, command] : textCommands) {
        connect(action, &QAction::triggered, this, [this, name = command] {
            if (focusWidget())
                QMetaObject::invokeMethod(focusWidget(), name);
        });
    }
    const std::pair<QAction *, FindBar::Command> findCommands[] = {
        {m_ui->findAction, FindBar::Show},
        {m_ui->findNextAction, FindBar::Next},
        {m_ui->findPreviousAction, FindBar::Previous},
    };
    for (const auto &[action, command] : findCommands) {
        action->setProperty("tag", int(command));
        connect(action, &QAction::triggered, this,
                [this, sender = action] { performTextFinderAction(sender); });
    }
    connect(m_ui->useSelectionAction, &QAction::triggered, this, &VXMacroWindow::exportFont);
    connect(m_ui->saveAction, &QAction::triggered, this, [this] {
        if (!m_saveHandler || !m_saveHandler())
            saveDocument();
    });
    connect(m_ui->nextPaneAction, &QAction::triggered, this, &VXMacroWindow::goToNextPane);
}

// Commands

QPlainTextEdit *VXMacroWindow::activeTextView() const
{
    if (auto *view = qobject_cast<QPlainTextEdit *>(focusWidget()))
        return view;
    if (m_ui->findBar->searchedView())
        return m_ui->findBar->searchedView();
    return m_ui->tabContent->findChild<QPlainTextEdit *>();
}

void VXMacroWindow::setRunning(bool running)
{
    m_ui->stopAction->setEnabled(running);
    m_ui->runAction->setEnabled(!running);
    m_ui->runSelectionAction->setEnabled(!running);
}

void VXMacroWindow::saveDocument()
{
    QApplication::beep();
    Q_EMIT saveRefused();
}

void VXMacroWindow::exportFont()
{
    QAction item(tr("Use Selection for Find"));
    item.setProperty("tag", int(FindBar::UseSelection));
    performTextFinderAction(&item);
}

void VXMacroWindow::performTextFinderAction(QObject *item)
{
    if (item)
        m_ui->findBar->performTextFinderAction(item->property("tag").toInt(), activeTextView());
}

void VXMacroWindow::goToNextPane()
{
    // Tab would not do: it means something in each of them.
    QWidget *const panes[] = {m_ui->tabContent->findChild<QPlainTextEdit *>(), m_ui->consoleText,
                              m_ui->prompt};
    const auto current = std::find(std::begin(panes), std::end(panes), focusWidget());
    QWidget *next = current == std::end(panes) || current + 1 == std::end(panes) ? panes[0] : current[1];
    if (next)
        next->setFocus(Qt::ShortcutFocusReason);
}

// Layout

void VXMacroWindow::saveLayout() const
{
    Settings::kMacroPanelGeometry.set(saveGeometry());
    Settings::kMacroPanelSplitter.set(m_ui->splitter->saveState());
}

void VXMacroWindow::restoreLayout()
{
    if (!restoreGeometry(Settings::kMacroPanelGeometry.value()))
        WindowPlacement::fitIntoScreen(*this);
    m_ui->splitter->restoreState(Settings::kMacroPanelSplitter.value());
    m_ui->splitter->setOrientation(Qt::Vertical); // whatever the state says
}

void VXMacroWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        Q_EMIT becameKey();
    QMainWindow::changeEvent(event);
}

void VXMacroWindow::closeEvent(QCloseEvent *event)
{
    Q_EMIT closing();
    event->accept();
}
