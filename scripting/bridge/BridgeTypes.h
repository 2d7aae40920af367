#pragma once

#include "scripting/bridge/BridgeObject.h"

#include <optional>
#include <vector>

namespace runebook::bridge {

/// How values of one C++ type become Python's and back.
struct BridgeType {
    /// A new reference, or null with an error set.
    using ToPython = PyObject *(*)(QMetaType type, const void *data);
    /// Fills the value at \a data, which exists; false with an error set when \a object does not fit.
    using FromPython = bool (*)(QMetaType type, PyObject *object, void *data);
    using Move = PyObject *(*)(QMetaType type, void *data);

    ToPython toPython = nullptr;
    FromPython fromPython = nullptr;
    bool takesNone = false; ///< None is a value of the type
    Move move = nullptr; ///< toPython for a value that nobody needs any more; null where it does the same

    /// The value at \a data, which is left in any state, as Python's.
    PyObject *handOver(QMetaType type, void *data) const
    {
        return move ? move(type, data) : toPython(type, data);
    }
};

/// Never null: types that nobody registered go through QVariant's conversions, or across as they are.
const BridgeType &bridgeType(QMetaType type);
void registerType(QMetaType type, const BridgeType &bridge);
/// What stands for an object of a class that a script made, where C++ wants any QObject: a delegate. Told
/// once.
void setDelegateMaker(QObject *(*forObject)(PyObject *object));
/// Sets TypeError: \a what is needed, not the \a object. Always false.
bool needs(PyObject *object, const char *what);

/// The Python classes of values, told by the Python side: a list, a text and a number that answer as the
/// program's objects do, and the exception for errors of the program.
struct ValueTypes {
    PythonRef list;
    PythonRef text;
    PythonRef number;
    PythonRef error;
    PythonRef describe; ///< tells what help() shows of a class, an operation or a property
};
ValueTypes &valueTypes();

/// The arguments of one call while they are read. Reading may run code of the script, which may close what
/// was read before; and what a script hands over may be endless or contain itself.
class Reading
{
public:
    Reading();
    ~Reading();
    Q_DISABLE_COPY_MOVE(Reading)

    /// False with an error set when an object that was read is gone.
    bool isAlive() const;

    /// Steps into a list or map for one scope.
    class Level
    {
    public:
        Level() { ++s_depth; }
        ~Level() { --s_depth; }
        Q_DISABLE_COPY_MOVE(Level)
        /// False with an error set when lists lie in each other too deep.
        bool isAllowed() const;
    };

    /// Counts an item; false with an error set when there are too many.
    static bool countItem();
    static void noteObject(QObject *object);

private:
    static Reading *s_current; // of the main thread
    static int s_depth;

    Reading *m_outer;
    qsizetype m_items = 0;
    std::vector<QPointer<QObject>> m_objects;
};

/// \a object as something that can be read more than once: what only an iterator gives becomes a list. Null
/// with an error set when that fails.
PythonRef readable(PyObject *object);

PyObject *variantToPython(const QVariant &value);
bool variantFromPython(PyObject *object, QVariant &value);
/// Makes the list type of the Python side from a new list, which is taken over.
PyObject *asList(PyObject *list);

/// A value of a type for the time of one call: made empty, destroyed at the end.
class Storage
{
public:
    explicit Storage(QMetaType type);
    Storage(Storage &&) = delete;
    ~Storage();
    QMetaType type() const { return m_type; }
    void *data() { return m_data; }

private:
    QMetaType m_type;
    void *m_data = nullptr;
    alignas(std::max_align_t) std::byte m_place[48];
};

/// Makes a class of records known that are held by std::shared_ptr, with lists of them.
template <typename Record> void registerRecord();
/// Lets a structure of location and length, a range of a text, cross as a tuple of them.
template <typename Range> void registerRange();

// Implementation

/// Shared by all records: the pointer inside of a Python object, or null with TypeError set.
const std::shared_ptr<void> *recordIn(PyObject *object, const QMetaObject &meta);
PyObject *recordToPython(const QMetaObject &meta, std::shared_ptr<void> record);

/// \a List: a list of pointers to records, const or not; taken out of it where it is not.
template <typename Record, typename List> PyObject *recordsToPython(List &records)
{
    // Looked up once: lists have as many records as a file has lines.
    const BridgedClass *bridged = BridgedClass::forMetaObject(Record::staticMetaObject);
    PythonRef list(bridged ? py.PyList_New(static_cast<Py_ssize_t>(records.size())) : nullptr);
    for (std::size_t i = 0; list && i < records.size(); ++i) {
        PyObject *record = records[i] ? wrapValue(*bridged, std::move(records[i])) : none();
        if (!record)
            return nullptr;
        py.PyList_SetItem(list.get(), static_cast<Py_ssize_t>(i), record);
    }
    return asList(list.release());
}

template <typename Record> bool recordFromPython(PyObject *object, std::shared_ptr<Record> &record)
{
    const std::shared_ptr<void> *held = recordIn(object, Record::staticMetaObject);
    if (held)
        record = std::static_pointer_cast<Record>(*held);
    return held != nullptr;
}

/// Calls \a take for each object that an iterable gives; stops when it answers false.
bool forEach(PyObject *iterable, const std::function<bool(PyObject *)> &take);

template <typename Record> void registerRecord()
{
    using Pointer = std::shared_ptr<Record>;
    using List = std::vector<Pointer>;
    BridgedClass::registerClass(
        Record::staticMetaObject,
        [] {
            return Instance {std::make_shared<Record>(), nullptr};
        },
        QMetaType::fromType<Pointer>());
    registerType(QMetaType::fromType<Pointer>(),
                 {[](QMetaType, const void *data) {
                      return recordToPython(Record::staticMetaObject, *static_cast<const Pointer *>(data));
                  },
                  [](QMetaType, PyObject *object, void *data) {
                      return recordFromPython(object, *static_cast<Pointer *>(data));
                  }});
    registerType(
        QMetaType::fromType<List>(),
        {[](QMetaType, const void *data) {
             return recordsToPython<Record>(*static_cast<const List *>(data));
         },
         [](QMetaType, PyObject *object, void *data) {
             auto &list = *static_cast<List *>(data);
             return forEach(object,
                            [&list](PyObject *item) { return recordFromPython(item, list.emplace_back()); });
         },
         false, [](QMetaType, void *data) { return recordsToPython<Record>(*static_cast<List *>(data)); }});
    registerType(QMetaType::fromType<std::optional<List>>(),
                 {[](QMetaType, const void *data) {
                      const auto &list = *static_cast<const std::optional<List> *>(data);
                      return list ? recordsToPython<Record>(*list) : none();
                  },
                  [](QMetaType, PyObject *object, void *data) {
                      auto &list = *static_cast<std::optional<List> *>(data);
                      return isNone(object)
                          || bridgeType(QMetaType::fromType<List>())
                                 .fromPython(QMetaType::fromType<List>(), object, &list.emplace());
                  },
                  true});
}

template <typename Range> void registerRange()
{
    constexpr auto kToPython = [](QMetaType, const void *data) {
        const auto &range = *static_cast<const Range *>(data);
        return vxPy_BuildValue("(LL)", static_cast<long long>(range.location),
                               static_cast<long long>(range.length));
    };
    constexpr auto kFromPython = [](QMetaType, PyObject *object, void *data) {
        using Number = decltype(Range::location);
        const QMetaType number = QMetaType::fromType<Number>();
        std::vector<Number> numbers;
        if (isKind(object, python::kUnicodeSubclass | python::kDictSubclass)
            || !forEach(object, [&numbers, number](PyObject *item) {
                   return bridgeType(number).fromPython(number, item, &numbers.emplace_back());
               }))
            return py.PyErr_Occurred() ? false : needs(object, "a range");
        if (numbers.size() != 2)
            return needs(object, "a range of location and length");
        *static_cast<Range *>(data) = {numbers[0], numbers[1]};
        return true;
    };
    registerType(QMetaType::fromType<Range>(), {kToPython, kFromPython});
}

} // namespace runebook::bridge
