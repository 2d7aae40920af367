#include "document/GlyphDataWriter.h"

namespace runebook {

namespace {

constexpr std::size_t kBlock = 1 << 20;

constexpr std::string_view kHeaderBegin = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                                          "<!DOCTYPE glyphData [\n"
                                          "<!ELEMENT glyphData (glyph)+>\n";
constexpr std::string_view kFormatDeclaration = "<!ATTLIST glyphData\n"
                                                "\tformat\t\t\tCDATA\t\t#IMPLIED>\n";
constexpr std::string_view kDeclarations = "<!ELEMENT glyph EMPTY>\n"
                                           "<!ATTLIST glyph\n"
                                           "\tunicode\t\t\tCDATA\t\t#IMPLIED\n"
                                           "\tunicodeLegacy\tCDATA\t\t#IMPLIED\n"
                                           "\tname\t\t\tCDATA\t\t#REQUIRED\n"
                                           "\tsortName\t\tCDATA\t\t#IMPLIED\n"
                                           "\tsortNameKeep\tCDATA\t\t#IMPLIED\n"
                                           "\tcategory\t\tCDATA\t\t#REQUIRED\n"
                                           "\tsubCategory\t\tCDATA\t\t#IMPLIED\n";
constexpr std::string_view kCaseDeclarations = "\tcase\t\t\tCDATA\t\t#IMPLIED\n"
                                               "\tdirection\t\tCDATA\t\t#IMPLIED\n";
constexpr std::string_view kMoreDeclarations = "\tscript\t\t\tCDATA\t\t#IMPLIED\n"
                                               "\tdescription\t\tCDATA\t\t#IMPLIED\n"
                                               "\tproduction\t\tCDATA\t\t#IMPLIED\n"
                                               "\taltNames\t\tCDATA\t\t#IMPLIED\n"
                                               "\tdecompose\t\tCDATA\t\t#IMPLIED\n"
                                               "\tanchors\t\t\tCDATA\t\t#IMPLIED\n";

} // namespace

qint64 GlyphDataWriter::sizeOf(const InfoList &infos, quint8 fileVersion)
{
    qint64 size = 0;
    for (const InfoPtr &info : infos) {
        if (const std::string_view line = info->unchangedLine(fileVersion); !line.empty()) {
            size += std::ssize(line);
            continue;
        }
        for (int i = 0; i < kStoredFieldCount; ++i) {
            const FieldValue &value = info->stored(static_cast<GlyphField>(i));
            size +=
                value.isPiece() ? static_cast<qint64>(value.pieceLength()) : value.length(info->sourceData());
        }
    }
    return size;
}

std::string GlyphDataWriter::header(quint8 fileVersion)
{
    const bool isOld = fileVersion == 1;
    std::string text(kHeaderBegin);
    if (!isOld)
        text += kFormatDeclaration;
    text += kDeclarations;
    if (!isOld)
        text += kCaseDeclarations;
    text += kMoreDeclarations;
    text += isOld ? "\taccents\t\t\tCDATA\t\t#IMPLIED>\n]>\n<glyphData>\n"
                  : "\tmarks\t\t\tCDATA\t\t#IMPLIED>\n]>\n<glyphData format=\"2\">\n";
    return text;
}

std::string_view GlyphDataWriter::footer()
{
    return "</glyphData>\n";
}

bool GlyphDataWriter::operator()(const BlockSink &sink, Error *) const
{
    GlyphLineWriter writer(m_fileVersion);
    std::string block = header(m_fileVersion);
    block.reserve(kBlock + 4096);
    for (const InfoPtr &info : *m_infos) {
        writer.append(*info, block);
        if (block.size() >= kBlock) {
            if (!sink(block))
                return false;
            block.clear();
        }
    }
    block += footer();
    return sink(block);
}

} // namespace runebook
