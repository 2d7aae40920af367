#pragma once

#include "platform/documents/Document.h"

#include <functional>

namespace runebook::LossSheet {

/// Lists what a save of \a document as \a type would not keep and asks what to do: fix it, go to a record,
/// save all the same where only the values themselves would be lost, or leave it. \a then is told whether to
/// save, at once when there is nothing to ask; it is not told when the document is gone.
void ask(Document &document, const QString &type, QWidget *parent,
         const std::function<void(bool mayBeSaved)> &then);

} // namespace runebook::LossSheet
