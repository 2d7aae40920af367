#pragma once

#include "editing/compare/CompareContent.h"
#include "editing/compare/CompareRow.h"

#include <QWidget>
#include <array>
#include <optional>
#include <vector>

class QGridLayout;
class QToolButton;

namespace runebook {

/// The two detail panes of the compare window side by side, field beside field, so that they scroll as one.
/// Where there is little room the captions stand above the values.
class CompareSheet : public QWidget
{
    Q_OBJECT
public:
    using Side = ComparedDocuments::Side;
    using enum ComparedDocuments::Side;

    explicit CompareSheet(QWidget *parent = nullptr);
    QSize minimumSizeHint() const override;

    /// Shows one field, of which all is known: its values, several distinct ones one below the other, and by
    /// the captions whether they differ. Code points differ where keys do, so their captions say nothing.
    void setContent(const FieldContent &content);
    /// The same for several.
    void showFields(const std::vector<FieldContent> &fields);

    /// Whether values can be taken into either side: where they can, arrows stand between differing fields.
    void setWritable(bool left, bool right);
    /// Folds away the fields that are the same on both sides.
    void setOnlyDifferent(bool onlyDifferent);
    /// The differing field that has the focus, else the first; nothing when none differs on two sides.
    std::optional<GlyphField> fieldToTake() const;
    /// Moves the focus from a field that was taken to the arrow of the next one, or of the first; false when
    /// there is none.
    bool focusNextTake(Side target, GlyphField taken);
    /// The value that has the focus; null when none has it.
    QPlainTextEdit *focusedText() const;

    /// The caption of a field: a label, or for case and direction a row of cells.
    QWidget *caption(Side side, GlyphField field) const;
    /// Says by both captions of a field whether its values differ.
    void setCaption(GlyphField field, bool differs);
    /// The same by the values of records, for all fields but code points.
    void setCaptions(const InfoList &left, const InfoList &right);
    /// The colour of a caption; nothing is no field, whose values agree.
    QColor colorFor(const InfoList &left, const InfoList &right, std::optional<GlyphField> field) const;

Q_SIGNALS:
    /// Somebody wants the value of \a field to be taken into the side \a target.
    void takeRequested(runebook::CompareSheet::Side target, runebook::GlyphField field);

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QColor captionColor(bool differs) const;
    void addRow(const ComparedField &field);
    int widthBesideCaptions() const;
    void layOut(bool isNarrow);
    QToolButton *makeArrow(Side target, const ComparedField &field);
    void showRow(const CompareRow &row);
    std::size_t placeOf(GlyphField field) const;
    const CompareRow &rowOf(GlyphField field) const { return m_rows[placeOf(field)]; }

    QGridLayout *m_grid;
    bool m_isNarrow = false;
    std::vector<CompareRow> m_rows;
    std::array<bool, 2> m_isWritable {true, true};
    bool m_onlyDifferent = false;
    std::optional<GlyphField> m_focused;
};

} // namespace runebook
