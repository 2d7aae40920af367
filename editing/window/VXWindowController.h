#pragma once

#include "document/VXDocument.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/VXSplitViewWindowController.h"

class QMenu;
class SortNameDialog;
class VXSearchField;
class VXValidatingTextField;
Q_MOC_INCLUDE(<QMenu>)
Q_MOC_INCLUDE("editing/window/DetailPane.h")
Q_MOC_INCLUDE("editing/records/GlyphTableView.h")
Q_MOC_INCLUDE("editing/window/PreviewLabel.h")
Q_MOC_INCLUDE("editing/records/SortNameDialog.h")
Q_MOC_INCLUDE("editing/fields/UnicodesTokenField.h")
Q_MOC_INCLUDE("editing/search/VXSearchField.h")
Q_MOC_INCLUDE("editing/fields/VXValidatingTextField.h")

namespace runebook {
class DetailPane;
class GlyphTableView;
class PreviewLabel;
class Problems;
class ProblemsPane;
class UnicodesTokenField;
class ValuesPanel;
class WindowContent;
} // namespace runebook

/// The window of a document: the table of its records, the detail pane, the search field, and the commands on
/// the selected records. Other classes and scripts know it by these names; the features
/// behind them stand in runebook::WindowContent.
class VXWindowController : public VXSplitViewWindowController
{
    Q_OBJECT
    Q_PROPERTY(QString subtitle READ subtitle NOTIFY subtitleChanged)
public:
    explicit VXWindowController(VXDocument &document);
    ~VXWindowController() override;

public: // parts; the captions of the fields are called "infoLableName" and the like, their editors by key
    VXDocument &glyphDocument() const { return m_document; }
    Q_INVOKABLE QObject *document() const { return &m_document; }
    Q_INVOKABLE RSRTVArrayController *infolistController() const { return m_infolistController; }
    Q_INVOKABLE VXSearchField *searchField() const;
    /// The menu of modes and options.
    Q_INVOKABLE QMenu *searchFieldMenu() const;
    Q_INVOKABLE runebook::GlyphTableView *tableView() const;
    Q_INVOKABLE runebook::DetailPane *detailPane() const;
    Q_INVOKABLE runebook::PreviewLabel *previewLabel() const;
    Q_INVOKABLE runebook::UnicodesTokenField *unicodesField() const;
    Q_INVOKABLE VXValidatingTextField *productionNameField() const;
    Q_INVOKABLE VXValidatingTextField *altNameField() const;
    /// The open sheet that asks how sort names are numbered; null when there is none.
    Q_INVOKABLE SortNameDialog *sortNameDialog() const;
    Q_INVOKABLE QString title() const;
    Q_INVOKABLE QString subtitle() const;
    Q_INVOKABLE QStringList categories() const { return VXDocument::categories(); }
    Q_INVOKABLE QStringList subCategories() const { return VXDocument::subCategories(); }
    Q_INVOKABLE QStringList scripts() const { return VXDocument::scripts(); }
    Q_INVOKABLE InfoList selectedInfos() const { return m_infolistController->selectedObjects(); }

public: // observing
    /// Begins to follow the selection and the state of the document, and sets up the search menu. Part of
    /// making the window; nothing more happens when it is called again.
    Q_INVOKABLE void awakeFromNib();
    Q_INVOKABLE bool hasObservation() const { return m_hasObservation; }
    /// "selection": setActiveInfo(), "document.isDocumentEdited": updateTitle(). The rest does not matter.
    Q_INVOKABLE void observeValueForKeyPathOfObjectChangeContext(const QString &keyPath, QObject *object,
                                                                 const QVariantMap &change,
                                                                 const QVariant &context);

public: // commands on the selected records
    /// Gives what is being typed in the table and the pane to the records; every command but those that edit
    /// the text itself begins with it. False when a field refuses its text: it keeps it, with the focus, and
    /// says why, and the command ends there.
    Q_INVOKABLE bool commitEditing();
    bool commitEditing(runebook::Error *refusal);
    Q_INVOKABLE void copy();
    /// The selected records, or all that are shown, as cells for a spreadsheet.
    Q_INVOKABLE void copyAsTable();
    Q_INVOKABLE void cut();
    Q_INVOKABLE void paste();
    /// Removes the selected records without asking ("delete" is taken by the language).
    Q_INVOKABLE void delete_();
    /// Asks first.
    Q_INVOKABLE void removeSelectedInfos();
    Q_INVOKABLE void addInfo();
    /// Behind each selected record one with a free name, every other field, and no code point.
    Q_INVOKABLE void duplicateSelectedInfos();
    /// Opens the sheet for entries of list fields of the selected records.
    Q_INVOKABLE void editEntries();
    /// Adds entries to the list field \a key of the selected records, or removes some, without a sheet: the
    /// number of records that have changed; -1, an error and no change where one refuses it.
    Q_INVOKABLE qsizetype addEntriesToField(const QStringList &entries, const QString &key,
                                            runebook::Error *error = nullptr);
    Q_INVOKABLE qsizetype removeEntriesFromField(const QStringList &entries, const QString &key,
                                                 runebook::Error *error = nullptr);
    /// Opens the sheet that adds variants of the selected records.
    Q_INVOKABLE void addVariants();
    /// Adds them without a sheet, with the values of \a fields, and gives them back; names that are there
    /// already are left out.
    Q_INVOKABLE InfoList addVariantsWithSuffixesFields(const QStringList &suffixes, const QStringList &fields,
                                                       runebook::Error *error = nullptr);
    /// Opens the sheet that adds records for characters.
    Q_INVOKABLE void addCharacters();
    /// Adds records for ranges ("U+0400-04FF"), the name of a block, or the characters of \a text, without a
    /// sheet, behind the one selected record or at the end, and gives them back.
    Q_INVOKABLE InfoList addCharactersInText(const QString &text, runebook::Error *error = nullptr);
    /// Opens the sheet that fills in production names of the selected records, or all that are shown.
    Q_INVOKABLE void fillProductionNames();
    /// Fills them in without a sheet, by "list", "codepoint" or "parts": the number of names that have
    /// changed.
    Q_INVOKABLE qsizetype fillProductionNamesByRuleOnlyEmpty(const QString &rule, bool onlyEmpty,
                                                             runebook::Error *error = nullptr);
    Q_INVOKABLE void moveNameToAltName();
    /// The first selected record gets its production name from its code point.
    Q_INVOKABLE void makeLegacyName();
    /// Opens the dialog that numbers the sort names; sortNameOK does it, sortNameCancel leaves it.
    Q_INVOKABLE void setSortName();
    Q_INVOKABLE void sortNameOK();
    Q_INVOKABLE void sortNameCancel();
    /// 12 opens find and replace, 1 goes to the search field.
    Q_INVOKABLE void performFindPanelAction(int tag);
    Q_INVOKABLE void showInUnicodeChecker();
    Q_INVOKABLE void selectAll();
    Q_INVOKABLE void selectSame(const QString &key);
    Q_INVOKABLE void goToInfo();
    /// Selects one record and scrolls to it, taking away a filter that hides it.
    Q_INVOKABLE void showInfo(const InfoPtr &info);
    Q_INVOKABLE void writeShownOrder();
    /// Lists who uses the selected records: in decompositions, marks, alternate names and names.
    Q_INVOKABLE void showUses();
    /// Lists where records that were renamed still have their former names, to be renamed there too.
    Q_INVOKABLE void renameInOtherRecords();
    /// Goes to a record that the selected one names, or offers all of them.
    Q_INVOKABLE void goToComponent();
    /// The records that were gone to before, and those after them.
    Q_INVOKABLE void goBack();
    Q_INVOKABLE void goForward();
    /// Pastes the cells of a text as a table is pasted when nobody answers: columns by their headings, rows
    /// by name, code point or production name, else onto the selected records, else as new ones. What was
    /// done, in words; an error for what would have to be asked.
    Q_INVOKABLE QString pasteTable(const QString &text, runebook::Error *error = nullptr);
    /// Opens the dialog that exports records as a table.
    Q_INVOKABLE void exportTable();
    /// Writes a table of \a fields (none: all) of "all", "shown" or "selected" records, separated by commas
    /// in a .csv file, else by tabs.
    Q_INVOKABLE bool exportTableToURLFieldsRecords(const QString &url, const QStringList &fields,
                                                   const QString &records, runebook::Error *error = nullptr);

public: // search
    Q_INVOKABLE void setUpSearchMenu();
    Q_INVOKABLE void searchMode(int tag);
    /// Ticks an item of the search menu as the settings want it and tells whether it can be chosen; items of
    /// other menus always can.
    Q_INVOKABLE bool validateMenuItem(QAction *item) const;
    Q_INVOKABLE void filterInfos();
    /// The conditions that rows have to meet besides the search, as a filter is typed, or the name of a saved
    /// one; an empty text takes all away. False and an error for what is neither.
    Q_INVOKABLE bool setFilter(const QString &filter, runebook::Error *error = nullptr);
    /// What is asked now; empty when nothing is.
    Q_INVOKABLE QString filter() const;
    /// The names of the filters that the user has saved.
    Q_INVOKABLE QStringList savedFilters() const;
    /// True while a filter is being built and applied.
    Q_INVOKABLE bool isFiltering() const;
    Q_INVOKABLE QString filterStringForKeySearch(bool matchCase, const QString &key,
                                                 const QString &text) const;
    /// Returns the name unchanged; sets the subtitle on the way.
    Q_INVOKABLE QString windowTitleForDocumentDisplayName(const QString &displayName);
    Q_INVOKABLE void synchronizeWindowTitleWithDocumentName();
    Q_INVOKABLE void controlTextDidChange(QObject *control);

public: // problems
    runebook::Problems &problems() const;
    /// The pane that lists them; null until it is shown for the first time.
    runebook::ProblemsPane *problemsPane() const;
    Q_INVOKABLE bool isProblemsShown() const;
    Q_INVOKABLE void setProblemsShown(bool isShown);
    /// Shows the record of the problem \a step rows further in the pane, which is opened for it.
    Q_INVOKABLE void goToProblem(int step);

public: // values
    /// The panel that counts them; null while it is not shown.
    runebook::ValuesPanel *valuesPanel() const;
    Q_INVOKABLE bool isValuesShown() const;
    Q_INVOKABLE void setValuesShown(bool isShown);
    /// Shows the panel with the values of \a field: the key of a field, or what is worked out of one, as
    /// "anchor", "suffix" or "nameLength".
    Q_INVOKABLE bool showValues(const QString &field, runebook::Error *error = nullptr);
    /// Pairs of value and number of records, the most frequent first, as the panel has them: of the records
    /// that the search and the conditions of other fields show. No value stands for none.
    Q_INVOKABLE QVariantList valueCounts(const QString &field, runebook::Error *error = nullptr);
    /// Gives every record of the document that has one value of a field another, as one step; in a list that
    /// entry. The number of these records; -1, and an error, when the field refuses the new value.
    Q_INVOKABLE qsizetype renameValueToInField(const QString &value, const QString &to, const QString &field,
                                               runebook::Error *error = nullptr);

public: // display
    /// Shows the selection in the preview and the detail pane.
    Q_INVOKABLE void setActiveInfo();
    /// Refreshes the title in the next turn of the event loop, once for several calls.
    Q_INVOKABLE void updateTitle();
    Q_INVOKABLE void showMessage(const QString &text);
    /// The same with what may be done about it.
    void showRemark(const runebook::FieldRemark &remark);
    /// Whether what stands in \a field may stay; sets its error hint and extra button.
    Q_INVOKABLE bool textFieldHasValidContent(QObject *field);
    /// What of the typed tokens is added to \a tokenField, in its final form.
    Q_INVOKABLE QStringList tokenFieldShouldAddObjectsAtIndex(QObject *tokenField, const QStringList &tokens,
                                                              int index) const;

public: // restoration
    Q_INVOKABLE QVariantMap windowWillEncodeRestorableState() const;
    Q_INVOKABLE void windowDidDecodeRestorableState(const QVariantMap &state);
    /// The same for whoever names the window; \a state is filled.
    Q_INVOKABLE void windowWillEncodeRestorableState(QObject *window, QVariantMap *state) const;
    Q_INVOKABLE void windowDidDecodeRestorableState(QObject *window, const QVariantMap &state);

Q_SIGNALS:
    void subtitleChanged();
    /// Anything that menus depend on may have changed.
    void stateChanged();

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    VXDocument &m_document;
    RSRTVArrayController *m_infolistController;
    runebook::WindowContent *m_content; ///< owned
    bool m_hasObservation = false;
};
