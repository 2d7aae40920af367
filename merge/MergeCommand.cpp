#include "merge/MergeCommand.h"

#include "merge/LineMerge.h"
#include "merge/MergeReport.h"
#include "merge/MergedText.h"
#include "platform/CheckedFile.h"
#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/PlainText.h"

#include <QCoreApplication>
#include <algorithm>
#include <fcntl.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(MergeCommand)
};

using Sides = std::array<QByteArray, 3>;

/// One run of the command.
class Merging
{
public:
    Merging(const MergeRequest &request, QTextStream &out, QTextStream &errors)
        : m_request(request),
          m_paths {request.base, request.ours, request.theirs},
          m_out(out),
          m_errors(errors)
    {
        constexpr std::array kNames {"base"_L1, "ours"_L1, "theirs"_L1};
        for (std::size_t side = 0; side < m_labels.size(); ++side) {
            m_labels[side] =
                kNames[side] + ": "_L1 + (request.path.isEmpty() ? m_paths[side] : request.path).simplified();
        }
        m_name = request.path.isEmpty() ? outputPath() : request.path;
    }

    MergeResult run()
    {
        if (!readAll())
            return MergeResult::Unreadable;
        if (isOther())
            return byLinesAlone();
        MergeOptions options {m_request.key, m_request.prefer, m_request.markerSize, m_labels};
        Error error;
        std::optional<ThreeWayMerge> merge;
        if (areTexts(&error))
            merge = ThreeWayMerge::of(m_sides[0], m_sides[1], m_sides[2], options, &error);
        if (!merge)
            return byLinesFor(error);
        if (!save([&merge](const BlockSink &sink, Error *) { return MergedText(*merge, sink).write(); }))
            return MergeResult::Unreadable;
        if (m_request.asJson)
            writeMergeJson(*merge, m_name, m_out);
        else
            writeMergeReport(*merge, m_name, m_out);
        return merge->openConflicts() > 0 ? MergeResult::Conflicts : MergeResult::Merged;
    }

private:
    const QString &outputPath() const
    {
        return m_request.output.isEmpty() ? m_request.ours : m_request.output;
    }
    void complain(const QString &text)
    {
        m_errors << "runebook: " << terminalText(m_name) << ": " << terminalText(text.simplified()) << '\n';
    }

    bool readAll()
    {
        for (std::size_t side = 0; side < m_sides.size(); ++side) {
            const CheckedFile file(m_paths[side], O_RDONLY);
            QString reason =
                file.isOpen() ? Texts::tr("It is no plain file.") : qt_error_string(file.failure());
            const auto bytes = file.isRegular() ? bytesOfFile(file, &reason) : std::nullopt;
            if (!bytes) {
                complain(Texts::tr("“%1” could not be read. %2").arg(shownPath(m_paths[side]), reason));
                return false;
            }
            m_sides[side] = *bytes;
        }
        return true;
    }
    /// Whether no side holds, or once held, glyph data.
    bool isOther() const
    {
        const auto isGlyphData = [](const QByteArray &bytes) {
            return bytes.contains("<glyphData") || bytes.contains("<glyph ") || !isUtf8(bytes);
        };
        const auto isEmpty = [](const QByteArray &bytes) { return bytes.trimmed().isEmpty(); };
        return std::none_of(m_sides.begin(), m_sides.end(), isGlyphData)
            && !std::all_of(m_sides.begin(), m_sides.end(), isEmpty);
    }
    bool areTexts(Error *error) const
    {
        for (std::size_t side = 0; side < m_sides.size(); ++side) {
            if (!isUtf8(m_sides[side]))
                return fail(error,
                            {u"MergeError"_s,
                             4,
                             Texts::tr("“%1” is not UTF-8 text.").arg(shownPath(m_paths[side])),
                             {},
                             {}});
        }
        return true;
    }

    bool save(const ContentProducer &produce)
    {
        Error error;
        if (FileSaver::save(outputPath(), produce, &error))
            return true;
        complain(error.text());
        return false;
    }
    std::optional<LineMerge> saveByLines()
    {
        const LineMerge merge = mergeByLines(m_sides, m_request.markerSize, m_labels);
        const auto produce = [&merge](const BlockSink &sink, Error *) {
            return sink({merge.text.constData(), std::size_t(merge.text.size())});
        };
        return save(produce) ? std::optional(merge) : std::nullopt;
    }
    MergeResult byLinesAlone()
    {
        complain(Texts::tr("It is no glyph data file and is merged by lines."));
        const auto merge = saveByLines();
        return !merge             ? MergeResult::Unreadable
            : merge->hasConflicts ? MergeResult::Conflicts
                                  : MergeResult::Merged;
    }
    MergeResult byLinesFor(const Error &error)
    {
        complain(error.text());
        if (saveByLines())
            complain(Texts::tr("It is merged by lines: the result holds both sides and wants a look."));
        return MergeResult::Unreadable;
    }

    const MergeRequest &m_request;
    std::array<QString, 3> m_paths;
    std::array<QString, 3> m_labels;
    QString m_name;
    Sides m_sides;
    QTextStream &m_out;
    QTextStream &m_errors;
};

} // namespace

MergeResult mergeFiles(const MergeRequest &request, QTextStream &out, QTextStream &errors)
{
    return Merging(request, out, errors).run();
}

} // namespace runebook
