#pragma once

#include "document/VXDocument.h"
#include "editing/search/RecordBits.h"
#include "editing/search/SearchKey.h"
#include "platform/predicates/Predicate.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <optional>

namespace runebook {

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
    /// pass. The first one not asked; nothing and an error when the expression gave up.
    std::optional<std::size_t> passingFrom(const PatternTest &test, std::size_t first,
                                           const QDeadlineTimer &deadline, RecordBits &passed,
                                           Error *error) const;

private:
    static Verdict verdict(const PatternTest &test, const PredicateValue &value, QString &text);

    const InfoList &m_infos;
    int m_patternTimeLimitMs;
};

} // namespace runebook
