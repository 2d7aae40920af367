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

QVariantList pieces(const FormattedText &text)
{
    QVariantList list;
    const auto add = [&](qsizetype start, qsizetype end, const QTextCharFormat *format) {
        if (end <= start)
            return;
        QVariantMap piece {{u"string"_s, text.text.sliced(start, end - start)}};
        if (format && format->hasProperty(QTextFormat::FontFamilies))
            piece[u"font"_s] = described(format->font());
        list << piece;
    };
    qsizetype place = 0;
    for (const QTextLayout::FormatRange &range : text.formats) {
        add(place, range.start, nullptr);
        add(range.start, range.start + range.length, &range.format);
        place = range.start + range.length;
    }
    add(place, text.text.size(), nullptr);
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
