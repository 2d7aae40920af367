#include "document/GlyphDataReader.h"

#include "document/GlyphDataWriter.h"
#include "model/GlyphLineReader.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QUtf8StringView>
#include <cstring>
#include <new>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view kEndOfList = "</glyphData>";

QString tr(const char *text)
{
    return QCoreApplication::translate("GlyphDataReader", text);
}

Error readError(const QString &path, const QString &reason, const QString &suggestion = {})
{
    return {u"ReadError"_s, 1, tr("“%1” could not be read.").arg(path), reason, suggestion};
}

/// 0 when the header does not tell.
quint8 versionOfHeader(std::string_view header)
{
    constexpr std::string_view kFormat = "format=\"";
    if (const std::size_t format = header.find(kFormat); format != header.npos) {
        const std::size_t digit = format + kFormat.size();
        const bool isDigit = digit < header.size() && header[digit] >= '0' && header[digit] <= '9';
        return isDigit ? static_cast<quint8>(header[digit] - '0') : 0;
    }
    const bool hasMarks = header.find("marks") != header.npos;
    const bool hasAccents = header.find("accents") != header.npos;
    if (hasMarks == hasAccents)
        return 0;
    return hasMarks ? 2 : 1;
}

} // namespace

std::optional<QByteArray> readUtf8File(const QString &path, Error *error)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        fail(error, readError(path, info.isDir() ? tr("It is a folder.") : tr("It is a device or a pipe.")));
        return {};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        fail(error, readError(path, file.errorString()));
        return {};
    }
    try {
        const qint64 size = file.size();
        QByteArray bytes(size, Qt::Uninitialized);
        const qint64 count = file.read(bytes.data(), size);
        if (count < 0) {
            fail(error, readError(path, file.errorString()));
            return {};
        }
        bytes.truncate(count);
        if (!QUtf8StringView(bytes).isValidUtf8()) {
            fail(error,
                 readError(path, tr("It is not UTF-8 text."),
                           tr("Convert the file to UTF-8 in a text editor and open it again.")));
            return {};
        }
        return bytes;
    } catch (const std::bad_alloc &) {
        fail(error, readError(path, tr("There is not enough memory for it.")));
        return {};
    }
}

std::optional<InfoList> GlyphDataReader::read(const QString &path, Error *error)
{
    std::optional<QByteArray> bytes = readUtf8File(path, error);
    if (!bytes)
        return {};
    try {
        return read(*std::exchange(bytes, QByteArray()));
    } catch (const std::bad_alloc &) {
        fail(error, readError(path, tr("There is not enough memory for it.")));
        return {};
    }
}

InfoList GlyphDataReader::read(const QByteArray &utf8)
{
    m_notes = {};
    m_fileVersion = 2;
    const SourcePtr source(new SourceBytes(utf8));
    const char *data = source->data();
    const qsizetype size = source->size();
    const std::string_view text(data, static_cast<std::size_t>(size));
    m_notes.hasByteOrderMark = text.starts_with("\xEF\xBB\xBF");

    InfoList infos;
    const std::size_t body = text.find("<glyph ");
    if (body == text.npos)
        return infos;
    const std::string_view header = text.substr(0, body);
    const quint8 headerVersion = versionOfHeader(header);

    GlyphLineReader reader(source, &m_notes);
    bool inComment = false;
    for (auto begin = static_cast<qsizetype>(body); begin < size;) {
        const void *feed = std::memchr(data + begin, '\n', static_cast<std::size_t>(size - begin));
        const qsizetype end = feed ? static_cast<const char *>(feed) - data : size;
        const std::string_view line(data + begin, static_cast<std::size_t>(end - begin));
        const qsizetype next = end + 1;
        if (inComment) {
            inComment = line.find("-->") == line.npos;
            begin = next;
            continue;
        }
        // Only a line with a comment can be another than the usual one.
        inComment = reader.hasComment(begin, end) && line.find("-->") == line.npos;
        m_notes.hasCarriageReturns |= line.ends_with('\r');
        if (InfoPtr info = reader.readPiece(begin, end)) {
            if (infos.empty())
                infos.reserve(static_cast<std::size_t>((size - begin) / (next - begin)) + 16);
            infos.push_back(std::move(info));
        } else if (const std::string_view foreign = reader.lastPiece();
                   !foreign.empty() && foreign != kEndOfList) {
            m_notes.add(ReadNotes::ForeignLine, static_cast<qsizetype>(infos.size()),
                        QString::fromUtf8(foreign.data(), qMin<qsizetype>(std::ssize(foreign), 400)));
        }
        begin = next;
    }
    m_fileVersion = headerVersion ? headerVersion : reader.versionHint() ? reader.versionHint() : 2;
    std::string_view plainHeader = header;
    while (!plainHeader.empty() && plainHeader.back() == '\t')
        plainHeader.remove_suffix(1);
    m_notes.hasForeignHeader = plainHeader != GlyphDataWriter::header(m_fileVersion);
    return infos;
}

} // namespace runebook
