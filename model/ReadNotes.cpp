#include "model/ReadNotes.h"

namespace runebook {

namespace {

constexpr std::size_t kKeptNotes = 1000;

} // namespace

void ReadNotes::add(Kind kind, qsizetype record, const QString &text)
{
    constexpr qsizetype kKeptText = 200;
    ++counts[kind];
    if (notes.size() < kKeptNotes)
        notes.push_back({kind, record, text.left(kKeptText)});
}

void ReadNotes::append(const ReadNotes &following, qsizetype records)
{
    for (std::size_t kind = 0; kind < KindCount; ++kind)
        counts[kind] += following.counts[kind];
    for (Note note : following.notes) {
        note.record += records;
        if (notes.size() < kKeptNotes)
            notes.push_back(std::move(note));
    }
    unknownAttributes.insert(unknownAttributes.end(), following.unknownAttributes.begin(),
                             following.unknownAttributes.end());
    hasByteOrderMark |= following.hasByteOrderMark;
    hasCarriageReturns |= following.hasCarriageReturns;
    hasForeignHeader |= following.hasForeignHeader;
}

bool ReadNotes::isEmpty() const
{
    for (const qsizetype count : counts) {
        if (count)
            return false;
    }
    return !hasByteOrderMark && !hasCarriageReturns && !hasForeignHeader;
}

} // namespace runebook
