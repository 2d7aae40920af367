#pragma once

#include "model/VXGlyphInfo.h"

#include <QString>

namespace runebook {

/// Numbers the sort names of records: a prefix and a number that grows from record to record, such as
/// "a001", "a002", "a003". The settings are kept in the user defaults.
struct SortNumbering {
    QString prefix;
    qint32 start = 1;
    qint32 step = 1;
    qint32 digits = 3; ///< at least so many, filled with zeros

    /// Registers the fallbacks; done each time the dialog is opened.
    static void registerDefaults();
    static SortNumbering fromDefaults();

    /// The sort name with that number. Works as printf's "%0*d": a wider number is not cut, the sign counts
    /// as a digit, and a negative number of digits fills with blanks on the right.
    QString nameForNumber(qint32 number) const;
    /// The number of the record at \a place, from 0 on; wraps around at 32 bits.
    qint32 numberAt(qsizetype place) const;
    /// Gives every record its sort name, in the order of \a infos. Opens no undo group.
    void apply(const InfoList &infos) const;
};

} // namespace runebook
