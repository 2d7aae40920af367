#include "document/AutosaveForm.h"

#include "document/GlyphDataReader.h"
#include "model/FileText.h"
#include "platform/TurningWindows.h"

#include <QList>
#include <algorithm>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view kBegin = "<!-- runebook autosave 1 ";
constexpr std::string_view kEnd = "-->\n";

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
    const qsizetype begin =
        content.lastIndexOf(QByteArray::fromRawData(kBegin.data(), qsizetype(kBegin.size())));
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
        std::optional<std::pair<qsizetype, InfoPtr>> kept = KeptValues::read(QByteArray::fromBase64(line));
        values.isWhole &= kept.has_value();
        if (kept)
            values.infos.push_back(*std::move(kept));
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
    if (!m_isCurrent())
        return Progress::Outdated;
    const std::size_t before = output.size();
    if (m_next == 0)
        output += GlyphDataWriter::header(m_fileVersion);
    const auto end = std::chrono::steady_clock::now() + budget;
    bool isOver = false;
    do {
        const std::size_t last = endOfSlice();
        printRecords(m_next, last, output);
        m_next = last;
        isOver = m_next == m_infos.size();
        // A text that outgrows its room is copied; the caller has a further block for the rest.
    } while (!isOver && std::chrono::steady_clock::now() < end && output.size() < output.capacity() / 8 * 7);
    if (isOver)
        output += GlyphDataWriter::footer();
    m_printed += output.size() - before;
    if (!isOver)
        return Progress::Unfinished;
    output += kBegin;
    output += std::to_string(m_infos.size()) + ' ' + std::to_string(m_printed) + ' '
        + std::to_string(m_fileVersion) + '\n';
    output += std::exchange(m_values, {}); // this lives on as what the autosave holds
    if (m_long.empty())
        output += kEnd;
    return Progress::Finished;
}

/// Records that are printed between two looks at the clock: few, and no more than one with much text.
std::size_t AutosaveSlices::endOfSlice() const
{
    constexpr std::size_t kRecords = 64;
    constexpr qint64 kMuch = 1 << 18;
    const std::size_t most = std::min(m_next + kRecords, m_infos.size());
    std::size_t last = m_next;
    for (qint64 bytes = 0; last < most && bytes < kMuch; ++last)
        bytes += m_infos[last]->lineLength();
    return last;
}

ContentProducer AutosaveSlices::takeRest()
{
    if (m_long.empty())
        return {};
    // Shared, as what is copied around is a function.
    auto rest = std::make_shared<const std::vector<KeptValues>>(std::exchange(m_long, {}));
    return [rest](const BlockSink &sink, Error *) {
        return std::all_of(rest->begin(), rest->end(),
                           [&sink](const KeptValues &each) { return each.print(sink); })
            && sink(kEnd);
    };
}

void AutosaveSlices::printRecords(std::size_t first, std::size_t last, std::string &output)
{
    std::size_t begin = first;
    for (std::size_t i = first; i < last; ++i) {
        const VXGlyphInfo &info = *m_infos[i];
        if (!info.unchangedLine(m_fileVersion).empty() || !RoundTrip::isVeryLong(info))
            continue;
        // Whether its line could hold it would take as long to find out as to print it.
        printChecked(begin, i, output);
        m_long.emplace_back(info, i);
        appendStandIn(info, output);
        begin = i + 1;
    }
    printChecked(begin, last, output);
}

void AutosaveSlices::printChecked(std::size_t first, std::size_t last, std::string &output)
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
        KeptValues(*m_slice[i], first + i).print([this](std::string_view block) {
            m_values += block;
            return true;
        });
        appendStandIn(*m_slice[i], output);
    }
}

/// A line in the place of a record that stands with its values elsewhere.
void AutosaveSlices::appendStandIn(const VXGlyphInfo &info, std::string &output)
{
    constexpr qsizetype kLongest = 1000;
    const InfoPtr standIn = VXGlyphInfo::init();
    // Only where it cannot be lost in its turn.
    const QString name = fileText(info.stored(GlyphField::Name).beginning(info.sourceData(), kLongest));
    const auto isAscii = [](QChar c) { return c < QChar(0x80); };
    if (!name.isEmpty() && std::all_of(name.begin(), name.end(), isAscii))
        standIn->setName(name);
    m_writer.append(*standIn, output);
}

QByteArray autosavedContentOf(const InfoList &infos, quint8 fileVersion)
{
    AutosaveSlices slices(infos, fileVersion, [] { return true; });
    std::string content;
    while (slices.printMore(content, std::chrono::hours(1)) == SlicedContent::Progress::Unfinished)
        content.reserve(2 * content.capacity());
    if (const ContentProducer rest = slices.takeRest()) {
        rest(
            [&content](std::string_view block) {
                content += block;
                return true;
            },
            nullptr);
    }
    return QByteArray::fromStdString(content);
}

AutosavedContent readAutosavedContent(const QByteArray &utf8)
{
    AutosavedValues values;
    doApart(utf8.size(), [&] { values = autosavedValues(utf8); });
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
