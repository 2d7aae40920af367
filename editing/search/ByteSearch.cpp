#include "editing/search/ByteSearch.h"

#include <QtGlobal>
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <numeric>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace runebook {

namespace {

constexpr std::size_t kSamples = 1024;

std::array<unsigned, 256> sampledFrequencies(std::string_view text)
{
    std::array<unsigned, 256> frequencies {};
    // Odd, so that it does not always meet the same place of names that are equally long.
    const std::size_t step = text.size() / kSamples | 1;
    for (std::size_t i = 0; i < text.size(); i += step)
        ++frequencies[static_cast<unsigned char>(text[i])];
    return frequencies;
}

} // namespace

ByteSearch::ByteSearch(std::string needle, std::string_view text) : m_needle(std::move(needle))
{
    Q_ASSERT(!m_needle.empty());
    const std::array<unsigned, 256> frequencies = sampledFrequencies(text);
    std::vector<std::size_t> places(m_needle.size());
    std::iota(places.begin(), places.end(), 0);
    const auto rarer = [&](std::size_t a, std::size_t b) {
        return frequencies[static_cast<unsigned char>(m_needle[a])]
            < frequencies[static_cast<unsigned char>(m_needle[b])];
    };
    const std::size_t wanted = std::min<std::size_t>(2, places.size());
    std::partial_sort(places.begin(), places.begin() + static_cast<std::ptrdiff_t>(wanted), places.end(),
                      rarer);
    m_rarest = places[0];
    m_secondRarest = places[wanted - 1];
}

std::size_t ByteSearch::find(std::string_view text, std::size_t from) const
{
#ifdef __SSE2__
    constexpr std::size_t kWidth = sizeof(__m128i);
    const auto load = [&text](std::size_t place) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(text.data() + place));
    };
    const __m128i first = _mm_set1_epi8(m_needle[m_rarest]);
    const __m128i second = _mm_set1_epi8(m_needle[m_secondRarest]);
    // The needle fits in behind the last of the sixteen places, so nothing beyond the text is touched.
    for (; from + kWidth + m_needle.size() <= text.size() + 1; from += kWidth) {
        const __m128i bothStand = _mm_and_si128(_mm_cmpeq_epi8(load(from + m_rarest), first),
                                                _mm_cmpeq_epi8(load(from + m_secondRarest), second));
        for (auto places = static_cast<unsigned>(_mm_movemask_epi8(bothStand)); places;
             places &= places - 1) {
            const std::size_t place = from + static_cast<std::size_t>(std::countr_zero(places));
            if (std::memcmp(text.data() + place, m_needle.data(), m_needle.size()) == 0)
                return place;
        }
    }
#endif
    return text.find(m_needle, from);
}

} // namespace runebook
