#include "scripting/bridge/DocumentOperations.h"

#include "scripting/bridge/BridgedClass.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QVariantMap described(const QFont &font)
{
    return {{u"name"_s, font.family()},
            {u"size"_s, font.pointSizeF()},
            {u"bold"_s, font.bold()},
            {u"italic"_s, font.italic()}};
}

QFont fontOf(const QVariantMap &description)
{
    QFont font;
    if (description.contains(u"name"_s))
        font.setFamily(description[u"name"_s].toString());
    if (const double size = description[u"size"_s].toDouble(); size > 0)
        font.setPointSizeF(size);
    font.setBold(description[u"bold"_s].toBool());
    font.setItalic(description[u"italic"_s].toBool());
    return font;
}

/// The text cut where its format changes; of formats that lie over each other the last one counts.
QVariantList pieces(const FormattedText &text)
{
    std::vector<const QTextCharFormat *> formats(static_cast<std::size_t>(text.text.size()));
    for (const QTextLayout::FormatRange &range : text.formats)
        std::fill_n(formats.begin() + range.start, range.length, &range.format);
    QVariantList list;
    for (std::size_t start = 0, end = 0; start < formats.size(); start = end) {
        while (end < formats.size() && formats[end] == formats[start])
            ++end;
        const auto place = static_cast<qsizetype>(start);
        QVariantMap piece {{u"string"_s, text.text.sliced(place, static_cast<qsizetype>(end) - place)}};
        if (formats[start])
            piece[u"font"_s] = described(formats[start]->font());
        list << piece;
    }
    return list;
}

} // namespace

QVariantMap RecordOperations::aglfn(VXGlyphInfo *) const
{
    QVariantMap names;
    const QHash<QString, QString> &list = VXGlyphInfo::aglfn();
    for (auto entry = list.cbegin(); entry != list.cend(); ++entry)
        names.insert(entry.key(), entry.value());
    return names;
}

QVariantMap RecordOperations::encodeWithCoder(VXGlyphInfo *record) const
{
    QVariantMap archive;
    record->encodeWithCoder(archive);
    return archive;
}

InfoPtr RecordOperations::initWithCoder(VXGlyphInfo *, const QVariantMap &archive) const
{
    return VXGlyphInfo::initWithCoder(archive);
}

void RecordOperations::setDocument(const InfoPtr &record, QObject *document) const
{
    auto *owner = qobject_cast<VXDocument *>(document);
    if (document && !owner)
        throw std::invalid_argument("a VXDocument is needed");
    VXDocument::setDocumentOf(record, owner);
}

InfoPtr RecordOperations::copyWithZone(VXGlyphInfo *record, const QVariant &) const
{
    return record->copy();
}

QVariantList DocumentOperations::formatStringFromInfo(VXDocument *document, const InfoPtr &info) const
{
    return pieces(document->formatStringFromInfo(info));
}

QVariantList DocumentOperations::formatInfoStringFont(VXDocument *, const QString &text,
                                                      const QVariantMap &font) const
{
    return pieces(VXDocument::formatInfoStringFont(text, fontOf(font)));
}

QVariant DocumentOperations::fontForScriptSize(VXDocument *, const QString &script, double size) const
{
    const std::optional<QFont> font = VXDocument::fontForScriptSize(script, size);
    return font ? described(*font) : QVariant();
}

void registerDocumentOperations()
{
    static RecordOperations records;
    static DocumentOperations documents;
    bridge::BridgedClass::registerExtension(VXGlyphInfo::staticMetaObject, &records);
    bridge::BridgedClass::registerExtension(VXDocument::staticMetaObject, &documents);
}

} // namespace runebook
