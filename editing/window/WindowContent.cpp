#include "editing/window/WindowContent.h"

#include "document/FileFormats.h"
#include "document/VXDocument.h"
#include "editing/merge/MergeOpening.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/search/CurrentFilter.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/ChangedOnDisk.h"
#include "editing/window/DetailPane.h"
#include "editing/window/EmptyNotices.h"
#include "editing/window/ManyCommands.h"
#include "editing/window/NameCommands.h"
#include "editing/window/RecordCommands.h"
#include "editing/window/RenameOffer.h"
#include "editing/window/ReplaceCommand.h"
#include "editing/window/StateChange.h"
#include "editing/window/TableCommands.h"
#include "editing/window/VXMenuButton.h"
#include "editing/window/VXSimpleSplitView.h"
#include "editing/window/VXSplitViewWindowController.h"
#include "editing/window/VXWhiteView.h"
#include "editing/window/WindowFilters.h"
#include "editing/window/WindowMenus.h"
#include "editing/window/WindowProblems.h"
#include "editing/window/WindowSearch.h"
#include "editing/window/WindowState.h"
#include "editing/window/WindowTitle.h"
#include "editing/window/WindowValues.h"
#include "platform/MessageBar.h"
#include "platform/UndoManager.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentWindows.h"

#include <QLocale>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

WindowContent::WindowContent(VXSplitViewWindowController &window, VXDocument &document,
                             RSRTVArrayController &list)
    : m_window(window), m_document(document), m_list(list), m_state(new StateChange(this))
{
    buildView();
    buildFeatures();
    buildToolBar();
    buildStatusBar();
    connectFeatures();
    connectDocument();
}

WindowContent::~WindowContent()
{
    // They turn to the features when they lose the focus, so they go while those are still there.
    delete m_menus;
    delete m_window.takeCentralWidget();
}

// Building

void WindowContent::buildView()
{
    m_pane = new DetailPane(m_document, m_list, &m_window);
    m_searchField = new VXSearchField(&m_window);
    m_view = new VXWhiteView(&m_window);
    m_messages = new MessageBar(m_view);
    m_table = new GlyphTableView(m_list, m_view);
    m_table->setFrameShape(QFrame::NoFrame);
    auto *layout = new QVBoxLayout(m_view);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *changedOnDisk = new ChangedOnDisk(m_document, m_view);
    connect(changedOnDisk, &ChangedOnDisk::remarked, this,
            [this](const QString &text) { m_parts->showMessage(text); });
    layout->addWidget(changedOnDisk);
    layout->addWidget(m_messages);
    m_sides = new VXSimpleSplitView(Qt::Horizontal, m_view);
    m_split = new VXSimpleSplitView(Qt::Vertical, m_sides);
    for (VXSimpleSplitView *split : {m_sides, m_split}) {
        split->setHandleWidth(1);
        split->setChildrenCollapsible(false);
    }
    m_split->addWidget(m_table);
    m_sides->addWidget(m_split);
    layout->addWidget(m_sides, 1);
}

void WindowContent::buildFeatures()
{
    m_parts = std::make_unique<const WindowParts>(WindowParts {m_window, m_document, m_list, *m_table,
                                                               *m_pane, *m_searchField, *m_messages,
                                                               *new CurrentFilter(this)});
    m_title = new WindowTitle(*m_parts, this);
    m_commands = new RecordCommands(*m_parts, this);
    m_search = new WindowSearch(*m_parts, this);
    m_filters = new WindowFilters(*m_parts, *static_cast<QVBoxLayout *>(m_view->layout()), this);
    m_problems = new WindowProblems(*m_parts, *m_split, this);
    m_names = new NameCommands(*m_parts, *m_search, this);
    m_values = new WindowValues(*m_parts, *m_search, *m_sides, this);
    m_replace = new ReplaceCommand(*m_parts, m_problems->problems(), this);
    m_tables = new TableCommands(*m_parts, this);
    m_many = new ManyCommands(*m_parts, this);
    m_menus = new WindowMenus(m_window, *m_parts,
                              {*m_commands, *m_search, *m_filters, *m_problems, *m_names, *m_values,
                               *m_replace, *m_tables, *m_many},
                              *m_state);
    auto *notices = new EmptyNotices(*m_parts, *m_commands, *m_search, *m_filters, *m_problems, this);
    connect(m_state, &StateChange::changed, m_title, &WindowTitle::synchronize);
    connect(m_state, &StateChange::changed, m_menus, &WindowMenus::validate);
    connect(m_state, &StateChange::changed, notices, &EmptyNotices::update);
    connect(m_state, &StateChange::changed, this, &WindowContent::stateChanged);
}

void WindowContent::buildToolBar()
{
    QToolBar *bar = m_window.addToolBar(tr("Toolbar"));
    bar->setObjectName(u"toolbar"_s);
    bar->setMovable(false);
    bar->setIconSize({18, 18});
    QAction *sidebar = bar->addAction(QIcon(u":/icons/sidebar.svg"_s), tr("Show or hide the sidebar"));
    connect(sidebar, &QAction::triggered, this,
            [this] { m_window.setSidebarShown(!m_window.isSidebarShown()); });
    bar->addSeparator();
    bar->addAction(m_menus->addAction());
    bar->addAction(m_menus->removeAction());
    bar->addWidget(m_menus->makeGlyphButton(bar));
    auto *space = new QWidget(bar);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(space);
    bar->addAction(m_menus->addConditionAction());
    m_searchField->setMinimumWidth(220);
    m_searchField->setMaximumWidth(420);
    bar->addWidget(m_searchField);
}

void WindowContent::buildStatusBar()
{
    QStatusBar &bar = *m_window.statusBar();
    m_title->addTo(bar);
    bar.addPermanentWidget(m_problems->button());
    bar.setSizeGripEnabled(false);
    bar.setContentsMargins(8, 0, 8, 2);
}

void WindowContent::connectFeatures()
{
    connect(m_search, &WindowSearch::applied, m_title, [this] {
        m_title->synchronize();
        m_title->showSubtitle(); // the progress stood there
    });
    connect(m_search, &WindowSearch::progressed, m_title, &WindowTitle::showProgress);
    connect(m_search, &WindowSearch::finished, m_state, &StateChange::note);
    connect(&m_parts->filter, &CurrentFilter::changed, m_state, &StateChange::note);
    connect(m_search, &WindowSearch::allWanted, m_problems, &WindowProblems::showAll);
    connect(m_commands, &RecordCommands::foreignPasteRequested, m_tables, &TableCommands::pasteCells);
    connect(m_problems, &WindowProblems::showRequested, m_search, &WindowSearch::showInfo);
    connect(m_problems, &WindowProblems::conditionChanged, m_search, &WindowSearch::setCondition);
    connect(m_problems, &WindowProblems::shownChanged, m_state, &StateChange::note);
    connect(&m_names->renaming(), &RenameOffer::changed, m_state, &StateChange::note);
    connect(m_search, &WindowSearch::arrived, m_state, &StateChange::note);
    connect(m_values, &WindowValues::shownChanged, m_state, &StateChange::note);
    connect(m_pane, &DetailPane::showRequested, m_search, &WindowSearch::showInfo);
    connect(m_pane, &DetailPane::entriesRequested, m_many,
            [this](GlyphField field) { m_many->editEntries(field); });
    connect(m_pane, &DetailPane::remarked, this,
            [this](const FieldRemark &remark) { m_parts->showRemark(remark); });
    connect(&m_list, &RSRTVArrayController::remarked, this,
            [this](const FieldRemark &remark) { m_parts->showRemark(remark); });
    connect(&m_list, &RSRTVArrayController::arrangedObjectsChanged, m_state, &StateChange::note);
    connect(m_searchField, &VXSearchField::goToTableRequested, m_table, qOverload<>(&QWidget::setFocus));
    m_table->setLeavingCondition([this] { return m_parts->commitEditing(); });
    connect(m_table, &GlyphTableView::dragRefused, this,
            [this](const QString &why) { m_parts->showMessage(why); });
    connect(m_table, &GlyphTableView::sortChanged, m_state, &StateChange::note);
    connect(m_table, &GlyphTableView::deleteRequested, m_commands, &RecordCommands::deleteSelected);
    connect(&m_window, &VXSplitViewWindowController::sidebarShownChanged, m_state, &StateChange::note);
}

void WindowContent::connectDocument()
{
    connect(&m_document, &Document::showPlaceRequested, this,
            [this](qsizetype place) { m_search->showInfo(m_document.objectInInfosAtIndex(place)); });
    connect(&m_document, &Document::commitEditingRequested, this, [this](Error *refusal) {
        if (refusal->domain.isEmpty())
            m_parts->commitEditing(refusal);
    });
    connect(&m_document, &VXDocument::infosReset, this, &WindowContent::showSelection);
    connect(&m_document, &Document::aboutToClose, &m_window, &QWidget::hide);
    connect(&m_document, &Document::frontRequested, &m_window,
            [this] { DocumentWindows::bringToFront(m_window); });
    connect(&m_document, &VXDocument::windowMade, m_state, &StateChange::note);
    connect(&m_document, &VXDocument::elementChanged, this, &WindowContent::showSelection);
    connect(m_document.undoManager(), &UndoManager::changed, m_state, &StateChange::note);
    connect(&DocumentController::shared(), &DocumentController::documentsChanged, m_state,
            &StateChange::note);
}

RestoredParts WindowContent::restoredParts() const
{
    return {m_window, *m_parts, *m_search, *m_problems, *m_split};
}

// Showing

void WindowContent::showSelection()
{
    m_pane->showSelection();
    showSelectedCount();
}

void WindowContent::selectionHasChanged()
{
    // A large selection is painted first; the pane needs longer to gather what the records have in common.
    constexpr qsizetype kMany = 10'000;
    if (m_list.selectedCount() <= kMany) {
        showSelection();
        return;
    }
    showSelectedCount();
    if (std::exchange(m_isSelectionPending, true))
        return;
    QTimer::singleShot(0, this, [this] {
        m_isSelectionPending = false;
        showSelection();
    });
}

void WindowContent::showSelectedCount()
{
    m_title->showSelectedCount();
    m_state->note();
}

void WindowContent::updateTitle()
{
    m_state->note();
}

void WindowContent::offerToResolve(const QString &refusal)
{
    const qsizetype conflicts = m_document.readNotes().count(ReadNotes::Conflict);
    if (conflicts == 0)
        return;
    QString text = conflicts == 1
        ? tr("This file has one unresolved conflict. All its sides are records here.")
        : tr("This file has %1 unresolved conflicts. All their sides are records here.")
              .arg(QLocale().toString(conflicts));
    if (!refusal.isEmpty())
        text += u'\n' + refusal;
    const auto resolve = [this] {
        Error error;
        if (!resolveConflicts(m_document, &error))
            offerToResolve(error.text());
    };
    m_messages->ask(text, {{tr("&Resolve…"), resolve}}, MessageBar::Stay::UntilClosed);
}

void WindowContent::showReadError()
{
    const Error &error = m_document.readError();
    offerToResolve();
    if (error.domain.isEmpty())
        return;
    const QString text = tr("The file could not be read, so the document is empty.") + u'\n' + error.text();
    if (isTableType(typeOfPath(m_document.fileURL())))
        m_messages->ask(text, {{tr("&Retry: Open What Can Be Read"), [this] { readWhatCanBeRead(); }}},
                        MessageBar::Stay::UntilClosed);
    else
        m_messages->showMessage(text, MessageBar::Stay::UntilClosed);
}

void WindowContent::readWhatCanBeRead()
{
    Error error;
    if (!m_document.readWhatCanBeRead(&error)) {
        m_messages->showMessage(tr("Nothing in the file can be read.") + u'\n' + error.text(),
                                MessageBar::Stay::UntilClosed);
        return;
    }
    const qsizetype count = m_document.readNotes().count(ReadNotes::TableProblem);
    m_messages->showMessage(
        (count == 1 ? tr("One row or cell could not be read.")
                    : tr("%1 rows and cells could not be read.").arg(QLocale().toString(count)))
            + u' ' + tr("The list of problems has them; a save leaves them in the file as they are."),
        MessageBar::Stay::UntilClosed);
}

} // namespace runebook
