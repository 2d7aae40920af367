#pragma once

#include "document/VXDocument.h"
#include "editing/problems/Problem.h"

#include <array>

namespace runebook {

/// What was met when the file of a document was read. It counts until the file is saved, with the records
/// that it was met at, wherever they stand by now.
class ReadProblems
{
public:
    using Counts = std::array<qsizetype, kProblemKindCount>;

    /// Takes what the document tells of its file.
    void take(const VXDocument &document);
    void clear();
    /// How many there are, by kind; 0 for all that do not come from reading.
    const Counts &counts() const { return m_counts; }
    /// Whether the list is still the one that was read, be it in another order.
    bool areOfSameList() const;
    /// Appends those of one kind (nothing: all). Of very many only the first are kept.
    void append(std::optional<ProblemKind> kind, std::vector<Problem> &problems) const;
    /// Where the line of one begins in the file's bytes; -1 for the file as a whole.
    qint64 offsetOf(const Problem &problem) const;
    /// What was met, in words.
    QString textOf(const Problem &problem) const;

private:
    struct Note {
        ProblemKind kind;
        std::weak_ptr<VXGlyphInfo> info;
        QString text;
        qint64 offset = -1;
    };

    void takeOfFile(const VXDocument &document);
    const Note *noteOf(const Problem &problem) const;

    std::vector<Note> m_notes;
    Counts m_counts {};
    std::array<std::weak_ptr<VXGlyphInfo>, 2> m_ends; ///< of the list to which the notes belong
};

} // namespace runebook
