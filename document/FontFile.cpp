#include "document/FontFile.h"

#include <QDataStream>
#include <QIODevice>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <vector>

namespace runebook {

namespace {

constexpr int kHeaderSize = 12;
constexpr int kEntrySize = 16;
constexpr quint32 kNameTag = 0x6E616D65; // "name"

struct Table {
    quint32 tag;
    quint32 checksum;
    QByteArray bytes;
};

bool isFont(quint32 version)
{
    constexpr quint32 kTrueType = 0x00010000;
    constexpr quint32 kOpenType = 0x4F54544F; // "OTTO"
    constexpr quint32 kApple = 0x74727565; // "true"
    return version == kTrueType || version == kOpenType || version == kApple;
}

quint32 checksumOf(const QByteArray &bytes)
{
    quint32 sum = 0;
    for (qsizetype i = 0; i < bytes.size(); i += 4) {
        const QByteArray word = bytes.mid(i, 4).leftJustified(4, '\0');
        sum += qFromBigEndian<quint32>(word.constData());
    }
    return sum;
}

/// A table of names with nothing but what tells the font from others: family, style, full and PostScript
/// name.
QByteArray nameTable(const QString &family)
{
    constexpr std::array<quint16, 4> kIds {1, 2, 4, 6};
    constexpr quint16 kWindows = 3, kUnicode = 1, kEnglish = 0x409;
    constexpr quint16 kRecordsBegin = 6, kRecordSize = 12;
    QByteArray table;
    QByteArray texts;
    QDataStream out(&table, QIODevice::WriteOnly);
    out << quint16(0) << quint16(kIds.size()) << quint16(kRecordsBegin + kRecordSize * kIds.size());
    for (const quint16 id : kIds) {
        const QString text = id == 2 ? QStringLiteral("Regular") : family;
        const auto offset = static_cast<quint16>(texts.size());
        for (const QChar unit : text)
            texts.append(static_cast<char>(unit.unicode() >> 8)).append(static_cast<char>(unit.unicode()));
        out << kWindows << kUnicode << kEnglish << id << static_cast<quint16>(texts.size() - offset)
            << offset;
    }
    return table + texts;
}

/// The tables of a font file; none when one lies outside of it.
std::vector<Table> tablesOf(const QByteArray &font)
{
    QDataStream in(font);
    quint32 version = 0;
    quint16 count = 0;
    in >> version >> count;
    in.skipRawData(6);
    std::vector<Table> tables;
    for (int i = 0; isFont(version) && i < count; ++i) {
        Table table;
        quint32 offset = 0;
        quint32 length = 0;
        in >> table.tag >> table.checksum >> offset >> length;
        if (in.status() != QDataStream::Ok || quint64(offset) + length > quint64(font.size()))
            return {};
        table.bytes = font.mid(offset, length);
        tables.push_back(std::move(table));
    }
    return tables;
}

} // namespace

QByteArray fontWithFamily(const QByteArray &font, const QString &family)
{
    std::vector<Table> tables = tablesOf(font);
    const auto name =
        std::find_if(tables.begin(), tables.end(), [](const Table &table) { return table.tag == kNameTag; });
    if (name == tables.end())
        return {};
    name->bytes = nameTable(family);
    name->checksum = checksumOf(name->bytes);
    QByteArray made = font.left(kHeaderSize);
    QByteArray content;
    QDataStream directory(&made, QIODevice::WriteOnly | QIODevice::Append);
    for (const Table &table : tables) {
        const auto offset =
            kHeaderSize + kEntrySize * tables.size() + static_cast<std::size_t>(content.size());
        directory << table.tag << table.checksum << static_cast<quint32>(offset)
                  << static_cast<quint32>(table.bytes.size());
        content += table.bytes;
        content.append((4 - content.size() % 4) % 4, '\0');
    }
    return made + content;
}

} // namespace runebook
