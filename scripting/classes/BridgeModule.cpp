#include "scripting/classes/BridgeModule.h"

#include "document/VXDocument.h"
#include "model/StringHelpers.h"
#include "model/VXArrayToStringTransformator.h"
#include "model/VXDirectionToIndexValueTransformer.h"
#include "platform/NotificationCenter.h"
#include "platform/VXVersionComparator.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "scripting/bridge/ClassAttributes.h"
#include "scripting/bridge/OutletAttribute.h"
#include "scripting/classes/ControlOperations.h"
#include "scripting/classes/DocumentOperations.h"
#include "scripting/classes/FontMaps.h"
#include "scripting/classes/MenuOperations.h"
#include "scripting/classes/NewObject.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/classes/ScriptHelpers.h"
#include "scripting/python/CallbackError.h"
#include "scripting/python/ScriptConsole.h"

namespace runebook::bridge {

using namespace Qt::StringLiterals;

namespace {

template <typename Class> void registerValueClass()
{
    BridgedClass::registerClass(Class::staticMetaObject, [] {
        return Instance {std::make_shared<Class>(), nullptr};
    });
}

/// The objects there is one of, by name.
QHash<QString, QObject *(*)()> &sharedObjects()
{
    static QHash<QString, QObject *(*)()> objects;
    return objects;
}

void registerClasses()
{
    setUpClasses();
    setUpOutlets();
    registerRange<UnitRange>();
    registerNewObjects();
    registerFonts();
    registerMenuOperations();
    registerControlOperations();
    registerDocumentOperations();
    registerValueClass<VXVersionComparator>();
    registerValueClass<VXArrayToStringTransformator>();
    registerValueClass<VXDirectionToIndexValueTransformer>();
    registerValueClass<Error>();
}

void registerObjects()
{
    registerSharedObject(u"application"_s, [] { return ScriptApplication::object(); });
    registerSharedObject(u"documentController"_s,
                         []() -> QObject * { return &DocumentController::shared(); });
    registerSharedObject(u"userDefaults"_s, []() -> QObject * { return &UserDefaults::standard(); });
    registerSharedObject(u"notificationCenter"_s,
                         []() -> QObject * { return &NotificationCenter::defaultCenter(); });
    registerSharedObject(u"helpers"_s, []() -> QObject * { return &ScriptHelpers::shared(); });
}

PyObject *classFromString(PyObject *, PyObject *name)
{
    QString text;
    if (!readText(name, text))
        return nullptr;
    return guarded<PyObject *>(nullptr, [&text]() -> PyObject * {
        const BridgedClass *bridged = BridgedClass::forName(text.toUtf8());
        if (!bridged)
            return py.PyErr_Occurred() ? nullptr : none();
        return PythonRef::shared(reinterpret_cast<PyObject *>(bridged->type())).release();
    });
}

PyObject *sharedObject(PyObject *, PyObject *name)
{
    QString text;
    if (!checkThread() || !readText(name, text))
        return nullptr;
    return guarded<PyObject *>(nullptr, [&text] {
        const auto object = sharedObjects().value(text);
        return object ? wrapObject(object())
                      : raise(*py.PyExc_ValueError, u"no object is called %1"_s.arg(text));
    });
}

/// Hands every notification to a Python function, on the main thread.
PyObject *observeNotifications(PyObject *, PyObject *function)
{
    if (!checkThread())
        return nullptr;
    // Kept to the end of the process: the Python side asks once and tells its observers itself.
    py.Py_IncRef(function);
    QObject::connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted,
                     &ScriptHelpers::shared(),
                     [function](const QString &name, QObject *object, const QVariantMap &userInfo) {
                         const int state = vxPyGILState_Ensure();
                         {
                             std::vector<PythonRef> items;
                             items.emplace_back(pythonText(name));
                             items.emplace_back(wrapObject(object));
                             items.emplace_back(variantToPython(userInfo));
                             const PythonRef arguments = tupleOf(std::move(items));
                             const PythonRef answer(
                                 arguments ? py.PyObject_CallObject(function, arguments.get()) : nullptr);
                             if (!answer)
                                 reportCallbackError();
                         }
                         vxPyGILState_Release(state);
                     });
    return none();
}

PyObject *setValueTypes(PyObject *, PyObject *arguments)
{
    PyObject *list = nullptr, *text = nullptr, *number = nullptr, *error = nullptr, *describe = nullptr;
    if (!vxPyArg_ParseTuple(arguments, "OOOOO", &list, &text, &number, &error, &describe))
        return nullptr;
    valueTypes() = {PythonRef::shared(list), PythonRef::shared(text), PythonRef::shared(number),
                    PythonRef::shared(error), PythonRef::shared(describe)};
    return none();
}

/// A class of the name and bases of another one whose objects the collector of cycles knows nothing of, which
/// it does of every class that is written in Python: texts hold no other objects, and loops make very many.
PyObject *plainClass(PyObject *, PyObject *like)
{
    const PythonRef bases(py.PyObject_GetAttrString(like, "__bases__"));
    const PythonRef name(bases ? py.PyObject_GetAttrString(like, "__name__") : nullptr);
    QString text;
    if (!name || !readText(name.get(), text))
        return nullptr;
    // Types point to their names up to 3.9.
    static QList<QByteArray> &names = *new QList<QByteArray>;
    names << "objc." + text.toUtf8();
    PyType_Slot slots[] = {{0, nullptr}};
    PyType_Spec spec {names.last().constData(), 0, 0, python::kDefaultTypeFlags | python::kBaseType, slots};
    return py.PyType_FromSpecWithBases(&spec, bases.get());
}

/// The operations of a class as people write them, for listings.
PyObject *selectors(PyObject *, PyObject *type)
{
    if (!isKind(type, python::kTypeSubclass))
        return raise(*py.PyExc_TypeError, u"a class is needed"_s);
    QStringList names;
    const BridgedClass *bridged = BridgedClass::forType(reinterpret_cast<PyTypeObject *>(type));
    const QMetaObject *meta = bridged ? &bridged->metaObject() : nullptr;
    for (; meta && meta != &QObject::staticMetaObject; meta = meta->superClass()) {
        const BridgedClass *base = BridgedClass::forMetaObject(*meta);
        if (!base)
            return nullptr;
        for (const Method &method : methodsOf(*base))
            names << QString::fromUtf8(usualSelector(method.name, method.inputs(), method.parameterNames()));
        for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i)
            names << QString::fromLatin1(meta->property(i).name());
    }
    names.removeDuplicates();
    return bridgeType(QMetaType(QMetaType::QStringList)).toPython({}, &names);
}

PyObject *classNames(PyObject *, PyObject *)
{
    return guarded<PyObject *>(nullptr, [] {
        QStringList names;
        for (const QByteArray &name : BridgedClass::knownNames())
            names << QString::fromUtf8(name);
        return bridgeType(QMetaType(QMetaType::QStringList)).toPython({}, &names);
    });
}

PyObject *hasOwnOutput(PyObject *, PyObject *)
{
    return py.PyBool_FromLong(runebook::hasOwnOutput());
}

PyObject *flushOutput(PyObject *, PyObject *)
{
    return guarded<PyObject *>(nullptr, [] {
        if (ScriptConsole *console = scriptConsole(); console && console->takesAnyThread())
            console->flush();
        return none();
    });
}

PyMethodDef functions[] = {
    {"classNames", classNames, python::kNoArgs,
     "The names of the program's classes, as far as they are known."},
    {"hasOwnOutput", hasOwnOutput, python::kNoArgs,
     "Whether what is printed goes to the process's own output."},
    {"flushOutput", flushOutput, python::kNoArgs, "Lets nothing wait that was printed."},
    {"classFromString", classFromString, python::kOneArg, "The class of that name, or None."},
    {"sharedObject", sharedObject, python::kOneArg, "An object there is one of."},
    {"observeNotifications", observeNotifications, python::kOneArg,
     "Calls a function for each notification."},
    {"setValueTypes", setValueTypes, python::kVarArgs,
     "The classes of lists, texts, numbers and errors, and what tells of operations."},
    {"plainClass", plainClass, python::kOneArg,
     "A class like another one, without its attributes, whose objects are in no cycles."},
    {"selectors", selectors, python::kOneArg, "The names of a class's operations and properties."},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef runebook_module {{{1, nullptr}, nullptr, 0, nullptr},
                             kBridgeModuleName,
                             "The program's objects.",
                             -1,
                             functions,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr};

} // namespace

} // namespace runebook::bridge

void runebook::registerSharedObject(const QString &name, QObject *(*object)())
{
    bridge::sharedObjects().insert(name, object);
}

PyObject *PyInit_runebook()
{
    using namespace runebook::bridge;
    registerClasses();
    registerObjects();
    PyTypeObject *root = objectType();
    PyObject *module = root ? vxPyModule_Create2(&runebook_module, runebook::python::kApiVersion) : nullptr;
    if (module)
        runebook::py.PyObject_SetAttrString(module, "NSObject", reinterpret_cast<PyObject *>(root));
    return module;
}
