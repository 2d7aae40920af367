#pragma once

#include "editing/compare/CompareField.h"
#include "editing/merge/MergeRows.h"

#include <QLineEdit>
#include <functional>
#include <optional>

class QGridLayout;
class QLabel;
class QPushButton;

namespace runebook {

/// The field in which the value that comes out is shown and typed. Undo is the window's unless something is
/// being typed.
class MergeResultEdit : public QLineEdit
{
    Q_OBJECT
public:
    using QLineEdit::QLineEdit;

protected:
    bool event(QEvent *event) override;
};

/// The fields of one record that differ on the sides of a merge: below each other ours, base and theirs side
/// by side, and where they conflict, what comes out, to be taken from a side or to be typed.
class MergeSheet : public QWidget
{
    Q_OBJECT
public:
    struct Content {
        RecordSides sides;
        InfoPtr result; ///< null where no record comes out
        std::vector<MergeRow> rows;
        /// Base, ours and theirs of what can only be taken as a whole.
        std::optional<std::array<QString, 3>> lines;
    };
    /// Stores what was typed; false, and an error, when the field refuses it.
    using Taker = std::function<bool(GlyphField field, const QString &text, Error *error)>;

    explicit MergeSheet(QWidget *parent = nullptr);

    void setTaker(Taker taker) { m_taker = std::move(taker); }
    /// What is being typed stays when the record is the same.
    void setContent(const Content &content, bool isSameRecord);
    /// Gives away what is being typed; false when it is refused, and the field says why.
    bool commit();
    /// The conflicting field that has the focus, else the first open one, else the first one.
    std::optional<GlyphField> currentField() const;
    /// The field of what comes out, null for one that is not shown.
    QLineEdit *editor(GlyphField field) const;

Q_SIGNALS:
    void takeRequested(runebook::GlyphField field, runebook::MergeSide side);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static constexpr std::size_t kSides = 3; // in the order of columns: ours, base, theirs
    using Values = std::array<CompareField *, kSides>;
    struct Line {
        GlyphField field;
        QLabel *caption = nullptr;
        Values values {};
        QPushButton *ours = nullptr;
        QPushButton *theirs = nullptr;
        QLabel *resultCaption = nullptr;
        MergeResultEdit *result = nullptr;
        bool isShown = false;
        bool isOpen = false;
        bool isInConflict = false;
    };

    void addWholeLines(QGridLayout &grid);
    Values addValues(QGridLayout &grid, int row, const std::array<QString, kSides> &names);
    void addLine(QGridLayout &grid, GlyphField field);
    QPushButton *makeButton(GlyphField field, MergeSide side);
    void showWholeLines(const std::optional<std::array<QString, 3>> &lines);
    void showLine(Line &line, const MergeRow *row, const Content &content, bool isSameRecord);
    static void showValues(const Values &values, const std::array<QString, kSides> &texts,
                           const std::array<bool, kSides> &areThere);
    static void adjustHeight(const Values &values);
    bool commit(Line &line);

    QLabel *m_wholeCaption = nullptr;
    Values m_wholeLines {};
    std::vector<Line> m_lines;
    Taker m_taker;
    std::optional<GlyphField> m_focused;
    bool m_isCommitting = false;
};

} // namespace runebook
