#include "merge/LineMerge.h"

#include "merge/GitSetup.h"
#include "merge/MergeOrder.h"

#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <span>
#include <string_view>
#include <unordered_map>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Lines = std::vector<std::string_view>; // with their ends

Lines linesOf(const QByteArray &text)
{
    Lines lines;
    std::string_view rest(text.constData(), std::size_t(text.size()));
    while (!rest.empty()) {
        const std::size_t feed = rest.find('\n');
        const std::size_t size = feed == rest.npos ? rest.size() : feed + 1;
        lines.push_back(rest.substr(0, size));
        rest.remove_prefix(size);
    }
    return lines;
}

/// The places of a line on the three sides: base, ours, theirs.
using Places = std::array<MergePlace, 3>;

/// Leaves out what does not stand in the order of \a side.
void keepInOrder(std::vector<Places> &common, std::size_t side)
{
    std::vector<MergePlace> places;
    places.reserve(common.size());
    for (const Places &each : common)
        places.push_back(each[side]);
    const std::vector<bool> isOut = outOfOrder(places);
    std::size_t at = 0;
    std::erase_if(common, [&](const Places &) { return !isOut.empty() && isOut[at++]; });
}

/// The lines that each side has once, in an order that all have.
std::vector<Places> commonLines(const std::array<Lines, 3> &sides)
{
    struct Counted {
        std::array<quint32, 3> counts {};
        Places places {};
    };
    std::unordered_map<std::string_view, Counted> known;
    for (std::size_t side = 0; side < sides.size(); ++side) {
        for (std::size_t place = 0; place < sides[side].size(); ++place) {
            Counted &line = known[sides[side][place]];
            ++line.counts[side];
            line.places[side] = MergePlace(place);
        }
    }
    std::vector<Places> common;
    for (const std::string_view line : sides[0]) {
        const Counted &counted = known[line];
        if (counted.counts == std::array<quint32, 3> {1, 1, 1})
            common.push_back(counted.places);
    }
    keepInOrder(common, 1);
    keepInOrder(common, 2);
    return common;
}

/// Puts a merge together from stretches of lines.
class Writer
{
public:
    Writer(int markerSize, const std::array<QString, 3> &labels) : m_markerSize(markerSize), m_labels(labels)
    {
    }

    void add(std::span<const std::string_view> lines)
    {
        for (const std::string_view line : lines)
            m_merge.text.append(line.data(), qsizetype(line.size()));
    }
    void addConflict(const std::array<std::span<const std::string_view>, 3> &sides)
    {
        m_merge.hasConflicts = true;
        addMarker('<', m_labels[1]);
        add(sides[1]);
        addMarker('|', m_labels[0]);
        add(sides[0]);
        addMarker('=', {});
        add(sides[2]);
        addMarker('>', m_labels[2]);
    }
    LineMerge take() { return std::move(m_merge); }

private:
    /// On a line of its own, also behind the last line of a file, which may have no end.
    void addMarker(char character, const QString &label)
    {
        QByteArray &text = m_merge.text;
        if (!text.isEmpty() && !text.endsWith('\n'))
            text += '\n';
        text += QByteArray(m_markerSize, character);
        if (!label.isEmpty())
            text += ' ' + label.toUtf8();
        text += '\n';
    }

    LineMerge m_merge;
    int m_markerSize;
    const std::array<QString, 3> &m_labels;
};

/// What git makes of it; nothing when it does not want to, as with bytes that are no text.
std::optional<LineMerge> mergedByGit(const std::array<QByteArray, 3> &texts, int markerSize,
                                     const std::array<QString, 3> &labels)
{
    const QTemporaryDir folder;
    QStringList paths;
    for (const QByteArray &text : texts) {
        paths << folder.filePath(QString::number(paths.size()));
        QFile file(paths.back());
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            return {};
    }
    const auto answer =
        runGit({u"merge-file"_s, u"-p"_s, u"--diff3"_s, u"--marker-size=%1"_s.arg(markerSize), u"-L"_s,
                labels[1], u"-L"_s, labels[0], u"-L"_s, labels[2], paths[1], paths[0], paths[2]});
    constexpr int kMostConflicts = 127;
    if (!answer || answer->status > kMostConflicts)
        return {};
    return LineMerge {answer->output, answer->status > 0};
}

} // namespace

LineMerge mergeByCommonLines(const std::array<QByteArray, 3> &texts, int markerSize,
                             const std::array<QString, 3> &labels)
{
    const std::array<Lines, 3> sides {linesOf(texts[0]), linesOf(texts[1]), linesOf(texts[2])};
    std::vector<Places> common = commonLines(sides);
    common.push_back({MergePlace(sides[0].size()), MergePlace(sides[1].size()), MergePlace(sides[2].size())});
    Writer writer(markerSize, labels);
    Places next {};
    for (const Places &end : common) {
        std::array<std::span<const std::string_view>, 3> between;
        for (std::size_t side = 0; side < sides.size(); ++side)
            between[side] = std::span(sides[side]).subspan(next[side], end[side] - next[side]);
        const auto &[base, ours, theirs] = between;
        if (std::ranges::equal(ours, theirs) || std::ranges::equal(theirs, base))
            writer.add(ours);
        else if (std::ranges::equal(ours, base))
            writer.add(theirs);
        else
            writer.addConflict(between);
        for (std::size_t side = 0; side < sides.size(); ++side)
            next[side] = end[side] + 1;
        if (end[0] < sides[0].size())
            writer.add(std::span(sides[0]).subspan(end[0], 1));
    }
    return writer.take();
}

LineMerge mergeByLines(const std::array<QByteArray, 3> &texts, int markerSize,
                       const std::array<QString, 3> &labels)
{
    if (const auto merged = mergedByGit(texts, markerSize, labels))
        return *merged;
    return mergeByCommonLines(texts, markerSize, labels);
}

} // namespace runebook
