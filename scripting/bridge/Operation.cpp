#include "scripting/bridge/Operation.h"

#include "platform/Error.h"
#include "platform/Unattended.h"
#include "scripting/bridge/Descriptor.h"
#include "scripting/bridge/DirectText.h"
#include "scripting/python/OperationScope.h"
#include "scripting/python/ScriptRun.h"

#include <QMetaProperty>
#include <cctype>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kMaxParameters = 10;

Preparation currentPreparation;

struct Operation : Descriptor {
    const MethodGroup *group;
    const Selector *selector;
    const DirectText *text; ///< for the setter of a text that is written directly
};

/// The arguments that a script gave, borrowed.
struct Arguments {
    PyObject *target; ///< what the operation is called on
    PyObject *const *items;
    Py_ssize_t count;
};

/// What a call works with: the values of its parameters, the error, and the pointers that C++ is given.
class Call
{
public:
    explicit Call(const Method &method) : m_method(method)
    {
        if (method.result.isValid() && method.result.id() != QMetaType::Void)
            m_pointers[0] = m_result.emplace(method.result).data();
    }

    /// False with an error set when an argument does not fit.
    bool take(const Arguments &arguments);
    void perform(const BridgedClass &owner, void *address);
    /// The result, or a tuple of the result and the out parameters.
    PyObject *answer(bool withError);

private:
    const Method &m_method;
    std::optional<Storage> m_result;
    std::optional<Storage> m_values[kMaxParameters];
    std::optional<Storage> m_shared; ///< the object that an extension's function is called on, or
    void *m_outPointers[kMaxParameters] = {};
    void *m_target = nullptr; ///< its address
    void *m_pointers[kMaxParameters + 3] = {};
    Error m_error;
    Error *m_errorPointer = &m_error;
};

bool Call::take(const Arguments &arguments)
{
    if (m_method.sharedTarget.isValid()) {
        Storage &shared = m_shared.emplace(m_method.sharedTarget);
        if (!bridgeType(m_method.sharedTarget)
                 .fromPython(m_method.sharedTarget, arguments.target, shared.data()))
            return false;
    }
    std::size_t place = 0;
    void **pointers = m_method.extension ? m_pointers + 2 : m_pointers + 1;
    for (const Parameter &parameter : m_method.parameters) {
        Storage &value = m_values[place].emplace(parameter.type);
        PyObject *given = arguments.items[place];
        const bool isLeftOut = parameter.isOut && isNone(given);
        if (!isLeftOut && isNone(given) && !parameter.mayBeNone) {
            raise(*py.PyExc_TypeError,
                  u"argument %1 of %2 must not be None"_s.arg(place + 1).arg(
                      QString::fromUtf8(m_method.signature)));
            return false;
        }
        if (!isLeftOut && !parameter.bridge->fromPython(parameter.type, given, value.data()))
            return false;
        m_outPointers[place] = value.data();
        pointers[place] = parameter.isOut ? static_cast<void *>(&m_outPointers[place]) : value.data();
        ++place;
    }
    if (m_method.canFail)
        pointers[place] = &m_errorPointer;
    return true;
}

void Call::perform(const BridgedClass &owner, void *address)
{
    if (!m_method.extension) {
        owner.call(QMetaObject::InvokeMetaMethod, address, m_method.relativeIndex, m_pointers);
        return;
    }
    m_target = address;
    m_pointers[1] = m_shared ? m_shared->data() : static_cast<void *>(&m_target);
    QMetaObject::metacall(m_method.extension, QMetaObject::InvokeMetaMethod,
                          m_method.extension->metaObject()->methodOffset() + m_method.relativeIndex,
                          m_pointers);
}

PyObject *Call::answer(bool withError)
{
    const bool failed = !m_error.domain.isEmpty() || !m_error.description.isEmpty();
    const auto errorObject = [this] {
        return bridgeType(QMetaType::fromType<Error>()).toPython(QMetaType::fromType<Error>(), &m_error);
    };
    if (failed && !withError) {
        const PythonRef error(errorObject());
        if (error)
            py.PyErr_SetObject(valueTypes().error.get(), error.get());
        return nullptr;
    }
    std::vector<PythonRef> parts;
    if (m_result)
        parts.emplace_back(m_method.resultBridge->handOver(m_method.result, m_result->data()));
    for (std::size_t i = 0; i < m_method.parameters.size(); ++i) {
        const Parameter &parameter = m_method.parameters[i];
        if (parameter.isOut)
            parts.emplace_back(parameter.bridge->toPython(parameter.type, m_values[i]->data()));
    }
    if (withError)
        parts.emplace_back(failed ? errorObject() : none());
    if (parts.empty())
        return none();
    if (parts.size() == 1)
        return parts.front().release();
    return tupleOf(std::move(parts)).release();
}

void *prototypeAddress(const BridgedClass &owner)
{
    const Instance &prototype = owner.prototype();
    if (prototype.isEmpty())
        raise(*py.PyExc_TypeError,
              u"%1 has no operations of the class itself"_s.arg(QString::fromUtf8(owner.name())));
    return owner.isGadget() ? prototype.value.get() : static_cast<void *>(prototype.object.data());
}

/// What an operation is called on: an object, or the class.
struct Target {
    BridgeObject *object; ///< null for the class
    const BridgedClass *bridgedClass;

    /// Null with an error set when there is nothing to call it on.
    void *address() const { return object ? addressOf(*object) : prototypeAddress(*bridgedClass); }
};

/// In a run without windows nobody would end what waits for an answer: one line tells that it was left out.
bool isLeftOut(const Operation &operation, const Method &method)
{
    if (!isUnattended() || method.extension || (method.name != "exec" && method.name != "aboutQt"))
        return false;
    ErrorPresenter::shared().present(
        {u"VXTesselDomain"_s,
         2,
         QCoreApplication::translate("ScriptRun", "%1 of %2 would wait for an answer: nothing was done.")
             .arg(QString::fromUtf8(method.name), QString::fromUtf8(operation.group->owner->name())),
         {},
         {}});
    return true;
}

PyObject *invoke(const Operation &operation, const Method &method, const Target &target,
                 const Arguments &arguments)
{
    Call call(method);
    const Reading reading;
    if (!call.take(arguments) || !reading.isAlive())
        return nullptr;
    // Only now: the arguments may have ended the object.
    void *address = target.address();
    if (!address)
        return nullptr;
    if (!isLeftOut(operation, method)) {
        const OperationScope scope;
        if (operation.group->needsPreparation)
            currentPreparation.prepare();
        call.perform(*operation.group->owner, address);
    }
    return ScriptRun::raiseKeptEnd() ? nullptr : call.answer(operation.selector->takesError);
}

PyObject *raiseCount(const Operation &operation, Py_ssize_t given)
{
    QStringList counts;
    for (const Method &method : operation.group->methods)
        counts << QString::number(method.inputs() + (operation.selector->takesError ? 1 : 0));
    counts.removeDuplicates();
    return raise(*py.PyExc_TypeError,
                 u"%1 takes %2 arguments, not %3"_s.arg(QString::fromUtf8(operation.selector->name))
                     .arg(counts.join(u" or "_s))
                     .arg(given));
}

/// The arguments with those that can be read only once read: several functions may try them. Most calls have
/// none.
class ReadableItems
{
public:
    /// False with an error set when one cannot be read.
    bool read(Arguments &arguments)
    {
        for (Py_ssize_t place = 0; place < arguments.count; ++place) {
            PythonRef read = readable(arguments.items[place]);
            if (!read)
                return false;
            if (read.get() == arguments.items[place])
                continue;
            if (m_items.empty()) {
                m_items.assign(arguments.items, arguments.items + arguments.count);
                arguments.items = m_items.data();
            }
            m_items[static_cast<std::size_t>(place)] = read.get();
            m_read.push_back(std::move(read));
        }
        return true;
    }

private:
    std::vector<PythonRef> m_read;
    std::vector<PyObject *> m_items;
};

/// Calls the first function that the arguments fit; with one function its own error tells what does not fit.
PyObject *dispatch(const Operation &operation, const Target &target, Arguments arguments)
{
    const Py_ssize_t given = arguments.count;
    if (operation.selector->takesError)
        --arguments.count;
    const auto takesOne = [](const Method &method) { return method.inputs() == 1; };
    const std::vector<Method> &methods = operation.group->methods;
    if (operation.selector->takesSender && arguments.count == 1
        && std::none_of(methods.begin(), methods.end(), takesOne))
        arguments.count = 0;
    const Reading reading;
    ReadableItems readableItems;
    if (!readableItems.read(arguments))
        return nullptr;
    bool isTried = false;
    for (const Method &method : methods) {
        if (method.inputs() != arguments.count || (operation.selector->takesError && !method.canFail))
            continue;
        // An earlier function that did not fit left its complaint.
        if (isTried && py.PyErr_ExceptionMatches(*py.PyExc_TypeError))
            vxPyErr_Clear();
        isTried = true;
        PyObject *answer = invoke(operation, method, target, arguments);
        if (answer || !py.PyErr_ExceptionMatches(*py.PyExc_TypeError))
            return answer;
    }
    return isTried ? nullptr : raiseCount(operation, given);
}

/// Called on the class: an operation of the class, or one of an object that is given first.
PyObject *callOnClass(const Operation &operation, PyObject *const *items, Py_ssize_t size)
{
    const BridgedClass &owner = *operation.group->owner;
    if (size > 1) {
        PyObject *first = items[1];
        const bool isObject = py.PyType_IsSubtype(first->ob_type, owner.type());
        const auto fits = [size](const Method &method) { return method.inputs() == size - 1; };
        const std::vector<Method> &methods = operation.group->methods;
        if (isObject && std::none_of(methods.begin(), methods.end(), fits)) {
            return dispatch(operation, {reinterpret_cast<BridgeObject *>(first), &owner},
                            {first, items + 2, size - 2});
        }
    }
    // The class that was named may have more to offer than the one that declares the operation.
    auto *type = reinterpret_cast<PyTypeObject *>(items[0]);
    if (!py.PyType_IsSubtype(type, owner.type()))
        return raise(*py.PyExc_TypeError,
                     u"%1 is no operation of that class"_s.arg(QString::fromUtf8(operation.selector->name)));
    const BridgedClass *named = BridgedClass::forType(type);
    return dispatch(operation, {nullptr, named ? named : &owner}, {items[0], items + 1, size - 1});
}

PyObject *callChecked(const Operation &operation, PyObject *const *items, Py_ssize_t size)
{
    if (!checkThread())
        return nullptr;
    if (size == 0)
        return raise(
            *py.PyExc_TypeError,
            u"an object to call %1 on is missing"_s.arg(QString::fromUtf8(operation.selector->name)));
    PyObject *target = items[0];
    if (isKind(target, python::kTypeSubclass))
        return callOnClass(operation, items, size);
    if (!isInstance(target, operation.group->owner->type()))
        return raise(
            *py.PyExc_TypeError,
            u"%1 is no operation of %2"_s.arg(QString::fromUtf8(operation.selector->name), typeName(target)));
    auto &object = *reinterpret_cast<BridgeObject *>(target);
    // alloc().initWith...: an operation of the class that makes the object. Nothing else can be asked of it.
    const bool makesObject = object.isAllocated && operation.selector->name.startsWith("init");
    return dispatch(operation, {makesObject ? nullptr : &object, operation.group->owner},
                    {target, items + 1, size - 1});
}

PyObject *callOperation(PyObject *self, PyObject *const *items, Py_ssize_t size)
{
    const auto &operation = *reinterpret_cast<Operation *>(self);
    return guarded<PyObject *>(nullptr, [&] { return callChecked(operation, items, size); });
}

/// What callOperation() does, for a text that is set on a record: nothing has to be looked for.
PyObject *callTextSetter(PyObject *self, PyObject *const *items, Py_ssize_t size)
{
    const auto &operation = *reinterpret_cast<Operation *>(self);
    const bool isUsual = size == 2 && isInstance(items[0], operation.group->owner->type())
        && isDirectText(operation.text, items[1]);
    if (!isUsual)
        return callOperation(self, items, size);
    void *address = checkThread() ? addressOf(*reinterpret_cast<BridgeObject *>(items[0])) : nullptr;
    return address && writeDirectly(*operation.text, address, items[1]) ? none() : nullptr;
}

/// How the text is reached that the operation sets and does nothing else, or null.
const DirectText *textSetBy(const MethodGroup &group, const Selector &selector)
{
    constexpr QByteArrayView kSet("set");
    const Method &method = group.methods.front();
    if (group.methods.size() != 1 || method.extension || selector.takesError || method.inputs() != 1
        || method.parameters.front().type.id() != QMetaType::QString || !group.name.startsWith(kSet))
        return nullptr;
    QByteArray property = group.name.sliced(kSet.size());
    if (!property.isEmpty())
        property.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(property.front())));
    return directText(group.owner->metaObject(), property);
}

PyObject *bind(PyObject *self, PyObject *object, PyObject *type)
{
    return py.PyMethod_New(self, object && !isNone(object) ? object : type);
}

PyObject *describe(PyObject *self)
{
    const auto &operation = *reinterpret_cast<Operation *>(self);
    return pythonText(u"<operation %1 of %2>"_s.arg(QString::fromUtf8(operation.selector->name),
                                                    QString::fromUtf8(operation.group->owner->name())));
}

QVariantMap detailsOf(PyObject *self)
{
    const auto &operation = *reinterpret_cast<Operation *>(self);
    QVariantList functions;
    for (const Method &method : operation.group->methods) {
        QVariantList parameters;
        for (const Parameter &parameter : method.parameters)
            parameters << QVariantMap {{u"name"_s, QString::fromUtf8(parameter.name)},
                                       {u"type"_s, QString::fromUtf8(parameter.type.name())},
                                       {u"isOut"_s, parameter.isOut},
                                       {u"mayBeNone"_s, parameter.mayBeNone}};
        functions << QVariantMap {
            {u"parameters"_s, parameters},
            {u"result"_s, QString::fromUtf8(method.result.name())},
            {u"canFail"_s, method.canFail},
            {u"isOfClass"_s, method.isOfClass},
            {u"from"_s,
             QString::fromUtf8(method.extension ? method.extension->metaObject()->className()
                                                : operation.group->owner->metaObject().className())}};
    }
    const MethodGroup &group = *operation.group;
    return {{u"kind"_s, u"operation"_s},
            {u"name"_s, QString::fromUtf8(operation.selector->name)},
            {u"operation"_s, QString::fromUtf8(group.name)},
            {u"class"_s, QString::fromUtf8(group.owner->name())},
            {u"usual"_s,
             QString::fromUtf8(usualSelector(group.name, group.methods.front().inputs(),
                                             group.methods.front().parameterNames()))},
            {u"takesError"_s, operation.selector->takesError},
            {u"takesSender"_s, operation.selector->takesSender},
            {u"functions"_s, functions}};
}

PyTypeObject *operationType()
{
    static PyTypeObject *const type =
        makeDescriptorType("runebook.operation", sizeof(Operation),
                           {{python::kSlotDescrGet, reinterpret_cast<void *>(bind)},
                            {python::kSlotRepr, reinterpret_cast<void *>(describe)},
                            {python::kSlotGetSet, descriptions<detailsOf>()}});
    return type;
}

bool isErrorPointer(QMetaType type)
{
    return QByteArrayView(type.name()) == "runebook::Error*";
}

/// The type that a pointer parameter leads to when it is one to a plain value.
QMetaType pointee(QMetaType type)
{
    const QByteArrayView name(type.name());
    if (!name.endsWith('*') || type.flags().testFlag(QMetaType::PointerToQObject))
        return {};
    return QMetaType::fromName(name.chopped(1));
}

} // namespace

Method::Method(const QMetaMethod &method, QObject *operations)
    : name(method.name()),
      extension(operations),
      relativeIndex(method.relativeMethodIndex()),
      result(method.returnMetaType()),
      resultBridge(&bridgeType(result)),
      canFail(false),
      isOfClass(operations && method.parameterNames().value(0).isEmpty()),
      isUsable(static_cast<std::size_t>(method.parameterCount()) <= kMaxParameters),
      signature(method.methodSignature())
{
    if (extension && !QByteArrayView(method.parameterMetaType(0).name()).endsWith('*'))
        sharedTarget = method.parameterMetaType(0);
    for (int i = extension ? 1 : 0; isUsable && i < method.parameterCount(); ++i) {
        const QMetaType type = method.parameterMetaType(i);
        if (isErrorPointer(type) && i == method.parameterCount() - 1) {
            canFail = true;
            continue;
        }
        const QMetaType target = pointee(type);
        const QMetaType value = target.isValid() ? target : type;
        const BridgeType *bridge = &bridgeType(value);
        const bool takesAbsent = value.id() == QMetaType::QString || value.id() == QMetaType::QVariant
            || value.id() == QMetaType::QObjectStar || value.id() == QMetaType::QVariantMap
            || bridge->takesNone;
        parameters.push_back(
            {value, bridge, method.parameterNames().value(i), target.isValid(), takesAbsent});
        isUsable = value.isValid() && bridge->fromPython;
    }
    isUsable = isUsable && (result.isValid() || method.returnMetaType().id() == QMetaType::Void);
}

void setPreparation(const Preparation &preparation)
{
    currentPreparation = preparation;
}

bool needsPreparation(const BridgedClass &owner)
{
    return currentPreparation.isNeeded && currentPreparation.isNeeded(owner.metaObject());
}

QList<QByteArray> Method::parameterNames() const
{
    QList<QByteArray> names;
    for (const Parameter &parameter : parameters)
        names << parameter.name;
    return names;
}

PyObject *described(PyObject *self, const char *what)
{
    if (!valueTypes().describe)
        return none();
    const PythonRef question(vxPyString_FromString(what));
    return question
        ? py.PyObject_CallFunctionObjArgs(valueTypes().describe.get(), self, question.get(), nullptr)
        : nullptr;
}

PyObject *makeOperation(const MethodGroup &group, const Selector &selector)
{
    const DirectText *text = textSetBy(group, selector);
    PyObject *made = makeDescriptor(operationType(), text ? callTextSetter : callOperation);
    if (made) {
        auto *operation = reinterpret_cast<Operation *>(made);
        operation->text = text;
        operation->group = &group;
        operation->selector = &selector;
    }
    return made;
}

} // namespace runebook::bridge
