#pragma once

#include "editing/fields/FieldRemarks.h"
#include "editing/fields/LongValues.h"

#include <QDialog>
#include <QJsonArray>

class QLabel;
class QPushButton;
class QSpinBox;

namespace runebook {

class TextBox;

/// Shows and edits the whole of a value that is too long for its field, part by part, as a sheet of \a
/// parent. What was edited is stored as one step when the sheet is accepted; a text that is refused stays in
/// it. A very long one is put together on another thread: the sheet waits for that and takes no input
/// meanwhile.
class WholeValueDialog : public QDialog
{
    Q_OBJECT
public:
    /// The records have the same value in \a field.
    WholeValueDialog(VXDocument &document, InfoList infos, GlyphField field, QWidget *parent);

    TextBox *edit() const { return m_edit; }
    qsizetype part() const { return m_part; }
    qsizetype partCount() const { return m_text.partCount(); }
    void showPart(qsizetype index);
    /// Another text instead, the part around \a place shown; still to be accepted.
    void setText(const QString &text, qsizetype place = 0);
    void accept() override;
    void reject() override;

Q_SIGNALS:
    /// A word on the value that was stored.
    void remarked(const runebook::FieldRemark &remark);

private:
    void build();
    bool takeLongPaste(const QString &part, qsizetype caret);
    void takePart();
    bool isChanged();
    void showPlace();
    QJsonArray pendingTexts();
    bool isStoredApart() const;
    void storeApart();
    void showStoring(bool isStoring);
    void takeStored(const FieldValue &value, const Error &error);
    void tellStored();

    VXDocument &m_document;
    const InfoList m_infos;
    const GlyphField m_field;
    LongText m_text;
    qsizetype m_part = 0;
    QString m_loaded; ///< what the editor held when it was given the part
    bool m_isOther = false; ///< setText() was called
    bool m_isStoring = false;
    TextBox *m_edit;
    QLabel *m_partLabel;
    QSpinBox *m_number;
    QLabel *m_count;
    QPushButton *m_previous;
    QPushButton *m_next;
};

} // namespace runebook
