#include "platform/TextFolding.h"

#include <QChar>
#include <QList>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <memory>

namespace runebook {

namespace {

constexpr char32_t kPageSize = 256;
constexpr char32_t kPageCount = (QChar::LastValidCodePoint + 1) / kPageSize;

/// What one code point folds to: none (a mark) to three code points.
struct Folded {
    std::array<char32_t, 3> points {};
    quint8 count = 0;
};

QString toString(char32_t point)
{
    return QStringView(QChar::fromUcs4(point)).toString();
}

bool isMark(char32_t point)
{
    const QChar::Category category = QChar::category(point);
    // With everything dropped that canonical ordering moves, decomposing a text needs no reordering and can
    // go by single code points.
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing
        || QChar::combiningClass(point) != 0;
}

QString withoutMarks(const QString &text)
{
    QString bare;
    for (const char32_t point : text.normalized(QString::NormalizationForm_D).toUcs4()) {
        if (!isMark(point))
            bare += QChar::fromUcs4(point);
    }
    return bare;
}

/// Full case folding of \a point. Qt's own folding answers one code point for one, so the others come from
/// its upper case: wherever full folding gives several letters, so does upper case, and they are the same
/// letters but for these two.
QString fullCaseFolding(char32_t point)
{
    constexpr char32_t kCapitalSharpS = 0x1E9E;
    constexpr char32_t kCapitalIWithDot = 0x0130;
    if (point == kCapitalSharpS)
        return QStringLiteral("ss");
    if (point == kCapitalIWithDot)
        return QStringLiteral("i\u0307");
    const QString text = toString(point);
    const QString upper = text.toUpper();
    const bool severalLetters = upper.size() > (QChar::requiresSurrogates(point) ? 2 : 1);
    return (severalLetters ? upper : text).toCaseFolded();
}

Folded computeFolded(char32_t point, Folding folding)
{
    QString text = toString(point);
    if (!QChar::isSurrogate(point)) {
        if (folding.testFlag(Fold::Diacritics))
            text = withoutMarks(text);
        if (folding.testFlag(Fold::Case)) {
            QString folded;
            for (const char32_t part : text.toUcs4())
                folded += fullCaseFolding(part);
            text = folding.testFlag(Fold::Diacritics) ? withoutMarks(folded) : folded;
        }
    }
    Folded folded;
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t part = text[i].unicode();
        if (text[i].isHighSurrogate() && i + 1 < text.size())
            part = QChar::surrogateToUcs4(text[i], text[i + 1]), ++i;
        Q_ASSERT(folded.count < folded.points.size());
        folded.points[folded.count++] = part;
    }
    return folded;
}

/// The answers of computeFolded() for one folding, worked out page by page when a text first needs them.
/// Pages stay until the process ends.
class FoldingTable
{
public:
    const Folded &at(char32_t point, Folding folding)
    {
        std::atomic<const Page *> &slot = m_pages[point / kPageSize];
        const Page *page = slot.load(std::memory_order_acquire);
        if (!page)
            page = publish(slot, point / kPageSize * kPageSize, folding);
        return (*page)[point % kPageSize];
    }

private:
    using Page = std::array<Folded, kPageSize>;

    static const Page *publish(std::atomic<const Page *> &slot, char32_t first, Folding folding)
    {
        auto page = std::make_unique<Page>();
        for (char32_t i = 0; i < kPageSize; ++i)
            (*page)[i] = computeFolded(first + i, folding);
        const Page *published = nullptr;
        // Two threads may work out the same page; the first one wins.
        if (slot.compare_exchange_strong(published, page.get(), std::memory_order_acq_rel))
            published = page.release();
        return published;
    }

    std::array<std::atomic<const Page *>, kPageCount> m_pages {};
};

const Folded &foldedPoint(char32_t point, Folding folding)
{
    static std::array<FoldingTable, 4> tables; // by the bits of the folding
    return tables[folding.toInt()].at(point, folding);
}

void appendUtf8(std::string &out, char32_t point)
{
    const auto trail = [point](int shift) { return char(0x80 | ((point >> shift) & 0x3F)); };
    if (point < 0x80) {
        out += char(point);
    } else if (point < 0x800) {
        const char bytes[] {char(0xC0 | (point >> 6)), trail(0)};
        out.append(bytes, sizeof(bytes));
    } else if (point < 0x10000) {
        const char bytes[] {char(0xE0 | (point >> 12)), trail(6), trail(0)};
        out.append(bytes, sizeof(bytes));
    } else {
        const char bytes[] {char(0xF0 | (point >> 18)), trail(12), trail(6), trail(0)};
        out.append(bytes, sizeof(bytes));
    }
}

void appendUtf16(QString &out, char32_t point)
{
    out += QChar::fromUcs4(point);
}

template <typename Text, typename Append>
void appendFoldedPoint(Text &out, char32_t point, Folding folding, Append append)
{
    if (!folding) {
        append(out, point);
        return;
    }
    const Folded &folded = foldedPoint(point, folding);
    for (int i = 0; i < folded.count; ++i)
        append(out, folded.points[i]);
}

/// A code point and the units it takes; no units when there is none.
struct Decoded {
    char32_t point = 0;
    int length = 0;
};

/// The code point at the start of \a bytes, which must not be empty; shortest forms without surrogates only.
Decoded decodeUtf8(std::string_view bytes)
{
    const auto lead = static_cast<unsigned char>(bytes.front());
    const int length = lead < 0x80 ? 1
        : lead < 0xC2              ? 0
        : lead < 0xE0              ? 2
        : lead < 0xF0              ? 3
        : lead < 0xF5              ? 4
                                   : 0;
    if (length == 0 || bytes.size() < size_t(length))
        return {};
    char32_t point = length == 1 ? lead : lead & (0x7F >> length);
    for (int i = 1; i < length; ++i) {
        const auto trail = static_cast<unsigned char>(bytes[i]);
        if ((trail & 0xC0) != 0x80)
            return {};
        point = (point << 6) | (trail & 0x3F);
    }
    const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
    if (overlong || QChar::isSurrogate(point) || point > QChar::LastValidCodePoint)
        return {};
    return {point, length};
}

Decoded decodeUtf16(QStringView text)
{
    if (text.size() > 1 && text[0].isHighSurrogate() && text[1].isLowSurrogate())
        return {QChar::surrogateToUcs4(text[0], text[1]), 2};
    return {text[0].unicode(), 1};
}

/// How many units at the start of \a text are ASCII.
qsizetype asciiLength(QStringView text)
{
    qsizetype i = 0;
    while (i < text.size() && text[i].unicode() < 0x80)
        ++i;
    return i;
}

template <typename Unit> Unit lowerAscii(Unit unit)
{
    return Unit(unit | (unsigned(unit) - 'A' < 26u ? 0x20 : 0));
}

/// The same for eight ASCII bytes at once.
quint64 lowerAsciiBlock(quint64 block)
{
    constexpr quint64 kEach = 0x0101010101010101u;
    const quint64 fromA = block + kEach * (0x80 - 'A');
    const quint64 aboveZ = block + kEach * (0x80 - 'Z' - 1);
    return block | ((fromA & ~aboveZ & kEach * 0x80) >> 2);
}

/// Folds the ASCII at the start of the \a size bytes at \a bytes in place and tells how many they are.
size_t foldAscii(char *bytes, size_t size, Folding folding)
{
    const bool lower = folding.testFlag(Fold::Case);
    size_t i = 0;
    for (quint64 block = 0; i + sizeof(block) <= size; i += sizeof(block)) {
        std::memcpy(&block, bytes + i, sizeof(block));
        if (block & 0x8080808080808080u)
            break;
        block = lower ? lowerAsciiBlock(block) : block;
        std::memcpy(bytes + i, &block, sizeof(block));
    }
    for (; i < size && static_cast<signed char>(bytes[i]) >= 0; ++i)
        bytes[i] = lower ? lowerAscii(bytes[i]) : bytes[i];
    return i;
}

} // namespace

QString foldForSearch(QStringView text, Folding folding)
{
    QString out;
    if (!folding)
        return text.toString();
    out.reserve(text.size());
    while (!text.isEmpty()) {
        const QStringView ascii = text.left(asciiLength(text));
        const qsizetype at = out.size();
        out += ascii;
        if (folding.testFlag(Fold::Case))
            std::transform(ascii.utf16(), ascii.utf16() + ascii.size(), out.data() + at,
                           lowerAscii<char16_t>);
        text = text.mid(ascii.size());
        // A text in another script goes on so for a while: no look for ASCII between its letters.
        while (!text.isEmpty() && text[0].unicode() >= 0x80) {
            const Decoded decoded = decodeUtf16(text);
            appendFoldedPoint(out, decoded.point, folding, appendUtf16);
            text = text.mid(decoded.length);
        }
    }
    return out;
}

void appendFoldedUtf8(std::string &out, std::string_view utf8, Folding folding)
{
    if (!folding) {
        out += utf8;
        return;
    }
    // Most texts are ASCII and done at once: copied, and folded where they stand. In pieces, so that the copy
    // behind a letter of another script is short.
    constexpr size_t kPieceSize = 256;
    while (!utf8.empty()) {
        const std::string_view piece = utf8.substr(0, kPieceSize);
        const size_t start = out.size();
        out += piece;
        const size_t ascii = foldAscii(out.data() + start, piece.size(), folding);
        utf8.remove_prefix(ascii);
        if (ascii == piece.size())
            continue;
        out.resize(start + ascii);
        while (!utf8.empty() && static_cast<signed char>(utf8.front()) < 0) {
            const Decoded decoded = decodeUtf8(utf8);
            if (decoded.length == 0)
                out += utf8.front();
            else
                appendFoldedPoint(out, decoded.point, folding, appendUtf8);
            utf8.remove_prefix(size_t(qMax(1, decoded.length)));
        }
    }
}

void appendFoldedUtf8(std::string &out, QStringView text, Folding folding)
{
    const QStringView ascii = text.left(asciiLength(text));
    const size_t start = out.size();
    out.resize(start + size_t(ascii.size()));
    std::transform(ascii.utf16(), ascii.utf16() + ascii.size(), out.begin() + qsizetype(start),
                   [](char16_t unit) { return char(unit); });
    foldAscii(out.data() + start, size_t(ascii.size()), folding);
    for (text = text.mid(ascii.size()); !text.isEmpty();) {
        const Decoded decoded = decodeUtf16(text);
        appendFoldedPoint(out, decoded.point, folding, appendUtf8);
        text = text.mid(decoded.length);
    }
}

std::string foldedUtf8(QStringView text, Folding folding)
{
    std::string out;
    out.reserve(size_t(text.size()));
    appendFoldedUtf8(out, text, folding);
    return out;
}

} // namespace runebook
