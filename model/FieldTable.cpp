#include "model/FieldTable.h"

#include <QCoreApplication>

namespace runebook {

// Declared in GlyphField.h, so that few need the table.

namespace {

constexpr QLatin1StringView latin1(std::string_view text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

// Close together, as keys are looked up often.
constexpr auto kKeys = [] {
    std::array<QLatin1StringView, kFieldCount> keys;
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i] = latin1(rowOf(static_cast<GlyphField>(i)).key);
    return keys;
}();

} // namespace

QString titleOfField(GlyphField field)
{
    const char *title = rowOf(field).title;
    return title ? QCoreApplication::translate("GlyphColumns", title) : keyOfField(field);
}

QString keyOfField(GlyphField field)
{
    return kKeys[static_cast<std::size_t>(field)];
}

std::optional<GlyphField> fieldForKey(QStringView key)
{
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        if (key == kKeys[i])
            return static_cast<GlyphField>(i);
    }
    return {};
}

} // namespace runebook
