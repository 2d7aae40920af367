#pragma once

#include <QString>
#include <QStringView>

namespace runebook {

/// \a html, from anywhere, as a text with structure and nothing else: paragraphs, headings, lists, emphasis,
/// code and links to web and mail addresses and within the page. Scripts, styles, pictures, forms and
/// whatever else is not known go; tables become lines. Nesting, the number of elements and the length are
/// bounded, so that laying it out is quick whatever it was. Linear.
QString safeHtml(QStringView html);

} // namespace runebook
