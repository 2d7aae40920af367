#pragma once

#include "editing/compare/CompareOptions.h"
#include "model/CompareKey.h"

#include <QStringList>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace runebook {

/// Which keys are listed; the numbers are those of the default "FilterMode".
enum class CompareMode {
    OnlyRight = 0, ///< missing on the left
    OnlyLeft = 1, ///< missing on the right
    Different = 2, ///< on both sides, but not equal by countAsEqual()
};

inline constexpr int kCompareModeCount = 3;

/// Finds the records of a list by their key; of several with the same key the last counts. Refers to the
/// list, which must not change meanwhile.
class KeyIndex
{
public:
    static constexpr quint32 kNone = ~quint32(0);

    KeyIndex(const InfoList &infos, CompareKey key);

    /// Takes up to \a count further records in. True once all are.
    bool addNext(std::size_t count);
    std::size_t added() const { return m_added; }

    /// The place of the last record with that key, or kNone.
    quint32 find(std::string_view key) const;
    /// Whether a later record has the same key as the one at \a place.
    bool isReplaced(std::size_t place) const { return m_isReplaced[place]; }

private:
    struct Slot {
        quint32 hash = 0;
        quint32 place = kNone;
    };

    void insert(quint32 hash, quint32 place, std::string_view key);

    const InfoList &m_infos;
    CompareKey m_key;
    std::vector<Slot> m_slots;
    std::vector<bool> m_isReplaced;
    std::size_t m_added = 0;
};

/// The keys of one document that the other lacks, or has with another record. Works in steps, so that a
/// window can show how far it is. Refers to both lists, which must not change meanwhile.
class KeyPass
{
public:
    KeyPass(const InfoList &source, const InfoList &other, CompareKey key,
            const CompareOptions &options = {});
    /// Has it find out which fields differ as well, and where.
    void wantFields() { m_wantsFields = true; }

    /// Looks at up to \a count further records. True once all were seen.
    bool advance(std::size_t count);
    /// Records seen, of workload().
    std::size_t workDone() const { return m_index.added() + m_next; }
    std::size_t workload() const { return m_source.size() + m_other.size(); }

    /// In the order of the source, repetitions kept.
    const QStringList &missing() const { return m_missing; }
    const QStringList &different() const { return m_different; }
    /// Of each key in different() the fields that differ; none without wantFields().
    const std::vector<FieldBits> &differentFields() const { return m_fields; }
    /// The places in the source of their records.
    const std::vector<quint32> &differentPlaces() const { return m_places; }

private:
    void compare(const InfoPtr &compared);
    void addDifferent(const InfoPtr &info, const InfoPtr &other, std::string_view key);
    bool isEqualAsRead(const VXGlyphInfo &info) const;

    const InfoList &m_source;
    const InfoList &m_other;
    CompareKey m_key;
    KeyIndex m_index;
    std::size_t m_next = 0;
    std::size_t m_expected = 0; ///< where the next record should stand in the other list
    QStringList m_missing;
    QStringList m_different;
    std::vector<FieldBits> m_fields;
    std::vector<quint32> m_places;
    CompareOptions m_options;
    bool m_wantsFields = false;
    std::string m_buffer;
    std::string m_otherBuffer;
};

/// The key lists of all three modes for two documents, the one asked for first before the others.
class KeyComparison
{
public:
    /// Refers to both lists, which must not change before everything is done.
    KeyComparison(const InfoList &left, const InfoList &right, CompareKey key, CompareMode first,
                  const CompareOptions &options = {});

    /// Works until \a budget is used up or everything is done. True when it is.
    bool runFor(std::chrono::milliseconds budget);
    /// Works until the keys of \a mode are known.
    void finish(CompareMode mode);

    bool isDone(CompareMode mode) const { return m_isDone[isForward(mode)]; }
    /// The keys of a mode that is done.
    const QStringList &keys(CompareMode mode) const;
    /// Of each key of the mode Different, when it is done, the fields that differ.
    const std::vector<FieldBits> &differentFields() const { return m_passes[1].differentFields(); }
    /// The same for where the left record stands.
    const std::vector<quint32> &differentPlaces() const { return m_passes[1].differentPlaces(); }
    /// How far the first mode is, from 0 to 1.
    double progress() const;

private:
    static bool isForward(CompareMode mode) { return mode != CompareMode::OnlyRight; }
    bool advance();

    KeyPass m_passes[2]; ///< right to left, left to right
    bool m_isDone[2] = {false, false};
    bool m_firstIsForward;
};

} // namespace runebook
