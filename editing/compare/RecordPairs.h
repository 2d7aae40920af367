#pragma once

#include "editing/compare/CompareKeys.h"
#include "editing/compare/CountedWork.h"
#include "platform/Error.h"

#include <QString>
#include <optional>
#include <vector>

namespace runebook {

/// Two records that stand for the same glyph; where one is missing, it is null.
struct RecordPair {
    InfoPtr left;
    InfoPtr right;
};

/// The text by which a record is paired: its value of \a key or, without one, its name, so that every record
/// takes part.
QString pairingText(const VXGlyphInfo &info, CompareKey key);

/// Pairs the records of two lists and leaves out the pairs that agree in every field, wherever they stand.
/// Of several records with the same key those that agree find each other first, the others pair up in
/// order. In the order of the left list, then what only the right one has; nothing when \a progress stops it.
std::optional<std::vector<RecordPair>> differingPairs(const InfoList &left, const InfoList &right,
                                                      CompareKey key, const WorkProgress &progress);
/// The same at once.
std::vector<RecordPair> differingPairs(const InfoList &left, const InfoList &right, CompareKey key);

/// What two files do not have in common.
struct FileDifference {
    qsizetype leftCount = 0; ///< records in the file
    qsizetype rightCount = 0;
    std::vector<RecordPair> pairs;
};

/// Compares two files: tables where the name ends in ".txt", glyph data otherwise. Lines that are the same in
/// both files are never taken apart. Nothing and an error when one cannot be read.
std::optional<FileDifference> differenceOfFiles(const QString &left, const QString &right, CompareKey key,
                                                Error *error = nullptr);

} // namespace runebook
