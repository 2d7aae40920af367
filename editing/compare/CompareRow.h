#pragma once

#include "editing/compare/CompareField.h"
#include "editing/compare/ComparedDocuments.h"
#include "editing/compare/ComparedFields.h"
#include "editing/records/ChoiceCells.h"

class QGridLayout;
class QLabel;
class QToolButton;

namespace runebook {

/// One field of the records on one side of the compare window: its caption and its value.
struct CompareHalf {
    QLabel *label = nullptr;
    CompareField *value = nullptr; ///< null for choices
    ChoiceCells *cells = nullptr; ///< null for texts

    /// The widgets become the parent's.
    static CompareHalf make(ComparedDocuments::Side side, const ComparedField &field, QWidget *parent);
    QWidget *shown() const { return value ? static_cast<QWidget *>(value) : cells; }
};

/// One field on both sides, with the arrows between them.
struct CompareRow {
    const ComparedField *field;
    std::array<CompareHalf, 2> sides; ///< by side, as the arrows
    std::array<QToolButton *, 2> arrows {}; ///< by the side into which they take
    QWidget *arrowBox = nullptr;
    bool differs = false;
    bool hasBoth = false; ///< a record on either side

    /// Puts all of it into one line of a grid, or where there is little room into two, the captions first.
    void place(QGridLayout &grid, int line, bool isNarrow) const;
    /// Gives both values the height that the higher one needs.
    void adjustHeight() const;
    int captionWidth() const;
    int leastValueWidth() const;
    /// Says by both captions whether the values differ.
    void setCaptions(bool differ, const QColor &color) const;
};

/// Whether a field is one of few choices.
bool isChoice(GlyphField field);

} // namespace runebook
