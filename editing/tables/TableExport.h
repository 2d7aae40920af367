#pragma once

#include "document/TableForm.h"
#include "platform/Error.h"

#include <functional>
#include <vector>

namespace runebook {

/// Which records a table is made of.
enum class TableRecords { All, Shown, Selected };

/// How somebody wants tables to be.
struct TableChoices {
    std::vector<GlyphField> order; ///< of all fields, those left out too
    std::vector<GlyphField> fields; ///< in their order
    bool hasTitles = false; ///< as headings, instead of keys
    char separator = '\t';
    bool hasByteOrderMark = false;
    TableRecords records = TableRecords::All;

    /// As they were chosen last, at first with all fields by their keys.
    static TableChoices remembered();
    void remember() const;
};

/// The table that such choices describe.
TableFormPtr tableForm(const TableChoices &choices);
/// The beginning of the table as text: the headings and the first of \a infos, each cut to a line.
QString tablePreview(const InfoList &infos, const TableChoices &choices);
/// What the file is called as a rule: "tsv", "csv".
QString suffixOf(const TableChoices &choices);

/// What a table does not hold of records, found out bit by bit.
struct TableLossCount {
    std::size_t next = 0; ///< the record that is looked at next
    qsizetype records = 0; ///< that lose something
    QString first; ///< what the first of them loses

    /// Goes on until \a isLate says so; true when all were looked at.
    bool goOn(const InfoList &infos, const TableForm &form, const std::function<bool()> &isLate);
    /// A sentence; null for none.
    QString text() const;
};

/// Why no table is written to \a path: it is the file of the document itself. An empty domain when one may
/// be.
Error objectionToTarget(const QString &path, const QString &ownFile);
/// Writes the table into the file \a path, as safely as documents are saved. \a goOn is told which part of it
/// is written and stops it with false: then nothing has changed, and the error has no domain.
[[nodiscard]] bool exportTable(const InfoList &infos, const TableChoices &choices, const QString &path,
                               const std::function<bool(double part)> &goOn, Error *error = nullptr);

} // namespace runebook
