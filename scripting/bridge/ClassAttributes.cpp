#include "scripting/bridge/ClassAttributes.h"

#include "scripting/bridge/BridgeObject.h"
#include "scripting/bridge/PropertyAttribute.h"

#include <QMetaProperty>
#include <QSet>
#include <cctype>
#include <deque>

namespace runebook::bridge {

namespace {

/// Operations that would pull an object from under the program.
bool isHidden(const QMetaMethod &method)
{
    return method.methodType() == QMetaMethod::Signal || method.access() == QMetaMethod::Private
        || method.name() == "deleteLater" || method.name().startsWith("_q_");
}

bool setAttribute(const BridgedClass &made, const char *name, const PythonRef &value)
{
    return py.PyObject_SetAttrString(reinterpret_cast<PyObject *>(made.type()), name, value.get()) == 0;
}

std::vector<Method> ownMethods(const BridgedClass &made)
{
    const QMetaObject &meta = made.metaObject();
    std::vector<Method> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (isHidden(method))
            continue;
        if (Method usable(method); usable.isUsable)
            methods.push_back(std::move(usable));
    }
    return methods;
}

std::vector<Method> extensionMethods(const BridgedClass &made)
{
    std::vector<Method> methods;
    for (QObject *operations : made.extensions()) {
        const QMetaObject *meta = operations->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            Method usable(meta->method(i), operations);
            Q_ASSERT(usable.isUsable);
            methods.push_back(std::move(usable));
        }
    }
    return methods;
}

/// The functions by name, in the order in which names first come.
std::vector<MethodGroup *> grouped(const BridgedClass &made, std::vector<Method> methods)
{
    // Attributes point to their groups for as long as the type lives.
    static auto &groups = *new std::deque<MethodGroup>;
    QHash<QByteArray, MethodGroup *> named;
    std::vector<MethodGroup *> added;
    for (Method &method : methods) {
        MethodGroup *&group = named[method.name];
        if (!group) {
            group = &groups.emplace_back(MethodGroup {&made, method.name, needsPreparation(made), {}});
            added.push_back(group);
        }
        group->methods.push_back(std::move(method));
    }
    return added;
}

bool addOperation(const MethodGroup &group, const Selector &selector)
{
    // As long as the groups.
    static auto &selectors = *new std::deque<Selector>;
    const PythonRef operation(makeOperation(group, selectors.emplace_back(selector)));
    return operation && setAttribute(*group.owner, selector.name.constData(), operation);
}

bool addOperations(const BridgedClass &made, std::vector<Method> methods)
{
    for (const MethodGroup *group : grouped(made, std::move(methods))) {
        QSet<std::pair<int, bool>> done;
        for (const Method &method : group->methods) {
            if (done.contains({method.inputs(), method.canFail}))
                continue;
            done.insert({method.inputs(), method.canFail});
            for (const Selector &selector : selectorsOf(group->name, method.inputs(), method.canFail)) {
                if (!addOperation(*group, selector))
                    return false;
            }
        }
    }
    return true;
}

/// Put together when it is asked for.
bool addDescription(const BridgedClass &made)
{
    if (!valueTypes().describe)
        return true;
    const PythonRef question(vxPyString_FromString("class"));
    const PythonRef description(question ? py.PyObject_CallFunctionObjArgs(
                                    valueTypes().describe.get(), made.type(), question.get(), nullptr)
                                         : nullptr);
    return description && setAttribute(made, "__doc__", description);
}

bool addProperties(const BridgedClass &made)
{
    const QMetaObject &meta = made.metaObject();
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        if (!property.isReadable() || !bridgeType(property.metaType()).toPython)
            continue;
        const PythonRef attribute(makeProperty(made, property));
        if (!attribute || !setAttribute(made, property.name(), attribute))
            return false;
    }
    return true;
}

/// A property that has no setter to invoke gets one under the usual name, "setTitle_".
bool addSetters(const BridgedClass &made)
{
    const QMetaObject &meta = made.metaObject();
    auto *type = reinterpret_cast<PyObject *>(made.type());
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        QByteArray name(property.name());
        name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
        name = "set" + name + '_';
        if (!property.isWritable() || !bridgeType(property.metaType()).fromPython)
            continue;
        if (PythonRef(py.PyObject_GetAttrString(type, name.constData())))
            continue;
        vxPyErr_Clear();
        const PythonRef setter(makeSetter(made, property));
        if (!setter || !setAttribute(made, name.constData(), setter))
            return false;
    }
    return true;
}

PyTypeObject *makeType(const BridgedClass &made, PyTypeObject *base)
{
    // Types point to their names up to 3.9.
    static auto &names = *new std::deque<QByteArray>;
    const QByteArray &name = names.emplace_back("runebook." + made.name());
    PyType_Slot slots[] = {{0, nullptr}};
    PyType_Spec spec {name.constData(), sizeof(BridgeObject), 0,
                      python::kDefaultTypeFlags | python::kBaseType, slots};
    return makeClass(spec, base ? base : objectType());
}

bool addAttributes(const BridgedClass &made)
{
    return addDescription(made) && addOperations(made, ownMethods(made)) && addProperties(made)
        && addSetters(made) && addOperations(made, extensionMethods(made));
}

} // namespace

std::vector<Method> methodsOf(const BridgedClass &made)
{
    std::vector<Method> methods = ownMethods(made);
    std::ranges::move(extensionMethods(made), std::back_inserter(methods));
    return methods;
}

void setUpClasses()
{
    BridgedClass::setTypeMaker({makeType, addAttributes});
}

} // namespace runebook::bridge
