#pragma once

#include <functional>

namespace runebook {

/// Does \a work on a thread of its own, soon: two such threads take all work in its order. At the end of the
/// application what has begun is finished and the rest is dropped. Must not throw. From any thread.
void runInBackground(std::function<void()> work);
/// Does \a work on a thread of its own, at once: what waits for other programs must not keep others waiting.
/// At the end of the application it is waited for. Must not throw. Main thread.
void runApart(std::function<void()> work);
/// Waits until all that was given to either is done. Main thread; the program itself never has to.
void waitForBackground();

} // namespace runebook
