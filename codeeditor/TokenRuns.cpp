#include "codeeditor/TokenRuns.h"

#include "codeeditor/CodeLayout.h"
#include "codeeditor/FormatOverlay.h"
#include "codeeditor/TDTokenizer.h"

#include <QTextBlock>
#include <algorithm>

namespace runebook {

void TokenRuns::clear()
{
    m_runs.clear();
    m_textLength = 0;
}

void TokenRuns::append(Runs &runs, int start, int length, int format)
{
    if (format != TokenFormats::kNone && length > 0)
        runs.push_back({start, length, format});
}

void TokenRuns::scan(TDTokenizer &tokenizer, const TokenFormats &formats, int textLength)
{
    m_runs.clear();
    m_textLength = textLength;
    const TDToken *const end = TDToken::EOFToken();
    int position = 0;
    for (const TDToken *token = tokenizer.nextToken(); token != end; token = tokenizer.nextToken()) {
        const int length = int(token->stringValue().size());
        if (length > textLength - position)
            break; // the text and the tokens disagree
        const int format = formats.indexFor(*token);
        append(m_runs, position, length, format == TokenFormats::kNone ? formats.defaultIndex() : format);
        position += length;
        if (position >= kColouredLength)
            break;
    }
    append(m_runs, position, textLength - position, formats.defaultIndex());
}

TextRange TokenRuns::rescan(TDTokenizer &tokenizer, const TokenFormats &formats, int from, int removed,
                            int added)
{
    Q_ASSERT(formats.defaultIndex() == TokenFormats::kNone);
    // A token may have looked at some characters behind its end, so those close to the edit are cut anew.
    const int untouched = from - tokenizer.longestLookAhead();
    const auto firstOld = std::partition_point(
        m_runs.begin(), m_runs.end(), [untouched](const Run &run) { return run.end() <= untouched; });
    const int shift = added - removed;
    const int start = firstOld == m_runs.begin() ? 0 : std::prev(firstOld)->end();
    TDReader reader;
    reader.setOffset(start);
    tokenizer.setReader(reader);

    Runs fresh;
    auto lastOld = firstOld;
    int position = start;
    const TDToken *const end = TDToken::EOFToken();
    for (const TDToken *token = tokenizer.nextToken(); token != end && position < kColouredLength;
         token = tokenizer.nextToken()) {
        if (position >= from + added) {
            // Where an old token begins in text that did not change, all further tokens are the old ones.
            while (lastOld != m_runs.end() && lastOld->start + shift < position)
                ++lastOld;
            if (lastOld != m_runs.end() && lastOld->start + shift == position)
                break;
        }
        append(fresh, position, int(token->stringValue().size()), formats.indexFor(*token));
        position += int(token->stringValue().size());
    }
    if (position >= std::min(kColouredLength, int(tokenizer.string().size())))
        lastOld = m_runs.end();

    if (shift != 0)
        std::for_each(lastOld, m_runs.end(), [shift](Run &run) { run.start += shift; });
    const auto common = std::min(lastOld - firstOld, std::ptrdiff_t(fresh.size()));
    const auto behind = std::copy_n(fresh.begin(), common, firstOld);
    if (lastOld > behind)
        m_runs.erase(behind, lastOld);
    else
        m_runs.insert(behind, fresh.begin() + common, fresh.end());
    m_textLength += shift;
    return {start, position - start};
}

TextRange TokenRuns::differenceFrom(const TokenRuns &before) const
{
    const auto front =
        std::mismatch(m_runs.begin(), m_runs.end(), before.m_runs.begin(), before.m_runs.end());
    const int shift = m_textLength - before.m_textLength;
    const auto sameShifted = [shift](const Run &now, const Run &then) {
        return now.start == then.start + shift && now.length == then.length && now.format == then.format;
    };
    // The same run must not count for the front and for the end.
    const auto back =
        std::mismatch(m_runs.rbegin(), std::make_reverse_iterator(front.first), before.m_runs.rbegin(),
                      std::make_reverse_iterator(front.second), sameShifted);
    int first = m_textLength;
    int last = 0;
    if (front.first != back.first.base()) {
        first = front.first->start;
        last = std::prev(back.first.base())->end();
    }
    if (front.second != back.second.base()) {
        first = std::min(first, front.second->start);
        last = std::max(last, std::prev(back.second.base())->end() + shift);
    }
    first = std::clamp(first, 0, m_textLength);
    return {first, std::max(0, std::min(last, m_textLength) - first)};
}

TokenRuns::Runs::const_iterator TokenRuns::firstRunBehind(int index) const
{
    return std::partition_point(m_runs.begin(), m_runs.end(),
                                [index](const Run &run) { return run.end() <= index; });
}

int TokenRuns::formatAt(int index, TextRange *run) const
{
    const auto found = firstRunBehind(index);
    if (found == m_runs.end() || found->start > index) {
        const int start = found == m_runs.begin() ? 0 : std::prev(found)->end();
        if (run)
            *run = {start, (found == m_runs.end() ? m_textLength : found->start) - start};
        return TokenFormats::kNone;
    }
    if (run)
        *run = {found->start, found->length};
    return found->format;
}

TextRange TokenRuns::applyTo(const QTextDocument &document, TextRange range,
                             const TokenFormats &formats) const
{
    QTextBlock block = document.findBlock(range.location);
    int start = block.position();
    auto run = firstRunBehind(start);
    TextRange touched;
    FormatRanges overlay;
    for (; block.isValid() && start <= range.end(); block = block.next()) {
        const int length = block.length();
        const int end = start + length - 1; // the break has no looks of its own
        const bool isShaped = length <= CodeLayout::kLongestShapedBlock;
        int reached = start;
        const auto fillTo = [&](int place) { // an unshaped paragraph has no gaps
            if (!isShaped && place > reached)
                overlay.append({reached - start, place - reached, formats.unshapedAt(TokenFormats::kNone)});
        };
        overlay.clear();
        auto inBlock = run;
        for (; inBlock != m_runs.end() && inBlock->start < end; ++inBlock) {
            const int first = std::max(inBlock->start, start);
            const int last = std::min(inBlock->end(), end);
            if (last <= first || formats.isInvisible(inBlock->format)
                || (!isShaped && overlay.size() >= kMostPiecesUnshaped))
                continue;
            fillTo(first);
            overlay.append({first - start, last - first,
                            isShaped ? formats.at(inBlock->format) : formats.unshapedAt(inBlock->format)});
            reached = last;
        }
        fillTo(end);
        if (setOverlay(block, overlay))
            touched = touched.length == 0 ? TextRange {start, length} : touched.united({start, length});
        start += length;
        run = inBlock;
        while (run != m_runs.begin() && std::prev(run)->end() > start)
            --run;
    }
    return touched;
}

} // namespace runebook
