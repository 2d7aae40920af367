#pragma once

#include <QObject>
#include <QPointer>
#include <memory>

namespace runebook::bridge {

/// What stands behind an object of a script: a record or value that is shared with it, or an object of the
/// program that may go away before it.
struct Instance {
    std::shared_ptr<void> value;
    QPointer<QObject> object;

    bool isEmpty() const { return !value && !object; }
};

/// An object that scripts make belongs to them until the program has given it a parent: a document has
/// become one of the open ones, a view is shown in a window.
Instance ownedByScripts(QObject *made);

} // namespace runebook::bridge
