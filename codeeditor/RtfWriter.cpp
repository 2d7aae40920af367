#include "codeeditor/RtfWriter.h"

#include "codeeditor/KeywordTable.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QColor>
#include <QFont>

namespace runebook {

namespace {

/// The 1-based position of \a item in \a list, where it is put when it was not there.
template <typename Item> int numberIn(QList<Item> &list, const Item &item)
{
    const qsizetype found = list.indexOf(item);
    if (found >= 0)
        return int(found) + 1;
    list.append(item);
    return int(list.size());
}

void appendEscaped(QByteArray &out, QStringView text)
{
    for (const QChar c : text) {
        const char16_t unit = c.unicode();
        if (unit == u'\n')
            out += "\\\n";
        else if (unit == u'\t')
            out += "\\tab ";
        else if (unit == u'\\' || unit == u'{' || unit == u'}')
            (out += '\\') += char(unit);
        else if (unit >= 0x20 && unit < 0x7F)
            out += char(unit);
        else // a signed number and what a reader without Unicode shows
            out += "\\u" + QByteArray::number(qint16(unit)) + '?';
    }
}

QByteArray fontTable(const QStringList &families)
{
    QByteArray table = "{\\fonttbl";
    for (qsizetype i = 0; i < families.size(); ++i) {
        table += "{\\f" + QByteArray::number(i) + "\\fmodern ";
        appendEscaped(table, QString(families[i]).remove(u';'));
        table += ";}";
    }
    return table + "}\n";
}

QByteArray colorTable(const QList<QRgb> &colors)
{
    QByteArray table = "{\\colortbl;";
    for (const QRgb color : colors) {
        table += "\\red" + QByteArray::number(qRed(color)) + "\\green" + QByteArray::number(qGreen(color))
            + "\\blue" + QByteArray::number(qBlue(color)) + ';';
    }
    return table + "}\n";
}

} // namespace

QByteArray richTextFormat(const VXCodeTextStorage &storage, TextRange range)
{
    const TextRange wanted = range.clampedTo(storage.length());
    const QString text = storage.substringWithRange(wanted);
    QStringList families;
    QList<QRgb> colors;
    QByteArray body;
    storage.forEachRun(wanted, [&](TextRange run, const QVariantMap &attributes) {
        const QFont font = attributes.value(fontAttributeName).value<QFont>();
        const QColor color = attributes.value(foregroundColorAttributeName).value<QColor>();
        body += "\\f" + QByteArray::number(numberIn(families, font.family()) - 1) + "\\fs"
            + QByteArray::number(qRound(font.pointSizeF() * 2)) + (font.bold() ? "\\b" : "\\b0")
            + (font.italic() ? "\\i" : "\\i0") + "\\cf" + QByteArray::number(numberIn(colors, color.rgb()))
            + ' ';
        appendEscaped(body, QStringView(text).sliced(run.location - wanted.location, run.length));
    });
    return "{\\rtf1\\ansi\\uc1\n" + fontTable(families) + colorTable(colors) + body + "}";
}

} // namespace runebook
