#pragma once

#include <string>
#include <string_view>

namespace runebook {

/// Looks for one run of bytes in a long text of many short ones. Two of its bytes, those that are rarest in
/// the text, are compared at sixteen places at once; only where both stand is the rest looked at.
class ByteSearch
{
public:
    static constexpr std::size_t kNpos = std::string_view::npos;

    /// \a needle must not be empty. A few bytes of \a text tell which bytes are rare in it.
    ByteSearch(std::string needle, std::string_view text);

    /// The first place at or behind \a from; kNpos when there is none.
    std::size_t find(std::string_view text, std::size_t from) const;

private:
    std::string m_needle;
    std::size_t m_rarest = 0; ///< place in the needle
    std::size_t m_secondRarest = 0;
};

} // namespace runebook
