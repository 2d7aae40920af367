#pragma once

#include "scripting/panel/ConsoleText.h"

#include <deque>
#include <memory>

namespace runebook {

/// How much the console keeps. The oldest goes first.
struct ConsoleLimits {
    qsizetype lines = 100'000;
    qsizetype units = 16'000'000; ///< UTF-16 units
};

/// Output on its way to the console's view: gathered as it is written, marked as it is taken. Never holds
/// more than the view would keep, however fast a script writes.
class ConsoleBuffer
{
public:
    /// Adds one write. The names of errors are marked once for each write; one of some megabytes is marked
    /// bit by bit as it is taken, so that adding it costs next to nothing. Answers how many lines had to go
    /// for it.
    qsizetype append(const QString &text, const ConsoleLimits &limits);
    /// More of the last write that was too large to be marked at once.
    qsizetype continueWrite(const QString &text, const ConsoleLimits &limits);
    /// The next piece, some 30,000 units at most, that ends a line if it can. Not when empty.
    ConsoleText take();
    bool isEmpty() const { return m_entries.empty(); }
    void clear();

private:
    /// What was marked so far in one write.
    struct Marks {
        QStringList names;
        bool hasTraceback = false;
    };
    struct Entry {
        ConsoleText marked; ///< small writes that follow each other
        QString raw; ///< or a large one, from here on
        qsizetype place = 0;
        std::shared_ptr<Marks> marks; ///< shared by the pieces of that write
        qsizetype lines = 0;

        bool isRaw() const { return !raw.isNull(); }
        qsizetype units() const { return isRaw() ? raw.size() - place : marked.text.size(); }
    };

    void appendMarked(const QString &text);
    void appendRaw(const QString &text, qsizetype maxUnits, const std::shared_ptr<Marks> &marks);
    qsizetype dropOldest(const ConsoleLimits &limits);
    static void keepFirstMarks(ConsoleText &text, Marks &marks);
    ConsoleText takeSlice(Entry &entry);

    std::deque<Entry> m_entries;
    std::shared_ptr<Marks> m_lastMarks = std::make_shared<Marks>();
    qsizetype m_lines = 0;
    qsizetype m_units = 0;
};

} // namespace runebook
