#include "codeeditor/CodeColors.h"

#include <cmath>

namespace runebook {

namespace {

constexpr double kReadableContrast = 4.5;

double linearComponent(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double relativeLuminance(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return 0.2126 * linearComponent(rgb.redF()) + 0.7152 * linearComponent(rgb.greenF())
        + 0.0722 * linearComponent(rgb.blueF());
}

QColor blend(const QColor &front, const QColor &back, float share)
{
    const auto mix = [share](float a, float b) { return a * share + b * (1 - share); };
    return QColor::fromRgbF(mix(front.redF(), back.redF()), mix(front.greenF(), back.greenF()),
                            mix(front.blueF(), back.blueF()));
}

/// What a colour becomes in eight bits a component, as it is painted: the contrast must hold there.
QColor asPainted(const QColor &color)
{
    return QColor::fromRgb(color.rgb());
}

} // namespace

QColor keywordColor()
{
    return QColor::fromRgbF(0.0F, 0.55F, 0.8F);
}
QColor scriptingObjectColor()
{
    return QColor::fromRgbF(0.2F, 0.4F, 0.16F);
}
QColor builtinColor()
{
    return QColor::fromRgbF(0.5F, 0.28F, 0.0F);
}
QColor quotedStringColor()
{
    return QColor::fromRgbF(0.88F, 0.24F, 0.27F);
}
QColor numberColor()
{
    return QColor::fromRgbF(0.0F, 0.63F, 0.9F);
}

QColor secondaryLabelColor(const QPalette &palette)
{
    const QColor base = palette.color(QPalette::Base);
    return readableColor(blend(palette.color(QPalette::Text), base, 0.6F), base);
}

QColor tertiaryLabelColor(const QPalette &palette)
{
    return blend(palette.color(QPalette::Text), palette.color(QPalette::Base), 0.3F);
}

double contrastRatio(const QColor &a, const QColor &b)
{
    const double first = relativeLuminance(a);
    const double second = relativeLuminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor readableColor(const QColor &color, const QColor &background)
{
    if (contrastRatio(asPainted(color), background) >= kReadableContrast)
        return color;
    // Black reads better than white on every background above this luminance.
    const bool darken = relativeLuminance(background) > 0.179;
    const QColor hsl = color.toHsl();
    const float hue = std::max(hsl.hslHueF(), 0.0F); // -1 for greys
    float near = hsl.lightnessF();
    float far = darken ? 0.0F : 1.0F;
    const auto at = [&](float lightness) {
        return asPainted(QColor::fromHslF(hue, hsl.hslSaturationF(), lightness).toRgb());
    };
    constexpr int kSteps = 12; // finer than eight bits can show
    for (int i = 0; i < kSteps; ++i) {
        const float middle = (near + far) / 2;
        (contrastRatio(at(middle), background) >= kReadableContrast ? far : near) = middle;
    }
    return at(far);
}

} // namespace runebook
