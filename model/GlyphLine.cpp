// The one-line forms of a record: also the form in which records travel through the clipboard.
#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"

using namespace runebook;

InfoPtr VXGlyphInfo::initWithLineXMLFileVersion(const QString &line, quint8 *fileVersion)
{
    const SourcePtr source(new SourceBytes(line.toUtf8()));
    GlyphLineReader reader(source);
    const InfoPtr info = reader.read(0, source->size(), false);
    if (fileVersion && reader.versionHint() != 0)
        *fileVersion = reader.versionHint();
    return info;
}

QString VXGlyphInfo::lineXMLFormatVersion(int fileVersion) const
{
    std::string line;
    GlyphLineWriter(fileVersion).append(*this, line);
    return QString::fromStdString(line);
}
