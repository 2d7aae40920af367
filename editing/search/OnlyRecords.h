#pragma once

#include "platform/predicates/Predicate.h"

#include <optional>

namespace runebook {

/// What "--only TEXT" asks of records: the name of a saved filter; a filter as it is typed; else a search as
/// the empty search field makes it, in name, code point and production name. No predicate asks nothing;
/// nothing and an error for a text that begins as a filter and is none.
struct OnlyRecords {
    std::optional<Predicate> predicate;

    [[nodiscard]] static std::optional<OnlyRecords> of(const QString &text, Error *error);
};

} // namespace runebook
