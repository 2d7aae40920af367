#include "model/GlyphField.h"

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

} // namespace

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
