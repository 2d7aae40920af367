#pragma once

#include <functional>

namespace runebook {

/// Does \a work on a thread of its own, soon: two such threads take all work in its order. At the end of the
/// application what has begun is finished and the rest is dropped. Must not throw. From any thread.
void runInBackground(std::function<void()> work);
/// Does \a work on a thread of its own, at once: what waits for other programs must not keep others waiting.
/// At the end of the application it is waited for. Must not throw. Main thread.
void runApart(std::function<void()> work);
/// Does \a work on the main thread in a coming turn of its event loop, in the order in which it was given;
/// not at all when the application has ended. Whose objects it uses may be gone by then: QPointer tells. From
/// any thread.
void runOnMainThread(std::function<void()> work);
/// Waits until what was given to the first two is done. Main thread; the program itself never has to.
void waitForBackground();

} // namespace runebook
