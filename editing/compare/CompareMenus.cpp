#include "editing/compare/CompareMenus.h"

#include "editing/compare/CommandRow.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "platform/MainMenu.h"
#include "platform/MenuText.h"
#include "platform/UndoManager.h"
#include "platform/documents/CommonMenus.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Window = VXCompareDataWindow;

using Row = CommandRow<Window, CompareMenus::Command>;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {CompareMenus::Save, QT_TR_NOOP("&Save"), standardKeys(QKeySequence::Save), &Window::saveDocuments},
        {CompareMenus::Close, QT_TR_NOOP("&Close"), standardKeys(QKeySequence::Close), &Window::closeWindow},
        {CompareMenus::Undo, QT_TR_NOOP("&Undo"), standardKeys(QKeySequence::Undo), &Window::undo},
        {CompareMenus::Redo, QT_TR_NOOP("&Redo"), standardKeys(QKeySequence::Redo), &Window::redo},
        {CompareMenus::CopyText, QT_TR_NOOP("&Copy Text"), standardKeys(QKeySequence::Copy),
         &Window::copyText},
        {CompareMenus::SelectAll, QT_TR_NOOP("Select &All Glyphs"), standardKeys(QKeySequence::SelectAll),
         &Window::selectAllKeys},
        {CompareMenus::ShowOnlyRight,
         QT_TR_NOOP("Only on the &Right"),
         {Qt::CTRL | Qt::Key_1},
         &Window::showOnlyRight},
        {CompareMenus::ShowOnlyLeft,
         QT_TR_NOOP("Only on the &Left"),
         {Qt::CTRL | Qt::Key_2},
         &Window::showOnlyLeft},
        {CompareMenus::ShowDifferent,
         QT_TR_NOOP("On &Both, Different"),
         {Qt::CTRL | Qt::Key_3},
         &Window::showDifferent},
        {CompareMenus::OnlyDifferences,
         QT_TR_NOOP("Only &What Differs"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_O},
         &Window::toggleOnlyDifferences},
        {CompareMenus::IgnoreCase,
         QT_TR_NOOP("Ignore &Case"),
         {Qt::CTRL | Qt::Key_I},
         &Window::toggleIgnoreCase},
        {CompareMenus::IgnoreSpaces,
         QT_TR_NOOP("Ignore &Spaces"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_I},
         &Window::toggleIgnoreSpaces},
        {CompareMenus::CopyReport,
         QT_TR_NOOP("Copy &Report"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_T},
         &Window::copyReport},
        {CompareMenus::CopyReportOfSelected,
         QT_TR_NOOP("Copy Report of Se&lected"),
         {Qt::CTRL | Qt::Key_T},
         &Window::copyReportOfSelected},
        {CompareMenus::SaveReport,
         QT_TR_NOOP("Save &Report…"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_S},
         &Window::askToSaveReport},
        {CompareMenus::SaveReportOfSelected,
         QT_TR_NOOP("Save Report of Se&lected…"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_E},
         &Window::askToSaveReportOfSelected},
        {CompareMenus::JsonReports,
         QT_TR_NOOP("Reports as &JSON"),
         {Qt::CTRL | Qt::Key_J},
         &Window::toggleJsonReports},
        {CompareMenus::NextDifference,
         QT_TR_NOOP("&Next Difference"),
         {QKeySequence(Qt::Key_F8), QKeySequence(Qt::ALT | Qt::Key_Down)},
         &Window::selectNextDifference,
         ":/icons/next.svg"},
        {CompareMenus::PreviousDifference,
         QT_TR_NOOP("&Previous Difference"),
         {Qt::SHIFT | Qt::Key_F8, Qt::ALT | Qt::Key_Up},
         &Window::selectPreviousDifference,
         ":/icons/previous.svg"},
        {CompareMenus::TakeFieldLeft,
         QT_TR_NOOP("Take Field to the Left"),
         {Qt::ALT | Qt::Key_Comma},
         &Window::takeCurrentFieldLeft,
         ":/icons/take-left.svg"},
        {CompareMenus::TakeFieldRight,
         QT_TR_NOOP("Take Field to the Right"),
         {Qt::ALT | Qt::Key_Period},
         &Window::takeCurrentFieldRight,
         ":/icons/take-right.svg"},
        {CompareMenus::TakeLeft,
         QT_TR_NOOP("Take to the &Left"),
         {Qt::ALT | Qt::Key_Left},
         &Window::takeLeft,
         ":/icons/copy-left.svg"},
        {CompareMenus::TakeRight,
         QT_TR_NOOP("Take to the &Right"),
         {Qt::ALT | Qt::Key_Right},
         &Window::takeRight,
         ":/icons/copy-right.svg"},
        {CompareMenus::TakeAllLeft,
         QT_TR_NOOP("Take All Listed to the Left"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_L},
         &Window::takeAllLeft},
        {CompareMenus::TakeAllRight,
         QT_TR_NOOP("Take All Listed to the Right"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_R},
         &Window::takeAllRight},
        {CompareMenus::Remove, QT_TR_NOOP("Re&move"), {Qt::CTRL | Qt::Key_Backspace}, &Window::removeShown},
        {CompareMenus::CopyLeft,
         QT_TR_NOOP("Copy as New Record to the Left"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_D},
         &Window::copyAllLeft},
        {CompareMenus::CopyRight,
         QT_TR_NOOP("Copy as New Record to the Right"),
         {Qt::CTRL | Qt::Key_D},
         &Window::copyAllRight},
        {CompareMenus::CompareAgain, QT_TR_NOOP("Compare &Again"), {Qt::Key_F5}, &Window::updateFilters},
    };
    return rows;
}

} // namespace

CompareMenus::CompareMenus(VXCompareDataWindow &window) : QObject(&window), m_window(window)
{
    for (const Row &row : commandRows()) {
        m_actions[row.command] = row.makeAction(tr(row.text), window, this);
    }
    auto *modes = new QActionGroup(this);
    for (const Command command : {ShowOnlyRight, ShowOnlyLeft, ShowDifferent}) {
        m_actions[command]->setCheckable(true);
        modes->addAction(m_actions[command]);
    }
    for (const Command command : {OnlyDifferences, IgnoreCase, IgnoreSpaces, JsonReports})
        m_actions[command]->setCheckable(true);
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildCompareMenu();
    buildWindowMenu();
    MainMenu::contributeTo(MainMenu::Help, *addMenu(tr("&Help")), m_window);
}

QMenu *CompareMenus::addMenu(const QString &title)
{
    return m_window.menuBar()->addMenu(title);
}

void CompareMenus::add(QMenu *menu, Command command)
{
    menu->addAction(m_actions[command]);
}

void CompareMenus::buildFileMenu()
{
    QMenu *menu = addMenu(tr("&File"));
    MainMenu::addCommand(*menu, m_window, tr("&New"), [] {
        DocumentController::shared().openUntitledDocumentAndDisplay(true);
    })->setShortcut(QKeySequence::New);
    MainMenu::addCommand(*menu, m_window, tr("&Open…"), [this] {
        DocumentPanels::open(&m_window);
    })->setShortcut(QKeySequence::Open);
    CommonMenus::addRecentFiles(*menu, m_window);
    menu->addSeparator();
    add(menu, Save);
    menu->addSeparator();
    for (const Command command : {SaveReport, SaveReportOfSelected, JsonReports})
        add(menu, command);
    menu->addSeparator();
    add(menu, Close);
    MainMenu::contributeTo(MainMenu::File, *menu, m_window);
}

void CompareMenus::buildEditMenu()
{
    QMenu *menu = addMenu(tr("&Edit"));
    add(menu, Undo);
    add(menu, Redo);
    addHistory(menu, true);
    addHistory(menu, false);
    menu->addSeparator();
    add(menu, CopyText);
    add(menu, SelectAll);
    menu->addSeparator();
    add(menu, CopyReport);
    add(menu, CopyReportOfSelected);
    MainMenu::contributeTo(MainMenu::Edit, *menu, m_window);
}

void CompareMenus::addHistory(QMenu *menu, bool isLeft)
{
    const auto document = [this, isLeft] {
        return (isLeft ? m_window.leftDocList() : m_window.rightDocList())->document();
    };
    QMenu *history = menu->addMenu(isLeft ? tr("&History of the Left") : tr("Histor&y of the Right"));
    connect(history, &QMenu::aboutToShow, this, [this, history, document] {
        if (VXDocument *chosen = document())
            CommonMenus::fillHistory(*history, m_window, *chosen->undoManager());
        else
            history->clear();
    });
    // After the command, which hears of the choice later than the menu does.
    connect(history, &QMenu::triggered, &m_window, &VXCompareDataWindow::updateFilters, Qt::QueuedConnection);
}

void CompareMenus::buildViewMenu()
{
    QMenu *menu = addMenu(tr("&View"));
    for (const Command command : {ShowOnlyRight, ShowOnlyLeft, ShowDifferent})
        add(menu, command);
    menu->addSeparator();
    add(menu, OnlyDifferences);
    menu->addSeparator();
    add(menu, IgnoreCase);
    add(menu, IgnoreSpaces);
    addIgnoredFields(menu);
    menu->addSeparator();
    CommonMenus::addAppearance(*menu, m_window);
    MainMenu::contributeTo(MainMenu::View, *menu, m_window);
}

void CompareMenus::addIgnoredFields(QMenu *menu)
{
    QMenu *fields = menu->addMenu(tr("Ignore &Fields"));
    for (const ComparedField &field : comparedFields()) {
        QAction *action = fields->addAction(titleOf(field));
        action->setCheckable(true);
        const QString key = keyOfField(field.field);
        connect(action, &QAction::triggered, &m_window,
                [this, key](bool isChecked) { m_window.setFieldIgnored(key, isChecked); });
        connect(fields, &QMenu::aboutToShow, action, [this, action, field = field.field] {
            action->setChecked(m_window.options().ignores(field));
        });
    }
}

void CompareMenus::buildCompareMenu()
{
    QMenu *menu = addMenu(tr("&Compare"));
    for (const QList<Command> &group :
         {QList<Command> {NextDifference, PreviousDifference}, QList<Command> {TakeFieldLeft, TakeFieldRight},
          QList<Command> {TakeLeft, TakeRight, TakeAllLeft, TakeAllRight, Remove},
          QList<Command> {CopyLeft, CopyRight}}) {
        for (const Command command : group)
            add(menu, command);
        menu->addSeparator();
    }
    add(menu, CompareAgain);
}

void CompareMenus::buildWindowMenu()
{
    QMenu *menu = addMenu(tr("&Window"));
    MainMenu::contributeTo(MainMenu::Window, *menu, m_window);
    CommonMenus::listDocuments(*menu, m_window, [this](const Document &document) {
        return &document == m_window.leftDocList()->document()
            || &document == m_window.rightDocList()->document();
    });
}

void CompareMenus::showHistory(VXDocument *toUndo, VXDocument *toRedo)
{
    const auto show = [](QAction *action, const VXDocument *document, const QString &plain,
                         const QString &named, const QString &step) {
        action->setEnabled(document);
        action->setText(document ? named.arg(menuText(step), menuText(document->windowTitle())) : plain);
    };
    const auto step = [](const QString &name) { return name.isEmpty() ? tr("Change") : name; };
    show(m_actions[Undo], toUndo, tr("&Undo"), tr("&Undo %1 in %2"),
         step(toUndo ? toUndo->undoManager()->stack()->undoText() : QString()));
    show(m_actions[Redo], toRedo, tr("&Redo"), tr("&Redo %1 in %2"),
         step(toRedo ? toRedo->undoManager()->stack()->redoText() : QString()));
}

} // namespace runebook
