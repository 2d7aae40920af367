#include "scripting/bridge/BridgedClass.h"

#include "scripting/bridge/Operation.h"

#include <QHash>
#include <QMetaProperty>
#include <cctype>
#include <deque>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

namespace {

struct Known {
    const QMetaObject *meta;
    BridgedClass::Factory factory;
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

QMultiHash<const QMetaObject *, QObject *> &extensions()
{
    static auto &operations = *new QMultiHash<const QMetaObject *, QObject *>;
    return operations;
}

QByteArray shortName(const QMetaObject &meta)
{
    const QByteArray name(meta.className());
    return name.mid(name.lastIndexOf(':') + 1);
}

constexpr int kSlotBase = 48;

/// Operations that would pull an object from under the program.
bool isHidden(const QMetaMethod &method)
{
    return method.methodType() == QMetaMethod::Signal || method.access() == QMetaMethod::Private
        || method.name() == "deleteLater" || method.name().startsWith("_q_");
}

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

Instance ownedByScripts(QObject *made)
{
    const auto end = [pointer = QPointer(made)](void *) {
        if (pointer && !pointer->parent())
            pointer->deleteLater();
    };
    return {std::shared_ptr<void>(nullptr, end), made};
}

BridgedClass::BridgedClass(const QMetaObject &meta)
    : m_meta(meta), m_isGadget(!meta.inherits(&QObject::staticMetaObject))
{
}

BridgedClass::~BridgedClass() = default;

void BridgedClass::registerClass(const QMetaObject &meta, Factory factory)
{
    knownClasses().insert(shortName(meta), {&meta, std::move(factory)});
}

void BridgedClass::registerExtension(const QMetaObject &meta, QObject *operations)
{
    extensions().insert(&meta, operations);
}

const BridgedClass *BridgedClass::forMetaObject(const QMetaObject &meta)
{
    if (BridgedClass *made = madeClasses().value(&meta))
        return made;
    // Kept to the end: types of the interpreter refer to it.
    auto *bridged = new BridgedClass(meta);
    const auto known = knownClasses().constFind(shortName(meta));
    if (known == knownClasses().cend())
        registerClass(meta);
    else if (known->meta == &meta)
        bridged->m_factory = known->factory;
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
        if (type == objectType())
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
    PyTypeObject *baseType = base ? base->type() : objectType();
    m_typeName = "runebook." + shortName(m_meta);
    PyType_Slot slots[] = {{0, nullptr}};
    PyType_Spec spec {m_typeName.constData(), sizeof(BridgeObject), 0,
                      python::kDefaultTypeFlags | python::kBaseType, slots};
    m_type = makeClass(spec, baseType);
    if (!m_type)
        return false;
    classesOfTypes().insert(m_type, this);
    return addDescription() && addGroups(ownMethods()) && addProperties() && addSetters()
        && addGroups(extensionMethods());
}

std::vector<Method> BridgedClass::allMethods() const
{
    std::vector<Method> methods = ownMethods();
    std::ranges::move(extensionMethods(), std::back_inserter(methods));
    return methods;
}

std::vector<Method> BridgedClass::ownMethods() const
{
    std::vector<Method> methods;
    for (int i = m_meta.methodOffset(); i < m_meta.methodCount(); ++i) {
        const QMetaMethod method = m_meta.method(i);
        if (isHidden(method))
            continue;
        if (Method usable(method); usable.isUsable)
            methods.push_back(std::move(usable));
    }
    return methods;
}

std::vector<Method> BridgedClass::extensionMethods() const
{
    std::vector<Method> methods;
    for (QObject *operations : extensions().values(&m_meta)) {
        const QMetaObject *meta = operations->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            Method usable(meta->method(i), operations);
            Q_ASSERT(usable.isUsable);
            methods.push_back(std::move(usable));
        }
    }
    return methods;
}

bool BridgedClass::addGroups(std::vector<Method> methods)
{
    QHash<QByteArray, MethodGroup *> groups;
    std::vector<MethodGroup *> added;
    for (Method &method : methods) {
        MethodGroup *&group = groups[method.name];
        if (!group) {
            m_groups.push_back(std::make_unique<MethodGroup>(MethodGroup {this, method.name, {}}));
            group = m_groups.back().get();
            added.push_back(group);
        }
        group->methods.push_back(std::move(method));
    }
    // Attributes point to their selectors for as long as the type lives.
    static std::deque<Selector> selectors;
    for (const MethodGroup *group : added) {
        QSet<std::pair<int, bool>> done;
        for (const Method &method : group->methods) {
            if (done.contains({method.inputs(), method.canFail}))
                continue;
            done.insert({method.inputs(), method.canFail});
            for (const Selector &selector : selectorsOf(group->name, method.inputs(), method.canFail)) {
                selectors.push_back(selector);
                const PythonRef operation(makeOperation(*group, selectors.back()));
                if (!operation
                    || py.PyObject_SetAttrString(reinterpret_cast<PyObject *>(m_type),
                                                 selector.name.constData(), operation.get())
                        != 0)
                    return false;
            }
        }
    }
    return true;
}

/// Put together when it is asked for.
bool BridgedClass::addDescription()
{
    if (!valueTypes().describe)
        return true;
    const PythonRef question(vxPyString_FromString("class"));
    const PythonRef description(question ? py.PyObject_CallFunctionObjArgs(valueTypes().describe.get(),
                                                                           m_type, question.get(), nullptr)
                                         : nullptr);
    return description
        && py.PyObject_SetAttrString(reinterpret_cast<PyObject *>(m_type), "__doc__", description.get()) == 0;
}

bool BridgedClass::addProperties()
{
    for (int i = m_meta.propertyOffset(); i < m_meta.propertyCount(); ++i) {
        const QMetaProperty property = m_meta.property(i);
        if (!property.isReadable() || !bridgeType(property.metaType()).toPython)
            continue;
        const PythonRef attribute(makeProperty(*this, property));
        if (!attribute
            || py.PyObject_SetAttrString(reinterpret_cast<PyObject *>(m_type), property.name(),
                                         attribute.get())
                != 0)
            return false;
    }
    return true;
}

/// A property that has no setter to invoke gets one under the usual name, "setTitle_".
bool BridgedClass::addSetters()
{
    auto *type = reinterpret_cast<PyObject *>(m_type);
    for (int i = m_meta.propertyOffset(); i < m_meta.propertyCount(); ++i) {
        const QMetaProperty property = m_meta.property(i);
        QByteArray name(property.name());
        name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
        name = "set" + name + '_';
        if (!property.isWritable() || !bridgeType(property.metaType()).fromPython)
            continue;
        if (PythonRef(py.PyObject_GetAttrString(type, name.constData())))
            continue;
        vxPyErr_Clear();
        const PythonRef setter(makeSetter(*this, property));
        if (!setter || py.PyObject_SetAttrString(type, name.constData(), setter.get()) != 0)
            return false;
    }
    return true;
}

} // namespace runebook::bridge
