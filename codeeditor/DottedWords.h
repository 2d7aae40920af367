#pragma once

#include "codeeditor/TextRange.h"

#include <QStringView>

namespace runebook {

/// Words as a text of code has them: a dotted or underscored name is one word, blanks in a row are one, any
/// other character stands alone. Nothing reaches over a "\n".

/// The word around the character at \a index; empty at the end of the text.
TextRange wordRange(QStringView text, int index);

/// The start of the next word behind \a index, or of the word before it; blanks are skipped. A line's end
/// stops the way: from there the step leads over it.
int nextWordStart(QStringView text, int index);
int previousWordStart(QStringView text, int index);

/// The one component of a dotted word at \a index, or the dot itself.
TextRange dottedComponent(QStringView text, int index);

/// One step of word motion: like the two above, but stopping at the dots.
int nextComponent(QStringView text, int index);
int previousComponent(QStringView text, int index);

} // namespace runebook
