#include "document/AutosaveForm.h"

#include "document/GlyphDataReader.h"
#include "model/FileText.h"

#include <QDataStream>
#include <QIODevice>
#include <QList>
#include <algorithm>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view kBegin = "<!-- runebook autosave 1 ";
constexpr std::string_view kEnd = "-->\n";
constexpr auto kStreamVersion = QDataStream::Qt_6_0;

using F = GlyphField;

constexpr F kTexts[] {F::Name,   F::Category,   F::SubCategory, F::Marks,        F::Anchors,
                      F::Script, F::Production, F::SortName,    F::SortNameKeep, F::SortNameOld,
                      F::Desc,   F::Decompose,  F::UnicodeLegacy, F::UnicharString};

// Not as the stream does it, which makes room for as many as it is told.
void writeTexts(QDataStream &stream, const QStringList &texts)
{
    stream << qint32(texts.size());
    for (const QString &text : texts)
        stream << text;
}

QStringList readTexts(QDataStream &stream)
{
    QStringList texts;
    qint32 count = 0;
    stream >> count;
    for (QString text; count > 0 && stream.status() == QDataStream::Ok; --count) {
        stream >> text;
        texts << text;
    }
    return texts;
}

InfoPtr infoFrom(QDataStream &stream)
{
    const InfoPtr info = VXGlyphInfo::init();
    for (const F field : kTexts) {
        QString text;
        stream >> text;
        info->editText(field, text);
    }
    const QStringList codePoints = readTexts(stream);
    const QStringList altNames = readTexts(stream);
    qint32 letterCase = 0;
    qint32 direction = 0;
    quint64 index = 0;
    stream >> letterCase >> direction >> index;
    if (!codePoints.isEmpty())
        info->setUnicodes(codePoints);
    if (!altNames.isEmpty())
        info->setAltNames(altNames);
    info->setCase(letterCase);
    info->setDirection(direction);
    info->setIndex(index);
    return info;
}

/// What the comment says besides its lines.
struct AutosavedValues {
    qsizetype records = -1; ///< how many there must be; -1 when nothing is told
    qsizetype bytes = 0; ///< of the glyph data file
    quint8 fileVersion = 2;
    std::vector<std::pair<qsizetype, InfoPtr>> infos; ///< by their places
    bool isWhole = true;
};

AutosavedValues autosavedValues(const QByteArray &content)
{
    AutosavedValues values;
    const qsizetype begin = content.lastIndexOf(
        QByteArray::fromRawData(kBegin.data(), qsizetype(kBegin.size())));
    if (begin < 0)
        return values;
    const QByteArray comment = content.mid(begin + qsizetype(kBegin.size()));
    QList<QByteArray> lines = comment.split('\n');
    const QList<QByteArray> numbers = lines.takeFirst().split(' ');
    values.isWhole = numbers.size() == 3 && comment.endsWith(kEnd.data());
    if (!values.isWhole)
        return values;
    values.records = numbers[0].toLongLong();
    values.bytes = numbers[1].toLongLong();
    values.fileVersion = static_cast<quint8>(numbers[2].toUInt());
    values.isWhole = values.bytes == begin;
    for (const QByteArray &line : lines) {
        if (line.isEmpty() || line == "-->")
            continue;
        const QByteArray bytes = QByteArray::fromBase64(line);
        QDataStream stream(bytes);
        stream.setVersion(kStreamVersion);
        quint64 place = 0;
        stream >> place;
        const InfoPtr info = infoFrom(stream);
        values.isWhole &= stream.status() == QDataStream::Ok;
        if (stream.status() == QDataStream::Ok)
            values.infos.emplace_back(qsizetype(place), info);
    }
    return values;
}

} // namespace

AutosaveSlices::AutosaveSlices(const InfoList &infos, quint8 fileVersion, std::function<bool()> isCurrent)
    : m_infos(infos),
      m_writer(fileVersion),
      m_roundTrip(fileVersion, RoundTrip::Of::Everything),
      m_fileVersion(fileVersion),
      m_isCurrent(std::move(isCurrent))
{
}

SlicedContent::Progress AutosaveSlices::printMore(std::string &output, std::chrono::microseconds budget)
{
    constexpr std::size_t kRecords = 64; // between two looks at the clock
    if (!m_isCurrent())
        return Progress::Outdated;
    const std::size_t before = output.size();
    if (m_next == 0)
        output += GlyphDataWriter::header(m_fileVersion);
    const auto end = std::chrono::steady_clock::now() + budget;
    bool isOver = false;
    do {
        const std::size_t last = std::min(m_next + kRecords, m_infos.size());
        printRecords(m_next, last, output);
        m_next = last;
        isOver = m_next == m_infos.size();
        // A text that outgrows its room is copied; the caller has a further block for the rest.
    } while (!isOver && std::chrono::steady_clock::now() < end
             && output.size() < output.capacity() / 8 * 7);
    if (isOver)
        output += GlyphDataWriter::footer();
    m_printed += output.size() - before;
    if (!isOver)
        return Progress::Unfinished;
    output += kBegin;
    output += std::to_string(m_infos.size()) + ' ' + std::to_string(m_printed) + ' '
        + std::to_string(m_fileVersion) + '\n';
    output += std::exchange(m_values, {}); // this lives on as what the autosave holds
    output += kEnd;
    return Progress::Finished;
}

void AutosaveSlices::printRecords(std::size_t first, std::size_t last, std::string &output)
{
    m_slice.clear();
    for (std::size_t i = first; i < last; ++i)
        m_slice.push_back(m_infos[i].get());
    m_roundTrip.check(m_slice, m_outcomes);
    for (std::size_t i = 0; i < m_slice.size(); ++i) {
        if (m_outcomes[i] == RoundTrip::Outcome::Same) {
            m_writer.append(*m_slice[i], output);
            continue;
        }
        appendValues(*m_slice[i], first + i);
        const InfoPtr standIn = VXGlyphInfo::init();
        // Only where it cannot be lost in its turn.
        const QString name = fileText(m_slice[i]->name());
        const auto isAscii = [](QChar c) { return c < QChar(0x80); };
        if (!name.isEmpty() && std::all_of(name.begin(), name.end(), isAscii))
            standIn->setName(name);
        m_writer.append(*standIn, output);
    }
}

void AutosaveSlices::appendValues(const VXGlyphInfo &info, std::size_t place)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(kStreamVersion);
    stream << static_cast<quint64>(place);
    for (const F field : kTexts)
        stream << info.stringValue(field);
    writeTexts(stream, info.unicodes());
    writeTexts(stream, info.altNames());
    stream << qint32(info.caseValue()) << qint32(info.direction()) << info.index();
    const QByteArray line = std::exchange(bytes, {}).toBase64();
    m_values.append(line.constData(), static_cast<std::size_t>(line.size()));
    m_values += '\n';
}

QByteArray autosavedContentOf(const InfoList &infos, quint8 fileVersion)
{
    AutosaveSlices slices(infos, fileVersion, [] { return true; });
    std::string content;
    while (slices.printMore(content, std::chrono::hours(1)) == SlicedContent::Progress::Unfinished)
        content.reserve(2 * content.capacity());
    return QByteArray::fromStdString(content);
}

AutosavedContent readAutosavedContent(const QByteArray &utf8)
{
    const AutosavedValues values = autosavedValues(utf8);
    const bool isTold = values.records >= 0;
    const qsizetype end = isTold ? qBound<qsizetype>(0, values.bytes, utf8.size()) : utf8.size();
    GlyphDataReader reader;
    AutosavedContent content;
    content.infos = reader.read(utf8.left(end));
    content.notes = reader.notes();
    content.fileVersion = isTold ? values.fileVersion : reader.fileVersion();
    content.isWhole = values.isWhole && (!isTold || values.records == std::ssize(content.infos));
    for (const auto &[place, info] : values.infos) {
        const bool isThere = place >= 0 && place < std::ssize(content.infos);
        content.isWhole &= isThere;
        if (isThere)
            content.infos[static_cast<std::size_t>(place)] = info;
    }
    return content;
}

} // namespace runebook
