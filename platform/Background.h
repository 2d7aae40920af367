#pragma once

#include <functional>

namespace runebook {

/// Does \a work on a thread of its own, soon: two such threads take all work in its order. At the end of the
/// application what has begun is finished and the rest is dropped. Must not throw. From any thread.
void runInBackground(std::function<void()> work);

} // namespace runebook
