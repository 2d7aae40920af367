#pragma once

#include "document/VXDocument.h"
#include "editing/RSRTVArrayController.h"
#include "editing/VXSplitViewWindowController.h"

class QLabel;
class QSplitter;
class SortNameDialog;
class VXSearchField;

namespace runebook {
class DetailPane;
class GlyphTableView;
class MessageBar;
class Problems;
class ProblemsButton;
class ProblemsPane;
struct ReplaceSummary;
class WindowMenus;
} // namespace runebook

/// The window of a document: the table of its records, the detail pane, the search field, and the commands on
/// the selected records. It lists its features; their rules stand in files of their own.
class VXWindowController : public VXSplitViewWindowController
{
    Q_OBJECT
    Q_PROPERTY(QString subtitle READ subtitle NOTIFY subtitleChanged)
public:
    explicit VXWindowController(VXDocument &document);
    ~VXWindowController() override;

public: // parts
    VXDocument &glyphDocument() const { return m_document; }
    Q_INVOKABLE QObject *document() const { return &m_document; }
    Q_INVOKABLE RSRTVArrayController *infolistController() const { return m_infolistController; }
    Q_INVOKABLE VXSearchField *searchField() const { return m_searchField; }
    runebook::GlyphTableView *tableView() const { return m_tableView; }
    runebook::DetailPane *detailPane() const { return m_detailPane; }
    Q_INVOKABLE QString title() const { return m_title; }
    Q_INVOKABLE QString subtitle() const { return m_subtitle; }
    Q_INVOKABLE QStringList categories() const { return VXDocument::categories(); }
    Q_INVOKABLE QStringList subCategories() const { return VXDocument::subCategories(); }
    Q_INVOKABLE QStringList scripts() const { return VXDocument::scripts(); }
    Q_INVOKABLE InfoList selectedInfos() const { return m_infolistController->selectedObjects(); }

public: // commands on the selected records
    Q_INVOKABLE void copy();
    Q_INVOKABLE void cut();
    Q_INVOKABLE void paste();
    /// Removes the selected records without asking ("delete" is taken by the language).
    Q_INVOKABLE void delete_();
    /// Asks first.
    Q_INVOKABLE void removeSelectedInfos();
    Q_INVOKABLE void addInfo();
    Q_INVOKABLE void duplicateSelectedInfos();
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

public: // search
    Q_INVOKABLE void setUpSearchMenu();
    Q_INVOKABLE void searchMode(int tag);
    Q_INVOKABLE void filterInfos();
    Q_INVOKABLE QString filterStringForKeySearch(bool matchCase, const QString &key,
                                                 const QString &text) const;
    /// Returns the name unchanged; sets the subtitle on the way.
    Q_INVOKABLE QString windowTitleForDocumentDisplayName(const QString &displayName);
    Q_INVOKABLE void synchronizeWindowTitleWithDocumentName();
    Q_INVOKABLE void controlTextDidChange(QObject *control);

public: // problems
    runebook::Problems &problems() const { return *m_problems; }
    /// The pane that lists them; null until it is shown for the first time.
    runebook::ProblemsPane *problemsPane() const { return m_problemsPane; }
    Q_INVOKABLE bool isProblemsShown() const;
    Q_INVOKABLE void setProblemsShown(bool isShown);
    /// Shows the record of the problem \a step rows further in the pane, which is opened for it.
    Q_INVOKABLE void goToProblem(int step);

public: // display
    /// Shows the selection in the preview and the detail pane.
    Q_INVOKABLE void setActiveInfo();
    /// Refreshes the title in the next turn of the event loop, once for several calls.
    Q_INVOKABLE void updateTitle();
    Q_INVOKABLE void showMessage(const QString &text);
    /// Whether what stands in \a field may stay; sets its error hint and extra button.
    Q_INVOKABLE bool textFieldHasValidContent(QObject *field);
    Q_INVOKABLE QStringList tokenFieldShouldAddObjectsAtIndex(const QStringList &tokens, int index) const;

public: // restoration
    Q_INVOKABLE QVariantMap windowWillEncodeRestorableState() const;
    Q_INVOKABLE void windowDidDecodeRestorableState(const QVariantMap &state);

Q_SIGNALS:
    void subtitleChanged();
    /// Anything that menus depend on may have changed.
    void stateChanged();

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildContent();
    void buildToolBar();
    void buildStatusBar();
    void connectParts();
    void showReadError();
    void selectionDidChange();
    void showSelectedCount();
    void buildProblemsPane();
    void filterByProblems(const std::function<bool(qsizetype place)> &condition);
    /// After a replacement: a word on the problems that were not there \a before (by kind; empty: unknown).
    void tellOfNewProblems(const QList<qsizetype> &before, const runebook::ReplaceSummary &summary);
    void showNewProblems(const QList<qsizetype> &before);
    /// Makes ready in idle time what the first search would have to wait for.
    void prepareSearch();
    void revealRow(qsizetype row);

    VXDocument &m_document;
    RSRTVArrayController *m_infolistController;
    runebook::GlyphTableView *m_tableView = nullptr;
    runebook::DetailPane *m_detailPane = nullptr;
    runebook::MessageBar *m_messageBar = nullptr;
    VXSearchField *m_searchField = nullptr;
    runebook::WindowMenus *m_menus = nullptr;
    runebook::Problems *m_problems;
    runebook::ProblemsPane *m_problemsPane = nullptr;
    runebook::ProblemsButton *m_problemsButton = nullptr;
    QSplitter *m_contentSplit = nullptr;
    QPointer<SortNameDialog> m_sortNameDialog;
    QLabel *m_countLabel = nullptr;
    QLabel *m_subtitleLabel = nullptr;
    QTimer m_idleTimer;
    QString m_title;
    QString m_subtitle;
    bool m_isFiltering = false;
    bool m_titleUpdatePending = false;
    bool m_activeInfoPending = false;
};
