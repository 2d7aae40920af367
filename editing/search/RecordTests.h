#pragma once

#include "document/VXDocument.h"
#include "editing/search/RecordBits.h"
#include "editing/search/SearchKey.h"
#include "platform/predicates/Predicate.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <optional>
#include <unordered_map>

namespace runebook {

/// Which records pass each of some tests of a tree.
using KnownBits = std::unordered_map<const PredicateNode *, RecordBits>;

/// The tests for which a column of folded texts is no help: they ask one record after the other.
class RecordTests
{
    Q_DECLARE_TR_FUNCTIONS(RecordTests)
public:
    /// \a infos must outlive it. All matches of one regular expression together may take
    /// \a patternTimeLimitMs.
    RecordTests(const InfoList &infos, int patternTimeLimitMs)
        : m_infos(infos), m_patternTimeLimitMs(patternTimeLimitMs)
    {
    }

    /// The records among \a asked that pass.
    RecordBits passing(const NumberTest &test, const RecordBits &asked) const;
    /// The same; nothing and an error when the expression gave up on one of them or took too long for all.
    std::optional<RecordBits> passing(const PatternTest &test, const RecordBits &asked, Error *error) const;

    /// Asks the records from \a first on until \a deadline, at least one, and sets the bits of those that
    /// pass \a node, of whose tests \a known has answers for all but numbers and expressions. The first
    /// record not asked; nothing and an error when an expression gave up.
    std::optional<std::size_t> passingFrom(const PredicateNode &node, const KnownBits &known,
                                           std::size_t first, const QDeadlineTimer &deadline,
                                           RecordBits &passed, Error *error) const;

private:
    static Verdict verdict(const PatternTest &test, const PredicateValue &value, QString &text);
    /// Asks a group's members only until they have settled it.
    Verdict verdict(const PredicateNode &node, const KnownBits &known, std::size_t place, Error *error) const;

    const InfoList &m_infos;
    int m_patternTimeLimitMs;
};

} // namespace runebook
