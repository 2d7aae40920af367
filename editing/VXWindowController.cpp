#include "editing/VXWindowController.h"

#include "editing/ChangedOnDisk.h"
#include "editing/DetailPane.h"
#include "editing/EmptyNotices.h"
#include "editing/FieldEditing.h"
#include "editing/GlyphTableView.h"
#include "editing/PreviewLabel.h"
#include "editing/ProblemsPane.h"
#include "editing/SearchFilter.h"
#include "editing/SlicedFilter.h"
#include "editing/SortNameDialog.h"
#include "editing/UnicodesTokenField.h"
#include "editing/VXMenuButton.h"
#include "editing/VXSearchField.h"
#include "editing/VXSimpleSplitView.h"
#include "editing/VXValidatingTextField.h"
#include "editing/VXWhiteView.h"
#include "editing/WindowMenus.h"
#include "platform/DocumentController.h"
#include "platform/DocumentPanels.h"
#include "platform/FilePath.h"
#include "platform/MessageBar.h"
#include "platform/PlainText.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QString kGeometry = u"WindowGeometry"_s;

} // namespace

VXWindowController::VXWindowController(VXDocument &document)
    : m_document(document),
      m_infolistController(new RSRTVArrayController(document, this)),
      m_problems(new Problems(document, this))
{
    buildContent();
    m_menus = new WindowMenus(*this);
    buildToolBar();
    buildStatusBar();
    buildSlicedFilter();
    connectParts();
    awakeFromNib();
    setAcceptDrops(true);
    resize(1240, 760);
    restoreGeometry(UserDefaults::standard().objectForKey(kGeometry).toByteArray());
    synchronizeWindowTitleWithDocumentName();
    showReadError();
    m_infolistController->setSelectionIndexes({0});
    setActiveInfo();
    setProblemsShown(UserDefaults::standard().boolForKey(u"ProblemsPaneShown"_s));
    m_tableView->setFocus();
    new EmptyNotices(*this);
}

VXWindowController::~VXWindowController()
{
    UserDefaults::standard().setObjectForKey(saveGeometry(), kGeometry);
    // These turn to the window when they lose the focus, so they go while it is still whole.
    delete m_menus;
    delete takeCentralWidget();
}

// Building

void VXWindowController::buildContent()
{
    m_detailPane = new DetailPane(*this, this);
    auto *content = new VXWhiteView(this);
    m_messageBar = new MessageBar(content);
    m_tableView = new GlyphTableView(*m_infolistController, content);
    m_tableView->setFrameShape(QFrame::NoFrame);
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *changedOnDisk = new ChangedOnDisk(m_document, content);
    connect(changedOnDisk, &ChangedOnDisk::remarked, this, &VXWindowController::showMessage);
    layout->addWidget(changedOnDisk);
    layout->addWidget(m_messageBar);
    m_contentSplit = new VXSimpleSplitView(Qt::Vertical, content);
    m_contentSplit->setHandleWidth(1);
    m_contentSplit->setChildrenCollapsible(false);
    m_contentSplit->addWidget(m_tableView);
    layout->addWidget(m_contentSplit, 1);
    setPanes(m_detailPane, content);
}

void VXWindowController::buildToolBar()
{
    QToolBar *bar = addToolBar(tr("Toolbar"));
    bar->setObjectName(u"toolbar"_s);
    bar->setMovable(false);
    bar->setIconSize({18, 18});
    QAction *sidebar = bar->addAction(QIcon(u":/icons/sidebar.svg"_s), tr("Show or hide the sidebar"));
    connect(sidebar, &QAction::triggered, this, [this] { setSidebarShown(!isSidebarShown()); });
    bar->addSeparator();
    bar->addAction(m_menus->addAction());
    bar->addAction(m_menus->removeAction());
    bar->addWidget(m_menus->makeGlyphButton(bar));
    auto *space = new QWidget(bar);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(space);
    m_searchField = new VXSearchField(bar);
    m_searchField->setMinimumWidth(220);
    m_searchField->setMaximumWidth(420);
    bar->addWidget(m_searchField);
}

void VXWindowController::buildStatusBar()
{
    m_subtitleLabel = plainLabel({}, this);
    m_countLabel = plainLabel({}, this);
    statusBar()->addWidget(m_subtitleLabel);
    statusBar()->addPermanentWidget(m_countLabel);
    m_problemsButton = new ProblemsButton(*m_problems, this);
    connect(m_problemsButton, &QToolButton::clicked, this, &VXWindowController::setProblemsShown);
    statusBar()->addPermanentWidget(m_problemsButton);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(8, 0, 8, 2);
}

void VXWindowController::connectParts()
{
    connect(m_infolistController, &RSRTVArrayController::arrangedObjectsChanged, this,
            &VXWindowController::updateTitle);
    connect(m_infolistController, &RSRTVArrayController::remarked, this, &VXWindowController::showRemark);
    connect(&m_document, &Document::showPlaceRequested, this,
            [this](qsizetype place) { showInfo(m_document.objectInInfosAtIndex(place)); });
    connect(&m_document, &Document::commitEditingRequested, this, [this](Error *refusal) {
        if (refusal->domain.isEmpty())
            commitEditing(refusal);
    });
    m_tableView->setLeavingCondition([this] { return commitEditing(); });
    connect(&m_document, &VXDocument::infosReset, this, &VXWindowController::setActiveInfo);
    connect(&m_document, &Document::aboutToClose, this, [this] { hide(); });
    connect(&DocumentController::shared(), &DocumentController::documentsChanged, this,
            &VXWindowController::updateTitle);
    connect(m_searchField, &VXSearchField::searchChanged, this, &VXWindowController::filterInfos);
    connect(m_searchField, &VXSearchField::goToTableRequested, m_tableView, qOverload<>(&QWidget::setFocus));
    connect(m_tableView, &GlyphTableView::dragRefused, this, &VXWindowController::showMessage);
    connect(m_tableView, &GlyphTableView::sortChanged, this, &VXWindowController::stateChanged);
    connect(this, &VXSplitViewWindowController::sidebarShownChanged, this, &VXWindowController::stateChanged);
    connect(&m_idleTimer, &QTimer::timeout, this, &VXWindowController::prepareSearch);
    connect(m_searchField, &VXSearchField::settingsChanged, this, [this] { m_idleTimer.start(); });
    connect(&m_document, &VXDocument::infosReset, this, [this] { m_idleTimer.start(); });
    m_idleTimer.setInterval(0);
    m_idleTimer.start();
    connect(m_tableView, &GlyphTableView::deleteRequested, this, &VXWindowController::delete_);
}

void VXWindowController::awakeFromNib()
{
    if (std::exchange(m_hasObservation, true))
        return;
    connect(m_infolistController, &RSRTVArrayController::selectionChanged, this,
            &VXWindowController::selectionDidChange);
    connect(&m_document, &Document::editedChanged, this, &VXWindowController::updateTitle);
    setUpSearchMenu();
}

void VXWindowController::observeValueForKeyPathOfObjectChangeContext(const QString &keyPath, QObject *,
                                                                     const QVariantMap &, const QVariant &)
{
    if (keyPath == "selection"_L1)
        setActiveInfo();
    else if (keyPath == "document.isDocumentEdited"_L1)
        updateTitle();
}

// Parts

QMenu *VXWindowController::searchFieldMenu() const
{
    return m_searchField->searchMenu();
}

PreviewLabel *VXWindowController::previewLabel() const
{
    return m_detailPane->previewLabel();
}

UnicodesTokenField *VXWindowController::unicodesField() const
{
    return qobject_cast<UnicodesTokenField *>(m_detailPane->editorOf(GlyphField::Unicodes));
}

VXValidatingTextField *VXWindowController::productionNameField() const
{
    return qobject_cast<VXValidatingTextField *>(m_detailPane->editorOf(GlyphField::Production));
}

VXValidatingTextField *VXWindowController::altNameField() const
{
    return qobject_cast<VXValidatingTextField *>(m_detailPane->editorOf(GlyphField::AltNames));
}

SortNameDialog *VXWindowController::sortNameDialog() const
{
    return m_sortNameDialog;
}

// Searching ahead

void VXWindowController::prepareSearch()
{
    constexpr int kSliceMs = 8;
    const std::optional<Predicate> likely = SearchFilter(SearchSettings::current()).result(u"a"_s).predicate;
    if (!likely || m_infolistController->prepareFilter(*likely, kSliceMs))
        m_idleTimer.stop();
}

// Display

void VXWindowController::setActiveInfo()
{
    m_detailPane->showSelection();
    showSelectedCount();
}

void VXWindowController::selectionDidChange()
{
    // A large selection is painted first; the pane needs longer to gather what the records have in common.
    constexpr qsizetype kMany = 10'000;
    if (m_infolistController->selectedCount() <= kMany) {
        setActiveInfo();
        return;
    }
    showSelectedCount();
    if (std::exchange(m_activeInfoPending, true))
        return;
    QTimer::singleShot(0, this, [this] {
        m_activeInfoPending = false;
        setActiveInfo();
    });
}

void VXWindowController::showSelectedCount()
{
    const qsizetype selected = m_infolistController->selectedCount();
    m_countLabel->setText(selected == 0 ? QString() : tr("%1 selected").arg(locale().toString(selected)));
    // A filter tells of itself when it is done.
    if (!m_isFiltering)
        Q_EMIT stateChanged();
}

void VXWindowController::updateTitle()
{
    if (m_isFiltering || std::exchange(m_titleUpdatePending, true))
        return;
    QTimer::singleShot(0, this, [this] {
        m_titleUpdatePending = false;
        synchronizeWindowTitleWithDocumentName();
        Q_EMIT stateChanged();
    });
}

void VXWindowController::synchronizeWindowTitleWithDocumentName()
{
    m_title = windowTitleForDocumentDisplayName(m_document.displayName());
    // "[*]" in a file's name would be taken for the place of the mark of unsaved changes.
    setWindowTitle(m_document.windowTitle().replace("[*]"_L1, "[*][*]"_L1) + "[*]"_L1);
    setWindowModified(m_document.isDocumentEdited());
    setWindowFilePath(m_document.fileURL());
}

QString VXWindowController::windowTitleForDocumentDisplayName(const QString &displayName)
{
    const qsizetype shown = m_infolistController->countOfArrangedObjects();
    const qsizetype total = m_document.countOfInfos();
    QString text = shown == total ? tr("%1 infos").arg(shown) : tr("%1/%2 infos").arg(shown).arg(total);
    if (m_document.isDocumentEdited())
        text += tr(" - Edited");
    if (text != m_subtitle) {
        m_subtitle = text;
        showSubtitle();
        Q_EMIT subtitleChanged();
    }
    return displayName;
}

/// The subtitle for people, who want to read large numbers.
void VXWindowController::showSubtitle()
{
    const auto number = [this](qsizetype count) { return locale().toString(static_cast<qlonglong>(count)); };
    const QString shown = number(m_infolistController->countOfArrangedObjects());
    const QString total = number(m_document.countOfInfos());
    const QString text = shown == total ? tr("%1 infos").arg(shown) : tr("%1/%2 infos").arg(shown, total);
    m_subtitleLabel->setText(m_document.isDocumentEdited() ? text + tr(" - Edited") : text);
}

void VXWindowController::showMessage(const QString &text)
{
    m_messageBar->showMessage(text, MessageBar::Stay::ShortTime);
}

void VXWindowController::showRemark(const FieldRemark &remark)
{
    if (remark.takeOffer)
        m_messageBar->ask(remark.sentence, {{remark.offer, remark.takeOffer}});
    else
        showMessage(remark.sentence);
}

void VXWindowController::showReadError()
{
    const Error &error = m_document.readError();
    if (error.domain.isEmpty())
        return;
    m_messageBar->showMessage(tr("The file could not be read, so the document is empty.") + u'\n'
                                  + error.text(),
                              MessageBar::Stay::UntilClosed);
}

bool VXWindowController::textFieldHasValidContent(QObject *field)
{
    return m_detailPane->textFieldHasValidContent(field);
}

// Search

void VXWindowController::setUpSearchMenu()
{
    m_searchField->setUpSearchMenu();
}

void VXWindowController::searchMode(int tag)
{
    m_searchField->searchMode(tag);
}

bool VXWindowController::validateMenuItem(QAction *item) const
{
    const QMenu *menu = searchFieldMenu();
    return !menu || !menu->actions().contains(item) || m_searchField->validateMenuItem(item);
}

QString VXWindowController::filterStringForKeySearch(bool matchCase, const QString &key,
                                                     const QString &text) const
{
    return SearchFilter::filterStringForKeySearch(matchCase, key, text);
}

void VXWindowController::controlTextDidChange(QObject *control)
{
    if (control == m_searchField)
        filterInfos();
}

void VXWindowController::filterInfos()
{
    if (m_isFiltering || !commitEditing())
        return;
    m_isFiltering = true;
    m_slicedFilter->cancel();
    auto [predicate, problem] = SearchFilter(SearchSettings::current()).result(m_searchField->stringValue());
    // A script, which runs in one step of undoing, goes on with the rows as soon as it has set the filter.
    const bool isInScript = m_document.undoManager()->groupingLevel() > 0;
    if (predicate && !isInScript
        && (SlicedFilter::isFor(*predicate) || !m_infolistController->isFilteredAtOnce(*predicate))) {
        m_isFiltering = false;
        m_slicedFilter->start(*predicate);
        return;
    }
    Error gaveUp;
    if (!m_infolistController->setFilterPredicate(predicate, &gaveUp))
        problem = gaveUp;
    filterWasApplied(problem);
}

bool VXWindowController::isFiltering() const
{
    return m_isFiltering || m_slicedFilter->isRunning();
}

void VXWindowController::filterWasApplied(const std::optional<Error> &problem)
{
    m_searchField->setProblem(problem);
    m_infolistController->setDraggingEnabled(!m_infolistController->isFiltered());
    synchronizeWindowTitleWithDocumentName();
    showSubtitle(); // the progress stood there
    m_isFiltering = false;
    Q_EMIT stateChanged();
}

/// What takes longer than a slice shows its results when it has them all; until then the rows stay.
void VXWindowController::buildSlicedFilter()
{
    const auto prepare = [this](const Predicate &predicate, int milliseconds) {
        return m_infolistController->prepareFilter(predicate, milliseconds);
    };
    m_slicedFilter = new SlicedFilter(m_document, prepare, this);
    connect(m_slicedFilter, &SlicedFilter::prepared, this, [this](const Predicate &predicate) {
        m_isFiltering = true;
        m_infolistController->setFilterPredicate(predicate);
        filterWasApplied({});
    });
    connect(m_slicedFilter, &SlicedFilter::finished, this,
            [this](const Predicate &predicate, const IndexSet &passing) {
                m_isFiltering = true;
                m_infolistController->setFilterPredicate(predicate, passing);
                filterWasApplied({});
            });
    connect(m_slicedFilter, &SlicedFilter::gaveUp, this, [this](const Error &error) {
        m_isFiltering = true;
        m_infolistController->setFilterPredicate(std::optional<Predicate>());
        filterWasApplied(error);
    });
    connect(m_slicedFilter, &SlicedFilter::progressed, this, &VXWindowController::showSearchProgress);
}

void VXWindowController::showSearchProgress()
{
    m_subtitleLabel->setText(
        tr("Searching… %1 % (Esc stops)").arg(static_cast<int>(m_slicedFilter->progress() * 100)));
}

// Events

void VXWindowController::closeEvent(QCloseEvent *event)
{
    // The document decides; when it closes it takes the window with it.
    event->ignore();
    DocumentPanels::close(m_document);
}

void VXWindowController::changeEvent(QEvent *event)
{
    VXSplitViewWindowController::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        DocumentController::shared().bringToFront(&m_document);
}

void VXWindowController::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void VXWindowController::dropEvent(QDropEvent *event)
{
    QStringList paths;
    for (const QUrl &url : event->mimeData()->urls()) {
        if (url.isLocalFile())
            paths << pathFromURL(url.toString(QUrl::FullyEncoded));
    }
    if (!paths.isEmpty())
        DocumentPanels::openFiles(paths, this);
}
