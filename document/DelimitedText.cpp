#include "document/DelimitedText.h"

#include "model/FieldValue.h"
#include "platform/FileBytes.h"

#include <QCoreApplication>
#include <QStringDecoder>
#include <QStringEncoder>
#include <algorithm>
#include <array>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Encoding = DelimitedFormat::Encoding;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(DelimitedText)
};

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr char kQuote = '"';

std::string_view viewOf(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

/// 0 where there is no line end.
std::size_t lineEndAt(std::string_view text, std::size_t place)
{
    if (place >= text.size())
        return 0;
    if (text[place] == '\n')
        return 1;
    if (text[place] != '\r')
        return 0;
    return place + 1 < text.size() && text[place + 1] == '\n' ? 2 : 1;
}

std::optional<Encoding> utf16Of(std::string_view bytes)
{
    if (bytes.size() < 2 || bytes.size() % 2 != 0)
        return {};
    if (bytes.starts_with("\xFF\xFE"))
        return Encoding::Utf16LittleEndian;
    if (bytes.starts_with("\xFE\xFF"))
        return Encoding::Utf16BigEndian;
    // A heading begins with a letter of ASCII, which is half zero there.
    if (bytes[0] != '\0' && bytes[1] == '\0')
        return Encoding::Utf16LittleEndian;
    if (bytes[0] == '\0' && bytes[1] != '\0')
        return Encoding::Utf16BigEndian;
    return {};
}

QStringConverter::Encoding qtEncoding(Encoding encoding)
{
    return encoding == Encoding::Utf16LittleEndian ? QStringConverter::Utf16LE
        : encoding == Encoding::Utf16BigEndian     ? QStringConverter::Utf16BE
                                                   : QStringConverter::Utf8;
}

void failAtLine(qsizetype line, const QString &why, Error *error)
{
    fail(error,
         {u"ReadError"_s,
          1,
          {},
          Texts::tr("Line %1: %2").arg(QString::number(line), why),
          Texts::tr("Save the table as UTF-8 in the program that wrote it and open it again.")});
}

/// Where a surrogate stands without its other half, which would come back as another character.
qsizetype firstHalfCharacter(QStringView text)
{
    qsizetype place = 0;
    while (place < text.size()) {
        if (text.at(place).isLowSurrogate())
            break;
        if (!text.at(place).isHighSurrogate())
            ++place;
        else if (place + 1 < text.size() && text.at(place + 1).isLowSurrogate())
            place += 2;
        else
            break;
    }
    return place;
}

std::optional<DelimitedText> decodedUtf16(const QByteArray &bytes, Encoding encoding, Error *error)
{
    DelimitedText decoded;
    decoded.encoding = encoding;
    decoded.hasByteOrderMark = bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF");
    const QByteArrayView body = QByteArrayView(bytes).sliced(decoded.hasByteOrderMark ? 2 : 0);
    QStringDecoder decoder(qtEncoding(encoding),
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder.decode(body);
    if (const qsizetype half = firstHalfCharacter(text); half < text.size()) {
        const QByteArray before = text.first(half).toUtf8();
        failAtLine(lineAt(viewOf(before), static_cast<std::size_t>(before.size())),
                   Texts::tr("It is not UTF-16 text."), error);
        return {};
    }
    decoded.utf8 = text.toUtf8();
    return decoded;
}

constexpr auto kIsSpecial = [] {
    std::array<bool, 256> table {};
    for (const unsigned char c : {'\t', ',', ';', '\n', '\r', '"'})
        table[c] = true;
    return table;
}();

bool needsQuotes(std::string_view text, char separator)
{
    return std::any_of(text.begin(), text.end(), [separator](char c) {
        return kIsSpecial[static_cast<unsigned char>(c)]
            && (c == separator || c == kQuote || c == '\n' || c == '\r');
    });
}

} // namespace

std::optional<DelimitedText> delimitedText(const QByteArray &bytes, Error *error)
{
    if (const auto utf16 = utf16Of(viewOf(bytes)))
        return decodedUtf16(bytes, *utf16, error);
    if (!isUtf8(bytes)) {
        qsizetype line = 1;
        for (qsizetype begin = 0; begin < bytes.size(); ++line) {
            const qsizetype feed = bytes.indexOf('\n', begin);
            const qsizetype end = feed < 0 ? bytes.size() : feed + 1;
            if (!isUtf8(QByteArray::fromRawData(bytes.constData() + begin, end - begin)))
                break;
            begin = end;
        }
        failAtLine(line, Texts::tr("It is not UTF-8 text."), error);
        return {};
    }
    DelimitedText text;
    text.utf8 = bytes;
    text.hasByteOrderMark = viewOf(bytes).starts_with(kUtf8Mark);
    text.begin = text.hasByteOrderMark ? static_cast<qsizetype>(kUtf8Mark.size()) : 0;
    return text;
}

void appendEncoded(std::string_view utf8, Encoding encoding, std::string &output)
{
    if (encoding == Encoding::Utf8) {
        output += utf8;
        return;
    }
    QStringEncoder encoder(qtEncoding(encoding), QStringEncoder::Flag::Stateless);
    const QByteArray bytes = encoder.encode(FieldValue::textOfUtf8(utf8));
    output += viewOf(bytes);
}

std::size_t DelimitedRows::endOfLine(std::size_t begin) const
{
    constexpr std::size_t kUsualLength = 4096; // looking further for a feed could read a file over and over
    const std::string_view usual = m_rest.substr(begin, kUsualLength);
    const std::size_t feed = usual.find('\n');
    if (feed == usual.npos)
        return std::min(m_rest.find_first_of("\r\n", begin), m_rest.size());
    return begin + std::min(usual.substr(0, feed).find('\r'), feed);
}

std::size_t DelimitedRows::endOfQuotes(std::size_t begin, DelimitedRow::Fault &fault) const
{
    std::size_t quote = m_rest.find(kQuote, begin + 1);
    while (quote != m_rest.npos && quote + 1 < m_rest.size() && m_rest[quote + 1] == kQuote)
        quote = m_rest.find(kQuote, quote + 2);
    if (quote == m_rest.npos) {
        fault = DelimitedRow::Fault::OpenQuote;
        return begin;
    }
    const std::size_t end = quote + 1;
    if (end < m_rest.size() && m_rest[end] != m_separator && !lineEndAt(m_rest, end))
        fault = DelimitedRow::Fault::TextBehindQuotes;
    return end;
}

bool DelimitedRows::next(DelimitedRow &row)
{
    row.cells.clear();
    row.fault = DelimitedRow::Fault::None;
    if (m_rest.empty())
        return false;
    std::size_t lineEnd = endOfLine(0); // of the line in which the cell begins
    std::size_t end = 0;
    for (std::size_t begin = 0;; begin = end + 1) {
        if (begin < lineEnd && m_rest[begin] == kQuote) {
            end = endOfQuotes(begin, row.fault);
            if (row.fault != DelimitedRow::Fault::None) {
                end = lineEnd;
                break;
            }
            if (end > lineEnd)
                lineEnd = endOfLine(end);
        } else if (begin < lineEnd && m_rest[begin] == m_separator) {
            end = begin; // most cells are empty
        } else {
            end = begin + std::min(m_rest.substr(begin, lineEnd - begin).find(m_separator), lineEnd - begin);
        }
        row.cells.push_back(m_rest.substr(begin, end - begin));
        if (end == lineEnd)
            break;
    }
    row.line = m_rest.substr(0, end);
    row.lineEnd = m_rest.substr(end, lineEndAt(m_rest, end));
    m_rest.remove_prefix(end + row.lineEnd.size());
    return true;
}

std::string_view textOfCell(std::string_view cell, std::string &buffer)
{
    if (cell.size() < 2 || cell.front() != kQuote)
        return cell;
    const std::string_view inner = cell.substr(1, cell.size() - 2);
    std::size_t quote = inner.find(kQuote);
    if (quote == inner.npos)
        return inner;
    buffer.clear();
    std::size_t begin = 0;
    for (; quote != inner.npos; quote = inner.find(kQuote, begin)) {
        buffer += inner.substr(begin, quote + 1 - begin);
        begin = quote + 2;
        if (begin >= inner.size())
            break;
    }
    if (begin < inner.size())
        buffer += inner.substr(begin);
    return buffer;
}

void appendCell(std::string_view text, const DelimitedFormat &format, std::string &output)
{
    if (!format.quotesEverything && !needsQuotes(text, format.separator)) {
        output += text;
        return;
    }
    output += kQuote;
    for (std::size_t quote = text.find(kQuote); quote != text.npos; quote = text.find(kQuote)) {
        output += text.substr(0, quote + 1);
        output += kQuote;
        text.remove_prefix(quote + 1);
    }
    output += text;
    output += kQuote;
}

char separatorOf(std::string_view text, char likely)
{
    constexpr std::array kSeparators {'\t', ';', ','};
    std::array<std::size_t, kSeparators.size()> found {};
    bool isQuoted = false;
    for (const char c : text) {
        if (c == kQuote)
            isQuoted = !isQuoted;
        else if (!isQuoted && (c == '\n' || c == '\r'))
            break;
        else if (const auto *which = std::find(kSeparators.begin(), kSeparators.end(), c);
                 !isQuoted && which != kSeparators.end())
            ++found[static_cast<std::size_t>(which - kSeparators.begin())];
    }
    // Headings have commas now and then, but no tabs.
    if (found[0] > 0)
        return kSeparators[0];
    if (found[1] == 0 && found[2] == 0)
        return likely;
    return found[2] > found[1] ? kSeparators[2] : kSeparators[1];
}

qsizetype lineAt(std::string_view text, std::size_t offset)
{
    qsizetype line = 1;
    for (std::size_t i = 0; i < std::min(offset, text.size()); ++i) {
        if (const std::size_t length = lineEndAt(text, i); length > 0 && i + length <= offset) {
            ++line;
            i += length - 1;
        }
    }
    return line;
}

DelimitedCells cellsOfText(std::string_view text, std::optional<char> separator)
{
    DelimitedCells cells;
    cells.separator = separator.value_or(separatorOf(text));
    DelimitedRows rows(text, cells.separator);
    DelimitedRow row;
    std::string buffer;
    std::size_t blanks = 0;
    while (rows.next(row)) {
        if (row.fault != DelimitedRow::Fault::None) {
            ++cells.faultyRows;
            continue;
        }
        blanks = row.isBlank() ? blanks + 1 : 0;
        QStringList texts;
        texts.reserve(static_cast<qsizetype>(row.cells.size()));
        for (const std::string_view cell : row.cells) {
            const std::string_view plain = textOfCell(cell, buffer);
            texts << FieldValue::textOfUtf8(plain);
        }
        cells.rows.push_back(std::move(texts));
    }
    cells.rows.resize(cells.rows.size() - blanks);
    return cells;
}

std::string textOfCells(const std::vector<QStringList> &rows, const DelimitedFormat &format)
{
    std::string text;
    for (const QStringList &row : rows) {
        const std::size_t begin = text.size();
        for (qsizetype i = 0; i < row.size(); ++i) {
            if (i > 0)
                text += format.separator;
            appendCell(row.at(i).toStdString(), format, text);
        }
        if (text.size() == begin) // a blank line would be no row
            text += "\"\"";
        text += format.lineEnd;
    }
    return text;
}

} // namespace runebook
