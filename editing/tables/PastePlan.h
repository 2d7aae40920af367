#pragma once

#include "document/VXDocument.h"
#include "editing/tables/PastedTable.h"
#include "model/CompareKey.h"

#include <QDeadlineTimer>

namespace runebook {

/// Which records the rows of a pasted table are for.
enum class PasteRows { ByKey, OntoSelection, AsNew };

/// What happens when other than so many rows as records are selected come.
enum class PasteSizes {
    OnlyFitting, ///< what is too much is left out, what is too little stays as it is
    GoOnBelow, ///< into the first selected record and those below it
    Repeat, ///< the rows again and again, as far as the selection goes
};

/// How somebody wants a table to be pasted.
struct PasteChoices {
    bool hasHeadings = false;
    std::vector<std::optional<GlyphField>> fields; ///< by column, each once; nothing: the column is left out
    PasteRows rows = PasteRows::AsNew;
    CompareKey key = CompareKey::Name;
    std::optional<PasteSizes> sizes; ///< nothing: not answered yet
    bool addsUnmatched = true; ///< rows with a key that no record has become new records
    bool takesEmpty = true; ///< empty cells empty their fields
    bool stopsAtInvalid = false; ///< nothing is pasted while a value is invalid

    /// The column for \a field, or -1.
    qsizetype columnOf(GlyphField field) const;
};

/// What a table is pasted into.
struct PasteTarget {
    VXDocument &document;
    InfoList selected; ///< in the order of the rows
    InfoList below; ///< the first of them and those that follow it in the table; asked for GoOnBelow alone
};

/// The field that holds a key.
GlyphField fieldOfKey(CompareKey key);
/// What is most likely meant: columns by their headings, else by place beginning with the first of
/// \a columns; rows by a key when there is one under headings, else onto the selected records, else new.
PasteChoices usualChoices(const PastedTable &table, const std::vector<GlyphField> &columns,
                          const PasteTarget &target);

/// What pasting a table would do, found out in one pass over records and rows: shown before it is done.
/// Values are taken by the rules for typed ones; names are looked at as they will be afterwards.
class PastePlan
{
public:
    enum class State : quint8 { Same, Changed, New, Unmatched, Refused };
    struct Row {
        quint32 tableRow = 0;
        State state = State::Same;
        quint32 changed = 0; ///< a bit for each field that changes, or is filled in a new record
        quint32 refused = 0; ///< a bit for each whose value is invalid
        InfoPtr info; ///< null for new records and rows that match nothing
    };
    /// A value, or a row, that cannot be taken.
    struct Refusal {
        quint32 row; ///< of rows()
        std::optional<GlyphField> field; ///< nothing: the row as a whole
        QString reason;
    };
    struct Counts {
        qsizetype records = 0; ///< that change
        qsizetype fields = 0; ///< that change in these
        qsizetype added = 0;
        qsizetype unmatched = 0; ///< rows
        friend bool operator==(const Counts &, const Counts &) = default;
    };

    PastePlan() = default;
    PastePlan(const PastedTable &table, const PasteChoices &choices, const PasteTarget &target);
    /// The same, made apart while windows turn where there is very much: see TurningWindows.
    static PastePlan madeApart(const PastedTable &table, const PasteChoices &choices,
                               const PasteTarget &target);

    const std::vector<Row> &rows() const { return m_rows; }
    const std::vector<Refusal> &refusals() const { return m_refusals; }
    const Counts &counts() const { return m_counts; }
    static constexpr quint32 bitOf(GlyphField field) { return 1U << static_cast<unsigned>(field); }
    /// What a record or a new one has in \a field afterwards, as a cell shows it.
    QString valueAfter(const Row &row, GlyphField field) const;
    /// The number of the row in the table as a person counts, headings included.
    static qint64 numberOf(const Row &row) { return qint64(row.tableRow) + 1; }

    /// Other than so many rows as selected records come, and nobody has said what happens then.
    bool asksForSizes() const { return m_asksForSizes; }
    /// "12 records change in 30 fields, 3 are new, 2 rows match nothing."
    QString summary() const;
    /// "Row 3, Category: …", with what becomes of it.
    QString sentence(const Refusal &refusal) const;
    /// Why nothing can be pasted; null when something can.
    QString obstacle() const;

    /// How far apply() came.
    struct Progress {
        std::size_t next = 0;
        InfoList added;
    };
    /// Goes on with the changes until \a deadline; true when all are made. New records come last, at
    /// \a place of the list. To be called inside of one undo group. Table and choices must still be there.
    bool apply(VXDocument &document, qsizetype place, const QDeadlineTimer &deadline,
               Progress &progress) const;

private:
    class Names;

    void addRow(quint32 tableRow, InfoPtr info, State state);
    void matchRows(const PasteTarget &target);
    void matchByKey(const VXDocument &document);
    void matchSelection(const PasteTarget &target);
    void lookAt(quint32 row);
    void resolveNames(const VXDocument &document);
    void count();
    void applyRow(const Row &row, InfoList &added) const;
    void refuse(quint32 row, std::optional<GlyphField> field, const QString &reason);
    quint32 firstRow() const { return m_choices.hasHeadings ? 1 : 0; }

    const PastedTable *m_table = nullptr;
    PasteChoices m_choices;
    std::vector<std::pair<qsizetype, GlyphField>> m_columns;
    std::vector<Row> m_rows;
    std::vector<Refusal> m_refusals;
    Counts m_counts;
    bool m_asksForSizes = false;
    qsizetype m_selected = 0;
};

} // namespace runebook
