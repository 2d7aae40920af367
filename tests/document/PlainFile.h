#pragma once

#include "model/VXGlyphInfo.h"
#include "tests/model/PlainRecord.h"

#include <vector>

/// The reading of whole files written out step by step on a plain text: what tests and fuzz targets hold the
/// real readers against.
struct PlainFile {
    std::vector<PlainRecord> records;
    int version = 2;

    static PlainFile ofText(const QString &text);
};

/// The same for tables; records are absent where reading fails.
struct PlainTable {
    static std::optional<std::vector<PlainRecord>> ofText(const QString &text);
};

inline PlainFile PlainFile::ofText(const QString &text)
{
    PlainFile file;
    const qsizetype body = text.indexOf(QLatin1String("<glyph "));
    if (body < 0)
        return file;
    const QString header = text.left(body);
    int headerVersion = 0;
    if (const qsizetype format = header.indexOf(QLatin1String("format=\"")); format >= 0) {
        const QChar digit = format + 8 < header.size() ? header[format + 8] : QChar();
        headerVersion = digit >= u'0' && digit <= u'9' ? digit.unicode() - u'0' : 0;
    } else if (header.contains(QLatin1String("marks")) != header.contains(QLatin1String("accents"))) {
        headerVersion = header.contains(QLatin1String("marks")) ? 2 : 1;
    }
    quint8 hint = 0;
    bool inComment = false;
    for (const QString &piece : text.mid(body).split(u'\n')) {
        const bool ends = piece.contains(QLatin1String("-->"));
        if (inComment) {
            inComment = !ends;
            continue;
        }
        inComment = piece.contains(QLatin1String("<!--")) && !ends;
        if (const std::optional<PlainRecord> record = PlainRecord::ofLine(piece.trimmed(), hint))
            file.records.push_back(*record);
    }
    file.version = headerVersion ? headerVersion : hint ? hint : 2;
    return file;
}

inline std::optional<std::vector<PlainRecord>> PlainTable::ofText(const QString &text)
{
    QStringList lines {QString()};
    for (const QChar character : text) {
        const char16_t c = character.unicode();
        if ((c >= u'\n' && c <= u'\r') || c == 0x85 || c == 0x2028 || c == 0x2029)
            lines << QString();
        else
            lines.last() += character;
    }
    const QStringList keys = lines.takeFirst().split(u'\t');
    const QStringList noTexts =
        QStringLiteral("unicodes direction case index unicodeChar document").split(u' ');
    bool isValid = keys.size() >= 2;
    for (const QString &key : keys)
        isValid &= !noTexts.contains(key);
    if (!isValid)
        return {};
    std::vector<PlainRecord> records;
    for (const QString &line : lines) {
        if (line.size() < 2)
            continue;
        const QStringList fields = line.split(u'\t');
        if (fields.size() < keys.size())
            return {};
        const InfoPtr info = VXGlyphInfo::init();
        for (qsizetype i = 0; i < keys.size(); ++i) {
            QString field = fields[i];
            while (field.startsWith(u'"'))
                field.remove(0, 1);
            while (field.endsWith(u'"'))
                field.chop(1);
            if (field.startsWith(QLatin1String("0x")))
                field.remove(0, 2);
            const bool isKnown = keys[i] == QLatin1String("description")
                || keys[i] == QLatin1String("unicodeLegecy") || keys[i] == QLatin1String("unicode")
                || keys[i] == QLatin1String("altNames") || PlainRecord::textKeys().contains(keys[i]);
            if (!field.isEmpty() && isKnown)
                info->setValueForKey(field, keys[i]);
        }
        records.push_back(PlainRecord::of(*info));
    }
    return records;
}
