#pragma once

#include <string>
#include <vector>

/// How the program under torture speaks to the preloaded library that stands between it and the system. All
/// functions are found by name at run time; without the library there are none.
namespace torture {

enum class Call : char {
    Open = 'o',
    Write = 'w',
    Sync = 's',
    Truncate = 't',
    Reserve = 'a',
    Rename = 'r',
    Link = 'l',
    Unlink = 'u',
    Close = 'c'
};

enum class Action : int {
    Count, ///< let everything pass
    Fail, ///< that one call fails
    FailOn, ///< that call and all later ones of its kind fail
    Short, ///< that write takes only half
    Kill, ///< the process ends before that call
    KillAfter, ///< and after it
    Run ///< that call runs the function before it does its work
};

struct Fault {
    Action action = Action::Count;
    int place = 0; ///< 1-based place in the sequence of calls
    int error = 0; ///< errno of a failure
    void (*run)() = nullptr;
};

} // namespace torture

extern "C" {
/// Begins a new sequence: calls that concern files in the folder \a root are counted, and one is spoilt.
void torture_arm(const char *root, const torture::Fault *fault);
/// Ends it. The kinds of the calls that were counted, in their order; valid until the next sequence.
const char *torture_disarm();
}
