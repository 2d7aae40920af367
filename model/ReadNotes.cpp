#include "model/ReadNotes.h"

#include <algorithm>

namespace runebook {

void ReadNotes::add(Kind kind, qsizetype record, const QString &text, qsizetype offset)
{
    constexpr qsizetype kKeptText = 200;
    ++counts[kind];
    if (notes.size() < mostNotes)
        notes.push_back({kind, record, text.left(kKeptText), offset});
}

void ReadNotes::append(const ReadNotes &following, qsizetype records)
{
    for (std::size_t kind = 0; kind < KindCount; ++kind)
        counts[kind] += following.counts[kind];
    for (Note note : following.notes) {
        note.record += records;
        if (notes.size() < mostNotes)
            notes.push_back(std::move(note));
    }
    for (const auto &[key, value] : following.unknownAttributes)
        addUnknown(key, value);
    otherForms[0] += following.otherForms[0];
    otherForms[1] += following.otherForms[1];
    hasByteOrderMark |= following.hasByteOrderMark;
    hasCarriageReturns |= following.hasCarriageReturns;
    hasForeignHeader |= following.hasForeignHeader;
}

void ReadNotes::addUnknown(const QString &key, const QString &value)
{
    const auto has = [&key](const auto &attribute) { return attribute.first == key; };
    if (mayTellOfMoreKeys() && std::none_of(unknownAttributes.begin(), unknownAttributes.end(), has))
        unknownAttributes.emplace_back(key, value);
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
