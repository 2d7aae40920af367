#pragma once

#include "codeeditor/TextRange.h"
#include "codeeditor/TokenFormats.h"

#include <QTextDocument>
#include <vector>

class TDTokenizer;

namespace runebook {

/// What a colouring pass found: the pieces of a text that have a format, in order. Made anew from the whole
/// text by each pass; comparing it with the pass before tells which blocks need to be touched.
class TokenRuns
{
public:
    /// Text behind this many characters is not coloured.
    static constexpr int colouredLength = 500'000;

    /// Asks \a tokenizer, which holds a text of \a textLength units, for all its tokens.
    void scan(TDTokenizer &tokenizer, const TokenFormats &formats, int textLength);
    /// Forgets everything: the next pass differs everywhere.
    void clear();
    bool isEmpty() const { return m_runs.empty(); }

    /// The piece of the scanned text in which the runs differ from \a before, the runs of the text as it was;
    /// what only moved along with the text's end does not differ.
    TextRange differenceFrom(const TokenRuns &before) const;

    /// Lays the formats over the blocks of \a document that \a range touches. Only blocks that have others
    /// are changed; answers the piece of text that they are.
    TextRange applyTo(const QTextDocument &document, TextRange range, const TokenFormats &formats) const;

    /// The number of the format at \a index, or TokenFormats::none.
    int formatAt(int index) const;

private:
    struct Run {
        int start;
        int length;
        int format;
        int end() const { return start + length; }
        bool operator==(const Run &) const = default;
    };

    void append(int start, int length, int format);
    std::vector<Run>::const_iterator firstRunBehind(int index) const;

    std::vector<Run> m_runs;
    int m_textLength = 0;
};

} // namespace runebook
