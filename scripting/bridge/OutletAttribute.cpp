#include "scripting/bridge/OutletAttribute.h"

#include "scripting/bridge/BridgeObject.h"

#include <QSet>
#include <QWidget>
#include <algorithm>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

// One attribute of all widgets for each name of a part, which looks the part up when it is asked for. Nothing
// may be looked up in __getattr__: objects that have it cannot call their properties.

namespace {

struct OutletAttribute {
    PyObject head;
    const QString *name; ///< kept to the end
};

PyObject *part(PyObject *self, PyObject *object)
{
    const QString &name = *reinterpret_cast<OutletAttribute *>(self)->name;
    const auto *widget = checkThread() && isBridgeObject(object)
        ? qobject_cast<QWidget *>(reinterpret_cast<BridgeObject *>(object)->instance.object)
        : nullptr;
    QObject *found = widget ? widget->findChild<QObject *>(name) : nullptr;
    if (found)
        return wrapObject(found);
    return py.PyErr_Occurred()
        ? nullptr
        : raise(*py.PyExc_AttributeError,
                u"%1 has no operation or part called %2"_s.arg(typeName(object), name));
}

PyObject *get(PyObject *self, PyObject *object, PyObject *)
{
    if (!object || isNone(object))
        return PythonRef::shared(self).release();
    const PythonRef found(guarded<PyObject *>(nullptr, [&] { return part(self, object); }));
    return found ? py.PyMethod_New(self, object) : nullptr;
}

PyObject *call(PyObject *self, PyObject *tuple, PyObject *)
{
    if (py.PyTuple_Size(tuple) != 1)
        return raise(*py.PyExc_TypeError, u"a part of a window takes no arguments"_s);
    return guarded<PyObject *>(nullptr, [&] { return part(self, py.PyTuple_GetItem(tuple, 0)); });
}

void deallocate(PyObject *self)
{
    PyTypeObject *type = self->ob_type;
    reinterpret_cast<void (*)(void *)>(py.PyType_GetSlot(type, python::kSlotFree))(self);
    vxPy_DecRef(reinterpret_cast<PyObject *>(type));
}

PyTypeObject *outletType()
{
    static PyTypeObject *const type = [] {
        PyType_Slot slots[] = {
            {python::kSlotDealloc, reinterpret_cast<void *>(deallocate)},
            {python::kSlotCall, reinterpret_cast<void *>(call)},
            {python::kSlotDescrGet, reinterpret_cast<void *>(get)},
            {0, nullptr},
        };
        PyType_Spec spec {"runebook.outlet", sizeof(OutletAttribute), 0,
                          python::kDefaultTypeFlags | python::kMethodDescriptor, slots};
        return reinterpret_cast<PyTypeObject *>(py.PyType_FromSpec(&spec));
    }();
    return type;
}

bool isName(const QString &text)
{
    const auto fits = [](QChar character) { return character.isLetterOrNumber() || character == u'_'; };
    return !text.isEmpty() && !text.startsWith("qt_"_L1) && !text.at(0).isDigit()
        && std::all_of(text.begin(), text.end(), fits);
}

bool addAttribute(PyObject *type, const QString &name)
{
    const PythonRef known(py.PyObject_GetAttrString(type, name.toUtf8().constData()));
    if (known)
        return true;
    vxPyErr_Clear();
    const PythonRef made(outletType() ? py.PyType_GenericAlloc(outletType(), 0) : nullptr);
    if (!made)
        return false;
    reinterpret_cast<OutletAttribute *>(made.get())->name = new QString(name);
    return py.PyObject_SetAttrString(type, name.toUtf8().constData(), made.get()) == 0;
}

bool announceParts(const QWidget &window)
{
    static QSet<QString> announced;
    const BridgedClass *widgets = BridgedClass::forMetaObject(QWidget::staticMetaObject);
    if (!widgets)
        return false;
    for (const QObject *part : window.findChildren<QObject *>()) {
        const QString name = part->objectName();
        if (!isName(name) || announced.contains(name))
            continue;
        announced.insert(name);
        if (!addAttribute(reinterpret_cast<PyObject *>(widgets->type()), name))
            return false;
    }
    return true;
}

} // namespace

void setUpOutlets()
{
    setWindowObserver(announceParts);
}

} // namespace runebook::bridge
