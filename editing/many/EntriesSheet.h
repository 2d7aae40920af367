#pragma once

#include "editing/many/ListEntries.h"

#include <QDialog>
#include <QTimer>
#include <memory>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace runebook {

class EntriesModel;
class PreviewTable;

/// Adds entries to a list field of several records, and removes some: a line for new ones, and a list of
/// those that all and that some of the records have.
class EntriesSheet : public QDialog
{
    Q_OBJECT
public:
    /// \a field nothing: the one that was edited last.
    EntriesSheet(const VXDocument &document, InfoList infos, std::optional<GlyphField> field,
                 QWidget *parent);
    ~EntriesSheet() override;
    /// The plan, which is whole, of a sheet that was accepted; the sheet is done then.
    std::unique_ptr<EntryPlan> takePlan() { return std::move(m_plan); }
    void accept() override;

private:
    void makeControls(GlyphField field);
    void layOut();
    GlyphField field() const;
    /// Counts the entries of the field anew.
    void countAgain();
    void countMore();
    void planAgain();
    void planMore();
    void showPlan();
    void showRefusals();

    const VXDocument &m_document;
    InfoList m_infos;
    QComboBox *m_field = nullptr;
    QLineEdit *m_added = nullptr;
    EntriesModel *m_model;
    PreviewTable *m_view = nullptr;
    QLabel *m_summary = nullptr;
    QListWidget *m_refusals = nullptr;
    QPushButton *m_accept = nullptr;
    EntryCounts m_counts;
    std::unique_ptr<EntryPlan> m_plan;
    QString m_objection; ///< to what is typed; null for none
    QTimer m_countTimer;
    QTimer m_planTimer;
    QTimer m_refreshTimer;
    bool m_isWhole = false;
};

} // namespace runebook
