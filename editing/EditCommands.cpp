#include "editing/EditCommands.h"

#include "editing/EditNames.h"
#include "editing/GlyphColumns.h"
#include "model/FileText.h"
#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"
#include "model/RoundTrip.h"
#include "model/StringHelpers.h"

#include <QCoreApplication>
#include <QSet>
#include <cstring>

namespace runebook {

using namespace Qt::StringLiterals;

QString clipboardText(const InfoList &infos)
{
    constexpr int kClipboardVersion = 2;
    GlyphLineWriter writer(kClipboardVersion);
    std::string lines;
    for (const InfoPtr &info : infos)
        writer.append(*info, lines);
    return QString::fromStdString(lines);
}

namespace {

/// Why the record may not be pasted, since no save would write it; null when it may.
QString refusalOf(const VXGlyphInfo &info)
{
    for (const GlyphField field : RoundTrip::writtenFields()) {
        if (RoundTrip::takesOthers(info, field))
            return sentenceOfObjection(info.displayText(field), titleOfField(field));
    }
    return {};
}

} // namespace

InfoList infosOfClipboard(const QByteArray &utf8, LeftOut &leftOut)
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
        const QString refusal = info && reader.hasComment(begin, end) ? refusalOf(*info) : QString();
        if (!refusal.isNull())
            leftOut.add(refusal);
        else if (info)
            infos.push_back(std::move(info));
        begin = end + 1;
    }
    return infos;
}

LeftOut moveNamesToAltNames(VXDocument &document, const InfoList &infos)
{
    const UndoGroup group(document.undoManager(),
                          editName(QCoreApplication::translate("EditCommands", "Name to Alternate Names"),
                                   QCoreApplication::translate("EditCommands",
                                                               "Names to Alternate Names of %1 Records"),
                                   std::ssize(infos)));
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
