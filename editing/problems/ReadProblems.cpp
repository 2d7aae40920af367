#include "editing/problems/ReadProblems.h"

#include "editing/fields/GlyphColumns.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ReadProblems)
};

/// Nothing for what the records themselves tell, more truly, as long as they hold it.
std::optional<ProblemKind> kindOfNote(ReadNotes::Kind kind)
{
    switch (kind) {
    case ReadNotes::Comment:
        return ProblemKind::Comment;
    case ReadNotes::UnknownAttribute:
        return ProblemKind::UnknownAttribute;
    case ReadNotes::UnreadRest:
        return ProblemKind::UnreadRest;
    case ReadNotes::DroppedAttribute:
        return ProblemKind::DroppedAttribute;
    case ReadNotes::ForeignLine:
        return ProblemKind::ForeignLine;
    case ReadNotes::OtherMeaning:
        return ProblemKind::OtherMeaning;
    case ReadNotes::Conflict:
        return ProblemKind::Conflict;
    case ReadNotes::TableProblem:
        return ProblemKind::TableProblem;
    case ReadNotes::CodePoints:
    case ReadNotes::KindCount:
        break;
    }
    return {};
}

} // namespace

void ReadProblems::clear()
{
    m_notes.clear();
    m_counts.fill(0);
}

void ReadProblems::take(const VXDocument &document)
{
    clear();
    const ReadNotes &notes = document.readNotes();
    for (const ReadNotes::Note &note : notes.notes) {
        if (const std::optional<ProblemKind> kind = kindOfNote(note.kind))
            m_notes.push_back({*kind, document.objectInInfosAtIndex(note.record), note.text, note.offset});
    }
    for (int each = 0; each < ReadNotes::KindCount; ++each) {
        if (const auto kind = kindOfNote(static_cast<ReadNotes::Kind>(each)))
            m_counts[static_cast<std::size_t>(*kind)] = notes.counts[each];
    }
    takeOfFile(document);
    m_ends = {document.objectInInfosAtIndex(0), document.objectInInfosAtIndex(document.countOfInfos() - 1)};
}

void ReadProblems::takeOfFile(const VXDocument &document)
{
    const auto add = [this](const QString &text) {
        m_notes.push_back({ProblemKind::FileForm, {}, text, -1});
        ++m_counts[static_cast<std::size_t>(ProblemKind::FileForm)];
    };
    const ReadNotes &notes = document.readNotes();
    if (const Error &error = document.readError(); !error.domain.isEmpty())
        add(Texts::tr("The file could not be read, so the document is empty.") + u' ' + error.text());
    if (notes.hasByteOrderMark)
        add(Texts::tr("The file begins with a byte order mark. Saving leaves it out."));
    if (notes.hasCarriageReturns)
        add(Texts::tr("Lines end with carriage returns. Saving ends every line with a line feed alone."));
    if (notes.hasForeignHeader)
        add(Texts::tr("The lines before the first record are not the usual ones. Saving replaces them."));
}

bool ReadProblems::areOfSameList() const
{
    const auto stands = [](const std::weak_ptr<VXGlyphInfo> &reference) {
        const InfoPtr info = reference.lock();
        return info && info->listings() > 0;
    };
    return std::any_of(m_ends.begin(), m_ends.end(), stands)
        || std::any_of(m_notes.begin(), m_notes.end(),
                       [&stands](const Note &note) { return stands(note.info); });
}

void ReadProblems::append(std::optional<ProblemKind> kind, std::vector<Problem> &problems) const
{
    for (std::size_t i = 0; i < m_notes.size(); ++i) {
        if (!kind || m_notes[i].kind == *kind)
            problems.push_back({m_notes[i].kind, m_notes[i].info.lock(), static_cast<int>(i)});
    }
}

const ReadProblems::Note *ReadProblems::noteOf(const Problem &problem) const
{
    const auto number = static_cast<std::size_t>(problem.part);
    return problem.kind >= kFirstReadProblem && number < m_notes.size() ? &m_notes[number] : nullptr;
}

qint64 ReadProblems::offsetOf(const Problem &problem) const
{
    const Note *note = noteOf(problem);
    return note ? note->offset : -1;
}

QString ReadProblems::textOf(const Problem &problem) const
{
    const Note *note = noteOf(problem);
    return note ? cellDisplayText(note->text) : QString();
}

} // namespace runebook
