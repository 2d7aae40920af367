#pragma once

#include <QList>
#include <QString>

namespace runebook {

/// One name that is offered: what would be written, and what is known about it.
struct Completion {
    QString text; ///< with the dotted names in front of it
    QString kind; ///< one word for a person: "function", "class", "keyword" ...; may be empty
    QString signature; ///< of a function: "name(arguments)"; may be empty
    QString help; ///< its first sentence; may be empty

    bool operator==(const Completion &) const = default;
};

using CompletionList = QList<Completion>;

/// What somebody who knows live objects has to offer.
struct KnownNames {
    bool isKnown = false; ///< the object in front of the dot was found: no other names fit
    CompletionList names; ///< without what stands in front of them
};

} // namespace runebook
