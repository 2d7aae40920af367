#include "document/FileFormats.h"

#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/TableReader.h"
#include "document/TableWriter.h"

#include <algorithm>

namespace runebook {

namespace {

using MaybeContent = std::optional<FileContent>;

MaybeContent contentOf(GlyphDataReader &reader, std::optional<InfoList> infos)
{
    return infos ? MaybeContent({std::move(*infos), reader.fileVersion(), reader.notes(), {}})
                 : MaybeContent();
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

ContentProducer glyphDataWriter(const InfoList &infos, const WrittenForm &form)
{
    return GlyphDataWriter(infos, form.fileVersion);
}

MaybeContent contentOf(std::optional<TableReading> reading)
{
    if (!reading)
        return {};
    FileContent content {std::move(reading->infos), {}, {}, std::move(reading->form)};
    for (const TableProblem &problem : reading->problems)
        content.notes.add(ReadNotes::TableProblem, problem.record, problem.sentence(), problem.offset);
    content.notes.counts[ReadNotes::TableProblem] = reading->problemCount;
    return content;
}

template <char Separator> MaybeContent readTableFile(const QString &path, Error *error)
{
    const TableReader reader({.separator = {}, .likelySeparator = Separator, .bad = TableReader::Bad::Fails});
    return contentOf(reader.read(path, error));
}

template <char Separator> MaybeContent readTable(const QByteArray &bytes, Error *error)
{
    return contentOf(TableReader({.separator = {}, .likelySeparator = Separator}).read(bytes, error));
}

ContentProducer tableWriter(const InfoList &infos, const WrittenForm &form)
{
    return TableWriter(infos, form.table);
}

constexpr FileFormat kFormats[] = {
    {kGlyphDataType, readGlyphFile, readGlyphData, glyphDataWriter},
    {kTableType, readTableFile<'\t'>, readTable<'\t'>, tableWriter, '\t'},
    {kCommaTableType, readTableFile<','>, readTable<','>, tableWriter, ','},
};

} // namespace

const FileFormat *formatOfType(const QString &type)
{
    const auto *format = std::find_if(std::begin(kFormats), std::end(kFormats),
                                      [&](const FileFormat &each) { return type == each.type; });
    return format == std::end(kFormats) ? nullptr : format;
}

bool isTableType(const QString &type)
{
    const FileFormat *format = formatOfType(type);
    return format && format->separator;
}

QLatin1StringView typeOfPath(const QString &path)
{
    if (!isTablePath(path))
        return kGlyphDataType;
    return separatorOfSuffix(path) == ',' ? kCommaTableType : kTableType;
}

std::optional<FileContent> readTableLeniently(const QString &path, Error *error)
{
    return contentOf(
        TableReader({.separator = {}, .likelySeparator = separatorOfSuffix(path)}).read(path, error));
}

} // namespace runebook
