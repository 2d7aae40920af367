#pragma once

#include "document/VXDocument.h"
#include "editing/search/RecordTests.h"
#include "platform/predicates/Predicate.h"

#include <QDeadlineTimer>
#include <memory>
#include <vector>

namespace runebook {

struct SearchKey;

/// Answers which records of a document pass a predicate, by searching columns of folded UTF-8: one for each
/// searched key and folding, made on first use and kept in step with what it is told. Main thread only.
class SearchColumns
{
public:
    explicit SearchColumns(const VXDocument &document);
    ~SearchColumns();
    Q_DISABLE_COPY_MOVE(SearchColumns)

public: // keeping in step: every change is told before the next question
    /// A field changed; the record's text in the columns is taken anew at the next search.
    void noteChange(const VXDocument::Change &change);
    /// The records that stand at \a places now are new to the list. Linear, yet cheaper than reset().
    void noteInsertion(const IndexSet &places);
    /// The records that stood at \a places before are gone.
    void noteRemoval(const IndexSet &places);
    /// Another record stands at a place.
    void noteReplacement(qsizetype place);
    /// The list has other records or another order: all columns go.
    void reset();

public: // asking
    /// For every place of the document's info list whether the record there passes; nothing and an error
    /// when a regular expression gave up.
    std::optional<std::vector<bool>> evaluate(const Predicate &predicate, Error *error = nullptr);
    /// The same as the places of the records that pass.
    std::optional<IndexSet> placesPassing(const Predicate &predicate, Error *error = nullptr);
    /// Which records pass each test of \a predicate that a column answers; numbers and regular expressions
    /// are left out.
    KnownBits answersOf(const Predicate &predicate);
    /// Makes the columns that \a predicate will ask for, for at most about \a milliseconds. True when they
    /// are ready; otherwise it wants to be called again when the program is idle. Any search text will do:
    /// prepare(*SearchFilter(SearchSettings::current()).result(u"a"_s).predicate).
    bool prepare(const Predicate &predicate, int milliseconds = 8);
    /// How far prepare() has come with that, from 0 to 1.
    double preparedShare(const Predicate &predicate) const;
    /// The same for all records but the very long ones, where it ends: false when there is such a one, and
    /// prepare() is to be called until everything is ready.
    bool prepareUpToLong(const Predicate &predicate);
    /// How long all matches of a regular expression together may take in one question before it gives up.
    void setPatternTimeLimit(int milliseconds) { m_patternTimeLimitMs = milliseconds; }

private:
    struct Column;

    Column &columnFor(SearchKey key, Folding folding);
    enum class Long { Take, EndThere };
    bool prepare(const PredicateNode &node, const QDeadlineTimer &deadline, Long what);
    template <typename Visit> static bool forEachColumn(const PredicateNode &node, Visit visit);
    const Column *knownColumn(SearchKey key, Folding folding) const;
    bool fill(Column &column, const QDeadlineTimer &deadline, Long what = Long::Take) const;
    void refresh(Column &column) const;

    // What passes among the records asked about; false when a regular expression gave up.
    bool ask(const PredicateNode &node, const RecordBits &asked, RecordBits &passed, Error *error);
    bool ask(const PredicateGroup &group, const RecordBits &asked, RecordBits &passed, Error *error);
    template <typename Test> RecordBits askColumn(const Test &test, Folding folding);
    /// The answer of a column; nothing for a test that none answers.
    std::optional<RecordBits> columnAnswer(const PredicateNode &test);
    void addAnswers(const PredicateNode &node, KnownBits &known);
    std::optional<RecordBits> bitsPassing(const Predicate &predicate, Error *error);

    const VXDocument &m_document;
    std::vector<std::unique_ptr<Column>> m_columns;
    int m_patternTimeLimitMs = 2000;
};

} // namespace runebook
