#pragma once

#include "codeeditor/TextRange.h"
#include "codeeditor/TokenFormats.h"

#include <QTextDocument>
#include <vector>

class TDTokenizer;

namespace runebook {

/// What a colouring pass found: the pieces of a text that have a format, in order. Comparing it with what the
/// pass before found tells which blocks need to be touched.
class TokenRuns
{
public:
    /// Text behind this many characters is not coloured.
    static constexpr int kColouredLength = 500'000;

    /// A paragraph that is too long to be shaped is painted in colours up to so many pieces: each row that
    /// ends inside of a piece moves all pieces behind it. formatAt() knows the others as well.
    static constexpr int kMostPiecesUnshaped = 5'000;

    /// Asks \a tokenizer, which holds a text of \a textLength units, for all its tokens.
    void scan(TDTokenizer &tokenizer, const TokenFormats &formats, int textLength);
    /// Makes of the runs of a text those of the text in which, at \a from, \a removed characters became \a
    /// added ones: what scan() would find, at the cost of the tokens that changed, as a token depends on
    /// nothing in front of it. Only where the coloured length ends stays as it was in the old text, until the
    /// next scan. \a tokenizer holds the new text. Answers the piece of it that was looked at.
    TextRange rescan(TDTokenizer &tokenizer, const TokenFormats &formats, int from, int removed, int added);
    /// Forgets everything: the next pass differs everywhere.
    void clear();
    bool isEmpty() const { return m_runs.empty(); }

    /// The piece of the scanned text in which the runs differ from \a before, the runs of the text as it was;
    /// what only moved along with the text's end does not differ.
    TextRange differenceFrom(const TokenRuns &before) const;

    /// Lays the formats over the blocks of \a document that \a range touches. Only blocks that have others
    /// are changed; answers the piece of text that they are.
    TextRange applyTo(const QTextDocument &document, TextRange range, const TokenFormats &formats) const;

    /// The number of the format at \a index, or TokenFormats::kNone; \a run gets the piece that has it, or
    /// none.
    int formatAt(int index, TextRange *run = nullptr) const;

private:
    struct Run {
        int start;
        int length;
        int format;
        int end() const { return start + length; }
        bool operator==(const Run &) const = default;
    };

    using Runs = std::vector<Run>;

    static void append(Runs &runs, int start, int length, int format);
    Runs::const_iterator firstRunBehind(int index) const;

    Runs m_runs;
    int m_textLength = 0;
};

} // namespace runebook
