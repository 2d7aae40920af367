#include "scripting/bridge/BridgeObject.h"

#include <QHash>
#include <QMetaProperty>
#include <QWidget>
#include <new>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

namespace {

/// The Python objects that stand for QObjects, so that one object of the program is one object of scripts.
/// Guarded by the interpreter's lock.
QHash<const QObject *, BridgeObject *> &wrappers()
{
    static QHash<const QObject *, BridgeObject *> map;
    return map;
}

bool (*windowObserver)(const QWidget &window) = nullptr;

BridgeObject &bridgeObject(PyObject *self)
{
    return *reinterpret_cast<BridgeObject *>(self);
}

/// Makes the wrapper known as the one of its QObject.
void list(BridgeObject &object)
{
    object.listedAs = object.instance.object.data();
    if (!object.listedAs)
        return;
    wrappers().insert(object.listedAs, &object);
    // A window whose parts have no names of their own can be used all the same.
    const auto *widget = qobject_cast<QWidget *>(object.instance.object);
    if (widget && widget->isWindow() && windowObserver && !windowObserver(*widget))
        vxPyErr_Clear();
}

PyObject *makeNew(PyTypeObject *type, bool isAllocated)
{
    if (!checkThread())
        return nullptr;
    const BridgedClass *bridged = BridgedClass::forType(type);
    if (!bridged && py.PyErr_Occurred())
        return nullptr;
    if (bridged && !bridged->canMakeInstances())
        return raise(
            *py.PyExc_TypeError,
            u"scripts cannot make objects of the class %1"_s.arg(QString::fromUtf8(bridged->name())));
    return guarded<PyObject *>(nullptr, [&] {
        Instance instance;
        if (bridged && !isAllocated)
            instance = bridged->makeInstance();
        return makeObject(type, bridged, std::move(instance), isAllocated);
    });
}

PyObject *newObject(PyTypeObject *type, PyObject *arguments, PyObject *keywords)
{
    // A class that a script derived may take what it wants.
    const BridgedClass *bridged = BridgedClass::forType(type);
    const bool isGivenAny = py.PyTuple_Size(arguments) > 0 || (keywords && py.PyDict_Size(keywords) > 0);
    if (bridged && bridged->type() == type && isGivenAny)
        return raise(*py.PyExc_TypeError, u"%1 takes no arguments"_s.arg(QString::fromUtf8(bridged->name())));
    return makeNew(type, false);
}

PyObject *alloc(PyObject *type, PyObject *)
{
    return makeNew(reinterpret_cast<PyTypeObject *>(type), true);
}

PyObject *init(PyObject *self, PyObject *)
{
    BridgeObject &object = bridgeObject(self);
    if (object.bridgedClass && std::exchange(object.isAllocated, false)) {
        const bool made = guarded<bool>(false, [&object] {
            object.instance = object.bridgedClass->makeInstance();
            return true;
        });
        if (!made)
            return nullptr;
        list(object);
    }
    py.Py_IncRef(self);
    return self;
}

void deallocate(PyObject *self)
{
    BridgeObject &object = bridgeObject(self);
    PyTypeObject *type = self->ob_type;
    if (object.weakReferences)
        py.PyObject_ClearWeakRefs(self);
    if (object.listedAs) {
        const auto entry = wrappers().constFind(object.listedAs);
        if (entry != wrappers().cend() && *entry == &object)
            wrappers().erase(entry);
    }
    object.instance.~Instance();
    const auto release = reinterpret_cast<void (*)(void *)>(py.PyType_GetSlot(type, python::kSlotFree));
    release(self);
    vxPy_DecRef(reinterpret_cast<PyObject *>(type));
}

const void *identity(const BridgeObject &object)
{
    // An object of a script stays what it is when the program gets something that stands for it.
    // An object that is gone keeps its hash: scripts have it in their sets.
    if (object.bridgedClass && object.listedAs)
        return object.listedAs;
    return object.bridgedClass && object.instance.value ? object.instance.value.get()
                                                        : static_cast<const void *>(&object);
}

PyObject *compare(PyObject *self, PyObject *other, int operation)
{
    PyObject *answer = py._Py_NotImplementedStruct;
    if ((operation == python::kEqual || operation == python::kNotEqual) && isBridgeObject(other)) {
        // Where one object has gone, another may stand at its address.
        const bool same = self == other
            || (identity(bridgeObject(self)) == identity(bridgeObject(other))
                && bridgeObject(self).instance.isEmpty() == bridgeObject(other).instance.isEmpty());
        return py.PyBool_FromLong(same == (operation == python::kEqual));
    }
    py.Py_IncRef(answer);
    return answer;
}

Py_ssize_t hash(PyObject *self)
{
    // Addresses are multiples of 16; and -1 is how a hash tells of an error.
    const auto value = static_cast<Py_ssize_t>(reinterpret_cast<quintptr>(identity(bridgeObject(self))) >> 4);
    return value == -1 ? -2 : value;
}

PyObject *representChecked(PyObject *self)
{
    const BridgeObject &object = bridgeObject(self);
    QString label;
    if (QObject *living = object.instance.object) {
        label = living->objectName();
        const QVariant shown = living->property("displayName");
        if (shown.isValid())
            label = shown.toString();
    } else if (object.bridgedClass && object.bridgedClass->isGadget() && object.instance.value) {
        const QMetaObject &meta = object.bridgedClass->metaObject();
        const int name = meta.indexOfProperty("name");
        if (name >= 0)
            label = meta.property(name).readOnGadget(object.instance.value.get()).toString();
    } else if (object.bridgedClass) {
        label = u"(gone)"_s;
    }
    return pythonText(label.isEmpty() ? u"<%1>"_s.arg(typeName(self))
                                      : u"<%1 %2>"_s.arg(typeName(self), label));
}

PyObject *represent(PyObject *self)
{
    return guarded<PyObject *>(nullptr, [self] { return representChecked(self); });
}

constexpr int kClassMethod = 0x0010;

PyMethodDef objectMethods[] = {
    {"alloc", alloc, kClassMethod | python::kNoArgs, "A new object, to be followed by init() or its like."},
    {"init", init, python::kNoArgs, "Makes the object ready for use."},
    {nullptr, nullptr, 0, nullptr},
};

PyMemberDef objectMembers[] = {
    {"__weaklistoffset__", python::kMemberSize, offsetof(BridgeObject, weakReferences), python::kReadOnly,
     nullptr},
    {nullptr, 0, 0, 0, nullptr},
};

PyTypeObject *makeObjectType()
{
    static char doc[] = "The root of all classes of the program.";
    PyType_Slot slots[] = {
        {python::kSlotDealloc, reinterpret_cast<void *>(deallocate)},
        {python::kSlotNew, reinterpret_cast<void *>(newObject)},
        {python::kSlotHash, reinterpret_cast<void *>(hash)},
        {python::kSlotRichCompare, reinterpret_cast<void *>(compare)},
        {python::kSlotRepr, reinterpret_cast<void *>(represent)},
        {python::kSlotMethods, objectMethods},
        {python::kSlotMembers, objectMembers},
        {python::kSlotDoc, doc},
        {0, nullptr},
    };
    PyType_Spec spec {"runebook.NSObject", sizeof(BridgeObject), 0,
                      python::kDefaultTypeFlags | python::kBaseType, slots};
    return makeClass(spec, nullptr);
}

/// The class of the classes, where what dir() of a class lists can be told. Null with an error set without
/// one.
PyTypeObject *classType(PyTypeObject *ordinary)
{
    static PyTypeObject *const type = [ordinary]() -> PyTypeObject * {
        PyType_Slot slots[] = {{0, nullptr}};
        PyType_Spec spec {"runebook.Class", 0, 0, python::kDefaultTypeFlags | python::kBaseType, slots};
        const PythonRef bases(vxPy_BuildValue("(O)", ordinary));
        return bases ? reinterpret_cast<PyTypeObject *>(py.PyType_FromSpecWithBases(&spec, bases.get()))
                     : nullptr;
    }();
    return type;
}

} // namespace

PyTypeObject *makeClass(PyType_Spec &spec, PyTypeObject *base)
{
    const PythonRef bases(base ? vxPy_BuildValue("(O)", base) : nullptr);
    if (base && !bases)
        return nullptr;
    PyObject *made = base ? py.PyType_FromSpecWithBases(&spec, bases.get()) : py.PyType_FromSpec(&spec);
    PyTypeObject *classes = made ? classType(made->ob_type) : nullptr;
    if (!classes)
        return nullptr;
    // Before 3.12 a type that is made this way cannot be told its class.
    if (made->ob_type != classes) {
        py.Py_IncRef(reinterpret_cast<PyObject *>(classes));
        made->ob_type = classes;
    }
    return reinterpret_cast<PyTypeObject *>(made);
}

PyTypeObject *objectType()
{
    static PyTypeObject *const type = [] {
        PyTypeObject *made = makeObjectType();
        BridgedClass::setRootType(made);
        return made;
    }();
    return type;
}

bool isBridgeObject(PyObject *object)
{
    return py.PyType_IsSubtype(object->ob_type, objectType()) != 0;
}

PyObject *makeObject(PyTypeObject *type, const BridgedClass *bridgedClass, Instance instance,
                     bool isAllocated)
{
    PyObject *made = py.PyType_GenericAlloc(type, 0);
    if (!made)
        return nullptr;
    BridgeObject &object = bridgeObject(made);
    object.bridgedClass = bridgedClass;
    object.isAllocated = isAllocated;
    new (&object.instance) Instance(std::move(instance));
    list(object);
    return made;
}

void adopt(BridgeObject &object, Instance instance)
{
    object.instance = std::move(instance);
    list(object);
}

PyObject *wrapObject(QObject *object)
{
    if (!object)
        return none();
    const auto known = wrappers().constFind(object);
    // The address may belong to an object that came after the one that was wrapped.
    if (known != wrappers().cend() && (*known)->instance.object == object) {
        py.Py_IncRef(&(*known)->head);
        return &(*known)->head;
    }
    const BridgedClass *bridged = BridgedClass::forMetaObject(*object->metaObject());
    return bridged ? makeObject(bridged->type(), bridged, {nullptr, object}) : nullptr;
}

PyObject *wrapValue(const BridgedClass &bridgedClass, std::shared_ptr<void> &&value)
{
    // As makeObject() does, without what only objects that are found again need: lists have very many.
    PyObject *made = py.PyType_GenericAlloc(bridgedClass.type(), 0);
    if (!made)
        return nullptr;
    BridgeObject &object = bridgeObject(made);
    object.bridgedClass = &bridgedClass;
    new (&object.instance) Instance {std::move(value), nullptr};
    return made;
}

void setWindowObserver(bool (*met)(const QWidget &window))
{
    windowObserver = met;
}

void *addressOf(BridgeObject &object)
{
    void *address = object.bridgedClass && object.bridgedClass->isGadget()
        ? object.instance.value.get()
        : static_cast<void *>(object.instance.object.data());
    if (!address)
        raise(*py.PyExc_ReferenceError,
              u"the %1 is %2"_s.arg(typeName(&object.head),
                                    object.isAllocated ? u"not initialised: call init()"_s : u"gone"_s));
    return address;
}

} // namespace runebook::bridge
