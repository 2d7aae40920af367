// One line: it reads as the plain reader reads it, prints the same whether it is copied or printed field by
// field, and what was printed reads back.
#include "fuzz/Require.h"
#include "model/GlyphLineReader.h"
#include "tests/model/PlainRecord.h"

using namespace runebook;

namespace {

QString printed(const VXGlyphInfo &info, int version)
{
    return info.lineXMLFormatVersion(version);
}

/// Whether the format can hold all of the record: then a line that was printed reads as the record again.
bool survives(const PlainRecord &record, const QString &line)
{
    const bool isAscii = line.size() == line.toUtf8().size();
    return isAscii && !line.contains(QLatin1String("<!--")) && record.letterCase != VXGlyphInfo::other
        && !VXGlyphInfo::refusesMarks(record.texts.value(QStringLiteral("marks")).toStdString());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray line = madeValid(data, size);
    line.replace('\n', ' ');
    const ExactBytes bytes("\n\t" + line + "\n");
    ReadNotes notes; // gathers unknown attributes, which would otherwise be remembered for the whole run
    GlyphLineReader reader(SourcePtr(new SourceBytes(bytes.view())), &notes);
    const InfoPtr info = reader.readPiece(1, bytes.view().size() - 1);

    quint8 hint = 0;
    const std::optional<PlainRecord> expected =
        PlainRecord::ofLine(QString::fromUtf8('\t' + line).trimmed(), hint);
    REQUIRE(bool(info) == expected.has_value(), QString::number(bool(info)), QString::fromUtf8(line));
    if (!info)
        return 0;
    const PlainRecord read = PlainRecord::of(*info);
    REQUIRE(read == *expected, read.toString(), expected->toString());
    REQUIRE(reader.versionHint() == hint, QString::number(reader.versionHint()), QString::number(hint));

    for (const int version : {0, 1, 2, 3})
        REQUIRE(printed(*info, version) == read.line(version), printed(*info, version), read.line(version));
    info->setScript(info->script()); // from now on every line is printed field by field
    for (const int version : {0, 1, 2, 3})
        REQUIRE(printed(*info, version) == read.line(version), printed(*info, version), read.line(version));

    for (const int version : {1, 2}) {
        const QString once = printed(*info, version);
        if (!survives(read, once))
            continue;
        const InfoPtr again = VXGlyphInfo::initWithLineXMLFileVersion(once.trimmed());
        REQUIRE(printed(*again, version) == once, printed(*again, version), once);
    }
    return 0;
}
