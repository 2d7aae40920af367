#pragma once

#include "platform/documents/Document.h"

#include <QMessageBox>
#include <functional>

namespace runebook::SaveSheets {

/// A sheet of its own on \a parent, which deletes itself; all texts are shown as they stand.
QMessageBox *make(QMessageBox::Icon icon, const QString &text, const QString &more, QWidget *parent);

enum class Answer {
    Save, ///< as the user now knows it will be; also Retry after a failure
    SaveAs,
    Discard, ///< give the changes up and close
    Cancel
};
using Then = std::function<void(Answer answer)>;

/// Asks what must be known before \a document is saved to its own file: whether to write over what another
/// program has written, and whether it may come out differently than it was read. Each is one question, and
/// none when there is nothing to ask. \a then is not told when the document is gone.
void askBeforeSaving(Document &document, QWidget *parent, const Then &then);
/// Says why a save failed and what is safe where.
void showFailure(const Error &error, QWidget *parent, const Then &then);

} // namespace runebook::SaveSheets
