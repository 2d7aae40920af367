#pragma once

#include "document/TableForm.h"
#include "platform/Error.h"

namespace runebook {

/// What is wrong in a table that was read all the same.
struct TableProblem {
    enum class Left : quint8 {
        Row, ///< the row is no record; it is kept as it stands
        Column, ///< the column is kept aside
        Value ///< the field of the record stays unset; the cell is kept as it stands
    };

    qsizetype line = 0; ///< in which it stands, from 1 on
    qsizetype column = 0; ///< which cell of the row, from 1 on; 0 for the whole row
    QString heading; ///< of the column
    QString reason; ///< without a subject: "“up” is no case"
    Left left = Left::Row;
    qsizetype record = 0; ///< the place of the record, or of the one that follows
    qsizetype offset = -1; ///< of the row in the source of the form

    /// "Line 3, column 2 (case): “up” is no case."
    QString sentence() const;
};

/// What a table holds.
struct TableReading {
    InfoList infos;
    TableFormPtr form;
    std::vector<TableProblem> problems; ///< the first thousand
    qsizetype problemCount = 0;
    qsizetype rowsLeftOut = 0;
};

/// Reads tables as people and spreadsheets write them: cells between tabs, commas or semicolons, quotes,
/// every field by its key or its title, in UTF-8 or UTF-16. What is wrong is told; the rest is read. Columns
/// that are no field, and rows that are no record, are kept aside and written back. A large table is read by
/// several threads at the same time.
class TableReader
{
public:
    enum class Bad : quint8 {
        LeftOut, ///< rows and columns that cannot be read are left out and told
        Fails ///< they are an error, as are fewer than two columns
    };
    struct Options {
        std::optional<char> separator = {}; ///< nothing: found out
        char likelySeparator = '\t'; ///< of a table with one column
        Bad bad = Bad::LeftOut;
    };

    TableReader() = default;
    explicit TableReader(const Options &options) : m_options(options) { }

    /// Nothing, and an error, for what is no table at all.
    std::optional<TableReading> read(const QString &path, Error *error = nullptr) const;
    std::optional<TableReading> read(const QByteArray &bytes, Error *error = nullptr) const;

private:
    Options m_options;
};

/// The separator that files with the suffix of \a path have as a rule.
char separatorOfSuffix(const QString &path);
/// Whether \a path has a suffix of tables: txt, tsv, csv.
bool isTablePath(const QString &path);

} // namespace runebook
