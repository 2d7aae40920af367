#include "model/LineMeaning.h"

#include "model/GlyphField.h"

#include <QMap>
#include <QXmlStreamReader>
#include <optional>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// What the attributes of a line say, under one name each; the code points together.
using Meaning = QMap<QString, QString>;

QString usualKey(const QString &key)
{
    if (key == "desc"_L1)
        return u"description"_s;
    if (key == "legacy"_L1)
        return u"production"_s;
    if (key == "accents"_L1)
        return u"marks"_s;
    return key == "unicodeLegecy"_L1 ? u"unicodeLegacy"_s : key;
}

bool isCodePoints(const QString &key)
{
    return key == "unicode"_L1 || key == "unicode2"_L1 || key == "unicode3"_L1 || key == "unicodes"_L1;
}

void addCodePoints(Meaning &meaning, const QString &value)
{
    QString &all = meaning[u"unicodes"_s];
    for (const QString &codePoint : QString(value).replace(u',', u' ').split(u' ', Qt::SkipEmptyParts))
        all += codePoint.toUpper() + u' ';
}

Meaning meaningOf(const QXmlStreamAttributes &attributes)
{
    Meaning meaning;
    for (const QXmlStreamAttribute &attribute : attributes) {
        const QString key = usualKey(attribute.qualifiedName().toString());
        const QString value = attribute.value().toString();
        if (value.isEmpty())
            continue; // the same as none
        if (isCodePoints(key))
            addCodePoints(meaning, value);
        else if (key == "description"_L1 || fieldForKey(key))
            meaning.insert(key, value);
    }
    return meaning;
}

/// Nothing for a line that is not one well-formed element without content.
std::optional<Meaning> meaningOf(const QByteArray &line)
{
    QXmlStreamReader reader(line);
    reader.setNamespaceProcessing(false);
    std::optional<Meaning> meaning;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::DTD:
        case QXmlStreamReader::EntityReference:
            return {};
        case QXmlStreamReader::StartElement:
            if (meaning || reader.name() != "glyph"_L1)
                return {};
            meaning = meaningOf(reader.attributes());
            break;
        case QXmlStreamReader::Characters:
            if (!reader.isWhitespace())
                return {};
            break;
        default:
            break;
        }
    }
    return reader.hasError() ? std::nullopt : meaning;
}

/// The line with what may stand in values here and nowhere in XML written as XML has it.
QByteArray escaped(const QByteArray &line)
{
    QByteArray text = line;
    text.replace('&', "&amp;");
    const qsizetype first = text.indexOf('<') + 1;
    return text.left(first) + text.mid(first).replace('<', "&lt;");
}

} // namespace

bool haveSameMeaning(std::string_view line, std::string_view other)
{
    if (line.find("<!") != line.npos)
        return false;
    const QByteArray mine = QByteArray::fromRawData(line.data(), qsizetype(line.size()));
    const QByteArray theirs = QByteArray::fromRawData(other.data(), qsizetype(other.size()));
    std::optional<Meaning> meaning = meaningOf(mine);
    std::optional<Meaning> otherMeaning = meaning ? meaningOf(theirs) : std::nullopt;
    if (!otherMeaning) {
        // Values with a bare "&" or "<" are usual in these files.
        meaning = meaningOf(escaped(mine));
        otherMeaning = meaning ? meaningOf(escaped(theirs)) : std::nullopt;
    }
    return otherMeaning && *meaning == *otherMeaning;
}

} // namespace runebook
