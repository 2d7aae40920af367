#include "editing/fields/SignalColors.h"

namespace runebook::SignalColors {

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Base).lightness() < 128;
}

QColor error(const QPalette &palette)
{
    return isDark(palette) ? QColor(0xD1, 0x30, 0x38) : QColor(0xC6, 0x28, 0x28);
}

QColor warningText(const QPalette &palette)
{
    return isDark(palette) ? QColor(0xFF, 0xB4, 0x54) : QColor(0x9A, 0x4B, 0x00);
}

QColor removed(const QPalette &palette)
{
    return isDark(palette) ? QColor(0x7A, 0x2A, 0x2E) : QColor(0xFF, 0xD3, 0xD0);
}

QColor inserted(const QPalette &palette)
{
    return isDark(palette) ? QColor(0x1F, 0x5C, 0x36) : QColor(0xC4, 0xF0, 0xCF);
}

} // namespace runebook::SignalColors
