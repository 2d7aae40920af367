#pragma once

#include "document/GlyphDataReader.h"
#include "document/VXDocument.h"
#include "tests/Files.h"
#include "tests/Rounds.h"

// Records and documents for tests, written the way a person notes them down.

namespace runebook {

inline InfoPtr infoNamed(const QString &name, const QStringList &unicodes = {}, const QString &category = {})
{
    InfoPtr info = VXGlyphInfo::init();
    info->setName(name);
    if (!unicodes.isEmpty())
        info->setUnicodes(unicodes);
    if (!category.isEmpty())
        info->setCategory(category);
    return info;
}

/// A record for each word of \a names.
inline InfoList named(const QString &names)
{
    InfoList infos;
    for (const QString &name : names.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        infos.push_back(infoNamed(name));
    return infos;
}

/// \a count records with \a name and a number.
inline InfoList numbered(int count, const QString &name = QStringLiteral("g"))
{
    InfoList infos;
    for (int i = 0; i < count; ++i)
        infos.push_back(infoNamed(name + QString::number(i)));
    return infos;
}

inline QString namesOf(const InfoList &infos, const QString &between = QStringLiteral(" "))
{
    QStringList names;
    for (const InfoPtr &info : infos)
        names << info->name();
    return names.join(between);
}

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

/// Fills \a document, which then counts as saved.
inline void fill(VXDocument &document, const InfoList &infos)
{
    document.setInfos(infos);
    document.updateChangeCount(Document::ChangeCleared);
}

inline std::unique_ptr<VXDocument> documentOf(const InfoList &infos, const QString &path = {})
{
    auto document = std::make_unique<VXDocument>();
    fill(*document, infos);
    if (!path.isEmpty())
        document->setFileURL(path);
    return document;
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace runebook
