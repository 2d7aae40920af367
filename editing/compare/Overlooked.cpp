#include "editing/compare/Overlooked.h"

#include "editing/compare/CompareSettings.h"
#include "editing/fields/GlyphColumns.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Overlooked)
};

} // namespace

CompareOptions overlookedOptions()
{
    CompareOptions options;
    options.ignoresCase = Settings::kComparesWithoutCase.value();
    options.ignoresSpaces = Settings::kComparesWithoutSpaces.value();
    for (const QString &key : Settings::kComparesWithoutFields.value()) {
        if (const std::optional<GlyphField> field = fieldForKey(key))
            options.ignoredFields |= bitOf(*field);
    }
    return options;
}

QString overlookedText()
{
    const CompareOptions options = overlookedOptions();
    QStringList words;
    if (options.ignoresCase)
        words << Texts::tr("case");
    if (options.ignoresSpaces)
        words << Texts::tr("spaces");
    for (const ComparedField &field : comparedFields()) {
        if (options.ignores(field.field))
            words << titleOf(field);
    }
    return words.isEmpty() ? QString() : Texts::tr("Overlooked: %1").arg(words.join(u", "_s));
}

void setOverlooked(const QString &key, bool isOverlooked)
{
    QStringList keys = Settings::kComparesWithoutFields.value();
    keys.removeAll(key);
    if (isOverlooked)
        keys << key;
    Settings::kComparesWithoutFields.setOrReset(keys);
}

} // namespace runebook
