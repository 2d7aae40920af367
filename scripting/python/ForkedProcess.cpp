#include "scripting/python/ForkedProcess.h"

#include <pthread.h>

namespace runebook {

static bool isForked = false; // a process of one thread sets it, before that runs on

void watchForks()
{
    ::pthread_atfork(nullptr, nullptr, [] { isForked = true; });
}

bool isForkedProcess()
{
    return isForked;
}

} // namespace runebook
