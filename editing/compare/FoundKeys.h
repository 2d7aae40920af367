#pragma once

#include "editing/compare/CompareKeys.h"

namespace runebook {

/// What a comparison has found in one mode.
struct FoundKeys {
    QStringList keys; ///< in the order of the source
    // Of the mode Different alone, of each key:
    std::vector<FieldBits> fields; ///< that differ
    std::vector<quint32> places; ///< of the record in the source

    /// The same for a mode that is done.
    static FoundKeys of(const KeyComparison &comparison, CompareMode mode);

    /// Compares some records again, in the mode Different, when nothing but fields has changed since and no
    /// key has. \a left and \a right are all records of some keys, \a leftPlaces where the left ones stand,
    /// ascending.
    void compareAgain(const InfoList &left, const std::vector<quint32> &leftPlaces, const InfoList &right,
                      CompareKey key, const CompareOptions &options);
};

} // namespace runebook
