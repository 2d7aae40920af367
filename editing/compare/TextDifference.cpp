#include "editing/compare/TextDifference.h"

#include <algorithm>

namespace runebook {

namespace {

/// The longest table of common words that is worth its time: it has to be filled within a frame together
/// with those of the other fields.
constexpr std::size_t kMaxCells = 40'000;

/// Texts longer than this together are not taken apart into words.
constexpr qsizetype kMostWithWords = 100'000;

using Words = std::vector<TextPart>;

bool joinsWord(QChar c)
{
    return c.isLetterOrNumber() || c.isMark() || c.isSurrogate() || c == u'.' || c == u'_' || c == u'-';
}

Words wordsOf(QStringView text)
{
    Words words;
    for (qsizetype i = 0; i < text.size();) {
        qsizetype end = i + 1;
        if (joinsWord(text[i])) {
            while (end < text.size() && joinsWord(text[end]))
                ++end;
        } else {
            while (end < text.size() && text[end].isMark())
                ++end;
        }
        words.push_back({i, end - i});
        i = end;
    }
    return words;
}

QStringView textOf(QStringView text, const TextPart &part)
{
    return text.sliced(part.begin, part.length);
}

void append(std::vector<TextPart> &parts, const TextPart &part)
{
    if (part.length == 0)
        return;
    if (!parts.empty() && parts.back().begin + parts.back().length == part.begin)
        parts.back().length += part.length;
    else
        parts.push_back(part);
}

/// True where a character begins that stands for itself.
bool isBoundary(QStringView text, qsizetype place)
{
    return place == 0 || place == text.size() || (!text[place].isMark() && !text[place].isLowSurrogate());
}

/// Marks what differs in two words besides their common beginning and end.
void compareCharacters(QStringView left, const TextPart &a, QStringView right, const TextPart &b,
                       TextDifference &difference)
{
    const QStringView one = textOf(left, a);
    const QStringView other = textOf(right, b);
    const qsizetype shorter = std::min(one.size(), other.size());
    qsizetype start = 0;
    while (start < shorter && one[start] == other[start])
        ++start;
    while (!isBoundary(one, start) || !isBoundary(other, start))
        --start;
    qsizetype end = 0;
    while (end < shorter - start && one[one.size() - 1 - end] == other[other.size() - 1 - end])
        ++end;
    while (end > 0 && (!isBoundary(one, one.size() - end) || !isBoundary(other, other.size() - end)))
        --end;
    append(difference.left, {a.begin + start, one.size() - start - end});
    append(difference.right, {b.begin + start, other.size() - start - end});
}

/// Marks the words that are not part of the longest common row of words.
void compareWords(QStringView left, const Words &a, QStringView right, const Words &b,
                  TextDifference &difference)
{
    const std::size_t width = b.size() + 1;
    std::vector<quint16> common((a.size() + 1) * width);
    for (std::size_t i = a.size(); i-- > 0;) {
        for (std::size_t j = b.size(); j-- > 0;) {
            const bool same = textOf(left, a[i]) == textOf(right, b[j]);
            common[i * width + j] = same ? static_cast<quint16>(common[(i + 1) * width + j + 1] + 1)
                                         : std::max(common[(i + 1) * width + j], common[i * width + j + 1]);
        }
    }
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() || j < b.size()) {
        if (i < a.size() && j < b.size() && textOf(left, a[i]) == textOf(right, b[j])) {
            ++i;
            ++j;
        } else if (j == b.size()
                   || (i < a.size() && common[(i + 1) * width + j] >= common[i * width + j + 1])) {
            append(difference.left, a[i++]);
        } else {
            append(difference.right, b[j++]);
        }
    }
}

TextPart span(const Words &words)
{
    if (words.empty())
        return {};
    return {words.front().begin, words.back().begin + words.back().length - words.front().begin};
}

} // namespace

TextDifference differenceOfTexts(QStringView left, QStringView right)
{
    TextDifference difference;
    // Of what is shown of very long texts the place of the first difference is enough.
    if (left.size() + right.size() > kMostWithWords) {
        compareCharacters(left, {0, left.size()}, right, {0, right.size()}, difference);
        return difference;
    }
    Words a = wordsOf(left);
    Words b = wordsOf(right);
    const auto isSame = [&](const TextPart &x, const TextPart &y) {
        return textOf(left, x) == textOf(right, y);
    };
    const auto starts = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), isSame);
    a.erase(a.begin(), starts.first);
    b.erase(b.begin(), starts.second);
    const auto ends = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend(), isSame);
    a.erase(ends.first.base(), a.end());
    b.erase(ends.second.base(), b.end());

    if (a.size() == 1 && b.size() == 1) {
        compareCharacters(left, a.front(), right, b.front(), difference);
    } else if (a.size() * b.size() <= kMaxCells) {
        compareWords(left, a, right, b, difference);
    } else {
        append(difference.left, span(a));
        append(difference.right, span(b));
    }
    return difference;
}

} // namespace runebook
