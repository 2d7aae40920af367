#pragma once

#include <QThread>
#include <future>
#include <vector>

namespace runebook {

/// In how many parts of at least \a smallest something of that size is worth working on at the same time.
inline qsizetype usefulParts(qsizetype size, qsizetype smallest)
{
    const qsizetype threads = qBound(1, QThread::idealThreadCount(), 8);
    return qBound(qsizetype(1), size / smallest, threads);
}

/// Calls \a work(part) for every part from 0 on, all at the same time. Returns when all are done; passes on
/// what one of them throws.
template <typename Work> void inParallel(qsizetype parts, const Work &work)
{
    // Without a free thread a part is done when it is waited for.
    std::vector<std::future<void>> others;
    for (qsizetype part = 1; part < parts; ++part)
        others.push_back(std::async([&work, part] { work(part); }));
    work(0);
    for (std::future<void> &other : others)
        other.get();
}

} // namespace runebook
