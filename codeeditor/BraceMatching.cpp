#include "codeeditor/BraceMatching.h"

#include "codeeditor/CodeEditorSettings.h"

#include <QDebug>
#include <array>

using namespace Qt::StringLiterals;
using runebook::BraceLists;
using runebook::TextRange;

namespace {

constexpr int kMaximumDepth = 100;
constexpr int kChunkLength = 512; // read at a time

enum BraceKind : quint8 { NoBrace = 0, Opening = 1, Closing = 2 };

/// The process-wide lists, with what a scan asks of each character looked up beforehand.
struct Braces {
    BraceLists lists;
    std::array<quint8, 256> latin1Kinds {};

    void setLists(const BraceLists &newLists)
    {
        lists = newLists;
        for (char16_t c = 0; c < 256; ++c)
            latin1Kinds[c] = kindFromLists(c);
    }

    quint8 kindFromLists(char16_t c) const
    {
        return quint8((lists.opening.contains(QChar(c)) ? Opening : NoBrace)
                      | (lists.closing.contains(QChar(c)) ? Closing : NoBrace));
    }

    quint8 kindOf(char16_t c) const { return c < 256 ? latin1Kinds[c] : kindFromLists(c); }

    /// The other brace of the pair that \a brace belongs to: the first index at which it stands in either.
    char16_t partnerOf(char16_t brace) const
    {
        for (qsizetype i = 0; i < lists.opening.size(); ++i) {
            if (lists.opening[i] == QChar(brace))
                return lists.closing[i].unicode();
            if (lists.closing[i] == QChar(brace))
                return lists.opening[i].unicode();
        }
        return 0;
    }
};

Braces &processBraces()
{
    static Braces braces;
    return braces;
}

/// The braces that are open on the way from the first one to its partner.
class BraceStack
{
public:
    enum class Result { Continue, Found, Failed };

    BraceStack(char16_t first, BraceKind sameKind) : m_sameKind(sameKind) { m_stack[0] = first; }

    /// Takes the brace \a c, of the kinds \a kinds, in the direction of the scan.
    Result visit(char16_t c, quint8 kinds) { return kinds & m_sameKind ? push(c) : close(c); }

private:
    Result push(char16_t c)
    {
        if (m_depth > kMaximumDepth - 1) {
            qWarning("Skeigrukra: Exhausted stack depth for delimiter matching.  Giving up.");
            return Result::Failed;
        }
        m_stack[std::size_t(m_depth++)] = c;
        return Result::Continue;
    }

    Result close(char16_t c)
    {
        if (processBraces().partnerOf(c) != m_stack[std::size_t(m_depth - 1)])
            return Result::Failed;
        return --m_depth == 0 ? Result::Found : Result::Continue;
    }

    BraceKind m_sameKind;
    std::array<char16_t, kMaximumDepth> m_stack {};
    int m_depth = 1;
};

} // namespace

BraceLists BraceLists::fromDefaults(const QString &opening, const QString &closing)
{
    if (!opening.isNull()) {
        if (!closing.isNull() && closing.size() == opening.size())
            return {opening, closing};
        qWarning("Skeigrukra: Values for user defaults keys TEOpeningBracesCharacters and "
                 "TEClosingBracesCharacters must both be present and the same length if either one is set.");
    }
    return {u"{[(\u00AB"_s, u"}])\u00BB"_s};
}

void initBraces()
{
    static bool made = false;
    if (made)
        return;
    made = true;
    processBraces().setLists(BraceLists::fromDefaults(runebook::Settings::kOpeningBraces.value(),
                                                      runebook::Settings::kClosingBraces.value()));
}

bool TE_isOpeningBrace(char16_t character)
{
    const bool hadLists = !processBraces().lists.opening.isEmpty();
    initBraces();
    return hadLists && (processBraces().kindOf(character) & Opening);
}

bool TE_isClosingBrace(char16_t character)
{
    const bool hadLists = !processBraces().lists.opening.isEmpty();
    initBraces();
    return hadLists && (processBraces().kindOf(character) & Closing);
}

std::optional<TextRange> TE_findMatchingBraceForRangeInString(int index, QStringView string)
{
    return runebook::findMatchingBrace(index, {0, int(string.size())}, [string](TextRange range) {
        return QString::fromRawData(string.data() + range.location, range.length);
    });
}

std::optional<TextRange> runebook::findMatchingBrace(int index, TextRange searched,
                                                     const std::function<QString(TextRange)> &read)
{
    if (!searched.contains(index))
        return std::nullopt;
    const char16_t first = read({index, 1}).front().unicode();
    const bool forward = TE_isOpeningBrace(first);
    if (!forward && !TE_isClosingBrace(first))
        return std::nullopt;

    const Braces &braces = processBraces();
    BraceStack stack(first, forward ? Opening : Closing);
    const int step = forward ? 1 : -1;
    for (int at = index + step; searched.contains(at);) {
        const int count = std::min(kChunkLength, forward ? searched.end() - at : at + 1 - searched.location);
        const TextRange range {forward ? at : at - count + 1, count};
        const QString chunk = read(range);
        const char16_t *const units = QStringView(chunk).utf16();
        for (const int end = at + count * step; at != end; at += step) {
            const char16_t c = units[at - range.location];
            const quint8 kinds = braces.kindOf(c);
            if (kinds == NoBrace)
                continue;
            const BraceStack::Result result = stack.visit(c, kinds);
            if (result == BraceStack::Result::Found)
                return TextRange {at, 1};
            if (result == BraceStack::Result::Failed)
                return std::nullopt;
        }
    }
    return std::nullopt;
}
