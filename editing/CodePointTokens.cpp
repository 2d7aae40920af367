#include "editing/CodePointTokens.h"

#include "model/StringHelpers.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

QStringList normalizedCodePointTokens(const QStringList &tokens)
{
    QStringList kept;
    for (const QString &token : tokens) {
        const bool isShort = !token.isEmpty() && token.size() < 4;
        const QString padded = (isShort ? ("0000"_L1 + token).last(4) : token).toUpper();
        if (std::all_of(padded.begin(), padded.end(), isHexDigit))
            kept << padded;
    }
    return kept;
}

QStringList codePointTokensInText(const QString &text)
{
    QStringList tokens;
    qsizetype start = 0;
    const auto isSeparator = [](QChar character) {
        return character == u',' || character == u';' || character.isSpace();
    };
    for (qsizetype at = 0; at <= text.size(); ++at) {
        if (at < text.size() && !isSeparator(text.at(at)))
            continue;
        QString token = text.mid(start, at - start);
        start = at + 1;
        if (token.startsWith("U+"_L1, Qt::CaseInsensitive) || token.startsWith("0x"_L1, Qt::CaseInsensitive))
            token.remove(0, 2);
        if (!token.isEmpty())
            tokens << token;
    }
    return tokens;
}

} // namespace runebook
