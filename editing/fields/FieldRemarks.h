#pragma once

#include "document/VXDocument.h"

#include <functional>
#include <optional>

namespace runebook {

/// What the user should hear about the text given to a field, and what may stand there instead.
struct FieldRemark {
    QString sentence;
    QString offer; ///< words for a button: "Write <! -- instead"; empty without an offer
    std::function<void()> takeOffer; ///< makes that change; may be empty
};

/// Why \a text was refused, with what may stand in its place.
FieldRemark remarkOnRefusal(VXDocument &document, const InfoList &infos, GlyphField field,
                            const QString &text, const Error &error);
/// What a file would not keep of the value that \a field of \a infos has now; nothing when it keeps all.
std::optional<FieldRemark> remarkOnValue(VXDocument &document, const InfoList &infos, GlyphField field);

} // namespace runebook
