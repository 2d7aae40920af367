#include "editing/window/EditCommands.h"

#include "document/AutosaveForm.h"
#include "editing/fields/EditNames.h"
#include "editing/fields/GlyphColumns.h"
#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"
#include "model/StringHelpers.h"
#include "platform/FileBytes.h"
#include "platform/TurningWindows.h"

#include <QCoreApplication>
#include <QMimeData>
#include <QSet>
#include <cstring>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kClipboardVersion = 2;

/// The program's own form on the clipboard, that of autosaved contents.
QString recordsType()
{
    return u"application/x-runebook-records"_s;
}

QString linesOf(const InfoList &infos)
{
    GlyphLineWriter writer(kClipboardVersion);
    std::string lines;
    for (const InfoPtr &info : infos)
        writer.append(*info, lines);
    return QString::fromStdString(lines);
}

InfoList infosOfLines(const QByteArray &utf8, LeftOut &leftOut)
{
    InfoList infos;
    const SourcePtr source(new SourceBytes(utf8));
    GlyphLineReader reader(source);
    const char *data = source->data();
    const qsizetype size = source->size();
    for (qsizetype begin = 0; begin < size;) {
        const void *feed = std::memchr(data + begin, '\n', static_cast<std::size_t>(size - begin));
        const qsizetype end = feed ? static_cast<const char *>(feed) - data : size;
        InfoPtr info = reader.readPiece(begin, end);
        const QString refusal = info && reader.hasComment(begin, end) ? refusalOfEdited(*info) : QString();
        if (!refusal.isNull())
            leftOut.add(refusal);
        else if (info)
            infos.push_back(std::move(info));
        begin = end + 1;
    }
    return infos;
}

} // namespace

std::unique_ptr<QMimeData> clipboardData(const InfoList &infos)
{
    if (infos.empty())
        return nullptr;
    QString text;
    QByteArray records;
    doApart(GlyphDataWriter::sizeOf(infos, kClipboardVersion), [&] {
        text = linesOf(infos);
        records = autosavedContentOf(infos, kClipboardVersion);
    });
    auto data = std::make_unique<QMimeData>();
    data->setText(text);
    data->setData(recordsType(), records);
    return data;
}

InfoList infosOfClipboard(const QMimeData &clipboard, LeftOut &leftOut)
{
    const QByteArray own = clipboard.data(recordsType());
    if (!own.isEmpty() && isUtf8(own)) {
        AutosavedContent content = readAutosavedContent(own);
        if (content.isWhole) {
            const auto isRefused = [&leftOut](const InfoPtr &info) {
                const QString refusal = refusalOfEdited(*info);
                if (!refusal.isNull())
                    leftOut.add(refusal);
                return !refusal.isNull();
            };
            doApart(own.size(), [&] { std::erase_if(content.infos, isRefused); });
            return std::move(content.infos);
        }
    }
    return infosOfLines(clipboard.text().toUtf8(), leftOut);
}

LeftOut moveNamesToAltNames(VXDocument &document, const InfoList &infos)
{
    const UndoGroup group(
        document.undoManager(),
        editNameOf(QCoreApplication::translate("EditCommands", "Name to Alternate Names of %1"), infos));
    LeftOut leftOut;
    for (const InfoPtr &info : infos) {
        QStringList names = info->altNames();
        names.removeDuplicates();
        if (const QString name = info->name(); !names.contains(name))
            names << name;
        if (const QString refusal = refusalOfEdited(GlyphField::AltNames, names); !refusal.isNull())
            leftOut.add(refusal);
        else
            info->setAltNames(names);
    }
    return leftOut;
}

InfoPtr infoForNameOrCodePoint(const VXDocument &document, const QString &text)
{
    const QString wanted = text.trimmed();
    if (wanted.isEmpty())
        return nullptr;
    if (InfoPtr info = document.infoForName(wanted))
        return info;
    QString digits = wanted;
    for (const QLatin1StringView prefix : {"U+"_L1, "u+"_L1, "0x"_L1, "uni"_L1}) {
        if (digits.startsWith(prefix))
            digits = digits.mid(prefix.size());
    }
    if (InfoPtr info = document.infoForUnicode(digits.rightJustified(4, u'0').toUpper()))
        return info;
    qsizetype index = 0;
    const char32_t character = character32AtIndex(wanted, index);
    return index + 1 == wanted.size() ? document.infoForUnicode(hexStringFromInt(character)) : nullptr;
}

InfoList infosWithSameValue(const InfoList &candidates, const InfoList &examples, GlyphField field)
{
    QSet<QString> values;
    for (const InfoPtr &info : examples)
        values.insert(info->displayText(field));
    InfoList same;
    for (const InfoPtr &info : candidates) {
        if (values.contains(info->displayText(field)))
            same.push_back(info);
    }
    return same;
}

} // namespace runebook
