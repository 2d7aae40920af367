#pragma once

#include "scripting/bridge/Instance.h"
#include "scripting/python/PythonABI.h"

#include <QList>
#include <QMetaObject>
#include <QMetaType>
#include <functional>

namespace runebook::bridge {

class BridgedClass;

/// Makes the Python types of classes: what the classes themselves know nothing of. Told once, by whoever
/// makes their attributes.
struct TypeMaker {
    /// A type for \a made, on top of \a base, which is null for the root of all. Null with a Python error set
    /// when that fails.
    PyTypeObject *(*makeType)(const BridgedClass &made, PyTypeObject *base);
    /// Gives the new type its attributes; false with a Python error set when that fails.
    bool (*addAttributes)(const BridgedClass &made);
};

/// A class of the program as scripts see it: its meta-object and a Python type, which is made when it is
/// first needed. Guarded by the interpreter's lock, except that classes are registered before it starts.
class BridgedClass
{
public:
    using Factory = std::function<Instance()>;

    /// The class of \a meta, made on first call. Null with a Python error set when that fails.
    static const BridgedClass *forMetaObject(const QMetaObject &meta);
    /// The class that scripts know as \a name, or null. Known are classes that were registered or met, and
    /// those whose pointers the meta-object system knows.
    static const BridgedClass *forName(const QByteArray &name);
    /// The class of a Python type or of its nearest base, or null for the classes of scripts.
    static const BridgedClass *forType(PyTypeObject *type);
    /// The names under which classes were registered or met so far.
    static QList<QByteArray> knownNames();

public: // registering
    /// Makes the class known by its name before any object of it is met. \a factory makes what alloc().init()
    /// gives; without one a constructor that can be invoked without arguments does, and without that scripts
    /// cannot make objects. \a variantType: as what its objects stand in a QVariant, where they are records.
    static void registerClass(const QMetaObject &meta, Factory factory = {}, QMetaType variantType = {});
    /// Adds operations to a class of the desktop framework: each function of \a operations that can be
    /// invoked becomes one of \a meta, with the object it is called on as its first argument. It takes the
    /// place of an operation or property of the same name. Before any object of the class is met; not owned.
    static void registerExtension(const QMetaObject &meta, QObject *operations);
    static void setTypeMaker(const TypeMaker &maker);
    /// The type of no class of the program, on which all others stand: where forType() ends.
    static void setRootType(PyTypeObject *type);

public:
    const QMetaObject &metaObject() const { return m_meta; }
    PyTypeObject *type() const { return m_type; }
    QByteArray name() const;
    /// Invalid when objects of the class cannot stand in a QVariant.
    QMetaType variantType() const { return m_variantType; }
    bool canMakeInstances() const { return static_cast<bool>(m_factory); }
    Instance makeInstance() const { return m_factory(); }
    /// An object for operations that are called on the class; empty when there can be none.
    const Instance &prototype() const;
    bool isGadget() const { return m_isGadget; }
    /// The objects whose functions extend the class.
    QList<QObject *> extensions() const;
    /// Calls one of the class's functions by its index within the class.
    void call(QMetaObject::Call what, void *address, int relativeIndex, void **arguments) const;

private:
    explicit BridgedClass(const QMetaObject &meta);
    ~BridgedClass() = default;
    bool makeType();

    const QMetaObject &m_meta;
    const bool m_isGadget;
    PyTypeObject *m_type = nullptr;
    QMetaType m_variantType;
    Factory m_factory;
    mutable Instance m_prototype;
};

} // namespace runebook::bridge
