#pragma once

#include "scripting/python/PythonValue.h"

#include <QMetaObject>
#include <optional>
#include <string_view>

namespace runebook::bridge {

/// A text property that objects keep as it was read from a file: scripts get at it without a text of the
/// framework being made of each value, as loops over very many records need it.
struct DirectText {
    int key; ///< what both functions are told of the property
    /// The text as UTF-8, without an address when it is absent; nothing when it is kept in another form, and
    /// the property has to be asked. Holds until the object changes.
    std::optional<std::string_view> (*read)(const void *object, int key);
    /// Does what the property's setter does and keeps nothing of \a text; null where setting is more than
    /// that.
    void (*write)(void *object, int key, const QString &text);
};

/// Tells how the property of a class of records is reached. Before any object of the class is met.
void registerDirectText(const QMetaObject &meta, const QByteArray &property, const DirectText &access);
/// How the property is reached, or null.
const DirectText *directText(const QMetaObject &meta, const QByteArray &property);

/// The text of the object at \a address as a str or None; null without an error set when the property has to
/// be asked.
PyObject *readDirectly(const DirectText &access, const void *address);
/// Whether writeDirectly() takes \a value.
bool isDirectText(const DirectText *access, PyObject *value);
/// Sets the text of the object at \a address; false with an error set when that fails.
bool writeDirectly(const DirectText &access, void *address, PyObject *value);

} // namespace runebook::bridge
