#pragma once

#include "codeeditor/TextRange.h"

#include <QByteArray>

class VXCodeTextStorage;

namespace runebook {

/// The characters of \a range with their colours and fonts as Rich Text Format. Every character survives,
/// lone surrogates included. Colours are the given ones: the text may be pasted on any background.
QByteArray richTextFormat(const VXCodeTextStorage &storage, TextRange range);

} // namespace runebook
