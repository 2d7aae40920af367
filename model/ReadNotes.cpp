#include "model/ReadNotes.h"

namespace runebook {

void ReadNotes::add(Kind kind, qsizetype record, const QString &text)
{
    constexpr std::size_t kKeptNotes = 1000;
    constexpr qsizetype kKeptText = 200;
    ++counts[kind];
    if (notes.size() < kKeptNotes)
        notes.push_back({kind, record, text.left(kKeptText)});
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
