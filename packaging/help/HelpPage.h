#pragma once

#include <QHash>
#include <QString>

namespace runebook {

/// What a page of the help is made from.
struct HelpSource {
    QString markdown; ///< the text of a file in the repository; its first heading is the page's title
    /// Names of Markdown files and of the pages that are made from them. A link to a file that is not named
    /// here becomes plain text: it would lead nowhere once the program is installed.
    QHash<QString, QString> pages;
};

/// The whole page, in UTF-8 when written: a title, a list of contents with a link for each heading of the
/// second and third level, and the text. Headings get the anchors that code hosts give them, so that links in
/// the Markdown file hold in both. It looks for nothing outside itself and suits light and dark. Empty when
/// cmark-gfm, which reads the Markdown, fails.
QString helpPage(const HelpSource &source);

/// The anchor of a heading with this text: small letters, digits, "-" and "_"; blanks become "-".
QString headingAnchor(const QString &heading);

} // namespace runebook
