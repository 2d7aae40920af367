#pragma once

#include "model/VXGlyphInfo.h"

#include <QMap>
#include <QUtf8StringView>

/// A record as the simplest thing that can hold one, and the reading and writing of its line written out step
/// by step: what tests and fuzz targets hold the real reader and writer against.
struct PlainRecord {
    QMap<QString, QString> texts; ///< the text fields that are present
    QStringList unicodes;
    QStringList altNames;
    int direction = 0;
    int letterCase = 0;
    quint32 unicodeChar = 0;

    bool operator==(const PlainRecord &) const = default;

    static QStringList textKeys()
    {
        return QStringLiteral("name category subCategory marks anchors unicodeLegacy script production "
                              "sortName sortNameKeep sortNameOld desc decompose unicharString")
            .split(u' ');
    }

    static PlainRecord of(const VXGlyphInfo &info)
    {
        PlainRecord record;
        for (const QString &key : textKeys()) {
            const QString text = info.valueForKey(key).toString();
            if (!text.isNull())
                record.texts.insert(key, text);
        }
        record.unicodes = info.unicodes();
        record.altNames = info.altNames();
        record.direction = info.direction();
        record.letterCase = info.caseValue();
        record.unicodeChar = info.unicodeChar();
        return record;
    }

    /// Every field that is not as in a record read from an empty line, in one line for a table of rows.
    QString toString() const
    {
        QStringList parts;
        for (auto text = texts.begin(); text != texts.end(); ++text) {
            if (text.key() != QLatin1String("name"))
                parts << text.key() + u'=' + text.value();
        }
        parts.prepend(QStringLiteral("name=")
                      + texts.value(QStringLiteral("name"), QStringLiteral("(absent)")));
        if (!unicodes.isEmpty())
            parts << QStringLiteral("unicodes=") + unicodes.join(u'|');
        if (!altNames.isEmpty())
            parts << QStringLiteral("altNames=") + altNames.join(u'|');
        if (direction != -2)
            parts << QStringLiteral("direction=%1").arg(direction);
        if (letterCase != 0)
            parts << QStringLiteral("case=%1").arg(letterCase);
        return parts.join(QStringLiteral("; "));
    }

    /// The record of one trimmed line; nothing when it is no glyph line.
    static std::optional<PlainRecord> ofLine(QString line, quint8 &hint);
    /// The line of the record in a file of that version, line feed included.
    QString line(int version) const;

private:
    /// True when the scan looks for the end of the line behind the attribute.
    bool apply(const QString &key, const QString &value, quint8 &hint);
    void setUnicodes(const QStringList &list);
};

inline void PlainRecord::setUnicodes(const QStringList &list)
{
    unicodes.clear();
    for (const QString &unicode : list) {
        if (!unicode.isEmpty())
            unicodes << unicode.toUpper();
    }
    if (unicodes.isEmpty()) {
        unicodeChar = 0xFFFFFF;
        return;
    }
    QString digits = unicodes.first();
    if (digits.startsWith(QLatin1String("0X")))
        digits.remove(0, 2);
    unicodeChar = 0;
    for (const QChar digit : digits) {
        const auto value = QStringView(u"0123456789ABCDEF").indexOf(digit);
        if (value < 0)
            break;
        unicodeChar = unicodeChar * 16 + static_cast<quint32>(value);
    }
}

inline bool PlainRecord::apply(const QString &key, const QString &value, quint8 &hint)
{
    const auto is = [&key](const char *name) { return key == QLatin1String(name); };
    if (is("unicode") || is("unicode2") || is("unicode3")) {
        setUnicodes(QStringList(unicodes) << value);
        return false;
    }
    if (is("unicodes")) {
        setUnicodes(QString(value).replace(u',', u' ').split(u' '));
        return false;
    }
    if (is("direction")) {
        direction = value.startsWith(u'B')                ? -1
            : value.startsWith(u'R')                      ? 1
            : value.startsWith(u'V') && value.size() == 3 ? (value[2] == u'L' ? 2 : 3)
                                                          : 0;
        return false;
    }
    if (is("case")) {
        letterCase = static_cast<int>(qMax<qsizetype>(0, QStringView(u"nulsmo").indexOf(value[0])));
        hint = 2;
        return false;
    }
    if (is("accents")) {
        texts[QStringLiteral("marks")] = value;
        hint = 1;
        return false;
    }
    const QLatin1String refused("fathatan-ar, dammatan-ar, fatha-ar, damma-ar, shadda-ar, sukun-ar, "
                                "madda-ar, hamzaabove-ar, noonghunna-ar, alefabove-ar, kasratan-ar, "
                                "kasra-ar, hamzabelow-ar, alefbelow-ar");
    if (is("legacy"))
        texts[QStringLiteral("production")] = value;
    else if (is("altNames"))
        altNames = value.split(QStringLiteral(", "));
    else if (is("description"))
        texts[QStringLiteral("desc")] = value;
    else if (is("unicodeLegecy"))
        texts[QStringLiteral("unicodeLegacy")] = value;
    else if (textKeys().contains(key) && !(is("marks") && value == refused))
        texts[key] = value;
    return true;
}

inline std::optional<PlainRecord> PlainRecord::ofLine(QString line, quint8 &hint)
{
    if (!line.startsWith(QLatin1String("<glyph ")))
        return {};
    PlainRecord record;
    record.texts.insert(QStringLiteral("name"), QStringLiteral("unknown"));
    record.direction = -2;
    const qsizetype comment = line.indexOf(QLatin1String("<!--"));
    const qsizetype commentEnd = line.lastIndexOf(QLatin1String("-->"));
    if (comment >= 0 && commentEnd >= comment + 4)
        line.remove(comment, commentEnd + 3 - comment);
    if (line.size() < 9)
        return record;

    const QByteArray bytes = line.toUtf8();
    const QByteArray keyBytes("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-_");
    for (qsizetype i = 7; i < bytes.size() && i < line.size();) {
        if (bytes[i] == ' ' || bytes[i] == '"') {
            ++i;
            continue;
        }
        const qsizetype keyStart = i;
        while (i < bytes.size() && keyBytes.contains(bytes[i]))
            ++i;
        const QByteArray key = bytes.mid(keyStart, i - keyStart);
        if (key.isEmpty() && bytes.mid(i, 2) == "/>")
            break;
        i += 2;
        while (i < bytes.size() && (bytes[i] == ' ' || (bytes[i] == '"' && bytes[i - 1] != '"')))
            ++i;
        qsizetype end = bytes.indexOf('"', i);
        if (end < 0)
            end = bytes.size();
        const QByteArray value = i < end ? bytes.mid(i, end - i) : QByteArray();
        i = end;
        bool looksForEnd = true;
        if (key.size() >= 2 && !value.isEmpty() && QUtf8StringView(value).isValidUtf8()) {
            // Decoding drops a leading byte order mark, but not a second character.
            const QString text = QString::fromUtf8('.' + value).mid(1);
            looksForEnd = record.apply(QString::fromLatin1(key), text, hint);
        }
        if (looksForEnd && bytes.mid(end + 1, 2) == "/>")
            break;
    }
    return record;
}

inline QString PlainRecord::line(int version) const
{
    QString line = QStringLiteral("\t<glyph ");
    const auto append = [&line](const char *name, const QString &value) {
        line += QLatin1String(name) + QStringLiteral("=\"") + value + QStringLiteral("\" ");
    };
    const auto appendText = [&](const char *name, const char *key = nullptr) {
        const QString value = texts.value(QLatin1String(key ? key : name));
        if (!value.isEmpty())
            append(name, value);
    };
    if (version != 0 && !unicodes.isEmpty())
        append("unicode", unicodes[0]);
    if (unicodes.size() >= 2)
        append("unicode2", unicodes[1]);
    if (unicodes.size() >= 3)
        append("unicode3", unicodes[1]);
    if (texts.value(QStringLiteral("unicodeLegacy")).size() >= 4)
        appendText("unicodeLegacy");
    append("name", texts.value(QStringLiteral("name"), QStringLiteral("(null)")));
    for (const char *name : {"sortName", "sortNameOld", "sortNameKeep", "decompose", "category"})
        appendText(name);
    const char *words[] {"", "upper", "lower", "smallCaps", "minor", "(null)"};
    if (version == 1 && texts.value(QStringLiteral("subCategory")).isEmpty() && letterCase != 0) {
        append("subCategory",
               letterCase == 1       ? QStringLiteral("Uppercase")
                   : letterCase == 2 ? QStringLiteral("Lowercase")
                                     : QStringLiteral("(null)"));
    } else {
        appendText("subCategory");
        if (version >= 2 && letterCase != 0)
            append("case", QLatin1String(words[letterCase]));
    }
    appendText("script");
    appendText("production");
    const char *directions[] {"BIDI", "LTR", "RTL", "VTL", "VTR"};
    if (direction != -2)
        append("direction", QLatin1String(directions[direction + 1]));
    if (!altNames.isEmpty())
        append("altNames", altNames.join(QStringLiteral(", ")));
    appendText("description", "desc");
    appendText("anchors");
    appendText(version == 1 ? "accents" : "marks", "marks");
    return line + QStringLiteral("/>\n");
}
