#pragma once

#include <QByteArray>
#include <QString>

namespace runebook {

/// The bytes of a font file (TrueType or OpenType) with another family name, so that the font can stand
/// beside all others whatever is installed. Empty when \a font is of another kind or damaged.
QByteArray fontWithFamily(const QByteArray &font, const QString &family);

} // namespace runebook
