#include "merge/LineMerge.h"

#include "merge/GitSetup.h"

#include <QFile>
#include <QTemporaryDir>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QByteArray marker(char character, int size, const QString &label)
{
    QByteArray line(size, character);
    if (!label.isEmpty())
        line += ' ' + label.toUtf8();
    return line + '\n';
}

QByteArray withLineEnd(const QByteArray &text)
{
    return text.isEmpty() || text.endsWith('\n') ? text : text + '\n';
}

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

LineMerge bothBetweenMarkers(const QByteArray &ours, const QByteArray &theirs, int markerSize,
                             const std::array<QString, 3> &labels)
{
    if (ours == theirs)
        return {ours, false};
    const qsizetype shorter = std::min(ours.size(), theirs.size());
    const qsizetype same =
        std::mismatch(ours.begin(), ours.begin() + shorter, theirs.begin()).first - ours.begin();
    const qsizetype head = same == 0 ? 0 : ours.lastIndexOf('\n', same - 1) + 1;
    qsizetype tail = 0;
    while (tail < shorter - head && ours[ours.size() - 1 - tail] == theirs[theirs.size() - 1 - tail])
        ++tail;
    // Whole lines only.
    const qsizetype feed = ours.indexOf('\n', ours.size() - tail);
    tail = feed < 0 ? 0 : ours.size() - feed - 1;
    return {ours.first(head) + marker('<', markerSize, labels[1])
                + withLineEnd(ours.mid(head, ours.size() - head - tail)) + marker('=', markerSize, {})
                + withLineEnd(theirs.mid(head, theirs.size() - head - tail))
                + marker('>', markerSize, labels[2]) + ours.last(tail),
            true};
}

LineMerge mergeByLines(const std::array<QByteArray, 3> &texts, int markerSize,
                       const std::array<QString, 3> &labels)
{
    if (const auto merged = mergedByGit(texts, markerSize, labels))
        return *merged;
    return bothBetweenMarkers(texts[1], texts[2], markerSize, labels);
}

} // namespace runebook
