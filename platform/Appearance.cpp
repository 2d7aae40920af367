#include "platform/Appearance.h"

#include "platform/PlatformSettings.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPlainTextEdit>
#include <QProxyStyle>
#include <QStyleOption>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMenuOutlineLightness = 140; // of the lines in a window, in a hundred

struct Colors {
    QRgb window, base, alternate, text, hint, dimmed, button, highlight, highlightedText, link, mid;
};

constexpr Colors kLight {0xfff3f3f4, 0xffffffff, 0xfff7f7f9, 0xff1d1d1f, 0xff6c6c72, 0xff8a8a8f,
                         0xfffbfbfc, 0xff2f6fde, 0xffffffff, 0xff1a5fd0, 0xffc9c9ce};
constexpr Colors kDark {0xff2a2a2d, 0xff1f1f22, 0xff252529, 0xffe9e9ec, 0xff9a9aa2, 0xff8d8d94,
                        0xff38383d, 0xff3a78e0, 0xffffffff, 0xff7fb0ff, 0xff4a4a50};

/// Half way between the text and what is behind it: an outline that is seen in both palettes.
QColor outlineColor(const QPalette &palette, QPalette::ColorGroup group)
{
    const QColor text = palette.color(group, QPalette::Text);
    const QColor base = palette.color(group, QPalette::Base);
    return QColor((text.red() + base.red()) / 2, (text.green() + base.green()) / 2,
                  (text.blue() + base.blue()) / 2);
}

/// Draws the outline of a box or ring of \a option where Fusion has drawn its own.
void drawIndicatorOutline(QPainter &painter, const QStyleOption &option, bool isRound)
{
    const auto group = option.state & QStyle::State_Enabled ? QPalette::Active : QPalette::Disabled;
    painter.save();
    painter.setPen(outlineColor(option.palette, group));
    painter.setBrush(Qt::NoBrush);
    if (isRound) {
        const int width = option.rect.width();
        const qreal radius = (width + (width + 1) % 2) / 2.0 - 1;
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawEllipse(QPointF(option.rect.center() + QPoint(1, 1)), radius, radius);
    } else {
        painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
    }
    painter.restore();
}

/// The outline of a field of \a option over that of Fusion, which is as dark as a dark window is, and which a
/// field of several lines keeps when it has the keyboard.
void drawFieldOutline(QPainter &painter, const QStyleOption &option, bool showsFocus)
{
    constexpr qreal kRadius = 2;
    constexpr int kPart = 42; // of a hundred, from the base to the text: three to one against a dark window
    const bool hasFocus = option.state & QStyle::State_HasFocus;
    if (hasFocus ? !showsFocus : !isDarkMode(option.palette))
        return;
    const QColor text = option.palette.color(QPalette::Text);
    const QColor base = option.palette.color(QPalette::Base);
    const auto between = [](int from, int to) { return from + (to - from) * kPart / 100; };
    painter.save();
    painter.setPen(hasFocus ? option.palette.color(QPalette::Highlight)
                            : QColor(between(base.red(), text.red()), between(base.green(), text.green()),
                                     between(base.blue(), text.blue())));
    painter.setBrush(Qt::NoBrush);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    painter.restore();
}

/// Fusion's own is as dark as what lies behind the menu.
void drawMenuOutline(QPainter &painter, const QStyleOption &option)
{
    painter.save();
    painter.setPen(option.palette.color(QPalette::Mid).lighter(kMenuOutlineLightness));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
    painter.restore();
}

/// Fusion without pictures on the buttons of dialogs, which carry their words, and with outlines of boxes to
/// check and of fields that can be told from a dark window.
class PlainStyle final : public QProxyStyle
{
public:
    PlainStyle() : QProxyStyle(u"Fusion"_s) { }
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override
    {
        switch (hint) {
        case SH_DialogButtonBox_ButtonsHaveIcons:
            return 0;
        case SH_Menu_Scrollable:
            return 1; // one that is longer than the screen is one column still
        default:
            return QProxyStyle::styleHint(hint, option, widget, data);
        }
    }
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (element == PE_PanelMenu && isDarkMode(option->palette))
            drawMenuOutline(*painter, *option);
        const State focused = State_HasFocus | State_KeyboardFocusChange;
        const bool isRound = element == PE_IndicatorRadioButton;
        if ((isRound || element == PE_IndicatorCheckBox) && (option->state & focused) != focused)
            drawIndicatorOutline(*painter, *option, isRound);
        const bool isText = element == PE_Frame && qobject_cast<const QPlainTextEdit *>(widget);
        if (isText || element == PE_FrameLineEdit)
            drawFieldOutline(*painter, *option, isText);
    }
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override
    {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        const auto *box = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
        if (control == CC_SpinBox && box && box->frame)
            drawFieldOutline(*painter, *option, true);
    }
};

QPalette paletteOf(const Colors &colors)
{
    QPalette palette;
    palette.setColor(QPalette::Window, colors.window);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.base);
    palette.setColor(QPalette::AlternateBase, colors.alternate);
    palette.setColor(QPalette::ToolTipBase, colors.button);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.hint);
    palette.setColor(QPalette::Button, colors.button);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, colors.highlight);
    palette.setColor(QPalette::HighlightedText, colors.highlightedText);
    palette.setColor(QPalette::Link, colors.link);
    palette.setColor(QPalette::Light, QColor(colors.window).lighter(120));
    palette.setColor(QPalette::Midlight, QColor(colors.window).lighter(108));
    palette.setColor(QPalette::Mid, colors.mid);
    palette.setColor(QPalette::Dark, QColor(colors.mid).darker(130));
    palette.setColor(QPalette::Shadow, QColor(colors.mid).darker(200));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colors.dimmed);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colors.mid);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, colors.mid);
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, colors.text);
    return palette;
}

} // namespace

Appearance::Appearance() = default;

Appearance &Appearance::shared()
{
    static Appearance appearance;
    return appearance;
}

Appearance::Choice Appearance::choice() const
{
    const QString word = Settings::kAppearance.value();
    return word == "dark"_L1 ? Dark : word == "light"_L1 ? Light : System;
}

void Appearance::setChoice(Choice choice)
{
    if (choice == System)
        Settings::kAppearance.reset();
    else
        Settings::kAppearance.set(choice == Dark ? u"dark"_s : u"light"_s);
    apply();
    Q_EMIT changed();
}

void Appearance::apply()
{
    static const QPalette systemPalette = QApplication::palette(); // before anything here changed it
    // One style on every desktop: its pieces are known to fit the program's own drawing in both palettes.
    static bool isStyled = false;
    if (!std::exchange(isStyled, true))
        QApplication::setStyle(new PlainStyle);
    const Choice chosen = choice();
    const bool dark = chosen == Dark || (chosen == System && isDarkMode(systemPalette));
    QApplication::setPalette(paletteOf(dark ? kDark : kLight));
}

bool isDarkMode(const QPalette &palette)
{
    return palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
}

} // namespace runebook
