#pragma once

#include "editing/fields/FieldEditing.h"
#include "editing/fields/FieldRemarks.h"

#include <QWidget>

class RSRTVArrayController;

namespace runebook {

class CommonValues;
class PaneForm;
class PaneRow;
class PreviewLabel;
class WholeValueDialog;

/// The fields of the selected records beside the table, with the preview on top. Several records show what
/// they have in common, and an edit goes to all of them. What was typed is committed when the field is left,
/// another record is chosen or the document is saved; Escape takes it back. A text that is refused stays in
/// its field until it is corrected or taken back.
class DetailPane : public QWidget
{
    Q_OBJECT
public:
    DetailPane(VXDocument &document, const RSRTVArrayController &list, QWidget *parent);
    ~DetailPane() override;

    /// Has \a delegate judge the fields that validate what is typed; it may ask textFieldHasValidContent().
    void setFieldDelegate(QObject *delegate);
    /// Shows the list's selection; what was typed for the records shown before is committed first.
    void showSelection();
    /// Gives what stands in the fields to the records. False, an error and a word at the field, which gets
    /// the focus, when a text is refused.
    bool commitEditing(Error *refusal = nullptr);
    /// Whether \a editor is one of the pane's and holds something that is not in the records yet.
    bool hasPendingText(const QObject *editor) const;
    /// Shows in \a editor what the records hold.
    void revert(const QObject *editor);
    /// Opens the sheet for the whole of a value that is too long for its field; typing and Return in the
    /// field do that too. There must be a selection.
    WholeValueDialog *editWhole(GlyphField field);
    /// Puts the cursor into the name, all of it selected.
    void editName();
    /// Whether the content of a field may stay; sets its error hint and shows or hides its extra button.
    bool textFieldHasValidContent(QObject *field);

    PreviewLabel *previewLabel() const;
    const InfoList &shownInfos() const;
    /// The editor of a field; null for fields that the pane does not show.
    QWidget *editorOf(GlyphField field) const;
    /// The first one that can be used now; null without a selection.
    QWidget *firstEditor() const;

Q_SIGNALS:
    /// Something about a field should be said, perhaps with what may be done about it.
    void remarked(const runebook::FieldRemark &remark);
    /// Entries of a list are to be added to, or removed from, all the records.
    void entriesRequested(runebook::GlyphField field);
    /// Another record is to be shown.
    void showRequested(const InfoPtr &info);

private:
    enum class Stay { Leaving, HoldsFocus };

    void connectRow(PaneRow &row);
    void showRow(PaneRow &row);
    void showValue(PaneRow &row, const CommonValue &value);
    void showMixed(GlyphField field);
    void showPreview();
    bool commitRow(PaneRow &row, Stay stay, Error *refusal = nullptr);
    void sayRefusal(PaneRow &row, const Error &reason, Stay stay);
    void takeBackRefused();
    void takeBack(PaneRow &row);
    void validateFields();
    void noteTyping();
    QJsonArray pendingTexts() const;

    VXDocument &m_document;
    const RSRTVArrayController &m_list;
    CommonValues *m_values; ///< of the shown records
    PaneForm *m_form;
    bool m_isShowing = false;
};

} // namespace runebook
