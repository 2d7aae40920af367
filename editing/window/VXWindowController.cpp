#include "editing/window/VXWindowController.h"

#include "editing/fields/CodePointTokens.h"
#include "editing/fields/UnicodesTokenField.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/SortNameDialog.h"
#include "editing/search/SavedFilters.h"
#include "editing/search/SearchFilter.h"
#include "editing/search/VXSearchField.h"
#include "editing/values/ValueSettings.h"
#include "editing/window/ComponentLinks.h"
#include "editing/window/DetailPane.h"
#include "editing/window/FileDrop.h"
#include "editing/window/ManyCommands.h"
#include "editing/window/NameCommands.h"
#include "editing/window/PreviewLabel.h"
#include "editing/window/RecordCommands.h"
#include "editing/window/RenameOffer.h"
#include "editing/window/ReplaceCommand.h"
#include "editing/window/TableCommands.h"
#include "editing/window/VisitedPlaces.h"
#include "editing/window/WindowContent.h"
#include "editing/window/WindowFilters.h"
#include "editing/window/WindowProblems.h"
#include "editing/window/WindowSearch.h"
#include "editing/window/WindowSettings.h"
#include "editing/window/WindowState.h"
#include "editing/window/WindowTitle.h"
#include "editing/window/WindowValues.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"

#include <QCloseEvent>
#include <QMenu>

using namespace runebook;
using namespace Qt::StringLiterals;

VXWindowController::VXWindowController(VXDocument &document)
    : m_document(document),
      m_infolistController(new RSRTVArrayController(document, this)),
      m_content(new WindowContent(*this, document, *m_infolistController))
{
    setPanes(m_content->pane(), m_content->view());
    // The window is the fields' delegate, as scripts know it; it asks the pane.
    detailPane()->setFieldDelegate(this);
    connect(m_content, &WindowContent::stateChanged, this, &VXWindowController::stateChanged);
    connect(&m_content->title(), &WindowTitle::subtitleChanged, this, &VXWindowController::subtitleChanged);
    awakeFromNib();
    new FileDrop(*this);
    resize(1240, 760);
    restoreGeometry(Settings::kWindowGeometry.value());
    synchronizeWindowTitleWithDocumentName();
    m_content->showReadError();
    m_infolistController->setSelectionIndexes({0});
    setActiveInfo();
    setProblemsShown(Settings::kProblemsShown.value());
    setValuesShown(Settings::kValuesShown.value());
    tableView()->setFocus();
}

VXWindowController::~VXWindowController()
{
    Settings::kWindowGeometry.set(saveGeometry());
    delete m_content; // while the window is whole; the widgets that go with it still turn to both
}

void VXWindowController::awakeFromNib()
{
    if (std::exchange(m_hasObservation, true))
        return;
    connect(m_infolistController, &RSRTVArrayController::selectionChanged, m_content,
            &WindowContent::selectionHasChanged);
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

UnicodesTokenField *VXWindowController::unicodesField() const
{
    return qobject_cast<UnicodesTokenField *>(detailPane()->editorOf(GlyphField::Unicodes));
}

VXValidatingTextField *VXWindowController::productionNameField() const
{
    return qobject_cast<VXValidatingTextField *>(detailPane()->editorOf(GlyphField::Production));
}

VXValidatingTextField *VXWindowController::altNameField() const
{
    return qobject_cast<VXValidatingTextField *>(detailPane()->editorOf(GlyphField::AltNames));
}

bool VXWindowController::validateMenuItem(QAction *item) const
{
    const QMenu *menu = searchFieldMenu();
    return !menu || !menu->actions().contains(item) || searchField()->validateMenuItem(item);
}

void VXWindowController::controlTextDidChange(QObject *control)
{
    if (control == searchField())
        filterInfos();
}

void VXWindowController::selectSame(const QString &key)
{
    if (const std::optional<GlyphField> field = fieldForKey(key))
        m_content->commands().selectSame(*field);
}

void VXWindowController::sortNameOK()
{
    if (SortNameDialog *dialog = sortNameDialog())
        dialog->accept();
}

void VXWindowController::sortNameCancel()
{
    if (SortNameDialog *dialog = sortNameDialog())
        dialog->reject();
}

void VXWindowController::performFindPanelAction(int tag)
{
    constexpr int kShowFind = 1;
    constexpr int kShowReplace = 12;
    if (tag == kShowFind)
        m_content->search().focusField();
    else if (tag == kShowReplace)
        m_content->replace().run();
}

void VXWindowController::windowWillEncodeRestorableState(QObject *, QVariantMap *state) const
{
    if (state)
        *state = windowWillEncodeRestorableState();
}

void VXWindowController::windowDidDecodeRestorableState(const QVariantMap &state)
{
    runebook::restoreState(m_content->restoredParts(), state);
    setActiveInfo();
}

// What the features do, under the names that others know

// clang-format off
bool VXWindowController::commitEditing() { return commitEditing(nullptr); }
bool VXWindowController::commitEditing(Error *refusal) { return m_content->parts().commitEditing(refusal); }
void VXWindowController::copy() { m_content->commands().copy(); }
void VXWindowController::copyAsTable() { m_content->tables().copyAsTable(); }
QString VXWindowController::pasteTable(const QString &text, Error *error) { return m_content->tables().pasteText(text, error); }
void VXWindowController::exportTable() { m_content->tables().exportTable(); }
bool VXWindowController::exportTableToURLFieldsRecords(const QString &url, const QStringList &fields, const QString &records, Error *error) { return m_content->tables().exportTable(url, fields, records, error); }
void VXWindowController::cut() { m_content->commands().cut(); }
void VXWindowController::paste() { m_content->commands().paste(); }
void VXWindowController::delete_() { m_content->commands().deleteSelected(); }
void VXWindowController::removeSelectedInfos() { m_content->commands().remove(); }
void VXWindowController::addInfo() { m_content->commands().add(); }
void VXWindowController::duplicateSelectedInfos() { m_content->many().duplicate(); }
void VXWindowController::editEntries() { m_content->many().editEntries(); }
qsizetype VXWindowController::addEntriesToField(const QStringList &entries, const QString &key, Error *error) { return m_content->many().changeEntries(key, entries, {}, error); }
qsizetype VXWindowController::removeEntriesFromField(const QStringList &entries, const QString &key, Error *error) { return m_content->many().changeEntries(key, {}, entries, error); }
void VXWindowController::addVariants() { m_content->many().addVariants(); }
InfoList VXWindowController::addVariantsWithSuffixesFields(const QStringList &suffixes, const QStringList &fields, Error *error) { return m_content->many().addVariants(suffixes, fields, error); }
void VXWindowController::addCharacters() { m_content->many().addCharacters(); }
InfoList VXWindowController::addCharactersInText(const QString &text, Error *error) { return m_content->many().addCharacters(text, error); }
void VXWindowController::fillProductionNames() { m_content->many().fillProductionNames(); }
qsizetype VXWindowController::fillProductionNamesByRuleOnlyEmpty(const QString &rule, bool onlyEmpty, Error *error) { return m_content->many().fillProductionNames(rule, onlyEmpty, error); }
void VXWindowController::moveNameToAltName() { m_content->commands().moveNamesToAltNames(); }
void VXWindowController::makeLegacyName() { m_content->commands().makeLegacyName(); }
void VXWindowController::setSortName() { m_content->commands().numberSortNames(); }
void VXWindowController::showInUnicodeChecker() { m_content->commands().showInCharacterApplication(); }
void VXWindowController::selectAll() { m_content->commands().selectAll(); }
void VXWindowController::writeShownOrder() { m_content->commands().writeShownOrder(); }
void VXWindowController::showUses() { m_content->names().showUses(); }
void VXWindowController::renameInOtherRecords() { m_content->names().renaming().showList(); }
void VXWindowController::goToComponent() { m_content->names().links().goToComponent(); }
void VXWindowController::goBack() { m_content->names().places().go(-1); }
void VXWindowController::goForward() { m_content->names().places().go(1); }
void VXWindowController::goToInfo() { m_content->search().goToInfo(); }
void VXWindowController::showInfo(const InfoPtr &info) { m_content->search().showInfo(info); }
void VXWindowController::setUpSearchMenu() { searchField()->setUpSearchMenu(); }
void VXWindowController::searchMode(int tag) { searchField()->searchMode(tag); }
void VXWindowController::filterInfos() { m_content->search().filterInfos(); }
bool VXWindowController::setFilter(const QString &filter, Error *error) { return m_content->filters().setText(filter, error); }
QString VXWindowController::filter() const { return m_content->filters().text(); }
QStringList VXWindowController::savedFilters() const { return SavedFilters::names(); }
bool VXWindowController::isFiltering() const { return m_content->search().isFiltering(); }
QString VXWindowController::filterStringForKeySearch(bool matchCase, const QString &key, const QString &text) const { return SearchFilter::filterStringForKeySearch(matchCase, key, text); }
QString VXWindowController::windowTitleForDocumentDisplayName(const QString &displayName) { return m_content->title().titleForDisplayName(displayName); }
void VXWindowController::synchronizeWindowTitleWithDocumentName() { m_content->title().synchronize(); }
bool VXWindowController::isProblemsShown() const { return m_content->problems().isShown(); }
void VXWindowController::setProblemsShown(bool isShown) { m_content->problems().setShown(isShown); }
void VXWindowController::goToProblem(int step) { m_content->problems().goTo(step); }
ValuesPanel *VXWindowController::valuesPanel() const { return m_content->values().panel(); }
bool VXWindowController::isValuesShown() const { return m_content->values().isShown(); }
void VXWindowController::setValuesShown(bool isShown) { m_content->values().setShown(isShown); }
bool VXWindowController::showValues(const QString &field, Error *error) { return m_content->values().show(field, error); }
QVariantList VXWindowController::valueCounts(const QString &field, Error *error) { return m_content->values().counts(field, error).value_or(QVariantList()); }
qsizetype VXWindowController::renameValueToInField(const QString &value, const QString &to, const QString &field, Error *error) { return m_content->values().rename(field, value, to, error).value_or(WindowValues::Renamed {-1, 0}).records; }
void VXWindowController::showMessage(const QString &text) { m_content->parts().showMessage(text); }
void VXWindowController::showRemark(const FieldRemark &remark) { m_content->parts().showRemark(remark); }
bool VXWindowController::textFieldHasValidContent(QObject *field) { return detailPane()->textFieldHasValidContent(field); }
QStringList VXWindowController::tokenFieldShouldAddObjectsAtIndex(QObject *, const QStringList &tokens, int) const { return normalizedCodePointTokens(tokens); }
QVariantMap VXWindowController::windowWillEncodeRestorableState() const { return encodedState(m_content->restoredParts()); }
VXSearchField *VXWindowController::searchField() const { return &m_content->parts().searchField; }
GlyphTableView *VXWindowController::tableView() const { return &m_content->parts().table; }
DetailPane *VXWindowController::detailPane() const { return m_content->pane(); }
QMenu *VXWindowController::searchFieldMenu() const { return searchField()->searchMenu(); }
PreviewLabel *VXWindowController::previewLabel() const { return detailPane()->previewLabel(); }
SortNameDialog *VXWindowController::sortNameDialog() const { return m_content->commands().sortNameDialog(); }
QString VXWindowController::title() const { return m_content->title().title(); }
QString VXWindowController::subtitle() const { return m_content->title().subtitle(); }
Problems &VXWindowController::problems() const { return m_content->problems().problems(); }
ProblemsPane *VXWindowController::problemsPane() const { return m_content->problems().pane(); }
void VXWindowController::setActiveInfo() { m_content->showSelection(); }
void VXWindowController::updateTitle() { m_content->updateTitle(); }
void VXWindowController::windowDidDecodeRestorableState(QObject *, const QVariantMap &state) { windowDidDecodeRestorableState(state); }
// clang-format on

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
