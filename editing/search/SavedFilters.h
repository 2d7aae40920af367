#pragma once

#include "editing/search/RecordFilter.h"

#include <QStringList>

namespace runebook {

/// The filters that the user has given names, shared by all windows and kept in the user default
/// "SavedFilters".
class SavedFilters
{
public:
    /// As people order them.
    static QStringList names();
    /// Null for a name that there is not.
    static QString textOf(const QString &name);
    /// Takes the place of one with that name.
    static void save(const QString &name, const QString &text);
    static void rename(const QString &from, const QString &to);
    static void remove(const QString &name);
    /// The one with that name, or what the text says as a filter; nothing and an error for what is neither.
    [[nodiscard]] static std::optional<RecordFilter> find(const QString &nameOrText, Error *error = nullptr);
};

} // namespace runebook
