// Cuts arbitrary text into tokens and colours an arbitrary edit of it. Aborts when a token is empty, when the
// tokens are not the text, or when what an edit leaves alone is not what the whole pass finds.
#include "codeeditor/KeywordTable.h"
#include "codeeditor/TDTokenizer.h"
#include "codeeditor/TokenRuns.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void checkTokens(TDTokenizer &tokenizer, const QString &text)
{
    tokenizer.setString(text);
    tokenizer.setReader(TDReader());
    qsizetype position = 0;
    for (const TDToken *token = tokenizer.nextToken(); token != TDToken::EOFToken();
         token = tokenizer.nextToken()) {
        const QStringView value = token->stringValue();
        require(!value.isEmpty() && value == QStringView(text).sliced(position, value.size()));
        position += value.size();
    }
    require(position == text.size());
}

/// The first three bytes choose where the text is edited, and how.
void checkEdit(TDTokenizer &tokenizer, QString text, const uint8_t *choice)
{
    static const TokenFormats formats(tokenizer.keywords(), 13, QPalette(), true);
    const int from = int(choice[0] % (text.size() + 1));
    const int removed = int(choice[1] % (text.size() - from + 1));
    const QString added = text.first(choice[2] % (text.size() + 1));

    TokenRuns edited;
    tokenizer.setString(text);
    tokenizer.setReader(TDReader());
    edited.scan(tokenizer, formats, int(text.size()));
    text.replace(from, removed, added);
    tokenizer.setString(text);
    edited.rescan(tokenizer, formats, from, removed, int(added.size()));

    TokenRuns whole;
    tokenizer.setReader(TDReader());
    whole.scan(tokenizer, formats, int(text.size()));
    require(whole.differenceFrom(edited).length == 0);
    for (int i = 0; i < int(text.size()); ++i)
        require(edited.formatAt(i) == whole.formatAt(i));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static TDTokenizer tokenizer = [] {
        TDTokenizer made;
        setUpPythonTokenizer(made, defaultKeywordAttributes({}, QPalette()));
        return made;
    }();
    checkTokens(tokenizer, QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size)));
    // As UTF-16 the same bytes hold lone surrogates; as Latin-1 they are nearly all Python.
    QString utf16(qsizetype(size / 2), Qt::Uninitialized);
    if (size > 1)
        memcpy(utf16.data(), data, size / 2 * 2);
    checkTokens(tokenizer, utf16);
    if (size > 3) {
        checkEdit(tokenizer,
                  QString::fromLatin1(reinterpret_cast<const char *>(data) + 3, qsizetype(size) - 3), data);
        checkEdit(tokenizer, utf16, data);
    }
    return 0;
}
