#include "editing/merge/MergeMenus.h"

#include "editing/compare/CommandRow.h"
#include "platform/MainMenu.h"
#include "platform/MenuText.h"
#include "platform/UndoManager.h"
#include "platform/documents/CommonMenus.h"

#include <QAction>
#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Row = CommandRow<MergeMenus, MergeMenus::Command>;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows = [] {
        std::vector<Row> made {
            {MergeMenus::Save, QT_TR_NOOP("&Save"), standardKeys(QKeySequence::Save), {}},
            {MergeMenus::SaveAs, QT_TR_NOOP("Save &As…"), {Qt::CTRL | Qt::SHIFT | Qt::Key_S}, {}},
            {MergeMenus::Close, QT_TR_NOOP("&Close"), standardKeys(QKeySequence::Close), {}},
            {MergeMenus::Undo, QT_TR_NOOP("&Undo"), standardKeys(QKeySequence::Undo), {}},
            {MergeMenus::Redo, QT_TR_NOOP("&Redo"), standardKeys(QKeySequence::Redo), {}},
            {MergeMenus::CopyText, QT_TR_NOOP("&Copy Text"), standardKeys(QKeySequence::Copy), {}},
            {MergeMenus::ShowConflicts, QT_TR_NOOP("&Conflicts"), {Qt::CTRL | Qt::Key_1}, {}},
            {MergeMenus::ShowFromTheirs, QT_TR_NOOP("Taken from &Theirs"), {Qt::CTRL | Qt::Key_2}, {}},
            {MergeMenus::ShowFromOurs, QT_TR_NOOP("Taken from &Ours"), {Qt::CTRL | Qt::Key_3}, {}},
            {MergeMenus::ShowBoth, QT_TR_NOOP("&Both the Same"), {Qt::CTRL | Qt::Key_4}, {}},
            {MergeMenus::NextConflict,
             QT_TR_NOOP("&Next Conflict"),
             {QKeySequence(Qt::Key_F8), QKeySequence(Qt::ALT | Qt::Key_Down)},
             {},
             ":/icons/next.svg"},
            {MergeMenus::PreviousConflict,
             QT_TR_NOOP("&Previous Conflict"),
             {Qt::SHIFT | Qt::Key_F8, Qt::ALT | Qt::Key_Up},
             {},
             ":/icons/previous.svg"},
            {MergeMenus::TakeFieldOurs, QT_TR_NOOP("Take Field from Ours"), {Qt::ALT | Qt::Key_Comma}, {}},
            {MergeMenus::TakeFieldTheirs,
             QT_TR_NOOP("Take Field from Theirs"),
             {Qt::ALT | Qt::Key_Period},
             {}},
            {MergeMenus::TakeOurs, QT_TR_NOOP("Take &Ours"), {Qt::ALT | Qt::Key_Left}, {}},
            {MergeMenus::TakeTheirs, QT_TR_NOOP("Take &Theirs"), {Qt::ALT | Qt::Key_Right}, {}},
            {MergeMenus::TakeRename, QT_TR_NOOP("Take as Rena&med"), {Qt::CTRL | Qt::Key_R}, {}},
            {MergeMenus::TakeAllOurs,
             QT_TR_NOOP("Take All from Ours"),
             {Qt::CTRL | Qt::SHIFT | Qt::Key_L},
             {}},
            {MergeMenus::TakeAllTheirs,
             QT_TR_NOOP("Take All from Theirs"),
             {Qt::CTRL | Qt::SHIFT | Qt::Key_R},
             {}},
        };
        for (Row &row : made)
            row.perform = [command = row.command](MergeMenus &menus) { Q_EMIT menus.chosen(command); };
        return made;
    }();
    return rows;
}

} // namespace

MergeMenus::MergeMenus(QMainWindow &window, VXDocument &document)
    : QObject(&window), m_window(window), m_document(&document)
{
    for (const Row &row : commandRows())
        m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
    auto *modes = new QActionGroup(this);
    for (const Command command : {ShowConflicts, ShowFromTheirs, ShowFromOurs, ShowBoth}) {
        m_actions[command]->setCheckable(true);
        modes->addAction(m_actions[command]);
    }
    buildFileMenu();
    buildEditMenu();
    QMenu *view = addMenu(tr("&View"), {{ShowConflicts, ShowFromTheirs, ShowFromOurs, ShowBoth}});
    view->addSeparator();
    CommonMenus::addAppearance(*view, m_window);
    MainMenu::contributeTo(MainMenu::View, *view, m_window);
    addMenu(tr("&Merge"),
            {{NextConflict, PreviousConflict},
             {TakeFieldOurs, TakeFieldTheirs},
             {TakeOurs, TakeTheirs, TakeRename},
             {TakeAllOurs, TakeAllTheirs}});
    QMenu *windows = addMenu(tr("&Window"), {});
    MainMenu::contributeTo(MainMenu::Window, *windows, m_window);
    CommonMenus::listDocuments(*windows, m_window,
                               [this](const Document &each) { return &each == m_document; });
    MainMenu::contributeTo(MainMenu::Help, *addMenu(tr("&Help"), {}), m_window);
}

QMenu *MergeMenus::addMenu(const QString &title, const QList<QList<Command>> &groups)
{
    QMenu *menu = m_window.menuBar()->addMenu(title);
    addCommands(*menu, groups);
    return menu;
}

void MergeMenus::addCommands(QMenu &menu, const QList<QList<Command>> &groups)
{
    for (const QList<Command> &group : groups) {
        if (!menu.isEmpty())
            menu.addSeparator();
        for (const Command command : group)
            menu.addAction(m_actions[command]);
    }
}

void MergeMenus::buildFileMenu()
{
    QMenu *menu = addMenu(tr("&File"), {});
    CommonMenus::addNewAndOpen(*menu, m_window);
    addCommands(*menu, {{Save, SaveAs}, {Close}});
    MainMenu::contributeTo(MainMenu::File, *menu, m_window);
}

void MergeMenus::buildEditMenu()
{
    QMenu *menu = addMenu(tr("&Edit"), {{Undo, Redo}});
    QMenu *history = menu->addMenu(tr("&History"));
    connect(history, &QMenu::aboutToShow, this, [this, history] {
        if (m_document)
            CommonMenus::fillHistory(*history, m_window, *m_document->undoManager());
    });
    addCommands(*menu, {{CopyText}});
    MainMenu::contributeTo(MainMenu::Edit, *menu, m_window);
}

void MergeMenus::enable(std::initializer_list<Command> commands, bool areEnabled)
{
    for (const Command command : commands)
        m_actions[command]->setEnabled(areEnabled);
}

void MergeMenus::showHistory(UndoManager &undo, bool mayUndo)
{
    const auto show = [](QAction &action, bool isEnabled, const QString &plain, const QString &named,
                         const QString &step) {
        action.setEnabled(isEnabled);
        action.setText(!isEnabled           ? plain
                           : step.isEmpty() ? named.arg(tr("Change"))
                                            : named.arg(menuText(step)));
    };
    show(*m_actions[Undo], mayUndo && undo.canUndo(), tr("&Undo"), tr("&Undo %1"), undo.stack()->undoText());
    show(*m_actions[Redo], undo.canRedo(), tr("&Redo"), tr("&Redo %1"), undo.stack()->redoText());
}

} // namespace runebook
