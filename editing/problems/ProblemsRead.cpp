// Of the problems of a document: what was met when its file was read, and all of them in words.
#include "document/SavableForm.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/problems/Problems.h"
#include "model/CodePointRules.h"
#include "model/NameRules.h"
#include "platform/ShownText.h"

#include <QLocale>
#include <functional>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

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
    case ReadNotes::CodePoints:
    case ReadNotes::KindCount:
        break;
    }
    return {};
}

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

/// A text from a file, short enough to be read in a line.
QString quoted(const QString &text)
{
    constexpr qsizetype kLongest = 80;
    const QString line = cellDisplayText(text);
    return u"“"_s + shownText(line, kLongest) + u'”';
}

/// One entry of a list that is kept in one text; the others become no texts of their own.
QString entryOf(const VXGlyphInfo &info, GlyphField field, int index)
{
    std::string buffer;
    std::string_view rest = info.utf8(field, buffer);
    const std::string_view separator(kListSeparator.data(), static_cast<std::size_t>(kListSeparator.size()));
    for (; index > 0; --index) {
        const std::size_t end = rest.find(separator);
        if (end == rest.npos)
            return {};
        rest.remove_prefix(end + separator.size());
    }
    return FieldValue::textOfUtf8(rest.substr(0, rest.find(separator)));
}

} // namespace

void Problems::bindNotes()
{
    m_notes.clear();
    std::fill(m_counts.begin() + static_cast<int>(kFirstReadProblem), m_counts.end(), 0);
    const ReadNotes &notes = m_document.readNotes();
    for (const ReadNotes::Note &note : notes.notes) {
        if (const std::optional<ProblemKind> kind = kindOfNote(note.kind))
            m_notes.push_back({*kind, m_document.objectInInfosAtIndex(note.record), note.text, note.offset});
    }
    for (int each = 0; each < ReadNotes::KindCount; ++each) {
        if (const auto kind = kindOfNote(static_cast<ReadNotes::Kind>(each)))
            m_counts[static_cast<std::size_t>(*kind)] = notes.counts[each];
    }
    addFileNotes(notes);
    m_ends = {m_document.objectInInfosAtIndex(0),
              m_document.objectInInfosAtIndex(m_document.countOfInfos() - 1)};
}

void Problems::addFileNotes(const ReadNotes &notes)
{
    const auto add = [this](const QString &text) {
        m_notes.push_back({ProblemKind::FileForm, {}, text, -1});
        ++m_counts[static_cast<std::size_t>(ProblemKind::FileForm)];
    };
    if (const Error &error = m_document.readError(); !error.domain.isEmpty())
        add(tr("The file could not be read, so the document is empty.") + u' ' + error.text());
    if (notes.hasByteOrderMark)
        add(tr("The file begins with a byte order mark. Saving leaves it out."));
    if (notes.hasCarriageReturns)
        add(tr("Lines end with carriage returns. Saving ends every line with a line feed alone."));
    if (notes.hasForeignHeader)
        add(tr("The lines before the first record are not the usual ones. Saving replaces them."));
}

/// Whether the list is still the one that was read, be it in another order.
bool Problems::isSameList() const
{
    const auto stands = [](const std::weak_ptr<VXGlyphInfo> &reference) {
        const InfoPtr info = reference.lock();
        return info && info->listings() > 0;
    };
    return std::any_of(m_ends.begin(), m_ends.end(), stands)
        || std::any_of(m_notes.begin(), m_notes.end(),
                       [&stands](const ReadNote &note) { return stands(note.info); });
}

void Problems::appendRead(std::optional<ProblemKind> kind, std::vector<Problem> &problems) const
{
    for (std::size_t i = 0; i < m_notes.size(); ++i) {
        if (!kind || m_notes[i].kind == *kind)
            problems.push_back({m_notes[i].kind, m_notes[i].info.lock(), static_cast<int>(i)});
    }
}

qint64 Problems::offsetOf(const Problem &problem) const
{
    const auto note = static_cast<std::size_t>(problem.part);
    return problem.kind >= kFirstReadProblem && note < m_notes.size() ? m_notes[note].offset : -1;
}

// In words

QString Problems::explanation(const Problem &problem) const
{
    if (problem.kind >= kFirstReadProblem) {
        const auto note = static_cast<std::size_t>(problem.part);
        return note < m_notes.size() ? cellDisplayText(m_notes[note].text) : QString();
    }
    if (!problem.info)
        return {};
    const VXGlyphInfo &info = *problem.info;
    std::string buffer;
    switch (problem.kind) {
    case ProblemKind::MissingName:
        return info.name().isEmpty() ? tr("The record has no name.")
                                     : tr("The name is the one of records without a name.");
    case ProblemKind::InvalidName:
        return cellDisplayText(textOfObjection(objectionToName(QStringView(info.name()))));
    case ProblemKind::DuplicateName: {
        const quint64 key =
            qMax<quint64>(1, std::hash<std::string_view>()(info.utf8(GlyphField::Name, buffer)));
        return tr("%1 records have this name.").arg(numberText(m_names.count(key)));
    }
    case ProblemKind::RepeatingAltName: {
        const QString name = entryOf(info, GlyphField::AltNames, problem.part);
        return cellDisplayText(
            objectionToText(m_document, {problem.info}, GlyphField::AltNames, name).description);
    }
    case ProblemKind::InvalidCodePoint:
        return codePointExplanation(info);
    case ProblemKind::DuplicateCodePoint: {
        const QString text = info.unicodes().value(problem.part);
        const auto codePoint = codePointOfText(text.toStdString());
        const quint32 count = codePoint ? m_codes.count(quint64(*codePoint) + 1) : 0;
        return tr("%1 stands %2 times in the document.").arg(quoted(text), numberText(count));
    }
    case ProblemKind::ManyCodePoints:
        return tr("Of %1 code points a file keeps two.").arg(numberText(info.unicodes().size()));
    case ProblemKind::LongName:
        return tr("The name has %1 characters.").arg(numberText(info.name().toUcs4().size()));
    case ProblemKind::MissingComponent:
        return tr("No record is called %1.").arg(quoted(entryOf(info, GlyphField::Decompose, problem.part)));
    case ProblemKind::SelfReference:
        return tr("%1 holds the record’s own name.").arg(fieldTitle(GlyphField::Decompose));
    case ProblemKind::UnknownCategory:
        return tr("%1 is no known category.").arg(quoted(info.category()));
    case ProblemKind::UnknownSubCategory:
        return tr("%1 is no known subcategory.").arg(quoted(info.subCategory()));
    case ProblemKind::UnknownScript:
        return tr("%1 is no known script.").arg(quoted(info.script()));
    default:
        return lossExplanation(info, problem.kind);
    }
}

QString Problems::codePointExplanation(const VXGlyphInfo &info) const
{
    constexpr qsizetype kMost = 8;
    QStringList sentences;
    for (const QString &text : info.unicodes()) {
        if (sentences.size() == kMost) {
            sentences << u"…"_s;
            break;
        }
        switch (objectionToCodePoint(text.toStdString())) {
        case CodePointObjection::None:
            break;
        case CodePointObjection::NoNumber:
            sentences << tr("%1 is no hexadecimal number.").arg(quoted(text));
            break;
        case CodePointObjection::TooLarge:
            sentences << tr("%1 is beyond the last code point, 10FFFF.").arg(quoted(text));
            break;
        case CodePointObjection::Surrogate:
            sentences << tr("%1 is a surrogate, half a character.").arg(quoted(text));
            break;
        case CodePointObjection::Form:
            sentences << tr("%1 is not written as four to six upper-case digits.").arg(quoted(text));
            break;
        }
    }
    return sentences.join(u' ');
}

QString Problems::lossExplanation(const VXGlyphInfo &info, ProblemKind kind) const
{
    QStringList sentences;
    if (kind == ProblemKind::QuoteOrBreak) {
        std::string buffer;
        for (const GlyphField field : RoundTrip::writtenFields()) {
            const std::string_view text = info.utf8(field, buffer);
            if (text.find('"') != text.npos)
                sentences << tr("%1 holds a double quote.").arg(fieldTitle(field));
            if (text.find('\n') != text.npos)
                sentences << tr("%1 holds a line break.").arg(fieldTitle(field));
        }
        return sentences.join(u' ');
    }
    for (const RoundTrip::Loss &loss : RoundTrip(m_document.fileVersion()).losses(info))
        sentences << sentenceOfLoss(info, loss, fieldTitle(loss.field));
    return sentences.join(u' ');
}

} // namespace runebook
