#pragma once

#include "document/GlyphDataReader.h"
#include "document/VXDocument.h"

#include <QTest>

// Documents for the tests of comparisons, written the way a person notes them down.

namespace runebook {

/// The records of glyph lines, which may leave out what is always the same: `name="A" category="Letter"`, one
/// record a line.
inline InfoList recordsOf(const QString &lines)
{
    QByteArray text("<glyphData format=\"2\">\n");
    for (const QString &line : lines.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        text += "\t<glyph " + line.trimmed().toUtf8() + " />\n";
    text += "</glyphData>\n";
    return GlyphDataReader().read(text);
}

inline std::unique_ptr<VXDocument> documentOf(const QString &lines, const QString &path = {})
{
    auto document = std::make_unique<VXDocument>();
    document->setInfos(recordsOf(lines));
    document->updateChangeCount(Document::ChangeCleared);
    if (!path.isEmpty())
        document->setFileURL(path);
    return document;
}

} // namespace runebook
