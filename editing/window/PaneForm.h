#pragma once

#include "model/GlyphField.h"

#include <QWidget>
#include <vector>

class QLabel;
class QScrollArea;

namespace runebook {

class PaneRow;
class PreviewLabel;

/// How the pane of fields is laid out: the preview on top, below it a row for each field, or a word where
/// there is nothing to show.
class PaneForm : public QWidget
{
    Q_OBJECT
public:
    explicit PaneForm(QWidget *parent);

    const std::vector<PaneRow *> &rows() const { return m_rows; }
    /// Null where there is none for it.
    PaneRow *rowOf(const QObject *editor) const;
    PaneRow *rowOf(GlyphField field) const;
    /// The first one that can be used now; null while no rows are shown.
    QWidget *firstEditor() const;
    PreviewLabel *previewLabel() const { return m_previewLabel; }
    /// Shows the rows, or what to do to see them.
    void setRowsShown(bool areShown);
    void scrollTo(QWidget &editor);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildRows();
    void fitPreview();

    PreviewLabel *m_previewLabel;
    QLabel *m_emptyLabel;
    QWidget *m_fields;
    QScrollArea *m_scrollArea; ///< around the fields
    std::vector<PaneRow *> m_rows;
};

} // namespace runebook
