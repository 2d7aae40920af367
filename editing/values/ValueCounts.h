#pragma once

#include "document/VXDocument.h"
#include "editing/values/AspectValues.h"
#include "platform/GapVector.h"

#include <QTimer>
#include <array>
#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace runebook {

/// Follows a document and counts the values that its records have in one aspect: how many records have each,
/// in the whole document and among those that are shown. All records are looked at in short slices of idle
/// time; after that only what changes is looked at. A record counts once for each different value of its
/// lists. Knows no widget. Main thread only.
class ValueCounts : public QObject
{
    Q_OBJECT
public:
    /// Values are numbered as they are met. These two are always there, whatever they count: no value at all,
    /// and values that are too long to be told from each other in a list.
    using Value = quint32;
    static constexpr Value kNone = 0;
    static constexpr Value kLong = 1;
    /// In bytes of UTF-8.
    static constexpr std::size_t kLongest = 4096;

    ValueCounts(const VXDocument &document, const FieldAspect &aspect, QObject *parent = nullptr);
    ~ValueCounts() override;

public: // what is counted
    const VXDocument &document() const { return m_document; }
    const FieldAspect &aspect() const { return m_aspect; }
    void setAspect(const FieldAspect &aspect);
    /// Only the records at these places of the list are shown; nothing: all. Records that come later are.
    void setShown(const std::optional<IndexSet> &places);

public: // looking
    /// Whether every record was looked at since it changed.
    bool isComplete() const;
    /// 0 to 1.
    double progress() const;
    /// Goes on for about so long, one batch at least; true when complete.
    bool runFor(std::chrono::milliseconds budget);
    /// Looks at all that is left.
    void finish();

public: // asking: about what was looked at so far
    /// All numbers are less than this. They hold until another aspect is counted or the list is another one.
    Value valueCount() const { return static_cast<Value>(m_texts.size()); }
    QString text(Value value) const
    {
        return value > kLong ? FieldValue::textOfUtf8(utf8(value)) : QString();
    }
    std::string_view utf8(Value value) const { return m_texts[value]; }
    /// The number of a text, which gets one if no record has it; of an empty one kNone.
    Value numberOf(const QString &text);
    /// How many records have it: among those that are shown, and in the whole document.
    qsizetype shown(Value value) const { return m_shown[value]; }
    qsizetype total(Value value) const { return m_totals[value]; }
    /// How many records are shown.
    qsizetype shownRecords() const { return m_shownRecords; }

Q_SIGNALS:
    /// Counts have changed; once for each slice or edit.
    void changed();

private:
    using Flags = quint8;
    enum Flag : Flags {
        LookedAt = 1, ///< its values are known
        Wanted = 2, ///< it is shown
        Counted = 4, ///< among those that are shown
    };
    static constexpr std::size_t kShards = 64;
    using Numbers = std::unordered_map<std::string_view, Value>;

    void start();
    void schedule();
    void runSlice();
    void announce();
    // What the document tells.
    void insert(const IndexSet &places);
    void remove(const IndexSet &places);
    void reset();
    void noteChanges(const std::vector<VXDocument::Change> &changes);
    // Looking at records.
    bool isInStep() const { return std::ssize(m_flags) == m_document.countOfInfos(); }
    void lookAtBatch();
    void lookAt(std::size_t place, bool again = true);
    void readValues(const VXGlyphInfo &info);
    void addRead(std::string_view utf8);
    void keepValues(std::size_t place);
    void dropValues(std::size_t place);
    std::span<const Value> valuesAt(std::size_t place) const;
    void setCounted(std::size_t place, bool isCounted);
    Value numberOf(std::string_view utf8);

    const VXDocument &m_document;
    FieldAspect m_aspect;
    // By number of a value.
    std::deque<std::string> m_texts;
    std::vector<qsizetype> m_shown;
    std::vector<qsizetype> m_totals;
    std::array<Numbers, kShards> m_numbers; ///< in parts, so that none takes long to grow
    // By place in the document's list.
    GapVector<Flags> m_flags;
    GapVector<quint32> m_values; ///< a number, or that of a list of several
    std::vector<std::vector<Value>> m_lists;
    std::vector<quint32> m_freeLists;
    qsizetype m_shownRecords = 0;
    // What is still to be looked at: all from m_next on, and these.
    std::size_t m_next = 0;
    bool m_looksAgain = false; ///< at records that were looked at, too
    InfoList m_changed;
    std::size_t m_nextChanged = 0;
    std::vector<Value> m_read; ///< of one record; kept for its room
    QTimer m_timer;
};

} // namespace runebook
