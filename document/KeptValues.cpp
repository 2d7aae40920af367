#include "document/KeptValues.h"

#include "model/FieldTable.h"

#include <QDataStream>
#include <QIODevice>
#include <QStringConverter>
#include <QtEndian>
#include <algorithm>

namespace runebook {

namespace {

constexpr auto kStreamVersion = QDataStream::Qt_6_0;
/// Stands where the length of a text would: the text follows as UTF-8, with its length in bytes.
constexpr quint32 kIsUtf8 = 0xFFFFFFFE;
constexpr quint32 kIsNull = 0xFFFFFFFF;
constexpr qsizetype kLong = 1 << 16; ///< units of a text that is not printed at once

using F = GlyphField;

// The order is that of the files that there are: fields that came later stand behind all else, and may be
// missing.
constexpr F kTexts[] {F::Name,   F::Category,   F::SubCategory,   F::Marks,        F::Anchors,
                      F::Script, F::Production, F::SortName,      F::SortNameKeep, F::SortNameOld,
                      F::Desc,   F::Decompose,  F::UnicodeLegacy, F::UnicharString};
constexpr auto kLaterTexts = fieldsBy<[](const FieldRow &row) {
    return isStored(row.field) && row.kind == FieldKind::Text
        && std::find(std::begin(kTexts), std::end(kTexts), row.field) == std::end(kTexts);
}>();

/// Gives what is written to it on as base64.
class Base64Device : public QIODevice
{
public:
    explicit Base64Device(const BlockSink &sink) : m_sink(sink) { open(WriteOnly | Unbuffered); }

    bool finish()
    {
        flush(m_open.size());
        return m_isFine && m_sink("\n");
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        for (qint64 done = 0; done < size; done += kStep) {
            m_open.append(data + done, std::min(kStep, size - done));
            flush(m_open.size() / 3 * 3);
        }
        return m_isFine ? size : -1;
    }

private:
    static constexpr qint64 kStep = 3 << 14;

    /// Three bytes make four characters, so that what is encoded by itself is as if encoded together.
    void flush(qsizetype size)
    {
        if (size < kStep && size < m_open.size())
            return;
        const QByteArray encoded = QByteArray::fromRawData(m_open.constData(), size).toBase64();
        m_isFine = m_isFine && m_sink({encoded.constData(), static_cast<std::size_t>(encoded.size())});
        m_open.remove(0, size);
    }

    const BlockSink &m_sink;
    QByteArray m_open;
    bool m_isFine = true;
};

void writeUtf8(QDataStream &stream, std::string_view utf8)
{
    stream << kIsUtf8 << static_cast<quint32>(utf8.size());
    stream.writeRawData(utf8.data(), static_cast<int>(utf8.size()));
}

quint32 utf8Length(QStringView text)
{
    quint32 length = 0;
    for (const QChar unit : text)
        length += unit.unicode() < 0x80 ? 1 : unit.unicode() < 0x800 || unit.isSurrogate() ? 2 : 3;
    return length;
}

/// A long text in stretches: nothing as long as it is made of it.
void writeText(QDataStream &stream, QStringView text)
{
    if (text.size() < kLong) {
        stream << text.toString();
        return;
    }
    const bool isUtf8 = text.isValidUtf16(); // half a character would be lost there
    if (isUtf8)
        stream << kIsUtf8 << utf8Length(text);
    else
        stream << static_cast<quint32>(text.size() * 2);
    QStringEncoder encoder(QStringConverter::Utf8);
    for (; !text.isEmpty(); text = text.sliced(std::min(kLong, text.size()))) {
        const QStringView stretch = text.first(std::min(kLong, text.size()));
        QByteArray bytes;
        if (isUtf8) {
            bytes = encoder(stretch);
        } else {
            bytes.resize(stretch.size() * 2);
            qToBigEndian<char16_t>(stretch.utf16(), stretch.size(), bytes.data());
        }
        stream.writeRawData(bytes.constData(), static_cast<int>(bytes.size()));
    }
}

// Not as the stream does it, which makes room for as many as it is told.
void writeTexts(QDataStream &stream, const QStringList &texts)
{
    stream << qint32(texts.size());
    for (const QString &text : texts)
        writeText(stream, text);
}

/// Made as it is read, whatever length is told.
QByteArray readBytes(QDataStream &stream, quint32 length)
{
    constexpr quint32 kStep = 1 << 20;
    QByteArray bytes;
    while (length > 0) {
        const auto step = static_cast<int>(std::min(length, kStep));
        const qsizetype before = bytes.size();
        bytes.resize(before + step);
        if (stream.readRawData(bytes.data() + before, step) != step) {
            stream.setStatus(QDataStream::ReadPastEnd);
            return {};
        }
        length -= static_cast<quint32>(step);
    }
    return bytes;
}

QString readText(QDataStream &stream)
{
    quint32 length = 0;
    stream >> length;
    if (length == kIsUtf8) {
        stream >> length;
        const QByteArray utf8 = readBytes(stream, length);
        return FieldValue::textOfUtf8({utf8.constData(), static_cast<std::size_t>(utf8.size())});
    }
    if (length == kIsNull || stream.status() != QDataStream::Ok)
        return {};
    if (length % 2) {
        stream.setStatus(QDataStream::ReadCorruptData);
        return {};
    }
    const QByteArray units = readBytes(stream, length);
    QString text(units.size() / 2, Qt::Uninitialized);
    qFromBigEndian<char16_t>(units.constData(), text.size(), text.data());
    return text;
}

QStringList readTexts(QDataStream &stream)
{
    QStringList texts;
    qint32 count = 0;
    stream >> count;
    for (; count > 0 && stream.status() == QDataStream::Ok; --count)
        texts << readText(stream);
    return texts;
}

InfoPtr infoFrom(QDataStream &stream)
{
    InfoPtr info = VXGlyphInfo::init();
    for (const F field : kTexts)
        info->editText(field, readText(stream));
    const QStringList codePoints = readTexts(stream);
    const QStringList altNames = readTexts(stream);
    qint32 letterCase = 0;
    qint32 direction = 0;
    quint64 index = 0;
    stream >> letterCase >> direction >> index;
    if (!codePoints.isEmpty())
        info->setUnicodes(codePoints);
    if (!altNames.isEmpty())
        info->setAltNames(altNames);
    info->setCase(letterCase);
    info->setDirection(direction);
    info->setIndex(index);
    for (const F field : kLaterTexts) {
        if (stream.atEnd())
            break;
        info->editText(field, readText(stream));
    }
    return info;
}

} // namespace

KeptValues::KeptValues(const VXGlyphInfo &info, quint64 place)
    : m_place(place),
      m_source(info.source()),
      m_case(info.caseValue()),
      m_direction(info.direction()),
      m_index(info.index())
{
    for (std::size_t i = 0; i < m_values.size(); ++i)
        m_values[i] = info.stored(static_cast<GlyphField>(i));
}

bool KeptValues::print(const BlockSink &sink) const
{
    Base64Device device(sink);
    QDataStream stream(&device);
    stream.setVersion(kStreamVersion);
    stream << m_place;
    const auto writeValue = [&](F field) {
        const FieldValue &text = value(field);
        if (!text.view().isNull())
            writeText(stream, text.view());
        else if (text.isPiece() && text.pieceLength() >= kLong)
            writeUtf8(stream, text.bytes(sourceData()));
        else
            stream << text.toString(sourceData());
    };
    std::for_each(std::begin(kTexts), std::end(kTexts), writeValue);
    const FieldValue &codePoints = value(F::Unicodes);
    writeTexts(stream,
               codePoints.isPiece() ? QStringList {codePoints.toString(sourceData())}
                                    : codePoints.toList(sourceData()));
    writeTexts(stream, value(F::AltNames).toList(sourceData()));
    stream << m_case << m_direction << m_index;
    std::for_each(kLaterTexts.begin(), kLaterTexts.end(), writeValue);
    return device.finish();
}

std::optional<std::pair<qsizetype, InfoPtr>> KeptValues::read(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(kStreamVersion);
    quint64 place = 0;
    stream >> place;
    const InfoPtr info = infoFrom(stream);
    if (stream.status() != QDataStream::Ok)
        return {};
    return std::pair(static_cast<qsizetype>(place), info);
}

} // namespace runebook
