// Large files are read in stretches by several threads: how many there are must never show.
#include "document/GlyphLines.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// Everything that a reading gives, as one text.
QByteArray pictureOf(const GlyphLines &lines)
{
    QString text;
    for (const InfoPtr &info : lines.infos) {
        text += info->lineXMLFormatVersion(2);
        text += info->unchangedLine(1).empty() ? u'-' : u'1';
        text += info->unchangedLine(2).empty() ? u'-' : u'2';
    }
    for (const ReadNotes::Note &note : lines.notes.notes)
        text += u"\n%1 %2 %3"_s.arg(note.kind).arg(note.record).arg(note.text);
    for (const qsizetype count : lines.notes.counts)
        text += u" %1"_s.arg(count);
    QStringList unknown;
    for (const auto &[key, value] : lines.notes.unknownAttributes)
        unknown << key + u'=' + value;
    // A key that several stretches met is told by each of them.
    unknown.removeDuplicates();
    return (text + unknown.join(u' ')
            + u" %1 %2"_s.arg(lines.versionHint).arg(lines.notes.hasCarriageReturns))
        .toUtf8();
}

QByteArray randomFile(QRandomGenerator &random)
{
    const QByteArrayList pieces {
        "\t<glyph unicode=\"0041\" name=\"A\" category=\"Letter\" />\n",
        "\t<glyph name=\"B\" case=\"upper\" description=\"\u00E9\" />\n",
        "\t<glyph name=\"C\" accents=\"top\" /> \r\n",
        "\t<glyph name=\"D\" size=\"1\" />\n",
        "\t<glyph name=\"E\" unicode=\"0041\" unicode2=\"0042\" unicode3=\"0043\" />\n",
        "<glyph category=\"Mark\" <!-- here --> name=\"F\" />\n",
        "some other line\n",
        "<!-- a comment\n",
        "in lines -->\n",
        "\n",
    };
    QByteArray file = "<glyph name=\"first\" />\n";
    for (int i = random.bounded(60); i > 0; --i)
        file += pieces.at(random.bounded(pieces.size()));
    return random.bounded(4) ? file : file.chopped(1);
}

} // namespace

class tst_GlyphLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stretchesNeverShow()
    {
        QRandomGenerator random(20);
        for (int round = 0; round < 300; ++round) {
            const QByteArray file = randomFile(random);
            const QByteArray expected = pictureOf(readGlyphLines(file, 0, 1));
            for (const int stretches : {2, 3, 7, 1000})
                QCOMPARE(pictureOf(readGlyphLines(file, 0, stretches)), expected);
        }
    }

    void commentAcrossStretches()
    {
        const QByteArray line = "\t<glyph name=\"A\" />\n";
        const QByteArray file = line + "<!--\n" + line.repeated(20) + "-->\n" + line;
        QCOMPARE(readGlyphLines(file, 0, 4).infos.size(), std::size_t(2));
    }

    void largeFile()
    {
        constexpr int kLines = 200'000; // enough for every processor
        QByteArray file;
        for (int i = 0; i < kLines; ++i)
            file +=
                "\t<glyph name=\"g" + QByteArray::number(i) + "\" category=\"Letter\" script=\"latin\" />\n";
        const GlyphLines lines = readGlyphLines(file, 0);
        QCOMPARE(lines.infos.size(), std::size_t(kLines));
        for (int i = 0; i < kLines; i += 997)
            QCOMPARE(lines.infos[static_cast<std::size_t>(i)]->name(), u"g%1"_s.arg(i));
    }
};

RUNEBOOK_TEST_MAIN(tst_GlyphLines)

#include "tst_glyphlines.moc"
