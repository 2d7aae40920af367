#include "editing/fields/CodePointTokens.h"

#include "model/CodePointRules.h"
#include "model/FieldValue.h"
#include "model/StringHelpers.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CodePointTokens)
};

} // namespace

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

CodePointText codePointsOfText(const QString &text)
{
    CodePointText result;
    for (const QString &token : codePointTokensInText(text)) {
        const QString normalized = normalizedCodePointTokens({token}).value(0);
        const CodePointObjection objection = objectionToCodePoint(normalized.toStdString());
        // A file can hold other forms of the number, and the list of problems offers to correct them.
        if (objection == CodePointObjection::None || objection == CodePointObjection::Form)
            result.kept << normalized;
        else
            result.leftOut << token;
    }
    return result;
}

QString CodePointText::remark() const
{
    constexpr qsizetype kQuoted = 5;
    constexpr qsizetype kLongest = 20;
    QStringList words;
    if (!leftOut.isEmpty()) {
        QStringList quoted;
        for (const QString &token : leftOut.first(qMin(leftOut.size(), kQuoted)))
            quoted << u'“' + (token.size() > kLongest ? token.first(kLongest) + u'…' : token) + u'”';
        if (leftOut.size() > kQuoted)
            quoted << u"…"_s;
        words << Texts::tr("Left out, for it is no code point: %1").arg(quoted.join(kListSeparator));
    }
    if (kept.size() > kCodePointsInFile)
        words << Texts::tr("A file keeps two code points of a glyph. Saving will leave out: %1")
                     .arg(kept.sliced(kCodePointsInFile).join(kListSeparator));
    return words.isEmpty() ? QString() : words.join(u'\n');
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
