#pragma once

#include "editing/fields/FieldRemarks.h"
#include "platform/Error.h"

class QWidget;
class RSRTVArrayController;
class VXDocument;
class VXSearchField;

namespace runebook {

class CurrentFilter;
class DetailPane;
class GlyphTableView;
class MessageBar;

/// What a document window is made of, for the features that act on it. Nothing is owned; all of it lives as
/// long as the window.
struct WindowParts {
    QWidget &window;
    VXDocument &document;
    RSRTVArrayController &list;
    GlyphTableView &table;
    DetailPane &pane;
    VXSearchField &searchField;
    MessageBar &messages;
    CurrentFilter &filter; ///< what rows have to meet besides the search

    /// Gives what is being typed in the table and the pane to the records. False, with the reason, when a
    /// field refuses its text: it keeps it, with the focus, and says why.
    bool commitEditing(Error *refusal = nullptr) const;
    /// Says it in passing.
    void showMessage(const QString &text) const;
    /// The same with what may be done about it.
    void showRemark(const FieldRemark &remark) const;
};

} // namespace runebook
