#pragma once

#include "model/VXGlyphInfo.h"

#include <functional>
#include <string_view>

namespace runebook {

/// Calls \a visit with each entry of a list that is kept in one text, with what stands between two separators
/// too; of an empty text with none.
template <typename Visit> void forEachEntry(std::string_view text, Visit visit)
{
    constexpr std::string_view kSeparator = ", ";
    while (!text.empty()) {
        const std::size_t end = text.find(kSeparator);
        visit(text.substr(0, end));
        if (end == text.npos)
            return;
        text.remove_prefix(end + kSeparator.size());
        if (text.empty())
            visit(text);
    }
}

/// The key under which a name is counted; 0 for none. Two names with one key would be told to be the same
/// less than once in a billion documents.
inline quint64 keyOfName(std::string_view name)
{
    return name.empty() ? 0 : qMax<quint64>(1, std::hash<std::string_view>()(name));
}

} // namespace runebook
