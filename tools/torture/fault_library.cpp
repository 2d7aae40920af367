// Preloaded into the program under torture: counts the calls that change files, and makes one of them fail.
#include "tools/torture/FaultControl.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

using namespace torture;

namespace {

constexpr int kMostCalls = 4000;

char root[PATH_MAX];
Fault fault;
char calls[kMostCalls + 1];
std::atomic<int> callCount = 0;
std::atomic<bool> isArmed = false;
char failingKind = 0;

template <typename Function> Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

bool concerns(const char *path)
{
    return isArmed && path && std::strncmp(path, root, std::strlen(root)) == 0;
}

bool concerns(int descriptor)
{
    if (!isArmed)
        return false;
    char name[64];
    char path[PATH_MAX];
    std::snprintf(name, sizeof name, "/proc/self/fd/%d", descriptor);
    const ssize_t length = ::readlink(name, path, sizeof path - 1);
    if (length < 0)
        return false;
    path[length] = 0;
    return concerns(path);
}

/// What is to be done with one call.
enum class Verdict { Pass, Fail, Short, PassThenKill };

Verdict judge(Call kind)
{
    const int place = ++callCount;
    if (place <= kMostCalls)
        calls[place - 1] = static_cast<char>(kind);
    if (failingKind == static_cast<char>(kind)) {
        errno = fault.error;
        return Verdict::Fail;
    }
    if (place != fault.place)
        return Verdict::Pass;
    switch (fault.action) {
    case Action::Count:
        return Verdict::Pass;
    case Action::FailOn:
        failingKind = static_cast<char>(kind);
        [[fallthrough]];
    case Action::Fail:
        errno = fault.error;
        return Verdict::Fail;
    case Action::Short:
        return Verdict::Short;
    case Action::Kill:
        ::kill(::getpid(), SIGKILL);
        return Verdict::Pass;
    case Action::KillAfter:
        return Verdict::PassThenKill;
    case Action::Run:
        isArmed = false; // its own calls are not counted
        fault.run();
        isArmed = true;
        return Verdict::Pass;
    }
    return Verdict::Pass;
}

/// Judges a call that concerns the root, and makes it unless it is to fail.
template <typename Work> auto judged(Call kind, const Work &work) -> decltype(work())
{
    const Verdict verdict = judge(kind);
    if (verdict == Verdict::Fail)
        return -1;
    const auto result = work();
    if (verdict == Verdict::PassThenKill)
        ::kill(::getpid(), SIGKILL);
    return result;
}

} // namespace

extern "C" {

void torture_arm(const char *folder, const Fault *wanted)
{
    std::snprintf(root, sizeof root, "%s", folder);
    fault = *wanted;
    callCount = 0;
    failingKind = 0;
    isArmed = true;
}

const char *torture_disarm()
{
    isArmed = false;
    const int count = callCount < kMostCalls ? callCount.load() : kMostCalls;
    calls[count] = 0;
    return calls;
}

ssize_t write(int descriptor, const void *bytes, size_t size)
{
    static const auto real = next<ssize_t(int, const void *, size_t)>("write");
    if (!concerns(descriptor))
        return real(descriptor, bytes, size);
    const Verdict verdict = judge(Call::Write);
    if (verdict == Verdict::Fail)
        return -1;
    const ssize_t written = real(descriptor, bytes, verdict == Verdict::Short ? (size + 1) / 2 : size);
    if (verdict == Verdict::PassThenKill)
        ::kill(::getpid(), SIGKILL);
    return written;
}

int fsync(int descriptor)
{
    static const auto real = next<int(int)>("fsync");
    const auto work = [=] { return real(descriptor); };
    return concerns(descriptor) ? judged(Call::Sync, work) : work();
}

int ftruncate(int descriptor, off_t size) noexcept
{
    static const auto real = next<int(int, off_t)>("ftruncate");
    const auto work = [=] { return real(descriptor, size); };
    return concerns(descriptor) ? judged(Call::Truncate, work) : work();
}

int fallocate(int descriptor, int mode, off_t offset, off_t size)
{
    static const auto real = next<int(int, int, off_t, off_t)>("fallocate");
    const auto work = [=] { return real(descriptor, mode, offset, size); };
    return concerns(descriptor) ? judged(Call::Reserve, work) : work();
}

/// The descriptor is gone in any case, as on the real system.
int close(int descriptor)
{
    static const auto real = next<int(int)>("close");
    if (!concerns(descriptor))
        return real(descriptor);
    const Verdict verdict = judge(Call::Close);
    const int code = errno;
    const int result = real(descriptor);
    if (verdict == Verdict::PassThenKill)
        ::kill(::getpid(), SIGKILL);
    errno = code;
    return verdict == Verdict::Fail ? -1 : result;
}

int rename(const char *from, const char *to) noexcept
{
    static const auto real = next<int(const char *, const char *)>("rename");
    const auto work = [=] { return real(from, to); };
    return concerns(from) ? judged(Call::Rename, work) : work();
}

int renameat2(int fromFolder, const char *from, int toFolder, const char *to, unsigned flags) noexcept
{
    static const auto real = next<int(int, const char *, int, const char *, unsigned)>("renameat2");
    const auto work = [=] { return real(fromFolder, from, toFolder, to, flags); };
    return concerns(from) ? judged(Call::Rename, work) : work();
}

int link(const char *from, const char *to) noexcept
{
    static const auto real = next<int(const char *, const char *)>("link");
    const auto work = [=] { return real(from, to); };
    return concerns(from) ? judged(Call::Link, work) : work();
}

int unlink(const char *path) noexcept
{
    static const auto real = next<int(const char *)>("unlink");
    const auto work = [=] { return real(path); };
    return concerns(path) ? judged(Call::Unlink, work) : work();
}

int open(const char *path, int flags, ...)
{
    static const auto real = next<int(const char *, int, ...)>("open");
    std::va_list list;
    va_start(list, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(list, mode_t) : 0;
    va_end(list);
    const auto work = [=] { return real(path, flags, mode); };
    return concerns(path) ? judged(Call::Open, work) : work();
}

} // extern "C"
