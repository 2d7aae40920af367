#include "scripting/panel/ConsoleFont.h"

#include "scripting/panel/PanelSettings.h"

#include <QFontDatabase>

namespace runebook {

namespace {

constexpr int kSmallest = 7;
constexpr int kLargest = 40;

} // namespace

void ConsoleFont::followSetting()
{
    m_size = Settings::kMacroFontSize.value();
    Settings::kMacroFontSize.onChange(this, [this] {
        const int size = Settings::kMacroFontSize.value();
        const bool isUsable = size >= kSmallest && size <= kLargest;
        m_size = isUsable ? size : Settings::kMacroFontSize.fallback();
        m_font.reset();
        Q_EMIT changed();
    });
}

const QFont &ConsoleFont::font()
{
    if (!m_font) {
        m_font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        m_font->setPointSize(qBound(kSmallest, m_size, kLargest));
    }
    return *m_font;
}

} // namespace runebook
