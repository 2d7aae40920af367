#include "platform/predicates/PredicateNodes.h"

#include <algorithm>
#include <charconv>

namespace runebook {

bool TextTest::accepts(std::string_view folded) const
{
    if (relation == Relation::NotEqual)
        return folded != text;
    if (text.empty())
        return false;
    switch (relation) {
    case Relation::Contains:
        return folded.find(text) != std::string_view::npos;
    case Relation::BeginsWith:
        return folded.starts_with(text);
    case Relation::EndsWith:
        return folded.ends_with(text);
    case Relation::Equal:
        return folded == text;
    case Relation::NotEqual:
        break;
    }
    return false;
}

bool TextTest::acceptsElement(std::string_view folded) const
{
    return relation == Relation::Contains ? !text.empty() && folded == text : accepts(folded);
}

bool NumberTest::accepts(double value) const
{
    switch (relation) {
    case Relation::Equal:
        return value == number;
    case Relation::NotEqual:
        return value != number;
    case Relation::Less:
        return value < number;
    case Relation::LessOrEqual:
        return value <= number;
    case Relation::Greater:
        return value > number;
    case Relation::GreaterOrEqual:
        return value >= number;
    }
    return false;
}

bool ListTest::accepts(std::string_view folded) const
{
    const auto at = std::lower_bound(texts.begin(), texts.end(), folded);
    return at != texts.end() && *at == folded;
}

bool HexRange::contains(std::string_view text) const
{
    constexpr size_t kMinDigits = 4;
    constexpr size_t kMaxDigits = 2 * sizeof(quint32);
    const auto isUpperHex = [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); };
    if (text.size() < kMinDigits || text.size() > kMaxDigits
        || (text.size() > kMinDigits && text.front() == '0')
        || !std::all_of(text.begin(), text.end(), isUpperHex))
        return false;
    quint32 value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return first <= value && value <= last;
}

} // namespace runebook
