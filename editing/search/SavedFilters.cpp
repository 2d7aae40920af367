#include "editing/search/SavedFilters.h"

#include "editing/search/SearchSettings.h"

#include <algorithm>

namespace runebook {

QStringList SavedFilters::names()
{
    QStringList names = Settings::kSavedFilters.value().keys();
    std::sort(names.begin(), names.end(),
              [](const QString &a, const QString &b) { return QString::localeAwareCompare(a, b) < 0; });
    return names;
}

QString SavedFilters::textOf(const QString &name)
{
    return Settings::kSavedFilters.value().value(name).toString();
}

void SavedFilters::save(const QString &name, const QString &text)
{
    QVariantMap filters = Settings::kSavedFilters.value();
    filters.insert(name, text);
    Settings::kSavedFilters.set(filters);
}

void SavedFilters::rename(const QString &from, const QString &to)
{
    QVariantMap filters = Settings::kSavedFilters.value();
    filters.insert(to, filters.take(from));
    Settings::kSavedFilters.set(filters);
}

void SavedFilters::remove(const QString &name)
{
    QVariantMap filters = Settings::kSavedFilters.value();
    filters.remove(name);
    Settings::kSavedFilters.setOrReset(filters);
}

std::optional<RecordFilter> SavedFilters::find(const QString &nameOrText, Error *error)
{
    const QString saved = textOf(nameOrText);
    return RecordFilter::parse(saved.isNull() ? nameOrText : saved, error);
}

} // namespace runebook
