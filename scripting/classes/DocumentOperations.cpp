#include "scripting/classes/DocumentOperations.h"

#include "document/GlyphPreview.h"
#include "model/FieldTable.h"
#include "platform/documents/DocumentController.h"
#include "scripting/bridge/DirectText.h"
#include "scripting/bridge/Operation.h"
#include "scripting/classes/FontMaps.h"

#include <stdexcept>
#include <string>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

void checkIndex(qsizetype index, qsizetype end)
{
    if (index < 0 || index >= end)
        throw std::out_of_range("no place " + std::to_string(index) + " among " + std::to_string(end));
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
            piece[u"font"_s] = bridge::mapOfFont(formats[start]->font());
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

InfoPtr DocumentOperations::objectInInfosAtIndex(VXDocument *document, qsizetype index) const
{
    checkIndex(index, document->countOfInfos());
    return document->objectInInfosAtIndex(index);
}

void DocumentOperations::insertObjectInInfosAtIndex(VXDocument *document, const InfoPtr &info,
                                                    qsizetype index) const
{
    checkIndex(index, document->countOfInfos() + 1);
    document->insertObjectInInfosAtIndex(info, index);
}

void DocumentOperations::insertObjectsInInfosAtIndexes(VXDocument *document, const InfoList &infos,
                                                       const IndexSet &indexes) const
{
    if (infos.size() != indexes.size())
        throw std::out_of_range("there must be as many indexes as records");
    for (std::size_t place = 0; place < indexes.size(); ++place)
        checkIndex(indexes[place], document->countOfInfos() + static_cast<qsizetype>(place) + 1);
    document->insertObjectsInInfosAtIndexes(infos, indexes);
}

void DocumentOperations::removeObjectFromInfosAtIndex(VXDocument *document, qsizetype index) const
{
    checkIndex(index, document->countOfInfos());
    document->removeObjectFromInfosAtIndex(index);
}

void DocumentOperations::removeObjectsFromInfosAtIndexes(VXDocument *document, const IndexSet &indexes) const
{
    if (!indexes.empty())
        checkIndex(indexes.back(), document->countOfInfos());
    document->removeObjectsFromInfosAtIndexes(indexes);
}

void DocumentOperations::replaceObjectInInfosAtIndexWithObject(VXDocument *document, qsizetype index,
                                                               const InfoPtr &info) const
{
    checkIndex(index, document->countOfInfos());
    document->replaceObjectInInfosAtIndexWithObject(index, info);
}

QVariantList DocumentOperations::formatStringFromInfo(VXDocument *document, const InfoPtr &info) const
{
    return pieces(document->formatStringFromInfo(info));
}

QVariantList DocumentOperations::formatInfoStringFont(VXDocument *, const QString &text,
                                                      const QVariantMap &font) const
{
    return pieces(VXDocument::formatInfoStringFont(text, bridge::fontOfMap(font)));
}

QVariant DocumentOperations::fontForScriptSize(VXDocument *, const QString &script, double size) const
{
    const std::optional<QFont> font = VXDocument::fontForScriptSize(script, size);
    return font ? bridge::mapOfFont(*font) : QVariant();
}

namespace {

/// Whoever goes through the records wants the lines of the next ones soon, and waiting for them costs a loop
/// more than all else. A line is about 200 bytes long.
void fetchLinesBehind(const char *place)
{
    constexpr int kNearest = 320, kFarthest = 704, kCacheLine = 64;
    for (int ahead = kNearest; ahead < kFarthest; ahead += kCacheLine)
        __builtin_prefetch(place + ahead);
}

std::optional<std::string_view> storedText(const void *record, int field)
{
    const auto &info = *static_cast<const VXGlyphInfo *>(record);
    const FieldValue &value = info.stored(static_cast<GlyphField>(field));
    if (value.isAbsent())
        return std::string_view();
    if (!value.isPiece())
        return std::nullopt;
    if (value.pieceLength() == 0)
        return std::string_view("");
    const std::string_view text = value.bytes(info.sourceData());
    fetchLinesBehind(text.data());
    return text;
}

void storeText(void *record, int field, const QString &text)
{
    static_cast<VXGlyphInfo *>(record)->editText(static_cast<GlyphField>(field), text);
}

void registerTexts()
{
    for (const FieldRow &row : kFieldTable) {
        if (row.kind != FieldKind::Text || !isStored(row.field))
            continue;
        // Setters with rules of their own have to be asked.
        bridge::registerDirectText(VXGlyphInfo::staticMetaObject, keyOfField(row.field).toLatin1(),
                                   {static_cast<int>(row.field), storedText,
                                    row.setter == FieldSetter::Plain ? storeText : nullptr});
    }
}

/// Windows follow their documents in the next turn of the event loop; a script that asks one does not wait.
void bringUpToDate()
{
    for (Document *document : DocumentController::shared().documentList()) {
        if (auto *glyphs = qobject_cast<VXDocument *>(document))
            glyphs->flushChanges();
    }
}

bool followsDocuments(const QMetaObject &meta)
{
    return meta.inherits(&QObject::staticMetaObject) && !meta.inherits(&Document::staticMetaObject);
}

// Indexes

PyObject *indexesToPython(QMetaType, const void *data)
{
    const auto &indexes = *static_cast<const IndexSet *>(data);
    const QVariantList numbers(indexes.begin(), indexes.end());
    return bridge::bridgeType(QMetaType::fromType<QVariantList>()).toPython({}, &numbers);
}

bool indexesFromPython(QMetaType, PyObject *object, void *data)
{
    std::vector<qsizetype> indexes;
    const QMetaType number = QMetaType::fromType<qsizetype>();
    const bridge::BridgeType &numbers = bridge::bridgeType(number);
    const bool isRead = bridge::forEach(object, [&](PyObject *item) {
        if (!numbers.fromPython(number, item, &indexes.emplace_back()))
            return false;
        if (indexes.back() >= 0)
            return true;
        bridge::raise(*py.PyExc_IndexError, u"%1 is no index"_s.arg(indexes.back()));
        return false;
    });
    *static_cast<IndexSet *>(data) = IndexSet(std::move(indexes));
    return isRead;
}

} // namespace

void registerDocumentOperations()
{
    bridge::registerRecord<VXGlyphInfo>();
    bridge::BridgedClass::registerClass(VXDocument::staticMetaObject,
                                        [] { return bridge::ownedByScripts(new VXDocument); });
    bridge::registerType(QMetaType::fromType<IndexSet>(), {indexesToPython, indexesFromPython});
    bridge::setPreparation({followsDocuments, bringUpToDate});
    registerTexts();
    static RecordOperations records;
    static DocumentOperations documents;
    bridge::BridgedClass::registerExtension(VXGlyphInfo::staticMetaObject, &records);
    bridge::BridgedClass::registerExtension(VXDocument::staticMetaObject, &documents);
}

} // namespace runebook
