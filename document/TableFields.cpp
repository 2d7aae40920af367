#include "document/TableFields.h"

#include "model/EditedValue.h"
#include "model/FieldTable.h"
#include "model/GlyphLineWriter.h"

#include <QCoreApplication>
#include <algorithm>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using F = GlyphField;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TableFields)
};

// In the order of the table of fields: all get the same place.
constexpr auto kTableFields = fieldsBy<[](const FieldRow &row) { return row.filePlace != 0; }>();

constexpr std::string_view kBetweenCodePoints = ",; \t\r\n";
constexpr std::string_view kOtherCase = "other"; // files get no word for it, tables do

/// Names under which imports and files have known a field.
constexpr std::pair<QLatin1StringView, F> kOtherNames[] {
    {"unicode"_L1, F::Unicodes},
    {"description"_L1, F::Desc},
    {"unicodeLegecy"_L1, F::UnicodeLegacy},
    {"accents"_L1, F::Marks},
};

bool isHexadecimal(std::string_view text)
{
    const auto isDigit = [](char c) {
        return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f');
    };
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

bool isPlainUpper(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

bool isInAnyCase(std::string_view word, std::string_view other)
{
    return QLatin1StringView(word.data(), qsizetype(word.size()))
               .compare(QLatin1StringView(other.data(), qsizetype(other.size())), Qt::CaseInsensitive)
        == 0;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == text.npos ? std::string_view()
                              : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

/// The direction of a word; nothing for other words.
std::optional<int> directionOf(std::string_view word)
{
    if (word.empty())
        return VXGlyphInfo::DirectionNotSet;
    for (int direction = VXGlyphInfo::BIDI; direction <= VXGlyphInfo::VTR; ++direction) {
        if (isInAnyCase(word, GlyphLineWriter::directionWord(direction)))
            return direction;
    }
    return {};
}

std::string_view caseWordOf(int letterCase)
{
    if (letterCase == VXGlyphInfo::other)
        return kOtherCase;
    const bool isKnown = letterCase > VXGlyphInfo::noCase && letterCase < VXGlyphInfo::other;
    return isKnown ? GlyphLineWriter::caseWord(letterCase) : std::string_view();
}

std::optional<int> caseOf(std::string_view word)
{
    if (word.empty())
        return VXGlyphInfo::noCase;
    for (int letterCase = VXGlyphInfo::upper; letterCase <= VXGlyphInfo::other; ++letterCase) {
        if (isInAnyCase(word, caseWordOf(letterCase)))
            return letterCase;
    }
    return {};
}

/// The digits of one code point of a cell, as the cell has them; \a isBare when nothing stands in front.
std::string_view digitsOf(std::string_view word, bool &isBare)
{
    isBare = true;
    for (const std::string_view prefix : {"0x", "0X", "U+", "u+"}) {
        if (word.starts_with(prefix) && isHexadecimal(word.substr(prefix.size()))) {
            isBare = false;
            return word.substr(prefix.size());
        }
    }
    return word;
}

/// Spreadsheets take zeros in front of a number away.
constexpr std::size_t kUsualDigits = 4;

bool lacksZeros(std::string_view digits, bool isBare)
{
    return isBare && digits.size() < kUsualDigits && isHexadecimal(digits);
}

/// Appends a code point as cells have it. What is none stays as it is.
void appendCodePoint(std::string_view codePoint, std::string_view prefix, std::string &output)
{
    if (isHexadecimal(codePoint))
        output += prefix.empty() && lacksZeros(codePoint, true) ? kCodePointPrefix : prefix;
    output += codePoint;
}

QString codePointOf(std::string_view word)
{
    bool isBare = false;
    const std::string_view digits = digitsOf(word, isBare);
    const QString text = FieldValue::textOfUtf8(digits).toUpper();
    return lacksZeros(digits, isBare) ? text.rightJustified(kUsualDigits, u'0') : text;
}

/// The words of a cell between commas, semicolons and blanks.
QStringList codePointsOf(std::string_view cell)
{
    QStringList codePoints;
    for (std::size_t begin = cell.find_first_not_of(kBetweenCodePoints); begin != cell.npos;
         begin = cell.find_first_not_of(kBetweenCodePoints, begin)) {
        const std::size_t end = std::min(cell.find_first_of(kBetweenCodePoints, begin), cell.size());
        codePoints << codePointOf(cell.substr(begin, end - begin));
        begin = end;
    }
    return codePoints;
}

std::string_view cellOfCodePoints(const VXGlyphInfo &info, std::string_view prefix, std::string &buffer)
{
    const FieldValue &value = info.stored(F::Unicodes);
    buffer.clear();
    if (value.isPiece()) {
        appendCodePoint(value.bytes(info.sourceData()), prefix, buffer);
        return buffer;
    }
    for (const QStringList codePoints = info.unicodes(); const QString &codePoint : codePoints) {
        if (!buffer.empty())
            buffer += ", ";
        appendCodePoint(codePoint.toStdString(), prefix, buffer);
    }
    return buffer;
}

void readCodePoints(VXGlyphInfo::Reading &glyph, std::string_view cell, bool isPiece)
{
    bool isBare = false;
    const std::string_view word = trimmed(cell);
    const std::string_view digits = digitsOf(word, isBare);
    const bool isOne = isHexadecimal(digits) && !lacksZeros(digits, isBare);
    if (isPiece && isOne && isPlainUpper(digits)) {
        glyph.setPiece(F::Unicodes, digits);
        glyph.updateUnicodeChar();
    } else {
        glyph.info().setUnicodes(codePointsOf(cell));
    }
}

/// The entries of a value, where absent and empty are the same.
QStringList usual(const QStringList &entries)
{
    const auto isEmpty = [](const QString &entry) { return entry.isEmpty(); };
    return std::all_of(entries.begin(), entries.end(), isEmpty) ? QStringList() : entries;
}

QStringList usualEntriesOf(const VXGlyphInfo &info, GlyphField field)
{
    return usual(info.entriesOf(field));
}

/// The value that a cell gives, as the entries of the field; for fields that are texts or lists.
QStringList entriesOfCell(GlyphField field, const QString &cell)
{
    if (cell.isEmpty())
        return {};
    switch (field) {
    case F::Unicodes:
        return codePointsOf(cell.toStdString());
    case F::AltNames:
        return usual(cell.split(kListSeparator));
    case F::UnicodeLegacy: {
        bool isBare = false;
        return {FieldValue::textOfUtf8(digitsOf(cell.toStdString(), isBare))};
    }
    case F::Marks:
        return VXGlyphInfo::refusesMarks(cell.toStdString()) ? QStringList() : QStringList(cell);
    default:
        return {cell};
    }
}

/// Of nearly all values of a file, at the price of a look: what was read from UTF-8 comes back, but for what
/// cells have another form of.
bool surelyComesBack(const VXGlyphInfo &info, GlyphField field)
{
    if (!isStored(field))
        return false;
    const FieldValue &value = info.stored(field);
    if (field == F::Name && value.isEmpty())
        return false;
    if (value.isAbsent())
        return true;
    if (!value.isPiece())
        return false;
    const std::string_view bytes = value.bytes(info.sourceData());
    if (field == F::Marks)
        return !VXGlyphInfo::refusesMarks(bytes);
    const bool isCodePoint = field == F::Unicodes || field == F::UnicodeLegacy;
    return !isCodePoint || (isHexadecimal(bytes) && isPlainUpper(bytes));
}

} // namespace

std::span<const GlyphField> tableFields()
{
    return kTableFields;
}

QString headingOfField(GlyphField field)
{
    return field == F::Unicodes ? keyOfField(F::Unicode) : keyOfField(field);
}

std::optional<GlyphField> fieldOfHeading(QStringView heading)
{
    heading = heading.trimmed();
    const auto isIt = [heading](const auto &name) { return heading.compare(name, Qt::CaseInsensitive) == 0; };
    for (const GlyphField field : kTableFields) {
        if (isIt(keyOfField(field)))
            return field;
    }
    for (const auto &[name, field] : kOtherNames) {
        if (isIt(name))
            return field;
    }
    for (const GlyphField field : kTableFields) {
        if (isIt(QLatin1StringView(rowOf(field).title)) || isIt(titleOfField(field)))
            return field;
    }
    return {};
}

std::string_view codePointPrefixOf(std::string_view cell)
{
    const std::size_t begin = std::min(cell.find_first_not_of(kBetweenCodePoints), cell.size());
    const std::size_t end = std::min(cell.find_first_of(kBetweenCodePoints, begin), cell.size());
    const std::string_view word = cell.substr(begin, end - begin);
    bool isBare = false;
    return word.substr(0, word.size() - digitsOf(word, isBare).size());
}

std::string_view cellOf(const VXGlyphInfo &info, GlyphField field, std::string &buffer,
                        std::string_view codePointPrefix)
{
    switch (field) {
    case F::Unicodes:
        return cellOfCodePoints(info, codePointPrefix, buffer);
    case F::Direction:
        return info.direction() < VXGlyphInfo::BIDI || info.direction() > VXGlyphInfo::VTR
            ? std::string_view()
            : GlyphLineWriter::directionWord(info.direction());
    case F::Case:
        return caseWordOf(info.caseValue());
    case F::UnicodeLegacy: {
        const std::string_view legacy = info.utf8(field, buffer);
        if (!isHexadecimal(legacy) || codePointPrefix.empty())
            return legacy;
        buffer = std::string(codePointPrefix).append(legacy);
        return buffer;
    }
    default:
        return info.utf8(field, buffer);
    }
}

QString cellTextOf(const VXGlyphInfo &info, GlyphField field)
{
    std::string buffer;
    return FieldValue::textOfUtf8(cellOf(info, field, buffer));
}

QString objectionToCell(GlyphField field, QStringView cell)
{
    constexpr qsizetype kLongest = 40;
    const std::string word = cell.trimmed().toString().toStdString();
    const QString shown = cell.size() > kLongest ? cell.first(kLongest).toString() + u'…' : cell.toString();
    if (field == F::Direction && !directionOf(word))
        return Texts::tr("“%1” is no direction").arg(shown);
    if (field == F::Case && !caseOf(word))
        return Texts::tr("“%1” is no case").arg(shown);
    return {};
}

bool isCellOf(const VXGlyphInfo &info, GlyphField field, std::string_view cellUtf8)
{
    switch (field) {
    case F::Direction:
        return directionOf(trimmed(cellUtf8)).value_or(VXGlyphInfo::DirectionNotSet) == info.direction();
    case F::Case:
        return caseOf(trimmed(cellUtf8)).value_or(VXGlyphInfo::noCase) == info.caseValue();
    case F::Name:
        // A record without a name is called "unknown" when it is read.
        if (cellUtf8.empty())
            return info.stored(F::Name).isEmpty()
                || FieldValue::equal(info.stored(F::Name), info.sourceData(), VXGlyphInfo::unknownName(),
                                     nullptr);
        break;
    default:
        break;
    }
    std::string buffer;
    if (cellOf(info, field, buffer) == cellUtf8)
        return true;
    return usualEntriesOf(info, field) == entriesOfCell(field, FieldValue::textOfUtf8(cellUtf8));
}

bool storeCell(VXGlyphInfo &info, GlyphField field, const QString &cell)
{
    const std::string utf8 = cell.toStdString();
    switch (field) {
    case F::Direction:
        if (const auto direction = directionOf(trimmed(utf8)))
            return info.setDirection(*direction), true;
        return false;
    case F::Case:
        if (const auto letterCase = caseOf(trimmed(utf8)))
            return info.setCase(*letterCase), true;
        return false;
    default: {
        const QStringList entries = entriesOfCell(field, cell);
        if (usualEntriesOf(info, field) != entries)
            storeEdited(info, field, entries);
        return true;
    }
    }
}

bool readCell(VXGlyphInfo::Reading &glyph, GlyphField field, std::string_view cell, bool isPiece)
{
    if (cell.empty())
        return true;
    switch (field) {
    case F::Unicodes:
        readCodePoints(glyph, cell, isPiece);
        return true;
    case F::Direction:
        if (const auto direction = directionOf(trimmed(cell)))
            return glyph.setDirection(*direction), true;
        return false;
    case F::Case:
        if (const auto letterCase = caseOf(trimmed(cell)))
            return glyph.setCase(*letterCase), true;
        return false;
    case F::Marks:
        if (VXGlyphInfo::refusesMarks(cell))
            return true;
        break;
    case F::UnicodeLegacy: {
        bool isBare = false;
        cell = digitsOf(cell, isBare);
        break;
    }
    default:
        break;
    }
    if (isPiece)
        glyph.setPiece(field, cell);
    else
        glyph.setValue(field, FieldValue::text(FieldValue::textOfUtf8(cell)));
    return true;
}

std::optional<CellChange> changeInTable(const VXGlyphInfo &info, GlyphField field)
{
    if (surelyComesBack(info, field))
        return {};
    const QString cell = cellTextOf(info, field);
    switch (field) {
    case F::Direction:
        if (info.direction() == directionOf(cell.toStdString()).value_or(VXGlyphInfo::DirectionNotSet))
            return {};
        return CellChange {field, {}};
    case F::Case:
        if (info.caseValue() == caseOf(cell.toStdString()).value_or(VXGlyphInfo::noCase))
            return {};
        return CellChange {field, {}};
    case F::Name:
        if (cell.isEmpty())
            return CellChange {field, VXGlyphInfo::unknownName().toString(nullptr)};
        break;
    default:
        break;
    }
    const QStringList after = entriesOfCell(field, cell);
    if (after == usualEntriesOf(info, field))
        return {};
    return CellChange {field, after.isEmpty() ? QString() : after.join(kListSeparator)};
}

bool hasTableValue(const VXGlyphInfo &info, GlyphField field)
{
    if (field == F::Direction)
        return info.direction() != VXGlyphInfo::DirectionNotSet && info.direction() != VXGlyphInfo::LTR;
    if (field == F::Case)
        return info.caseValue() != VXGlyphInfo::noCase;
    return !info.stored(field).isEmpty();
}

} // namespace runebook
