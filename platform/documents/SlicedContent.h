#pragma once

#include "platform/documents/FileSaver.h"

#include <chrono>
#include <string>

namespace runebook {

/// Prints the content of a document a little at a time, so that nobody has to wait for the whole. Main thread
/// only.
class SlicedContent
{
public:
    enum class Progress {
        Unfinished,
        Finished,
        Outdated ///< the document has changed meanwhile; what was printed belongs to no state of it
    };

    virtual ~SlicedContent() = default;
    /// Appends to \a output what can be printed in about \a budget, at least something.
    virtual Progress printMore(std::string &output, std::chrono::microseconds budget) = 0;
    /// What comes behind all that was printed, for who writes it on any thread: values so long that printing
    /// them would hold the main thread. To be taken once, when the rest is finished; null when there is
    /// nothing more.
    virtual ContentProducer takeRest() { return {}; }
    /// About how many bytes that is in all.
    virtual qint64 size() const = 0;
    /// Whether the document is still as it was when this was made.
    virtual bool isCurrent() const = 0;
};

} // namespace runebook
