#pragma once

#include "scripting/bridge/BridgeObject.h"

#include <QMetaObject>
#include <functional>

namespace runebook::bridge {

struct Method;
struct MethodGroup;

/// An object that scripts make belongs to them until the program has given it a parent: a document has
/// become one of the open ones, a view is shown in a window.
Instance ownedByScripts(QObject *made);

/// A class of the program as scripts see it: a Python type with one attribute for each property and each
/// selector, made from the class's meta-object when it is first needed.
class BridgedClass
{
public:
    using Factory = std::function<Instance()>;

    /// The class of \a meta, made on first call. Null with a Python error set when that fails.
    static const BridgedClass *forMetaObject(const QMetaObject &meta);
    /// The class that scripts know as \a name, or null. Known are classes that were registered or met, and
    /// those whose pointers the meta-object system knows.
    /// The names under which classes were registered or met so far.
    static QList<QByteArray> knownNames();
    static const BridgedClass *forName(const QByteArray &name);
    /// The class of a Python type or of its nearest base, or null for the classes of scripts.
    static const BridgedClass *forType(PyTypeObject *type);

    /// Makes the class known by its name before any object of it is met. \a factory makes what alloc().init()
    /// gives; without one a constructor that can be invoked without arguments does, and without that scripts
    /// cannot make objects.
    static void registerClass(const QMetaObject &meta, Factory factory = {});
    /// Adds operations to a class of the desktop framework: each function of \a operations that can be
    /// invoked becomes one of \a meta, with the object it is called on as its first argument. It takes the
    /// place of an operation or property of the same name. Before any object of the class is met; not owned.
    static void registerExtension(const QMetaObject &meta, QObject *operations);

public:
    const QMetaObject &metaObject() const { return m_meta; }
    PyTypeObject *type() const { return m_type; }
    QByteArray name() const;
    bool canMakeInstances() const { return static_cast<bool>(m_factory); }
    Instance makeInstance() const { return m_factory(); }
    /// An object for operations that are called on the class; empty when there can be none.
    const Instance &prototype() const;
    bool isGadget() const { return m_isGadget; }
    /// The functions that scripts can call on this class, those of its bases left out.
    std::vector<Method> allMethods() const;
    /// Calls one of the class's functions by its index within the class.
    void call(QMetaObject::Call what, void *address, int relativeIndex, void **arguments) const;

private:
    explicit BridgedClass(const QMetaObject &meta);
    ~BridgedClass();
    bool makeType();
    bool addGroups(std::vector<Method> methods);
    bool addDescription();
    bool addProperties();
    bool addSetters();
    std::vector<Method> ownMethods() const;
    std::vector<Method> extensionMethods() const;

    const QMetaObject &m_meta;
    const bool m_isGadget;
    PyTypeObject *m_type = nullptr;
    Factory m_factory;
    QByteArray m_typeName;
    std::vector<std::unique_ptr<MethodGroup>> m_groups;
    mutable Instance m_prototype;
};

} // namespace runebook::bridge
