#pragma once

#include <cstddef>
#include <memory>

namespace runebook {

/// Throws std::bad_alloc now when so much memory cannot be had, instead of half-way through a change that
/// many parts of the program take part in. Nothing is kept.
inline void ensureRoom(std::size_t bytes)
{
    std::make_unique_for_overwrite<std::byte[]>(bytes);
}

} // namespace runebook
