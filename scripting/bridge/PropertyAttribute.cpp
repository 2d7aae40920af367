#include "scripting/bridge/PropertyAttribute.h"

#include "scripting/bridge/Descriptor.h"
#include "scripting/bridge/DirectText.h"
#include "scripting/python/OperationScope.h"
#include "scripting/python/ScriptRun.h"

namespace runebook::bridge {

using namespace Qt::StringLiterals;

// The attribute for a property. As a method descriptor with a value of its own it answers both habits:
// "info.name" asks it for the value, and for "info.name()" the interpreter calls it with the object, even
// where the value is None.

namespace {

struct PropertyAttribute : Descriptor {
    const BridgedClass *owner;
    const char *name;
    int relativeIndex;
    QMetaType type;
    const BridgeType *bridge;
    const DirectText *direct; ///< null for most
    bool isWritable;
};

PropertyAttribute &attribute(PyObject *self)
{
    return *reinterpret_cast<PropertyAttribute *>(self);
}

void *addressFor(const PropertyAttribute &property, PyObject *object)
{
    if (!checkThread())
        return nullptr;
    if (!isInstance(object, property.owner->type())) {
        raise(*py.PyExc_TypeError,
              u"%1 has no property %2"_s.arg(typeName(object), QString::fromLatin1(property.name)));
        return nullptr;
    }
    return addressOf(*reinterpret_cast<BridgeObject *>(object));
}

void perform(const PropertyAttribute &property, QMetaObject::Call what, void *address, Storage &value)
{
    const OperationScope scope;
    void *arguments[] = {value.data()};
    property.owner->call(what, address, property.relativeIndex, arguments);
}

PyObject *read(const PropertyAttribute &property, PyObject *object)
{
    void *address = addressFor(property, object);
    if (!address)
        return nullptr;
    if (property.direct) {
        PyObject *text = readDirectly(*property.direct, address);
        if (text || py.PyErr_Occurred())
            return text;
    }
    return guarded<PyObject *>(nullptr, [&]() -> PyObject * {
        Storage value(property.type);
        perform(property, QMetaObject::ReadProperty, address, value);
        return ScriptRun::raiseKeptEnd() ? nullptr : property.bridge->handOver(property.type, value.data());
    });
}

/// \a value as one of a class that adds methods to its own. Not by calling the class, which looks for an
/// __init__ that it does not have: loops read a field for each of many records.
PyObject *made(PyObject *valueClass, PyObject *value)
{
    auto *type = reinterpret_cast<PyTypeObject *>(valueClass);
    using New = PyObject *(*)(PyTypeObject *, PyObject *, PyObject *);
    const auto construct = reinterpret_cast<New>(py.PyType_GetSlot(type, python::kSlotNew));
    // The arguments of one call serve the next, unless somebody found and kept them.
    static PyObject *spare = nullptr;
    PythonRef arguments(std::exchange(spare, nullptr));
    if (!arguments || arguments.get()->ob_refcnt != 1)
        arguments = PythonRef(py.PyTuple_New(1));
    if (!arguments || !construct)
        return nullptr;
    py.PyTuple_SetItem(arguments.get(), 0, PythonRef::shared(value).release());
    PyObject *object = construct(type, arguments.get(), nullptr);
    spare = arguments.release();
    return object;
}

/// The value as one that can be called later as well ("name = info.name; name()").
PyObject *callable(PyObject *value)
{
    if (!value || isNone(value))
        return value;
    const ValueTypes &types = valueTypes();
    const PythonRef plain(value);
    if (isKind(value, python::kUnicodeSubclass) && types.text)
        return made(types.text.get(), value);
    if (isKind(value, python::kLongSubclass) && types.number
        && value->ob_type != reinterpret_cast<PyTypeObject *>(py.PyBool_Type))
        return made(types.number.get(), value);
    return PythonRef::shared(value).release();
}

PyObject *get(PyObject *self, PyObject *object, PyObject *)
{
    if (!object || isNone(object))
        return PythonRef::shared(self).release();
    return callable(read(attribute(self), object));
}

int set(PyObject *self, PyObject *object, PyObject *value)
{
    const PropertyAttribute &property = attribute(self);
    if (!value || !property.isWritable || !property.bridge->fromPython) {
        raise(*py.PyExc_AttributeError,
              u"the property %1 cannot be %2"_s.arg(QString::fromLatin1(property.name),
                                                    value ? u"set"_s : u"deleted"_s));
        return -1;
    }
    void *target = addressFor(property, object);
    if (!target)
        return -1;
    if (isDirectText(property.direct, value))
        return writeDirectly(*property.direct, target, value) ? 0 : -1;
    return guarded<int>(-1, [&] {
        Storage storage(property.type);
        const Reading reading;
        const PythonRef readableValue = readable(value);
        if (!readableValue || !property.bridge->fromPython(property.type, readableValue.get(), storage.data())
            || !reading.isAlive())
            return -1;
        // Again: reading the value may have ended the object.
        void *address = addressFor(property, object);
        if (!address)
            return -1;
        perform(property, QMetaObject::WriteProperty, address, storage);
        return ScriptRun::raiseKeptEnd() ? -1 : 0;
    });
}

PyObject *call(PyObject *self, PyObject *const *arguments, Py_ssize_t count)
{
    if (count != 1)
        return raise(*py.PyExc_TypeError,
                     u"%1 takes no arguments"_s.arg(QString::fromLatin1(attribute(self).name)));
    return read(attribute(self), arguments[0]);
}

// The setter of a property is the same structure under another type.

PyTypeObject *setterType();

PyObject *bindSetter(PyObject *self, PyObject *object, PyObject *)
{
    if (!object || isNone(object))
        return PythonRef::shared(self).release();
    return py.PyMethod_New(self, object);
}

PyObject *callSetter(PyObject *self, PyObject *const *arguments, Py_ssize_t count)
{
    if (count != 2)
        return raise(*py.PyExc_TypeError,
                     u"the setter of %1 takes one argument"_s.arg(QString::fromLatin1(attribute(self).name)));
    return set(self, arguments[0], arguments[1]) == 0 ? none() : nullptr;
}

PyObject *describe(PyObject *self)
{
    const PropertyAttribute &property = attribute(self);
    return pythonText(u"<property %1 of %2>"_s.arg(QString::fromLatin1(property.name),
                                                   QString::fromUtf8(property.owner->name())));
}

QVariantMap detailsOf(PyObject *self)
{
    const PropertyAttribute &property = attribute(self);
    return {{u"kind"_s, self->ob_type == setterType() ? u"setter"_s : u"property"_s},
            {u"name"_s, QString::fromLatin1(property.name)},
            {u"class"_s, QString::fromUtf8(property.owner->name())},
            {u"from"_s, QString::fromUtf8(property.owner->metaObject().className())},
            {u"type"_s, QString::fromUtf8(property.type.name())},
            {u"isWritable"_s, property.isWritable && property.bridge->fromPython}};
}

PyTypeObject *attributeType()
{
    static PyTypeObject *const type =
        makeDescriptorType("runebook.property", sizeof(PropertyAttribute),
                           {{python::kSlotDescrGet, reinterpret_cast<void *>(get)},
                            {python::kSlotDescrSet, reinterpret_cast<void *>(set)},
                            {python::kSlotRepr, reinterpret_cast<void *>(describe)},
                            {python::kSlotGetSet, descriptions<detailsOf>()}});
    return type;
}

PyTypeObject *setterType()
{
    static PyTypeObject *const type =
        makeDescriptorType("runebook.setter", sizeof(PropertyAttribute),
                           {{python::kSlotDescrGet, reinterpret_cast<void *>(bindSetter)},
                            {python::kSlotGetSet, descriptions<detailsOf>()}});
    return type;
}

PyObject *makeAttribute(PyTypeObject *type, Descriptor::Call call, const BridgedClass &owner,
                        const QMetaProperty &property)
{
    PyObject *made = makeDescriptor(type, call);
    if (!made)
        return nullptr;
    PropertyAttribute &attributes = attribute(made);
    attributes.owner = &owner;
    attributes.name = property.name();
    attributes.relativeIndex = property.relativePropertyIndex();
    new (&attributes.type) QMetaType(property.metaType());
    attributes.bridge = &bridgeType(property.metaType());
    attributes.direct = directText(owner.metaObject(), property.name());
    attributes.isWritable = property.isWritable();
    return made;
}

} // namespace

PyObject *makeProperty(const BridgedClass &owner, const QMetaProperty &property)
{
    return makeAttribute(attributeType(), call, owner, property);
}

PyObject *makeSetter(const BridgedClass &owner, const QMetaProperty &property)
{
    return makeAttribute(setterType(), callSetter, owner, property);
}

} // namespace runebook::bridge
