#include "scripting/panel/ConsoleFormats.h"

#include "codeeditor/CodeColors.h"
#include "codeeditor/KeywordTable.h"
#include "platform/Appearance.h"
#include "platform/PlainText.h"

#include <QPalette>
#include <QWidget>

namespace runebook::console {

using namespace Qt::StringLiterals;

namespace {

enum Property { IsEmphasis = QTextFormat::UserProperty + 1, LinkPath, LinkLine };

/// The red of the desktop's warnings, one for light windows and one for dark ones.
QColor systemRed(const QPalette &palette)
{
    return isDarkMode(palette) ? QColor(255, 69, 58) : QColor(255, 59, 48);
}

} // namespace

QTextCharFormat emphasisFormat(const QFont &bold, const QPalette &palette)
{
    QTextCharFormat format;
    format.setFont(bold);
    format.setForeground(readableColor(systemRed(palette), palette.color(QPalette::Base)));
    format.setProperty(IsEmphasis, true);
    return format;
}

QTextCharFormat linkFormat(const FileLink &link, const QPalette &palette)
{
    QTextCharFormat format;
    format.setAnchor(true);
    format.setForeground(readableColor(palette.color(QPalette::Link), palette.color(QPalette::Base)));
    format.setFontUnderline(true);
    format.setToolTip(escapedToolTip(link.path));
    format.setProperty(LinkPath, link.path);
    format.setProperty(LinkLine, link.line);
    return format;
}

bool isEmphasis(const QTextCharFormat &format)
{
    return format.boolProperty(IsEmphasis);
}

std::optional<FileLink> linkOf(const QTextCharFormat &format)
{
    if (!format.hasProperty(LinkPath))
        return std::nullopt;
    return FileLink {{}, format.stringProperty(LinkPath), format.stringProperty(LinkLine)};
}

QVariantMap attributesOf(const QTextCharFormat &format, const QWidget &view)
{
    const bool marked = isEmphasis(format);
    QVariantMap attributes {{fontAttributeName, marked ? format.font() : view.font()},
                            {foregroundColorAttributeName,
                             marked ? systemRed(view.palette()) : view.palette().color(QPalette::Text)}};
    if (const auto link = linkOf(format)) {
        attributes[linkAttributeName] = QStringList {link->path, link->line};
        attributes[u"NSToolTip"_s] = link->path;
    }
    return attributes;
}

} // namespace runebook::console
