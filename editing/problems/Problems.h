#pragma once

#include "document/VXDocument.h"
#include "editing/compare/KeyCounts.h"
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
    /// 0 to 1.
    double progress() const;
    /// Goes on for about so long, one slice at least; true when complete.
    bool runFor(std::chrono::milliseconds budget);
    /// Looks at all that is left.
    void finish();

public: // asking: about what was looked at so far
    qsizetype count(ProblemKind kind) const;
    qsizetype total() const;
    /// Counts of all kinds, by kind.
    std::array<qsizetype, kProblemKindCount> counts() const;
    /// Whether the record at \a place of the list has a problem of \a kind.
    bool hasProblem(ProblemKind kind, qsizetype place) const;
    /// Appends the problems of the records at [first, last), of one kind (nothing: all), in list order.
    void append(std::optional<ProblemKind> kind, qsizetype first, qsizetype last,
                std::vector<Problem> &problems) const;
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
    void checkRoundTrip(std::span<VXGlyphInfo *const> infos);
    Flags flagsOf(const VXGlyphInfo &info) const;
    void setKeys(std::size_t place, const VXGlyphInfo &info);
    void dropKeys(std::size_t place);
    void setAltNames(std::size_t place, const VXGlyphInfo &info);
    void dropAltNames(std::size_t place);
    std::span<const quint64> altNamesAt(std::size_t place) const;
    void setFlags(std::size_t place, Flags flags);
    std::span<const quint32> codePointsAt(std::size_t place) const;
    void setComponents(std::size_t place, const VXGlyphInfo &info);
    void dropComponents(std::size_t place);
    bool isMissing(quint64 component) const { return component && m_names.count(component) == 0; }
    // Names come and go: whoever is composed with them is told at once.
    void addName(quint64 key);
    void removeName(quint64 key);
    void takeWhatWasRead();
    void countWhatWasRead();

    VXDocument &m_document;
    // By place in the document's list: what was found, and under what it was counted.
    GapVector<Flags> m_flags;
    GapVector<quint64> m_nameKeys; ///< 0: none
    GapVector<quint32> m_codePoints; ///< one, or the number of a list of several
    std::vector<std::vector<quint32>> m_lists;
    std::vector<quint32> m_freeLists;
    GapVector<quint32> m_components; ///< 0: none, else one more than the number of a list
    std::vector<std::vector<quint64>> m_componentLists; ///< keys of names
    std::vector<quint32> m_freeComponents;
    KeyCounts m_composed; ///< how often each name stands in compositions
    qsizetype m_missing = 0; ///< how many of these name no record
    GapVector<quint32> m_altNames; ///< the number of a list of keys of names; 0: none
    std::vector<std::vector<quint64>> m_altLists;
    std::vector<quint32> m_freeAltLists;
    KeyCounts m_altCounts;
    qsizetype m_repeatingAltNames = 0;
    KeyCounts m_names;
    KeyCounts m_codes;
    std::array<qsizetype, kProblemKindCount> m_counts {};
    // What is still to be looked at: all from m_next on, and these.
    std::size_t m_next = 0;
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
