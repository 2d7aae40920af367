#pragma once

#include <QStringList>
#include <QTextStream>

class QIODevice;

namespace runebook {

/// A file that is to be written as another one: glyph data or a table, as their suffixes tell.
struct FileConversion {
    QString input;
    QString output; ///< "-": standard output, a table of glyph data and glyph data of a table
    QStringList fields; ///< of a table: its columns, by key, title or heading; none: all
    QString search; ///< as OnlyRecords takes it: the records that it finds; null: all
    bool losesValues = false; ///< writes even what cannot hold all values

    enum class Outcome {
        Written = 0,
        Refused = 1, ///< something would be lost
        Failed = 2 ///< wrong use, or a file that cannot be read or written
    };
    /// Messages go to \a errors, a line each.
    Outcome run(QIODevice &standardOutput, QTextStream &errors) const;
};

} // namespace runebook
