#pragma once

#include "editing/compare/CompareContent.h"
#include "editing/compare/CompareField.h"
#include "editing/compare/ComparedFields.h"
#include "editing/records/ChoiceCells.h"

#include <QWidget>
#include <array>
#include <vector>

class QGridLayout;
class QLabel;

namespace runebook {

/// The two detail panes of the compare window side by side, field beside field, so that they scroll as one.
class CompareSheet : public QWidget
{
    Q_OBJECT
public:
    enum Side { Left, Right };

    explicit CompareSheet(QWidget *parent = nullptr);

    /// Shows one field, of which all is known: its values, several distinct ones one below the other, and by
    /// the captions whether they differ. Code points differ where keys do, so their captions say nothing.
    void setContent(const FieldContent &content);

    /// The caption of a field: a label, or for case and direction a row of cells.
    QWidget *caption(Side side, GlyphField field) const;
    /// Says by both captions of a field whether its values differ.
    void setCaption(GlyphField field, bool differs);
    /// The colour of a caption whose values agree.
    QColor normalColor() const;
    /// The colour of a caption whose values differ.
    QColor differentColor() const;

private:
    struct Half {
        QLabel *label = nullptr;
        CompareField *value = nullptr; ///< null for choices
        ChoiceCells *cells = nullptr; ///< null for texts
    };
    struct Row {
        const ComparedField *field;
        std::array<Half, 2> sides;
    };

    void addRow(QGridLayout &grid, const ComparedField &field);
    Half makeHalf(Side side, const ComparedField &field);
    const Row &rowOf(GlyphField field) const;
    static void adjustHeight(const Row &row);

    std::vector<Row> m_rows;
};

} // namespace runebook
