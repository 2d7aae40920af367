#include "document/TabbedTable.h"

#include "document/GlyphDataReader.h"
#include "model/FieldTable.h"
#include "platform/ParallelParts.h"
#include "platform/TurningWindows.h"

#include <QCoreApplication>
#include <algorithm>
#include <iterator>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TabbedTable)
};

Error tableError(const QString &suggestion)
{
    return {u"User"_s, 1, {}, {}, suggestion};
}

/// The length of the line end at \a place, which may be any character; 0 when there is none.
std::size_t lineEndAt(std::string_view text, std::size_t place)
{
    const char c = text[place];
    if (c >= '\n' && c <= '\r')
        return 1;
    if (c == '\xC2' && text.substr(place, 2) == "\xC2\x85")
        return 2;
    const std::string_view three = text.substr(place, 3);
    return c == '\xE2' && (three == "\xE2\x80\xA8" || three == "\xE2\x80\xA9") ? 3 : 0;
}

/// Whether a byte of \a text may begin another line end than a line feed.
bool mayHoldOtherEnds(std::string_view text)
{
    // No early end: compilers turn this into a few instructions for sixteen bytes.
    unsigned char found = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        found |= static_cast<unsigned char>(byte - '\v') <= '\r' - '\v';
        found |= byte == 0xC2;
        found |= byte == 0xE2;
    }
    return found != 0;
}

/// Takes one line from the front of \a text; every line-end character counts, a CR LF pair twice.
std::string_view takeLine(std::string_view &text)
{
    constexpr std::size_t kUsualLength = 4096; // looking further each time could read a file over and over
    std::size_t end = text.substr(0, kUsualLength).find('\n');
    if (end == text.npos || mayHoldOtherEnds(text.substr(0, end))) {
        end = 0;
        while (end < text.size() && !lineEndAt(text, end))
            ++end;
    }
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end < text.size() ? end + lineEndAt(text, end) : end);
    return line;
}

bool hasTwoCharacters(std::string_view line)
{
    return line.size() >= 8 || FieldValue::textOfUtf8(line).size() >= 2;
}

bool isPlainUpper(std::string_view text)
{
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<signed char>(c) < 0 || (c >= 'a' && c <= 'z'); });
}

} // namespace

std::optional<InfoList> TabbedReader::read(const QString &path, Error *error)
{
    std::optional<QByteArray> bytes = readUtf8File(path, error);
    if (!bytes)
        return {};
    return read(*std::exchange(bytes, QByteArray()), error);
}

std::optional<InfoList> TabbedReader::read(const QByteArray &utf8, Error *error)
{
    m_source = SourcePtr(new SourceBytes(utf8));
    std::string_view text(m_source->data(), static_cast<std::size_t>(m_source->size()));
    const auto columns = columnsOf(takeLine(text), error);
    if (!columns)
        return {};
    std::vector<Rows> parts = partsOf(text);
    const auto readPart = [&](qsizetype part) {
        // Each has a holder of the bytes of its own: threads that count the users of one would wait.
        TabbedReader reader;
        reader.m_source = SourcePtr(new SourceBytes(utf8));
        reader.readRows(parts[static_cast<std::size_t>(part)], *columns);
    };
    doApart(utf8.size(), [&] { inParallel(std::ssize(parts), readPart); });
    return joined(parts, std::ssize(*columns), error);
}

std::vector<TabbedReader::Rows> TabbedReader::partsOf(std::string_view text)
{
    constexpr qsizetype kSmallest = 2 << 20; // less is read before another thread has started
    const std::size_t size = text.size() / std::size_t(usefulParts(std::ssize(text), kSmallest)) + 1;
    std::vector<Rows> parts;
    while (!text.empty()) {
        const std::size_t feed = text.find('\n', size);
        parts.push_back({text.substr(0, feed == text.npos ? feed : feed + 1), {}, 0, false});
        text.remove_prefix(parts.back().text.size());
    }
    if (parts.empty())
        parts.emplace_back();
    return parts;
}

void TabbedReader::readRows(Rows &rows, const std::vector<Column> &columns) const
{
    for (std::string_view rest = rows.text; !rest.empty();) {
        const std::string_view line = takeLine(rest);
        // Between CR and LF there is no line that anybody sees. The keys stand in front of all rows.
        const bool isWithinLineEnd = line.empty() && line.data()[-1] == '\r' && line.data()[0] == '\n';
        rows.lines += isWithinLineEnd ? 0 : 1;
        if (!hasTwoCharacters(line))
            continue;
        VXGlyphInfo::Reading glyph(m_source);
        if (!readRow(glyph, columns, line)) {
            --rows.lines; // those before it
            rows.endsShort = true;
            return;
        }
        if (rows.infos.empty())
            rows.infos.reserve(rows.text.size() / (line.size() + 1) + 16);
        rows.infos.push_back(glyph.take());
    }
}

std::optional<InfoList> TabbedReader::joined(std::vector<Rows> &parts, qsizetype columns, Error *error)
{
    InfoList infos = std::move(parts.front().infos);
    qsizetype lines = 1; // the keys
    for (Rows &rows : parts) {
        lines += rows.lines;
        if (rows.endsShort) {
            fail(error,
                 {u"User"_s,
                  1,
                  Texts::tr("Line %1 of the table has too few fields.").arg(lines + 1),
                  {},
                  Texts::tr("Every line needs a field for each of the %1 keys of the first line.")
                      .arg(columns)});
            return {};
        }
        if (&rows != &parts.front())
            std::move(rows.infos.begin(), rows.infos.end(), std::back_inserter(infos));
    }
    return infos;
}

std::optional<std::vector<TabbedReader::Column>> TabbedReader::columnsOf(std::string_view header,
                                                                         Error *error) const
{
    if (header.find('\t') == header.npos) {
        fail(error,
             tableError(
                 Texts::tr("Please open a tab seperated file. The first line should contain the keys for "
                           "each column.")));
        return {};
    }
    if (header.starts_with("\xEF\xBB\xBF"))
        header.remove_prefix(3); // of the file, not of the first key
    std::vector<Column> columns;
    QStringList invalid;
    VXGlyphInfo scratch;
    for (bool isLast = false; !isLast;) {
        const std::size_t tab = header.find('\t');
        const QString key = FieldValue::textOfUtf8(header.substr(0, tab));
        isLast = tab == header.npos;
        header.remove_prefix(isLast ? header.size() : tab + 1);
        if (!scratch.setValueForKey(u"test"_s, key))
            invalid << key;
        if (key == "description"_L1)
            columns.push_back(GlyphField::Desc);
        else if (key == "unicodeLegecy"_L1)
            columns.push_back(GlyphField::UnicodeLegacy);
        else
            columns.push_back(fieldForKey(key));
    }
    if (invalid.isEmpty())
        return columns;
    fail(error,
         tableError((invalid.size() == 1 ? Texts::tr("The tabbed file contains an invalid field: %1")
                                         : Texts::tr("The tabbed file contains invalid fields: %1"))
                        .arg(invalid.join(kListSeparator))));
    return {};
}

bool TabbedReader::readRow(VXGlyphInfo::Reading &glyph, const std::vector<Column> &columns,
                           std::string_view row) const
{
    const auto offset = static_cast<quint64>(row.data() - m_source->data());
    glyph.setLine(offset, row.size()); // its place alone
    bool isLast = false;
    for (const Column &column : columns) {
        if (isLast)
            return false;
        const std::size_t tab = row.find('\t');
        std::string_view field = row.substr(0, tab);
        isLast = tab == row.npos;
        row.remove_prefix(isLast ? row.size() : tab + 1);
        while (field.starts_with('"'))
            field.remove_prefix(1);
        while (field.ends_with('"'))
            field.remove_suffix(1);
        if (field.starts_with("0x"))
            field.remove_prefix(2);
        if (!field.empty() && column)
            store(glyph, *column, field);
    }
    if (glyph.info().stored(GlyphField::Name).isAbsent())
        glyph.setUnknownName();
    return true;
}

void TabbedReader::store(VXGlyphInfo::Reading &glyph, GlyphField target, std::string_view field)
{
    if (target == GlyphField::Marks && VXGlyphInfo::refusesMarks(field))
        return;
    if (target == GlyphField::Unicode) {
        if (!isPlainUpper(field)) {
            glyph.info().setUnicode(FieldValue::textOfUtf8(field));
            return;
        }
        target = GlyphField::Unicodes;
    }
    glyph.store(target, field);
}

QStringList TabbedWriter::exportKeys()
{
    QStringList keys;
    for (const GlyphField field : fieldsBy<&FieldRow::filePlace>()) {
        if (const char *key = rowOf(field).exportKey)
            keys << QLatin1StringView(key);
    }
    return keys;
}

bool TabbedWriter::operator()(const BlockSink &sink, Error *error) const
{
    const QStringList keys = exportKeys();
    std::string text = keys.join(u'\t').toStdString() + '\n';
    for (const InfoPtr &info : *m_infos) {
        Error reason;
        const QString line = info->lineTabbed(keys, &reason);
        if (line.isNull()) {
            reason.recoverySuggestion =
                Texts::tr("A table can only be exported from a document without glyph "
                          "infos. Save it as a glyph data file.");
            return fail(error, reason);
        }
        text += line.toStdString();
        text += '\n';
    }
    return sink(text);
}

} // namespace runebook
