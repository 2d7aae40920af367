#include "scripting/bridge/BridgedClass.h"

#include "scripting/python/PythonFunctions.h"

#include <QHash>
#include <QMetaMethod>
#include <algorithm>

namespace runebook::bridge {

namespace {

struct Known {
    const QMetaObject *meta;
    BridgedClass::Factory factory;
    QMetaType variantType;
};

// All guarded by the interpreter's lock, except that classes are registered before it starts. Never
// destroyed: the interpreter is not either.
QHash<QByteArray, Known> &knownClasses()
{
    static auto &classes = *new QHash<QByteArray, Known>;
    return classes;
}

QHash<const QMetaObject *, BridgedClass *> &madeClasses()
{
    static auto &classes = *new QHash<const QMetaObject *, BridgedClass *>;
    return classes;
}

QHash<PyTypeObject *, BridgedClass *> &classesOfTypes()
{
    static auto &classes = *new QHash<PyTypeObject *, BridgedClass *>;
    return classes;
}

QMultiHash<const QMetaObject *, QObject *> &knownExtensions()
{
    static auto &operations = *new QMultiHash<const QMetaObject *, QObject *>;
    return operations;
}

TypeMaker &typeMaker()
{
    static TypeMaker maker {};
    return maker;
}

PyTypeObject *&rootType()
{
    static PyTypeObject *type = nullptr;
    return type;
}

QByteArray shortName(const QMetaObject &meta)
{
    const QByteArray name(meta.className());
    return name.mid(name.lastIndexOf(':') + 1);
}

constexpr int kSlotBase = 48;

/// Makes objects with the constructor that the class offers for that; null where there is none.
BridgedClass::Factory constructorOf(const QMetaObject &meta)
{
    if (!meta.inherits(&QObject::staticMetaObject))
        return {};
    for (int i = 0; i < meta.constructorCount(); ++i) {
        if (meta.constructor(i).parameterCount() == 0)
            return [&meta] { return ownedByScripts(meta.newInstance()); };
    }
    return {};
}

} // namespace

BridgedClass::BridgedClass(const QMetaObject &meta)
    : m_meta(meta), m_isGadget(!meta.inherits(&QObject::staticMetaObject))
{
}

void BridgedClass::registerClass(const QMetaObject &meta, Factory factory, QMetaType variantType)
{
    knownClasses().insert(shortName(meta), {&meta, std::move(factory), variantType});
}

void BridgedClass::registerExtension(const QMetaObject &meta, QObject *operations)
{
    knownExtensions().insert(&meta, operations);
}

QList<QObject *> BridgedClass::extensions() const
{
    return knownExtensions().values(&m_meta);
}

void BridgedClass::setTypeMaker(const TypeMaker &maker)
{
    typeMaker() = maker;
}

void BridgedClass::setRootType(PyTypeObject *type)
{
    rootType() = type;
}

const BridgedClass *BridgedClass::forMetaObject(const QMetaObject &meta)
{
    if (BridgedClass *made = madeClasses().value(&meta))
        return made;
    // Kept to the end: types of the interpreter refer to it.
    auto *bridged = new BridgedClass(meta);
    const auto known = knownClasses().constFind(shortName(meta));
    if (known == knownClasses().cend()) {
        registerClass(meta);
    } else if (known->meta == &meta) {
        bridged->m_factory = known->factory;
        bridged->m_variantType = known->variantType;
    }
    if (!bridged->m_factory)
        bridged->m_factory = constructorOf(meta);
    madeClasses().insert(&meta, bridged);
    if (bridged->makeType())
        return bridged;
    madeClasses().remove(&meta);
    return nullptr;
}

QList<QByteArray> BridgedClass::knownNames()
{
    QList<QByteArray> names = knownClasses().keys();
    std::sort(names.begin(), names.end());
    return names;
}

const BridgedClass *BridgedClass::forName(const QByteArray &name)
{
    const auto known = knownClasses().constFind(name);
    if (known != knownClasses().cend())
        return forMetaObject(*known->meta);
    const QMetaObject *announced = QMetaType::fromName(name + '*').metaObject();
    return announced ? forMetaObject(*announced) : nullptr;
}

const BridgedClass *BridgedClass::forType(PyTypeObject *type)
{
    while (type) {
        if (BridgedClass *bridged = classesOfTypes().value(type))
            return bridged;
        if (type == rootType())
            return nullptr;
        type = static_cast<PyTypeObject *>(py.PyType_GetSlot(type, kSlotBase));
    }
    return nullptr;
}

QByteArray BridgedClass::name() const
{
    return shortName(m_meta);
}

const Instance &BridgedClass::prototype() const
{
    if (m_prototype.isEmpty() && m_factory)
        m_prototype = m_factory();
    return m_prototype;
}

void BridgedClass::call(QMetaObject::Call what, void *address, int relativeIndex, void **arguments) const
{
    if (isGadget()) {
        m_meta.d.static_metacall(static_cast<QObject *>(address), what, relativeIndex, arguments);
        return;
    }
    const bool isMethod = what == QMetaObject::InvokeMetaMethod;
    const int offset = isMethod ? m_meta.methodOffset() : m_meta.propertyOffset();
    QMetaObject::metacall(static_cast<QObject *>(address), what, offset + relativeIndex, arguments);
}

bool BridgedClass::makeType()
{
    const QMetaObject *super = m_meta.superClass();
    const BridgedClass *base = super && super != &QObject::staticMetaObject ? forMetaObject(*super) : nullptr;
    if (super && super != &QObject::staticMetaObject && !base)
        return false;
    m_type = typeMaker().makeType(*this, base ? base->type() : nullptr);
    if (!m_type)
        return false;
    classesOfTypes().insert(m_type, this);
    return typeMaker().addAttributes(*this);
}

} // namespace runebook::bridge
