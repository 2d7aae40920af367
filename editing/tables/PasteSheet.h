#pragma once

#include "editing/tables/PastePlan.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QListWidget;
class QPushButton;

namespace runebook {

class PastePreviewModel;
class PreviewTable;

/// Shows what pasting a table would do, and lets columns and rows be matched otherwise before it is done.
class PasteSheet : public QDialog
{
    Q_OBJECT
public:
    /// The usual choices are made; \a columns are those that cells without headings go to.
    PasteSheet(PastedTable table, std::vector<GlyphField> columns, PasteTarget target,
               QWidget *parent = nullptr);
    ~PasteSheet() override;

    const PastedTable &table() const { return m_table; }
    const PasteChoices &choices() const { return m_choices; }
    const PasteTarget &target() const { return m_target; }

private:
    QWidget *makeOptions();
    QWidget *makePreview();
    QCheckBox *addOption(QFormLayout &form, const QString &text, bool PasteChoices::*option, bool isReversed);
    void fillRowChoices();
    void makeColumns();
    QComboBox *makeColumn(qsizetype column);
    QString nameOfColumn(qsizetype column) const;
    void setField(qsizetype column, std::optional<GlyphField> field);
    void takeHeadings(bool hasHeadings);
    void takeRows();
    /// Finds out again what would happen, and shows it.
    void refresh();
    void showSizes();
    void showRefusals();

    PastedTable m_table;
    std::vector<GlyphField> m_shownColumns;
    PasteTarget m_target;
    PasteChoices m_choices;
    PastePlan m_plan;
    PastePreviewModel *m_preview;
    QFormLayout *m_columnsForm = nullptr;
    QCheckBox *m_headings = nullptr;
    QComboBox *m_rows = nullptr;
    QLabel *m_sizesLabel = nullptr;
    QComboBox *m_sizes = nullptr;
    QCheckBox *m_addsUnmatched = nullptr;
    std::vector<QComboBox *> m_fields; ///< by column
    PreviewTable *m_view = nullptr;
    QLabel *m_summary = nullptr;
    QListWidget *m_refusals = nullptr;
    QPushButton *m_paste = nullptr;
};

} // namespace runebook
