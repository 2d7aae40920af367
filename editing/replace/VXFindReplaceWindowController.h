#pragma once

#include "document/VXDocument.h" // declares lists of records to the meta-object system
#include "editing/replace/FindReplace.h"

#include <QDialog>
#include <QTimer>
#include <memory>

namespace Ui {
class VXFindReplaceWindowController;
}

namespace runebook {
class ReplacePreviewModel;
}

/// The dialog that replaces a text in one field of the records that were selected when it was opened. It
/// tells how much would change, and how, before it does. Made anew for each use; the two texts are kept in
/// the user defaults. Connect ended() to deleteLater().
class VXFindReplaceWindowController : public QDialog
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit VXFindReplaceWindowController(QWidget *parent = nullptr);
    ~VXFindReplaceWindowController() override;

public: // running
    Q_INVOKABLE InfoList selectedInfos() const { return m_selectedInfos; }
    /// The records to edit; set before the dialog is run.
    Q_INVOKABLE void setSelectedInfos(const InfoList &infos);
    /// The records are all that are shown, since none are selected.
    void setShownInfos(const InfoList &infos);
    /// Runs the dialog over \a window (null: by itself) and returns 0 when the user has decided; a
    /// replacement is made shortly after. \a owner is who asked.
    Q_INVOKABLE int runDialogModalForWindow(QObject *owner, QObject *window);
    /// The selected field, one of runebook::FindReplace::FieldTag.
    Q_INVOKABLE int selectedTag() const;
    Q_INVOKABLE void selectItemWithTag(int tag);

public Q_SLOTS:
    /// Ends the run; nothing is changed.
    void cancel();
    /// Keeps the typed texts, ends the run, and lets _doReplace() follow when the dialog has gone.
    void doReplace();
    /// Replaces in all selected records, as one step of their document's undo history.
    void _doReplace();
    /// Escape and the window's close button: cancel().
    void reject() override;

Q_SIGNALS:
    /// After a replacement: what it has changed, spoilt names counted.
    void replaced(const runebook::ReplaceSummary &summary);
    /// Nothing more will come: cancelled, or replaced.
    void ended();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void setUpFields();
    void setUpTable();
    void keepTexts();
    void updatePreview();
    void previewMore();
    void updateProblems();
    void showOptions();
    QString countText(const runebook::ReplaceSummary &summary) const;
    runebook::ReplaceOptions options() const;
    runebook::FindReplace typedReplacement() const;
    const InfoList &allInfos() const;
    runebook::ReplaceSummary replaceAll(const runebook::FindReplace &replacement);

    std::unique_ptr<Ui::VXFindReplaceWindowController> m_ui;
    runebook::ReplacePreviewModel *m_changes;
    InfoList m_selectedInfos;
    bool m_worksOnShown = false;
    // What would change is found out in slices, so that typing never waits.
    std::unique_ptr<runebook::FindReplace> m_previewed;
    runebook::FindReplace::Progress m_preview;
    runebook::FindReplace::NameScan m_names;
    QTimer m_previewTimer;
    QTimer m_problemsTimer; ///< first waits for a pause in the typing
};

Q_DECLARE_METATYPE(runebook::ReplaceSummary)
