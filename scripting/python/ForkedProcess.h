#pragma once

namespace runebook {

/// From then on it is known of processes that scripts fork (os.fork, multiprocessing) that they are copies.
void watchForks();
/// Whether this process is such a copy: it has one thread, its event loop never turns, and the documents and
/// windows are those of the process that it was copied from.
bool isForkedProcess();

} // namespace runebook
