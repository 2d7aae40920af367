#pragma once

#include "document/VXDocument.h"
#include "editing/compare/KeyCounts.h"
#include "editing/problems/NameRelations.h"
#include "editing/problems/ReadProblems.h"
#include "model/RoundTrip.h"

#include <QTimer>
#include <array>
#include <chrono>
#include <span>

namespace runebook {

/// Follows a document and knows what is wrong with it. The first look goes through all records in short
/// slices of idle time; after that only what changes is looked at. Knows no widget. Main thread only.
class Problems : public QObject
{
    Q_OBJECT
public:
    explicit Problems(VXDocument &document, QObject *parent = nullptr);
    ~Problems() override;
    VXDocument &document() const { return m_document; }

public: // looking
    /// Whether every record was looked at since it changed.
    bool isComplete() const;
    /// Whether that is so but for hints, which are looked for when all else is known.
    bool areProblemsCounted() const { return m_next >= m_flags.size() && m_nextChanged >= m_changed.size(); }
    /// 0 to 1.
    double progress() const;
    /// Goes on for about so long, one slice at least; true when complete.
    bool runFor(std::chrono::milliseconds budget);
    /// Looks at all that is left.
    void finish();

    /// Kinds that nobody wants to hear of: they count as none. Of those that follow from the records only.
    void setLeftOut(ProblemKindSet kinds);
    ProblemKindSet leftOut() const { return m_leftOut; }

public: // asking: about what was looked at so far
    qsizetype count(ProblemKind kind) const;
    /// Of problems; hints have a count of their own.
    qsizetype total(ProblemKindSet kinds = kAllProblemKinds & ~kHintKinds) const;
    qsizetype hints() const { return total(kHintKinds); }
    /// Counts of all kinds, by kind.
    std::array<qsizetype, kProblemKindCount> counts() const;
    /// Whether the record at \a place of the list has a problem of \a kind.
    bool hasProblem(ProblemKind kind, qsizetype place) const;
    bool hasProblemOf(ProblemKindSet kinds, qsizetype place) const;
    /// Appends the problems of the records at [first, last), of some kinds, in list order.
    void appendOf(ProblemKindSet kinds, qsizetype first, qsizetype last,
                  std::vector<Problem> &problems) const;
    /// The same of one kind; nothing: of all, hints too.
    void append(std::optional<ProblemKind> kind, qsizetype first, qsizetype last,
                std::vector<Problem> &problems) const
    {
        appendOf(kind ? setOf(*kind) : kAllProblemKinds, first, last, problems);
    }
    /// The same for what was met when the file was read. Of very many only the first are kept.
    void appendRead(std::optional<ProblemKind> kind, std::vector<Problem> &problems) const
    {
        m_read.append(kind, problems);
    }
    /// Where the line of something that was met when the file was read begins in its bytes; -1 for the file
    /// as a whole.
    qint64 offsetOf(const Problem &problem) const { return m_read.offsetOf(problem); }
    /// What is wrong, in words.
    QString explanation(const Problem &problem) const;

Q_SIGNALS:
    /// Counts or records have changed; once for each slice or edit.
    void changed();
    /// After changed(), when everything was looked at.
    void completed();

private:
    using Flags = quint32;

    void start();
    void schedule();
    void runSlice();
    void announce();
    // What the document tells.
    void insert(const IndexSet &places);
    void remove(const IndexSet &places);
    void replace(qsizetype place);
    void reset();
    void noteChanges(const std::vector<VXDocument::Change> &changes);
    // Looking at records.
    void checkBatch();
    void check(std::span<const qsizetype> places);
    void checkHints(std::size_t place);
    Flags hintsOf(const VXGlyphInfo &info) const;
    quint64 prepare(const VXGlyphInfo &info) const;
    void checkRoundTrip(std::span<VXGlyphInfo *const> infos);
    Flags flagsOf(const VXGlyphInfo &info) const;
    void setKeys(std::size_t place, const VXGlyphInfo &info, quint64 name);
    void dropKeys(std::size_t place);
    void setFlags(std::size_t place, Flags flags);
    std::span<const quint32> codePointsAt(std::size_t place) const;
    bool isRepeated(quint32 codePoint) const;
    bool isTooEarlyFor(ProblemKind kind) const;
    void takeWhatWasRead();
    void countWhatWasRead();

    VXDocument &m_document;
    // By place in the document's list: what was found, and under what it was counted.
    GapVector<Flags> m_flags;
    NameRelations m_relations;
    GapVector<quint32> m_codePoints; ///< one, or the number of a list of several
    std::vector<std::vector<quint32>> m_lists;
    std::vector<quint32> m_freeLists;
    KeyCounts m_codes;
    std::array<qsizetype, kProblemKindCount> m_counts {};
    ProblemKindSet m_leftOut = 0;
    // What is still to be looked at: all from m_next on, and these.
    std::size_t m_next = 0;
    std::size_t m_nextHint = 0; ///< hints: never ahead of that
    InfoList m_changed;
    std::size_t m_nextChanged = 0;
    RoundTrip m_roundTrip;
    int m_fileVersion;
    std::vector<RoundTrip::Outcome> m_outcomes;
    ReadProblems m_read;
    QTimer m_timer;
    bool m_isBehind = true;
};

} // namespace runebook
