#include "merge/TextConversion.h"

#include "merge/FieldMerge.h"
#include "model/GlyphLineReader.h"

#include <QCoreApplication>
#include <QFile>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kBlock = 1 << 20;

void appendRecord(const VXGlyphInfo &info, QByteArray &text)
{
    text += info.name().toUtf8() + '\n';
    for (const GlyphField field : mergedFields()) {
        if (field == GlyphField::Name)
            continue;
        if (const QString value = info.displayText(field); !value.isEmpty())
            text += "    " + keyOfField(field).toUtf8() + ": " + value.toUtf8() + '\n';
    }
}

} // namespace

bool writeTextConversion(const QByteArray &bytes, QIODevice &out)
{
    const auto put = [&out](const QByteArray &text) { return out.write(text) == text.size(); };
    if (!bytes.contains("<glyph ") || !bytes.isValidUtf8())
        return put(bytes);
    const SourcePtr source(new SourceBytes(bytes));
    QByteArray text;
    bool isInComment = false;
    for (qsizetype begin = 0; begin < bytes.size();) {
        const qsizetype feed = bytes.indexOf('\n', begin);
        const qsizetype end = feed < 0 ? bytes.size() : feed;
        const QByteArrayView line(bytes.constData() + begin, end - begin);
        ReadNotes notes;
        const InfoPtr info = isInComment ? nullptr : GlyphLineReader(source, &notes).readPiece(begin, end);
        isInComment = (isInComment || line.contains("<!--")) && !line.contains("-->");
        if (info)
            appendRecord(*info, text);
        if (!info || !notes.isEmpty()) // the line says more than the record does
            text += (info ? "    line: " : "") + line.trimmed().toByteArray() + '\n';
        if (text.size() > kBlock && !put(std::exchange(text, {})))
            return false;
        begin = end + 1;
    }
    return put(text);
}

bool convertFileToText(const QString &path, QIODevice &out, Error *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(error,
                    {u"ReadError"_s,
                     1,
                     QCoreApplication::translate("TextConversion", "“%1” could not be read.").arg(path),
                     file.errorString(),
                     {}});
    }
    return writeTextConversion(file.readAll(), out);
}

} // namespace runebook
