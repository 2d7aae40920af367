#include "editing/window/WindowMenus.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/search/FilterBar.h"
#include "editing/search/VXSearchField.h"
#include "editing/values/ValuesPanel.h"
#include "editing/window/ComponentLinks.h"
#include "editing/window/DetailPane.h"
#include "editing/window/EditMenu.h"
#include "editing/window/FocusRound.h"
#include "editing/window/ManyCommands.h"
#include "editing/window/NameCommands.h"
#include "editing/window/RecordCommands.h"
#include "editing/window/RenameOffer.h"
#include "editing/window/ReplaceCommand.h"
#include "editing/window/StateChange.h"
#include "editing/window/TableCommands.h"
#include "editing/window/UndoOnlyMenu.h"
#include "editing/window/VXSplitViewWindowController.h"
#include "editing/window/VisitedPlaces.h"
#include "editing/window/WindowFilters.h"
#include "editing/window/WindowProblems.h"
#include "editing/window/WindowSearch.h"
#include "editing/window/WindowValues.h"
#include "model/FieldTable.h"
#include "platform/MainMenu.h"
#include "platform/documents/CommonMenus.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QTableView>
#include <QTreeWidget>

namespace runebook {

using namespace Qt::StringLiterals;

WindowMenus::WindowMenus(VXSplitViewWindowController &window, const WindowParts &parts,
                         const WindowFeatures &features, StateChange &state)
    : QObject(&window),
      m_window(window),
      m_parts(parts),
      m_features(features),
      m_state(state),
      m_focusRound(new FocusRound(this)),
      m_rowMenu(parts, state),
      m_editMenu(new EditMenu(parts, features.commands, state, this)),
      m_undoOnlyMenu(new UndoOnlyMenu(parts, this))
{
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildGlyphMenu();
    buildScriptsMenu();
    buildWindowMenu();
    buildHelpMenu();
    addAreas();
    followMenus();
    validate();
}

void WindowMenus::followMenus()
{
    m_window.installEventFilter(this);
    for (const QAction *item : m_window.menuBar()->actions()) {
        if (item->menu())
            connect(item->menu(), &QMenu::aboutToShow, &m_state, &StateChange::tell);
    }
}

QAction *WindowMenus::addCommand(QMenu *menu, const QString &text, const QKeySequence &shortcut,
                                 std::function<void()> command, Condition condition)
{
    QAction *action = menu->addAction(text);
    action->setShortcut(shortcut);
    setCommand(action, std::move(command));
    if (condition)
        m_conditions.emplace_back(action, std::move(condition));
    return action;
}

void WindowMenus::setCommand(QAction *action, std::function<void()> command)
{
    connect(action, &QAction::triggered, this, [this, command = std::move(command)] {
        if (m_parts.commitEditing())
            command();
        else
            validate(); // an item with a tick has changed it
    });
}

bool WindowMenus::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::WindowActivate && m_isValidationDue)
        validate();
    if (event->type() == QEvent::ShortcutOverride || event->type() == MainMenu::validationEvent())
        m_state.tell();
    return QObject::eventFilter(watched, event);
}

void WindowMenus::validate()
{
    // Each command whose state changes is looked up among the shortcuts of all windows.
    m_isValidationDue = DocumentController::shared().isOpeningMany() && !m_window.isActiveWindow();
    if (m_isValidationDue)
        return;
    for (const auto &[action, condition] : m_conditions)
        action->setEnabled(condition());
    m_editMenu->validate();
    m_sidebarAction->setChecked(m_window.isSidebarShown());
    m_problemsAction->setChecked(m_features.problems.isShown());
    m_filterOnAction->setChecked(m_features.filters.isOn());
    m_valuesAction->setChecked(m_features.values.isShown());
}

void WindowMenus::buildFileMenu()
{
    QMenu *menu = m_window.menuBar()->addMenu(tr("&File"));
    VXDocument &document = m_parts.document;
    addCommand(menu, tr("&New"), QKeySequence::New,
               [] { DocumentController::shared().openUntitledDocumentAndDisplay(true); });
    addCommand(menu, tr("&Open…"), QKeySequence::Open, [this] { DocumentPanels::open(&m_window); });
    CommonMenus::addRecentFiles(*menu, m_window);
    menu->addSeparator();
    addCommand(menu, tr("&Save"), QKeySequence::Save,
               [this, &document] { DocumentPanels::save(document, &m_window); });
    addCommand(menu, tr("Save &As…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
               [this, &document] { DocumentPanels::saveAs(document, &m_window); });
    addCommand(
        menu, tr("Re&vert to Saved"), {}, [this, &document] { DocumentPanels::revert(document, &m_window); },
        [&document] { return !document.fileURL().isEmpty(); });
    addCommand(menu, tr("&Export Table…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E),
               [this] { m_features.tables.exportTable(); });
    menu->addSeparator();
    addCommand(menu, tr("&Close"), QKeySequence::Close, [this] { m_window.close(); });
    MainMenu::contributeTo(MainMenu::File, *menu, m_window);
}

void WindowMenus::buildEditMenu()
{
    QMenu *menu = m_window.menuBar()->addMenu(tr("&Edit"));
    RSRTVArrayController &list = m_parts.list;
    const Condition hasSelection = [&list] { return list.selectedCount() > 0; };
    m_editMenu->addUndoCommands(*menu);
    QMenu *history = menu->addMenu(tr("&History"));
    connect(history, &QMenu::aboutToShow, this, [this, history] {
        CommonMenus::fillHistory(*history, m_window, *m_parts.document.undoManager());
        m_undoOnlyMenu->addTo(*history);
    });
    addCommand(
        menu, tr("Undo &Only…"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Z),
        [this] { m_undoOnlyMenu->popUp(); }, [this] { return m_undoOnlyMenu->hasSteps(); });
    menu->addSeparator();
    const qsizetype before = menu->actions().size();
    m_editMenu->addClipboardCommands(*menu);
    for (QAction *action : menu->actions().sliced(before))
        m_rowMenu.add(action);
    m_rowMenu.add(addCommand(
        menu, tr("Copy as Ta&ble"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_T),
        [this] { m_features.tables.copyAsTable(); }, [&list] { return list.countOfArrangedObjects() > 0; }));
    m_rowMenu.add(addCommand(
        menu, tr("Du&plicate"), QKeySequence(Qt::CTRL | Qt::Key_D), [this] { m_features.many.duplicate(); },
        hasSelection));
    m_editMenu->addSelectAllCommand(*menu);
    QMenu *same = menu->addMenu(tr("Select Records with the Sa&me"));
    fillSelectSame(same);
    m_conditions.emplace_back(same->menuAction(), hasSelection);
    m_rowMenu.addSeparator();
    m_rowMenu.add(same->menuAction());
    menu->addSeparator();
    addCommand(menu, tr("&Find"), QKeySequence::Find, [this] { m_features.search.focusField(); });
    m_rowMenu.add(addCommand(
        menu, tr("Find and R&eplace…"), QKeySequence(Qt::CTRL | Qt::Key_H),
        [this] { m_features.replace.run(); }, [&list] { return list.countOfArrangedObjects() > 0; }));
    addCommand(menu, tr("&Go to Name or Code Point…"), QKeySequence(Qt::CTRL | Qt::Key_L),
               [this] { m_features.search.goToInfo(); });
    MainMenu::contributeTo(MainMenu::Edit, *menu, m_window);
}

void WindowMenus::buildViewMenu()
{
    QMenu *menu = m_window.menuBar()->addMenu(tr("&View"));
    GlyphTableView *table = &m_parts.table;
    m_sidebarAction = addCommand(menu, tr("Show &Sidebar"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_S),
                                 [this] { m_window.setSidebarShown(!m_window.isSidebarShown()); });
    m_sidebarAction->setCheckable(true);
    m_valuesAction =
        addCommand(menu, tr("Val&ues"), QKeySequence(Qt::Key_F9), [this] { m_features.values.toggle(); });
    m_valuesAction->setCheckable(true);
    WindowProblems &problems = m_features.problems;
    m_problemsAction = addCommand(menu, tr("Show &Problems"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M),
                                  [&problems] { problems.setShown(!problems.isShown()); });
    m_problemsAction->setCheckable(true);
    addCommand(menu, tr("&Next Problem"), QKeySequence(Qt::Key_F8), [&problems] { problems.goTo(1); });
    addCommand(menu, tr("Pre&vious Problem"), QKeySequence(Qt::SHIFT | Qt::Key_F8),
               [&problems] { problems.goTo(-1); });
    addCommand(menu, tr("Fi&x Selected Problems"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F8),
               [&problems] { problems.fixSelected(); });
    addCommand(menu, tr("Save &List of Problems…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_K),
               [&problems] { problems.saveList(); });
    buildFiltersMenu(*menu);
    menu->addSeparator();
    addCommand(menu, tr("Next A&rea"), QKeySequence(Qt::Key_F6), [this] { m_focusRound->go(1); });
    addCommand(menu, tr("Previous Ar&ea"), QKeySequence(Qt::SHIFT | Qt::Key_F6),
               [this] { m_focusRound->go(-1); });
    VisitedPlaces &places = m_features.names.places();
    addCommand(
        menu, tr("Bac&k"), QKeySequence(Qt::ALT | Qt::Key_Left), [&places] { places.go(-1); },
        [&places] { return places.canGo(-1); });
    addCommand(
        menu, tr("For&ward"), QKeySequence(Qt::ALT | Qt::Key_Right), [&places] { places.go(1); },
        [&places] { return places.canGo(1); });
    menu->addSeparator();
    QMenu *columns = menu->addMenu(tr("&Columns"));
    connect(columns, &QMenu::aboutToShow, this, [table, columns] {
        columns->clear();
        table->fillColumnMenu(*columns);
    });
    addCommand(
        menu, tr("&Document Order"), {}, [table] { table->resetSortIndicator(); },
        [this] { return m_parts.list.sortColumn() >= 0; });
    menu->addSeparator();
    addCommand(menu, tr("Zoom &In"), QKeySequence::ZoomIn, [table] { table->zoom(1); });
    addCommand(menu, tr("Zoom &Out"), QKeySequence::ZoomOut, [table] { table->zoom(-1); });
    addCommand(menu, tr("&Actual Size"), QKeySequence(Qt::CTRL | Qt::Key_0), [table] { table->zoom(0); });
    addCommand(menu, tr("&Reset View Settings"), {}, [table] { table->resetViewSettings(); });
    menu->addSeparator();
    CommonMenus::addAppearance(*menu, m_window);
    MainMenu::contributeTo(MainMenu::View, *menu, m_window);
}

void WindowMenus::buildFiltersMenu(QMenu &view)
{
    QMenu *menu = view.addMenu(tr("&Filters"));
    WindowFilters &filters = m_features.filters;
    const Condition hasConditions = [&filters] { return filters.hasConditions(); };
    m_addConditionAction =
        addCommand(menu, tr("&Add Condition…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F),
                   [&filters] { filters.addCondition(); });
    m_addConditionAction->setIcon(QIcon(u":/icons/filter.svg"_s));
    m_filterOnAction = addCommand(
        menu, tr("Filter &On"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
        [&filters] { filters.setOn(!filters.isOn()); }, hasConditions);
    m_filterOnAction->setCheckable(true);
    addCommand(
        menu, tr("&Clear Filter"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_X),
        [&filters] { filters.clear(); }, hasConditions);
    addCommand(
        menu, tr("&Bring Back Last Filter"), {}, [&filters] { filters.bringBack(); },
        [&filters] { return filters.canBringBack(); });
    menu->addSeparator();
    addCommand(
        menu, tr("&Save Filter…"), {}, [&filters] { filters.save(); }, [&filters] { return filters.isOn(); });
    addCommand(menu, tr("Saved &Filters…"), {}, [&filters] { filters.manage(); });
    const QAction *end = menu->addSeparator();
    connect(menu, &QMenu::aboutToShow, this, [&filters, menu, end] {
        while (menu->actions().last() != end)
            delete menu->actions().last();
        filters.listSaved(*menu);
    });
}

void WindowMenus::buildGlyphMenu()
{
    QMenu *menu = m_glyphMenu = m_window.menuBar()->addMenu(tr("&Glyph"));
    m_rowMenu.addSeparator();
    RecordCommands &commands = m_features.commands;
    RSRTVArrayController *list = &m_parts.list;
    const Condition hasSelection = [list] { return list->selectedCount() > 0; };
    m_addAction = addCommand(menu, tr("&Add Glyph"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N),
                             [&commands] { commands.add(); });
    m_rowMenu.setCommandWithoutRows(m_addAction);
    m_addAction->setIcon(QIcon(u":/icons/add.svg"_s));
    m_removeAction = m_rowMenu.add(addCommand(
        menu, tr("&Remove…"), QKeySequence(Qt::CTRL | Qt::Key_Backspace), [&commands] { commands.remove(); },
        hasSelection));
    m_removeAction->setIcon(QIcon(u":/icons/remove.svg"_s));
    menu->addSeparator();
    buildManyCommands(*menu, hasSelection);
    menu->addSeparator();
    NameCommands &names = m_features.names;
    m_rowMenu.add(addCommand(
        menu, tr("Show &Uses"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_U), [&names] { names.showUses(); },
        hasSelection));
    m_rowMenu.add(addCommand(
        menu, tr("Go to Com&ponent"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_G),
        [&names] { names.links().goToComponent(); }, [list] { return list->selectedCount() == 1; }));
    addCommand(
        menu, tr("Rename in &Other Records…"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_R),
        [&names] { names.renaming().showList(); }, [&names] { return names.renaming().hasRenamed(); });
    menu->addSeparator();
    m_rowMenu.add(addCommand(
        menu, tr("&Name to Alternate Names"), {}, [&commands] { commands.moveNamesToAltNames(); },
        hasSelection));
    m_rowMenu.add(addCommand(
        menu, tr("Make &Legacy Name"), {}, [&commands] { commands.makeLegacyName(); }, hasSelection));
    m_rowMenu.add(addCommand(
        menu, tr("Number &Sort Names…"), {}, [&commands] { commands.numberSortNames(); }, hasSelection));
    addCommand(
        menu, tr("&Write Shown Order to the Document"), {}, [&commands] { commands.writeShownOrder(); },
        [list] { return list->sortColumn() >= 0 && !list->isFiltered(); });
    menu->addSeparator();
    m_rowMenu.add(addCommand(
        menu, tr("Show &Code Point in Character Application"), {},
        [&commands] { commands.showInCharacterApplication(); },
        [list] { return list->selectedCount() == 1; }));
    MainMenu::contributeTo(MainMenu::Glyph, *menu, m_window);
}

void WindowMenus::buildManyCommands(QMenu &menu, const Condition &hasSelection)
{
    ManyCommands &many = m_features.many;
    m_rowMenu.add(addCommand(
        &menu, tr("Add &Variants…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D),
        [&many] { many.addVariants(); }, hasSelection));
    addCommand(&menu, tr("Add Charac&ters…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I),
               [&many] { many.addCharacters(); });
    m_rowMenu.add(addCommand(
        &menu, tr("Add or Remove &Entries…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A),
        [&many] { many.editEntries(); }, hasSelection));
    m_rowMenu.add(addCommand(
        &menu, tr("Fill &Production Names…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P),
        [&many] { many.fillProductionNames(); },
        [this] { return m_parts.list.countOfArrangedObjects() > 0; }));
    menu.addSeparator();
}

VXMenuButton *WindowMenus::makeGlyphButton(QWidget *parent) const
{
    return RowMenu::makeButton(*m_glyphMenu, {m_addAction, m_removeAction}, parent);
}

void WindowMenus::buildScriptsMenu()
{
    // One for all windows: scripts are many, and reading them takes a while.
    m_window.menuBar()->addMenu(MainMenu::sharedMenu(MainMenu::Scripts));
}

void WindowMenus::buildWindowMenu()
{
    QMenu *menu = m_window.menuBar()->addMenu(tr("&Window"));
    MainMenu::contributeTo(MainMenu::Window, *menu, m_window);
    CommonMenus::listDocuments(*menu, m_window,
                               [this](const Document &document) { return &document == &m_parts.document; });
}

void WindowMenus::buildHelpMenu()
{
    QMenu *menu = m_window.menuBar()->addMenu(tr("&Help"));
    MainMenu::contributeTo(MainMenu::Help, *menu, m_window);
}

// Areas

/// The areas of the window in the order in which F6 goes round.
void WindowMenus::addAreas()
{
    QWidget *searchField = &m_parts.searchField;
    QWidget *table = &m_parts.table;
    DetailPane *pane = &m_parts.pane;
    const WindowProblems &problems = m_features.problems;
    const WindowValues &values = m_features.values;
    m_focusRound->add([searchField] { return searchField; }, [searchField] { return searchField; });
    const WindowFilters &filters = m_features.filters;
    m_focusRound->add([&filters] { return filters.bar(); },
                      [&filters] { return filters.bar()->firstStop(); });
    m_focusRound->add([table] { return table; }, [table] { return table; });
    m_focusRound->add([pane] { return pane; }, [pane] { return pane->firstEditor(); });
    m_focusRound->add([&problems] { return problems.pane(); },
                      [&problems]() -> QWidget * {
                          const ProblemsPane &list = *problems.pane();
                          return list.table()->isVisible() ? static_cast<QWidget *>(list.table())
                                                           : list.kinds();
                      });
    m_focusRound->add([&values] { return values.panel(); },
                      [&values]() -> QWidget * { return &values.panel()->view(); });
}

// Menus that depend on what there is

void WindowMenus::fillSelectSame(QMenu *menu)
{
    for (const GlyphField field : fieldsBy<&FieldRow::samePlace>()) {
        QAction *action = menu->addAction(fieldTitle(field));
        setCommand(action, [this, field] { m_features.commands.selectSame(field); });
    }
}

} // namespace runebook
