#pragma once

#include <cstddef>
#include <new>

namespace runebook {

/// Throws std::bad_alloc now when so much memory cannot be had, instead of half-way through a change that
/// many parts of the program take part in. Nothing is kept.
inline void ensureRoom(std::size_t bytes)
{
    // No new expression: compilers leave out one whose memory nobody uses.
    ::operator delete(::operator new(bytes));
}

} // namespace runebook
