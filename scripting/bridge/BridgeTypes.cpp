#include "scripting/bridge/BridgeTypes.h"

#include <algorithm>
#include <limits>
#include <map>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

namespace {

template <typename T> const T &as(const void *data)
{
    return *static_cast<const T *>(data);
}

QObject *(*delegateFor)(PyObject *object) = nullptr;

// Numbers

template <typename Integer> PyObject *integerToPython(QMetaType, const void *data)
{
    if constexpr (std::is_signed_v<Integer>)
        return py.PyLong_FromLongLong(as<Integer>(data));
    else
        return py.PyLong_FromUnsignedLongLong(as<Integer>(data));
}

/// The number that an argument stands for. Commands that are told by their sender's tag take the sender as
/// well: a menu item, or an object of a script that answers tag().
PythonRef numberOf(PyObject *object)
{
    PythonRef number(py.PyNumber_Index(object));
    if (number || !isBridgeObject(object) || !py.PyErr_ExceptionMatches(*py.PyExc_TypeError))
        return number;
    vxPyErr_Clear();
    if (const PythonRef tag {py.PyObject_GetAttrString(object, "tag")}) {
        const PythonRef answer(py.PyObject_CallObject(tag.get(), nullptr));
        return answer ? PythonRef(py.PyNumber_Index(answer.get())) : PythonRef();
    }
    if (!clearMissingAttribute())
        return {};
    return PythonRef(py.PyNumber_Index(object)); // for its complaint
}

template <typename Integer> bool integerFromPython(QMetaType, PyObject *object, void *data)
{
    const PythonRef number = numberOf(object);
    if (!number)
        return false;
    if constexpr (sizeof(Integer) == 8 && std::is_unsigned_v<Integer>) {
        const unsigned long long value = py.PyLong_AsUnsignedLongLong(number.get());
        if (py.PyErr_Occurred())
            return false;
        *static_cast<Integer *>(data) = value;
        return true;
    } else {
        const long long value = py.PyLong_AsLongLong(number.get());
        if (value == -1 && py.PyErr_Occurred())
            return false;
        if (value < static_cast<long long>(std::numeric_limits<Integer>::min())
            || value > static_cast<long long>(std::numeric_limits<Integer>::max())) {
            raise(*py.PyExc_OverflowError, u"%1 is out of range"_s.arg(value));
            return false;
        }
        *static_cast<Integer *>(data) = static_cast<Integer>(value);
        return true;
    }
}

template <typename Integer> BridgeType integerType()
{
    return {integerToPython<Integer>, integerFromPython<Integer>};
}

PyObject *boolToPython(QMetaType, const void *data)
{
    return py.PyBool_FromLong(as<bool>(data));
}

bool boolFromPython(QMetaType, PyObject *object, void *data)
{
    const int truth = py.PyObject_IsTrue(object);
    *static_cast<bool *>(data) = truth > 0;
    return truth >= 0;
}

PyObject *doubleToPython(QMetaType, const void *data)
{
    return py.PyFloat_FromDouble(as<double>(data));
}

bool doubleFromPython(QMetaType, PyObject *object, void *data)
{
    const double value = py.PyFloat_AsDouble(object);
    if (value == -1 && py.PyErr_Occurred())
        return false;
    *static_cast<double *>(data) = value;
    return true;
}

// Texts and bytes

PyObject *textToPython(QMetaType, const void *data)
{
    return pythonText(as<QString>(data));
}

bool textFromPython(QMetaType, PyObject *object, void *data)
{
    return readText(object, *static_cast<QString *>(data));
}

PyObject *bytesToPython(QMetaType, const void *data)
{
    return py.PyBytes_FromStringAndSize(as<QByteArray>(data).constData(), as<QByteArray>(data).size());
}

bool bytesFromPython(QMetaType, PyObject *object, void *data)
{
    if (!isKind(object, python::kBytesSubclass))
        return needs(object, "bytes");
    *static_cast<QByteArray *>(data) = QByteArray(vxPyBytes_AsString(object), py.PyBytes_Size(object));
    return true;
}

// Lists and maps

template <typename List, PyObject *(*Convert)(const typename List::value_type &)>
PyObject *listToPython(QMetaType, const void *data)
{
    PythonRef list(py.PyList_New(0));
    for (const auto &item : as<List>(data)) {
        const PythonRef value(list ? Convert(item) : nullptr);
        if (!value || vxPyList_Append(list.get(), value.get()) != 0)
            return nullptr;
    }
    return asList(list.release());
}

bool textListFromPython(QMetaType, PyObject *object, void *data)
{
    if (isKind(object, python::kUnicodeSubclass))
        return needs(object, "a list of texts");
    auto &list = *static_cast<QStringList *>(data);
    return forEach(object, [&list](PyObject *item) {
        return isNone(item) ? needs(item, "a text") : readText(item, list.emplaceBack());
    });
}

bool variantListFromPython(QMetaType, PyObject *object, void *data)
{
    if (isKind(object, python::kUnicodeSubclass | python::kDictSubclass))
        return needs(object, "a list");
    auto &list = *static_cast<QVariantList *>(data);
    return forEach(object, [&list](PyObject *item) { return variantFromPython(item, list.emplaceBack()); });
}

PyObject *mapToPython(QMetaType, const void *data)
{
    PythonRef dictionary(vxPyDict_New());
    const auto &map = as<QVariantMap>(data);
    for (auto item = map.cbegin(); dictionary && item != map.cend(); ++item) {
        const PythonRef key(pythonText(item.key()));
        const PythonRef value(variantToPython(item.value()));
        if (!key || !value || py.PyDict_SetItem(dictionary.get(), key.get(), value.get()) != 0)
            return nullptr;
    }
    return dictionary.release();
}

bool mapFromPython(QMetaType, PyObject *object, void *data)
{
    auto &map = *static_cast<QVariantMap *>(data);
    if (isNone(object))
        return true;
    if (!isKind(object, python::kDictSubclass))
        return needs(object, "a dict");
    const Reading::Level level;
    // A copy that nobody else knows: reading a value may run code that changes the map.
    const PythonRef copy(level.isAllowed() ? py.PyDict_Copy(object) : nullptr);
    PyObject *key = nullptr, *value = nullptr;
    Py_ssize_t place = 0;
    while (copy && vxPyDict_Next(copy.get(), &place, &key, &value)) {
        QString name;
        if (isNone(key))
            return needs(key, "a text");
        if (!Reading::countItem() || !readText(key, name) || !variantFromPython(value, map[name]))
            return false;
    }
    return static_cast<bool>(copy);
}

PyObject *intItem(const int &number)
{
    return py.PyLong_FromLongLong(number);
}

PyObject *objectItem(QObject *const &object)
{
    return wrapObject(object);
}

PyObject *mapItem(const QVariantMap &map)
{
    return mapToPython({}, &map);
}

bool mapListFromPython(QMetaType, PyObject *object, void *data)
{
    auto &list = *static_cast<QList<QVariantMap> *>(data);
    return forEach(object, [&list](PyObject *item) { return mapFromPython({}, item, &list.emplaceBack()); });
}

// Objects

PyObject *objectToPython(QMetaType, const void *data)
{
    return wrapObject(as<QObject *>(data));
}

bool objectFromPython(QMetaType type, PyObject *object, void *data)
{
    QObject *&target = *static_cast<QObject **>(data);
    if (isNone(object))
        return true;
    const QMetaObject *wanted = type.metaObject();
    if (!isBridgeObject(object))
        return needs(object, wanted ? wanted->className() : "an object of the program");
    auto &bridged = *reinterpret_cast<BridgeObject *>(object);
    if (!bridged.bridgedClass && wanted == &QObject::staticMetaObject && delegateFor) {
        target = delegateFor(object);
        Reading::noteObject(target);
        return true;
    }
    if (!bridged.bridgedClass || bridged.bridgedClass->isGadget()
        || (wanted && !bridged.bridgedClass->metaObject().inherits(wanted)))
        return needs(object, wanted ? wanted->className() : "an object of the program");
    target = static_cast<QObject *>(addressOf(bridged));
    if (target)
        Reading::noteObject(target);
    return target != nullptr;
}

bool objectListFromPython(QMetaType, PyObject *object, void *data)
{
    if (isKind(object, python::kUnicodeSubclass | python::kDictSubclass))
        return needs(object, "a list of objects");
    auto &list = *static_cast<QList<QObject *> *>(data);
    const QMetaType type(QMetaType::QObjectStar);
    return forEach(object, [&](PyObject *item) {
        return isNone(item) ? needs(item, "an object of the program")
                            : objectFromPython(type, item, &list.emplaceBack());
    });
}

/// A pointer to a class that was only announced where its meta-object was made.
PyObject *announcedToPython(QMetaType type, const void *data)
{
    if (!as<void *>(data))
        return none();
    const QByteArray name(type.name());
    const BridgedClass *known = BridgedClass::forName(name.chopped(1).mid(name.lastIndexOf(':') + 1));
    if (!known || known->isGadget())
        return raise(*py.PyExc_TypeError,
                     u"objects of the type %1 cannot be handed to scripts"_s.arg(QString::fromUtf8(name)));
    return wrapObject(as<QObject *>(data));
}

PyObject *gadgetToPython(QMetaType type, const void *data)
{
    const BridgedClass *bridged = BridgedClass::forMetaObject(*type.metaObject());
    if (!bridged)
        return nullptr;
    const std::shared_ptr<void> copy(type.create(data), [type](void *value) { type.destroy(value); });
    return wrapValue(*bridged, copy);
}

bool gadgetFromPython(QMetaType type, PyObject *object, void *data)
{
    const std::shared_ptr<void> *held = recordIn(object, *type.metaObject());
    if (!held)
        return false;
    type.destruct(data);
    type.construct(data, held->get());
    return true;
}

// Everything else

PyObject *nothingToPython(QMetaType, const void *)
{
    return none();
}

PyObject *convertedToPython(QMetaType type, const void *data)
{
    for (const int id :
         {QMetaType::QVariantList, QMetaType::QVariantMap, QMetaType::QString, QMetaType::Double}) {
        const QMetaType target(id);
        Storage value(target);
        if (QMetaType::canConvert(type, target) && QMetaType::convert(type, data, target, value.data()))
            return bridgeType(target).toPython(target, value.data());
    }
    return raise(*py.PyExc_TypeError,
                 u"values of the type %1 cannot be handed to scripts"_s.arg(QString::fromUtf8(type.name())));
}

bool convertedFromPython(QMetaType type, PyObject *object, void *data)
{
    QVariant value;
    if (!variantFromPython(object, value))
        return false;
    if (QMetaType::convert(value.metaType(), value.constData(), type, data))
        return true;
    return needs(object, type.name());
}

PyObject *variantTypeToPython(QMetaType, const void *data)
{
    return variantToPython(as<QVariant>(data));
}

bool variantTypeFromPython(QMetaType, PyObject *object, void *data)
{
    return variantFromPython(object, *static_cast<QVariant *>(data));
}

BridgeType enumType(QMetaType type)
{
    const bool isSigned = !type.flags().testFlag(QMetaType::IsUnsignedEnumeration);
    switch (type.sizeOf()) {
    case 1:
        return isSigned ? integerType<qint8>() : integerType<quint8>();
    case 2:
        return isSigned ? integerType<qint16>() : integerType<quint16>();
    case 4:
        return isSigned ? integerType<qint32>() : integerType<quint32>();
    default:
        return isSigned ? integerType<qint64>() : integerType<quint64>();
    }
}

BridgeType derivedType(QMetaType type)
{
    const QMetaType::TypeFlags flags = type.flags();
    if (!type.isValid() || type.id() == QMetaType::Void)
        return {nothingToPython, nullptr};
    if (flags.testFlag(QMetaType::PointerToQObject))
        return {objectToPython, objectFromPython};
    if (flags.testFlag(QMetaType::IsEnumeration))
        return enumType(type);
    if (flags.testFlag(QMetaType::IsGadget))
        return {gadgetToPython, gadgetFromPython};
    if (QByteArrayView(type.name()).endsWith('*'))
        return {announcedToPython, nullptr};
    return {convertedToPython, convertedFromPython};
}

// A map, not a hash: entries are kept by address.
std::map<int, BridgeType> &registeredTypes()
{
    static std::map<int, BridgeType> types {
        {QMetaType::Bool, {boolToPython, boolFromPython}},
        {QMetaType::Char, integerType<char>()},
        {QMetaType::SChar, integerType<qint8>()},
        {QMetaType::UChar, integerType<quint8>()},
        {QMetaType::Short, integerType<qint16>()},
        {QMetaType::UShort, integerType<quint16>()},
        {QMetaType::Int, integerType<qint32>()},
        {QMetaType::UInt, integerType<quint32>()},
        {QMetaType::Long, integerType<long>()},
        {QMetaType::ULong, integerType<unsigned long>()},
        {QMetaType::LongLong, integerType<qint64>()},
        {QMetaType::ULongLong, integerType<quint64>()},
        {QMetaType::Double, {doubleToPython, doubleFromPython}},
        {QMetaType::QString, {textToPython, textFromPython}},
        {QMetaType::QByteArray, {bytesToPython, bytesFromPython}},
        {QMetaType::QStringList, {listToPython<QStringList, pythonText>, textListFromPython}},
        {QMetaType::QVariant, {variantTypeToPython, variantTypeFromPython}},
        {QMetaType::QVariantList, {listToPython<QVariantList, variantToPython>, variantListFromPython}},
        {QMetaType::QVariantMap, {mapToPython, mapFromPython}},
        {qMetaTypeId<QList<int>>(), {listToPython<QList<int>, intItem>, nullptr}},
        {qMetaTypeId<QList<QObject *>>(), {listToPython<QList<QObject *>, objectItem>, objectListFromPython}},
        {qMetaTypeId<QList<QVariantMap>>(), {listToPython<QList<QVariantMap>, mapItem>, mapListFromPython}},
    };
    return types;
}

} // namespace

const BridgeType &bridgeType(QMetaType type)
{
    const auto known = registeredTypes().find(type.id());
    if (known != registeredTypes().end())
        return known->second;
    return registeredTypes().emplace(type.id(), derivedType(type)).first->second;
}

void registerType(QMetaType type, const BridgeType &bridge)
{
    registeredTypes().insert_or_assign(type.id(), bridge);
}

void setDelegateMaker(QObject *(*forObject)(PyObject *object))
{
    delegateFor = forObject;
}

bool needs(PyObject *object, const char *what)
{
    raise(*py.PyExc_TypeError, u"%1 is needed, not %2"_s.arg(QString::fromLatin1(what), typeName(object)));
    return false;
}

ValueTypes &valueTypes()
{
    // Not destroyed: the interpreter may be gone by then.
    static auto *const types = new ValueTypes;
    return *types;
}

PyObject *asList(PyObject *list)
{
    if (!list || !valueTypes().list)
        return list;
    const PythonRef plain(list);
    return py.PyObject_CallFunctionObjArgs(valueTypes().list.get(), list, nullptr);
}

Reading *Reading::s_current = nullptr;
int Reading::s_depth = 0;

Reading::Reading() : m_outer(std::exchange(s_current, this)) { }

Reading::~Reading()
{
    s_current = m_outer;
}

bool Reading::Level::isAllowed() const
{
    constexpr int kDeepest = 100;
    if (s_depth <= kDeepest)
        return true;
    raise(*py.PyExc_RecursionError, u"lists lie in each other more than %1 deep"_s.arg(kDeepest));
    return false;
}

bool Reading::countItem()
{
    constexpr qsizetype kMostItems = 4'000'000;
    constexpr qsizetype kLookEvery = 1 << 12;
    const qsizetype count = s_current ? ++s_current->m_items : 0;
    if (count > kMostItems) {
        raise(*py.PyExc_ValueError, u"more than %1 items cannot be handed over at once"_s.arg(kMostItems));
        return false;
    }
    // What gives items without end can be stopped.
    return count % kLookEvery != 0 || py.PyErr_CheckSignals() == 0;
}

void Reading::noteObject(QObject *object)
{
    if (s_current)
        s_current->m_objects.emplace_back(object);
}

bool Reading::isAlive() const
{
    const auto isGone = [](const QPointer<QObject> &object) { return !object; };
    if (std::none_of(m_objects.begin(), m_objects.end(), isGone))
        return true;
    raise(*py.PyExc_ReferenceError, u"an object went away while the arguments were read"_s);
    return false;
}

PythonRef readable(PyObject *object)
{
    constexpr unsigned long kReadableKinds = python::kUnicodeSubclass | python::kLongSubclass
        | python::kListSubclass | python::kTupleSubclass | python::kBytesSubclass | python::kDictSubclass;
    if (isNone(object) || isKind(object, kReadableKinds) || isBridgeObject(object))
        return PythonRef::shared(object);
    const PythonRef next(
        py.PyObject_GetAttrString(reinterpret_cast<PyObject *>(object->ob_type), "__next__"));
    if (!next)
        return clearMissingAttribute() ? PythonRef::shared(object) : PythonRef();
    PythonRef list(py.PyList_New(0));
    const auto append = [&list](PyObject *item) { return vxPyList_Append(list.get(), item) == 0; };
    return list && forEach(object, append) ? std::move(list) : PythonRef();
}

bool forEach(PyObject *iterable, const std::function<bool(PyObject *)> &take)
{
    const PythonRef iterator(py.PyObject_GetIter(iterable));
    if (!iterator)
        return false;
    while (const PythonRef item {py.PyIter_Next(iterator.get())}) {
        if (!Reading::countItem() || !take(item.get()))
            return false;
    }
    return !py.PyErr_Occurred();
}

/// A list of texts alone is what fields of the program hold; any other is a list of values.
static bool listFromPython(PyObject *object, QVariant &value)
{
    const Reading::Level level;
    const PythonRef items = level.isAllowed() ? readable(object) : PythonRef();
    if (!items)
        return false;
    QStringList texts;
    if (textListFromPython({}, items.get(), &texts) && !texts.isEmpty()) {
        value = texts;
        return true;
    }
    if (py.PyErr_Occurred() && !py.PyErr_ExceptionMatches(*py.PyExc_TypeError))
        return false;
    vxPyErr_Clear();
    QVariantList values;
    const bool isRead = variantListFromPython({}, items.get(), &values);
    value = values;
    return isRead;
}

PyObject *variantToPython(const QVariant &value)
{
    if (!value.isValid())
        return none();
    return bridgeType(value.metaType()).toPython(value.metaType(), value.constData());
}

bool variantFromPython(PyObject *object, QVariant &value)
{
    const auto convert = [&](int id) {
        const QMetaType type(id);
        value = QVariant(type);
        return bridgeType(type).fromPython(type, object, value.data());
    };
    if (isNone(object)) {
        value = QVariant();
        return true;
    }
    if (object->ob_type == reinterpret_cast<PyTypeObject *>(py.PyBool_Type))
        return convert(QMetaType::Bool);
    if (isKind(object, python::kUnicodeSubclass))
        return convert(QMetaType::QString);
    if (isKind(object, python::kLongSubclass))
        return convert(QMetaType::LongLong);
    if (isKind(object, python::kBytesSubclass))
        return convert(QMetaType::QByteArray);
    if (isKind(object, python::kDictSubclass))
        return convert(QMetaType::QVariantMap);
    if (py.PyType_IsSubtype(object->ob_type, reinterpret_cast<PyTypeObject *>(py.PyFloat_Type)))
        return convert(QMetaType::Double);
    if (!isBridgeObject(object))
        return listFromPython(object, value);
    const auto &bridged = *reinterpret_cast<BridgeObject *>(object);
    if (bridged.bridgedClass && !bridged.bridgedClass->isGadget())
        return convert(QMetaType::QObjectStar);
    if (bridged.bridgedClass && bridged.bridgedClass->variantType().isValid())
        return convert(bridged.bridgedClass->variantType().id());
    return needs(object, "a value");
}

const std::shared_ptr<void> *recordIn(PyObject *object, const QMetaObject &meta)
{
    if (isBridgeObject(object)) {
        const auto &bridged = *reinterpret_cast<BridgeObject *>(object);
        if (bridged.bridgedClass && &bridged.bridgedClass->metaObject() == &meta && bridged.instance.value)
            return &bridged.instance.value;
    }
    needs(object, meta.className());
    return nullptr;
}

PyObject *recordToPython(const QMetaObject &meta, std::shared_ptr<void> record)
{
    if (!record)
        return none();
    const BridgedClass *bridged = BridgedClass::forMetaObject(meta);
    return bridged ? wrapValue(*bridged, std::move(record)) : nullptr;
}

Storage::Storage(QMetaType type) : m_type(type)
{
    const bool fits = type.sizeOf() <= static_cast<qsizetype>(sizeof m_place)
        && type.alignOf() <= static_cast<qsizetype>(alignof(std::max_align_t));
    m_data = fits ? type.construct(m_place) : type.create();
}

Storage::~Storage()
{
    if (m_data == m_place)
        m_type.destruct(m_data);
    else
        m_type.destroy(m_data);
}

} // namespace runebook::bridge
