#pragma once

#include "editing/tables/TableExport.h"
#include "model/VXGlyphInfo.h"

#include <QDialog>
#include <QTimer>
#include <array>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace runebook {

/// Asks which fields of which records go into a table, and how, shows its beginning, and writes it.
class ExportDialog : public QDialog
{
    Q_OBJECT
public:
    /// The records by TableRecords, and the file they come from, which is not written over.
    ExportDialog(std::array<InfoList, 3> records, QString ownFile, QWidget *parent = nullptr);
    ~ExportDialog() override;

    TableChoices choices() const;
    /// Writes the table and goes; stays, and says why, when that cannot be done.
    void exportTo(const QString &path);

Q_SIGNALS:
    void exported(qsizetype records, const QString &path);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *makeFields();
    QWidget *makeForm();
    QComboBox *addChoice(QFormLayout &form, const QString &label, const QString &name);
    void fillForm(const TableChoices &choices);
    void moveField(int step);
    void askForFile();
    void choicesHaveChanged();
    void refresh();
    void countLosses();
    const InfoList &records() const;

    std::array<InfoList, 3> m_records;
    QString m_ownFile;
    QListWidget *m_fields = nullptr;
    QComboBox *m_which = nullptr;
    QComboBox *m_headings = nullptr;
    QComboBox *m_separator = nullptr;
    QCheckBox *m_mark = nullptr;
    QPlainTextEdit *m_preview = nullptr;
    QLabel *m_losses = nullptr;
    QPushButton *m_export = nullptr;
    TableLossCount m_lossCount;
    TableFormPtr m_form;
    QTimer m_refreshTimer; ///< once for many changes of the list
    QTimer m_lossTimer; ///< what the table does not hold is found out in slices
};

} // namespace runebook
