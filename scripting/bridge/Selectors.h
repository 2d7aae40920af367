#pragma once

#include <QByteArray>
#include <QList>

namespace runebook::bridge {

/// One name under which scripts call an operation.
struct Selector {
    QByteArray name; ///< "insertObject_inInfosAtIndex_"
    bool takesError = false; ///< its last label is "error"
    bool takesSender = false; ///< it has one label for an argument that the operation does not take

    friend bool operator==(const Selector &, const Selector &) = default;
};

/// The names of the operation \a name with \a arguments arguments, an out parameter for an error at its end
/// not counted: its own name, and its labels put apart in every way that its capitals allow, each followed
/// by "_". An operation that may fail is there with and without the label "error".
QList<Selector> selectorsOf(const QByteArray &name, int arguments, bool canFail);
/// The one among them that people write, for listings: \a parameters, the names of the arguments, tell where
/// labels end ("infoForKey_values_").
QByteArray usualSelector(const QByteArray &name, int arguments, const QList<QByteArray> &parameters = {});

} // namespace runebook::bridge
