#include "scripting/components/CodeOperations.h"

#include "codeeditor/BraceMatching.h"
#include "scripting/bridge/BridgeTypes.h"
#include "scripting/classes/FontMaps.h"
#include "scripting/python/CallbackError.h"
#include "scripting/python/ScriptRun.h"

namespace runebook {

using namespace Qt::StringLiterals;
using namespace bridge;

namespace {

constexpr qint64 kNotFound = std::numeric_limits<qint64>::max();

std::optional<QColor> colorOf(const QVariant &value)
{
    const QColor color = value.value<QColor>();
    if (color.isValid())
        return color;
    if (value.isValid())
        throw std::invalid_argument("that is no colour");
    return {};
}

// Types that only code documents have

/// A token with a text of its own: the tokenizer's changes with the next one.
struct KeptToken {
    explicit KeptToken(const TDToken &from)
        : text(from.stringValue().toString()), token(from.kind(), text) { }
    QString text;
    TDToken token;
};

PyObject *tokenToPython(QMetaType, const void *data)
{
    const TDToken *token = *static_cast<const TDToken *const *>(data);
    const BridgedClass *bridged = BridgedClass::forMetaObject(TDToken::staticMetaObject);
    if (!token || !bridged)
        return bridged ? none() : nullptr;
    if (token != TDToken::EOFToken()) {
        const auto kept = std::make_shared<KeptToken>(*token);
        return wrapValue(*bridged, std::shared_ptr<void>(kept, &kept->token));
    }
    // One object, so that "is" finds it.
    static PyObject *const end = wrapValue(*bridged, std::make_shared<TDToken>(*token));
    return PythonRef::shared(end).release();
}

PyObject *viewToPython(QMetaType, const void *data)
{
    return pythonText(static_cast<const QStringView *>(data)->toString());
}

PyObject *rectangleToPython(QMetaType, const void *data)
{
    const auto &rectangle = *static_cast<const QRectF *>(data);
    return vxPy_BuildValue("(dddd)", rectangle.x(), rectangle.y(), rectangle.width(), rectangle.height());
}

PyObject *hashToPython(QMetaType, const void *data)
{
    const auto &hash = *static_cast<const QVariantHash *>(data);
    QVariantMap map;
    for (auto item = hash.cbegin(); item != hash.cend(); ++item)
        map.insert(item.key(), item.value());
    const QMetaType type(QMetaType::QVariantMap);
    return bridgeType(type).toPython(type, &map);
}

bool hashFromPython(QMetaType, PyObject *object, void *data)
{
    QVariantMap map;
    const QMetaType type(QMetaType::QVariantMap);
    if (!bridgeType(type).fromPython(type, object, &map))
        return false;
    for (auto item = map.cbegin(); item != map.cend(); ++item)
        static_cast<QVariantHash *>(data)->insert(item.key(), item.value());
    return true;
}

/// A character is its number, or a text of one.
bool characterFromPython(QMetaType, PyObject *object, void *data)
{
    auto &character = *static_cast<char16_t *>(data);
    if (!isKind(object, python::kUnicodeSubclass)) {
        const QMetaType number(QMetaType::UShort);
        return bridgeType(number).fromPython(number, object, data);
    }
    QString text;
    if (!readText(object, text))
        return false;
    if (text.size() == 1)
        character = text.front().unicode();
    else
        raise(*py.PyExc_TypeError, u"a text of one character is needed"_s);
    return text.size() == 1;
}

bool postProcessingFromPython(QMetaType, PyObject *object, void *data)
{
    auto &block = *static_cast<JSTDocument::PostProcessing *>(data);
    if (isNone(object))
        return true;
    if (!py.PyCallable_Check(object)) {
        raise(*py.PyExc_TypeError, u"a function is needed, not %1"_s.arg(typeName(object)));
        return false;
    }
    const auto release = [](PyObject *function) {
        const PythonLock lock;
        vxPy_DecRef(function);
    };
    const std::shared_ptr<PyObject> function(PythonRef::shared(object).release(), release);
    block = [function](VXCodeTextStorage *storage) {
        const PythonLock lock;
        const PythonRef argument(wrapObject(storage));
        const PythonRef answer(
            argument ? py.PyObject_CallFunctionObjArgs(function.get(), argument.get(), nullptr) : nullptr);
        if (!answer)
            reportCallbackError();
    };
    return true;
}

void registerCodeTypes()
{
    registerType(QMetaType::fromType<const TDToken *>(), {tokenToPython, nullptr});
    registerType(QMetaType::fromType<QStringView>(), {viewToPython, nullptr});
    registerType(QMetaType(QMetaType::QRectF), {rectangleToPython, nullptr});
    registerType(QMetaType(QMetaType::QVariantHash), {hashToPython, hashFromPython});
    registerType(QMetaType(QMetaType::Char16), {nullptr, characterFromPython});
    registerType(QMetaType::fromType<JSTDocument::PostProcessing>(),
                 {nullptr, postProcessingFromPython, true});
    registerRecord<TDTokenizer>();
    BridgedClass::registerClass(TDToken::staticMetaObject, [] {
        return Instance {std::make_shared<TDToken>(), nullptr};
    });
    BridgedClass::registerClass(TDReader::staticMetaObject, [] {
        return Instance {std::make_shared<TDReader>(), nullptr};
    });
    registerRange<TextRange>();
    BridgedClass::registerClass(JSTTextView::staticMetaObject,
                                [] { return ownedByScripts(new JSTTextView); });
    BridgedClass::registerClass(JSTDocument::staticMetaObject,
                                [] { return ownedByScripts(new JSTDocument); });
    BridgedClass::registerClass(VXCodeTextStorage::staticMetaObject,
                                [] { return ownedByScripts(new VXCodeTextStorage); });
    BridgedClass::registerClass(VXLineNumberView::staticMetaObject,
                                [] { return ownedByScripts(new VXLineNumberView(nullptr)); });
}

} // namespace

NewObject CodeDocumentOperations::initWithTokenizer(JSTDocument *,
                                                    const std::shared_ptr<TDTokenizer> &tokenizer) const
{
    return {new JSTDocument(tokenizer)};
}

NewObject CodeDocumentOperations::initWithCoder(JSTDocument *, const QVariant &) const
{
    return {new JSTDocument};
}

QVariantMap CodeDocumentOperations::encodeWithCoder(JSTDocument *) const
{
    return {};
}

void CodeDocumentOperations::textStorageDidProcessEditing(JSTDocument *document, const QVariant &) const
{
    document->colour(JSTDocument::Pass::WhenChanged);
}

NewObject CodeStorageOperations::initWithAttributedString(VXCodeTextStorage *, const QVariant &contents) const
{
    if (const auto *storage = qobject_cast<const QTextDocument *>(contents.value<QObject *>()))
        return {new VXCodeTextStorage(storage)};
    auto *storage = new VXCodeTextStorage;
    storage->setPlainText(contents.toString());
    return {storage};
}

NewObject RulerOperations::initWithScrollView(VXLineNumberView *, QAbstractScrollArea *view) const
{
    return {new VXLineNumberView(view)};
}

NewObject RulerOperations::initWithCoder(VXLineNumberView *, const QVariantMap &archive) const
{
    auto ruler = std::make_unique<VXLineNumberView>(nullptr);
    ruler->initWithCoder(withFontsAndColors({}, archive).toMap());
    return {ruler.release()};
}

void TokenizerOperations::setKeywords(const std::shared_ptr<TDTokenizer> &tokenizer,
                                      const QVariantHash &keywords) const
{
    QVariantHash table;
    for (auto entry = keywords.cbegin(); entry != keywords.cend(); ++entry)
        table.insert(entry.key(), withFontsAndColors(entry.key(), entry.value()));
    tokenizer->setKeywords(table);
}

qint64 RulerOperations::lineNumberForLocation(VXLineNumberView *ruler, double location) const
{
    const std::optional<int> line = ruler->lineNumberForLocation(location);
    return line ? *line : kNotFound;
}

void RulerOperations::setTextColor(VXLineNumberView *ruler, const QVariant &color) const
{
    ruler->setTextColor(colorOf(color));
}

void RulerOperations::setAlternateTextColor(VXLineNumberView *ruler, const QVariant &color) const
{
    ruler->setAlternateTextColor(colorOf(color));
}

QVariant RulerOperations::backgroundColor(VXLineNumberView *ruler) const
{
    const std::optional<QColor> color = ruler->backgroundColor();
    return color ? QVariant(*color) : QVariant();
}

void RulerOperations::setBackgroundColor(VXLineNumberView *ruler, const QVariant &color) const
{
    ruler->setBackgroundColor(colorOf(color));
}

int RulerOperations::alignment(VXLineNumberView *ruler) const
{
    return static_cast<int>(ruler->alignment());
}

void RulerOperations::setAlignment(VXLineNumberView *ruler, int alignment) const
{
    ruler->setAlignment(static_cast<Qt::AlignmentFlag>(alignment));
}

QStringList CodeViewOperations::completionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                                  TextRange range,
                                                                                  int *index) const
{
    return view->completionsForPartialWordRange(range, index);
}

void BraceOperations::initBraces(ScriptHelpers *) const
{
    ::initBraces();
}

bool BraceOperations::TE_isOpeningBrace(ScriptHelpers *, quint16 character) const
{
    return ::TE_isOpeningBrace(character);
}

bool BraceOperations::TE_isClosingBrace(ScriptHelpers *, quint16 character) const
{
    return ::TE_isClosingBrace(character);
}

QVariant BraceOperations::TE_findMatchingBraceForRangeInString(ScriptHelpers *, int index,
                                                               const QString &text) const
{
    const auto found = ::TE_findMatchingBraceForRangeInString(index, text);
    return found ? QVariant::fromValue(*found) : QVariant();
}

void registerCodeOperations()
{
    static CodeDocumentOperations documents;
    static CodeStorageOperations storages;
    static RulerOperations rulers;
    static TokenizerOperations tokenizers;
    static CodeViewOperations views;
    static BraceOperations braces;
    BridgedClass::registerExtension(JSTDocument::staticMetaObject, &documents);
    BridgedClass::registerExtension(VXCodeTextStorage::staticMetaObject, &storages);
    BridgedClass::registerExtension(VXLineNumberView::staticMetaObject, &rulers);
    BridgedClass::registerExtension(TDTokenizer::staticMetaObject, &tokenizers);
    BridgedClass::registerExtension(JSTTextView::staticMetaObject, &views);
    BridgedClass::registerExtension(ScriptHelpers::staticMetaObject, &braces);
    registerCodeTypes();
}

} // namespace runebook
