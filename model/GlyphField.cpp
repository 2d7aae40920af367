#include "model/GlyphField.h"

#include <QCoreApplication>
#include <array>

namespace runebook {

namespace {

constexpr std::array<QLatin1StringView, kFieldCount> kKeys {
    QLatin1StringView("name"),          QLatin1StringView("category"),     QLatin1StringView("subCategory"),
    QLatin1StringView("marks"),         QLatin1StringView("anchors"),      QLatin1StringView("unicodeLegacy"),
    QLatin1StringView("unicodes"),      QLatin1StringView("script"),       QLatin1StringView("production"),
    QLatin1StringView("sortName"),      QLatin1StringView("sortNameKeep"), QLatin1StringView("sortNameOld"),
    QLatin1StringView("altNames"),      QLatin1StringView("desc"),         QLatin1StringView("decompose"),
    QLatin1StringView("unicharString"), QLatin1StringView("direction"),    QLatin1StringView("case"),
    QLatin1StringView("index"),         QLatin1StringView("unicodeChar"),  QLatin1StringView("document"),
    QLatin1StringView("unicode"),
};

// In the order of the fields; null for those without a name of their own.
constexpr std::array<const char *, kFieldCount> kTitles {
    QT_TRANSLATE_NOOP("GlyphColumns", "Name"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Category"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Subcategory"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Accents"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Anchors"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Legacy Unicode"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Unicode"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Script"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Production Name"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Sort Name"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Second Sort Name"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Old Sort Name"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Alternate Names"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Description"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Decompose"),
    nullptr,
    QT_TRANSLATE_NOOP("GlyphColumns", "Direction"),
    QT_TRANSLATE_NOOP("GlyphColumns", "Case"),
    nullptr,
    QT_TRANSLATE_NOOP("GlyphColumns", "Glyph"),
    nullptr,
    nullptr,
};

} // namespace

QString titleOfField(GlyphField field)
{
    const char *title = kTitles[static_cast<std::size_t>(field)];
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
