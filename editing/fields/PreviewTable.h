#pragma once

#include <QTableView>

namespace runebook {

/// A table that shows what a command would do before it is done: rows to read and to tick, nothing to edit.
/// Cells are marked as their PreviewMark tells.
class PreviewTable : public QTableView
{
    Q_OBJECT
public:
    explicit PreviewTable(QWidget *parent);
    /// Makes columns as wide as what stands in them, up to a width at which others can still be seen.
    void fitColumns();

protected:
    /// Blank takes the current row in or out, wherever in it the cursor stands.
    void keyPressEvent(QKeyEvent *event) override;
};

} // namespace runebook
