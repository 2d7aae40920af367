#pragma once

#include "document/VXDocument.h"
#include "editing/search/RecordTests.h"

#include <QTimer>
#include <functional>

namespace runebook {

/// Finds the records that match a regular expression a few milliseconds at a time, so that whoever types it
/// never waits: a million records take seconds. What changes meanwhile begins the search anew. For other
/// searches, over very long values, it has that made ready which answers them. Main thread only.
class SlicedFilter : public QObject
{
    Q_OBJECT
public:
    /// Works for about so many milliseconds on what answers a predicate; how far that has come, from 0 to 1,
    /// and nothing when it is ready.
    using Prepare = std::function<std::optional<double>(const Predicate &predicate, int milliseconds)>;
    /// What is known of the tests of such a predicate then.
    using Ask = std::function<KnownBits(const Predicate &predicate)>;
    SlicedFilter(const VXDocument &document, Prepare prepare, Ask ask, QObject *parent = nullptr);

    /// Whether there is a regular expression in \a predicate; others are answered faster than a slice takes,
    /// but for very long values.
    static bool isFor(const Predicate &predicate);
    /// Begins the search, with its first slice. It takes the place of one that is running.
    void start(const Predicate &predicate);
    void cancel();
    bool isRunning() const { return m_predicate.has_value(); }
    /// From 0 to 1.
    double progress() const;

Q_SIGNALS:
    void progressed();
    void finished(const runebook::Predicate &predicate, const runebook::IndexSet &passing);
    /// What is no regular expression can be answered at once now.
    void prepared(const runebook::Predicate &predicate);
    /// The expression is without end on some record.
    void gaveUp(const runebook::Error &error);

private:
    void startAnew();
    void runSlice();
    /// Whether all but regular expressions can be answered at once by now.
    bool isPrepared();
    void runPatternSlice();

    const VXDocument &m_document;
    const Prepare m_prepare;
    const Ask m_ask;
    std::optional<Predicate> m_predicate;
    std::optional<KnownBits> m_known; ///< since it is prepared
    RecordBits m_passed;
    std::size_t m_next = 0;
    double m_preparedShare = 0;
    QTimer m_timer;
};

} // namespace runebook
