// A whole glyph data file: it reads as the plain reader reads it, and saving gives the same bytes whether
// lines are copied or printed.
#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "fuzz/Require.h"
#include "tests/document/PlainFile.h"

using namespace runebook;

namespace {

QByteArray written(const InfoList &infos, quint8 version)
{
    QByteArray text;
    const BlockSink sink = [&text](std::string_view block) {
        text.append(block.data(), static_cast<qsizetype>(block.size()));
        return true;
    };
    GlyphDataWriter(infos, version)(sink, nullptr);
    return text;
}

QByteArray written(const PlainFile &file)
{
    QString text = QString::fromStdString(GlyphDataWriter::header(static_cast<quint8>(file.version)));
    for (const PlainRecord &record : file.records)
        text += record.line(file.version);
    return (text + QStringLiteral("</glyphData>\n")).toUtf8();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const ExactBytes bytes(madeValid(data, size));
    GlyphDataReader reader;
    const InfoList infos = reader.read(bytes.view());
    const PlainFile expected = PlainFile::ofText(QString::fromUtf8(bytes.view()));
    REQUIRE(int(reader.fileVersion()) == expected.version, QString::number(reader.fileVersion()),
            QString::number(expected.version));
    REQUIRE(infos.size() == expected.records.size(), QString::number(infos.size()),
            QString::number(expected.records.size()));
    for (std::size_t i = 0; i < infos.size(); ++i) {
        const PlainRecord record = PlainRecord::of(*infos[i]);
        REQUIRE(record == expected.records[i], record.toString(), expected.records[i].toString());
    }
    const QByteArray saved = written(infos, reader.fileVersion());
    REQUIRE(saved == written(expected), QString::fromUtf8(saved), QString::fromUtf8(written(expected)));
    for (const InfoPtr &info : infos)
        info->setScript(info->script()); // from now on every line is printed field by field
    const QByteArray printed = written(infos, reader.fileVersion());
    REQUIRE(saved == printed, QString::fromUtf8(saved), QString::fromUtf8(printed));
    return 0;
}
