#include "document/FileFormats.h"

#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/TabbedTable.h"

#include <algorithm>

namespace runebook {

namespace {

using MaybeContent = std::optional<FileContent>;

MaybeContent contentOf(GlyphDataReader &reader, std::optional<InfoList> infos)
{
    return infos ? MaybeContent({std::move(*infos), reader.fileVersion(), reader.notes()}) : MaybeContent();
}

MaybeContent readGlyphFile(const QString &path, Error *error)
{
    GlyphDataReader reader;
    return contentOf(reader, reader.read(path, error));
}

MaybeContent readGlyphData(const QByteArray &utf8, Error *error)
{
    Q_UNUSED(error)
    GlyphDataReader reader;
    reader.keepAllNotes();
    return contentOf(reader, reader.read(utf8));
}

ContentProducer glyphDataWriter(const InfoList &infos, quint8 fileVersion)
{
    return GlyphDataWriter(infos, fileVersion);
}

template <typename Source> MaybeContent readTable(const Source &source, Error *error)
{
    std::optional<InfoList> infos = TabbedReader().read(source, error);
    return infos ? MaybeContent({std::move(*infos), {}, {}}) : MaybeContent();
}

ContentProducer tableWriter(const InfoList &infos, quint8 fileVersion)
{
    Q_UNUSED(fileVersion)
    return TabbedWriter(infos);
}

constexpr FileFormat kFormats[] = {
    {kGlyphDataType, readGlyphFile, readGlyphData, glyphDataWriter},
    {kTableType, readTable<QString>, readTable<QByteArray>, tableWriter},
};

} // namespace

const FileFormat *formatOfType(const QString &type)
{
    const auto *format = std::find_if(std::begin(kFormats), std::end(kFormats),
                                      [&](const FileFormat &each) { return type == each.type; });
    return format == std::end(kFormats) ? nullptr : format;
}

} // namespace runebook
