#include "editing/compare/CommandRow.h"
#include "editing/merge/MergeWindow.h"
#include "platform/MainMenu.h"
#include "platform/documents/CommonMenus.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

// The commands of the window with their keys, and its menu bar.

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Window = MergeWindow;

using Row = CommandRow<Window, Window::Command>;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {Window::Save, QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Save"), standardKeys(QKeySequence::Save),
         &Window::saveDocument},
        {Window::SaveAs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Save &As…"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_S},
         &Window::saveDocumentAs},
        {Window::Close, QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Close"),
         standardKeys(QKeySequence::Close), &Window::closeWindow},
        {Window::Undo, QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Undo"), standardKeys(QKeySequence::Undo),
         &Window::undo},
        {Window::Redo, QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Redo"), standardKeys(QKeySequence::Redo),
         &Window::redo},
        {Window::CopyText, QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Copy Text"),
         standardKeys(QKeySequence::Copy), &Window::copyText},
        {Window::ShowConflicts,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Conflicts"),
         {Qt::CTRL | Qt::Key_1},
         [](Window &window) { window.showMode(MergeMode::Conflicts); }},
        {Window::ShowFromTheirs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Taken from &Theirs"),
         {Qt::CTRL | Qt::Key_2},
         [](Window &window) { window.showMode(MergeMode::FromTheirs); }},
        {Window::ShowFromOurs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Taken from &Ours"),
         {Qt::CTRL | Qt::Key_3},
         [](Window &window) { window.showMode(MergeMode::FromOurs); }},
        {Window::ShowBoth,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Both the Same"),
         {Qt::CTRL | Qt::Key_4},
         [](Window &window) { window.showMode(MergeMode::Both); }},
        {Window::NextConflict,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Next Conflict"),
         {QKeySequence(Qt::Key_F8), QKeySequence(Qt::ALT | Qt::Key_Down)},
         &Window::goToNextConflict,
         ":/icons/next.svg"},
        {Window::PreviousConflict,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "&Previous Conflict"),
         {Qt::SHIFT | Qt::Key_F8, Qt::ALT | Qt::Key_Up},
         &Window::goToPreviousConflict,
         ":/icons/previous.svg"},
        {Window::TakeFieldOurs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Take Field from Ours"),
         {Qt::ALT | Qt::Key_Comma},
         [](Window &window) { window.takeField(MergeSide::Ours); }},
        {Window::TakeFieldTheirs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Take Field from Theirs"),
         {Qt::ALT | Qt::Key_Period},
         [](Window &window) { window.takeField(MergeSide::Theirs); }},
        {Window::TakeOurs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Take &Ours"),
         {Qt::ALT | Qt::Key_Left},
         [](Window &window) { window.takeRecord(MergeSide::Ours); }},
        {Window::TakeTheirs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Take &Theirs"),
         {Qt::ALT | Qt::Key_Right},
         [](Window &window) { window.takeRecord(MergeSide::Theirs); }},
        {Window::TakeAllOurs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Take All from Ours"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_L},
         [](Window &window) { window.takeAll(MergeSide::Ours); }},
        {Window::TakeAllTheirs,
         QT_TRANSLATE_NOOP("runebook::MergeWindow", "Take All from Theirs"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_R},
         [](Window &window) { window.takeAll(MergeSide::Theirs); }},
    };
    return rows;
}

} // namespace

void MergeWindow::buildActions()
{
    for (const Row &row : commandRows()) {
        m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
    }
    auto *modes = new QActionGroup(this);
    for (const Command command : {ShowConflicts, ShowFromTheirs, ShowFromOurs, ShowBoth}) {
        m_actions[command]->setCheckable(true);
        modes->addAction(m_actions[command]);
    }
}

QMenu *MergeWindow::addMenu(const QString &title, const QList<QList<Command>> &groups)
{
    QMenu *menu = menuBar()->addMenu(title);
    for (const QList<Command> &group : groups) {
        if (!menu->isEmpty())
            menu->addSeparator();
        for (const Command command : group)
            menu->addAction(m_actions[command]);
    }
    return menu;
}

void MergeWindow::buildMenus()
{
    QMenu *file = addMenu(tr("&File"), {{Save, SaveAs}, {Close}});
    MainMenu::contributeTo(MainMenu::File, *file, *this);
    QMenu *edit = addMenu(tr("&Edit"), {{Undo, Redo}, {CopyText}});
    MainMenu::contributeTo(MainMenu::Edit, *edit, *this);
    QMenu *view = addMenu(tr("&View"), {{ShowConflicts, ShowFromTheirs, ShowFromOurs, ShowBoth}});
    view->addSeparator();
    CommonMenus::addAppearance(*view, *this);
    MainMenu::contributeTo(MainMenu::View, *view, *this);
    addMenu(tr("&Merge"),
            {{NextConflict, PreviousConflict},
             {TakeFieldOurs, TakeFieldTheirs},
             {TakeOurs, TakeTheirs},
             {TakeAllOurs, TakeAllTheirs}});
    QMenu *windows = addMenu(tr("&Window"), {});
    MainMenu::contributeTo(MainMenu::Window, *windows, *this);
    CommonMenus::listDocuments(
        *windows, *this, [this](const Document &document) { return &document == m_resolution->document(); });
    MainMenu::contributeTo(MainMenu::Help, *addMenu(tr("&Help"), {}), *this);
}

} // namespace runebook
