#pragma once

#include "document/VXDocument.h"
#include "editing/fields/LongValues.h"

#include <QJsonArray>
#include <QJsonObject>

namespace runebook {

/// What a text that is being typed into \a field of \a infos needs to be put there later: after a crash. The
/// records are told by place, and the first by its name as well.
QJsonObject pendingText(const VXDocument &document, const InfoList &infos, GlyphField field,
                        const QString &text);
/// The same for what was edited in a long text: only the edits and the length of what they were made in are
/// kept.
QJsonObject pendingEdits(const VXDocument &document, const InfoList &infos, GlyphField field,
                         const LongText &text);
/// Puts such texts into the records by the rules for typed ones, an undo step for each. The answer has a
/// sentence, with the text in it, for each that cannot be put there.
QStringList takePendingTexts(VXDocument &document, const QJsonArray &texts);

} // namespace runebook
