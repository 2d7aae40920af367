#pragma once

#include "codeeditor/TextRange.h"

#include <QObject>
#include <optional>

class QPlainTextEdit;
class VXCodeTextStorage;

namespace runebook {

/// Braces that belong together in the code view: colours the one at the caret, the one in front of it first,
/// and its partner.
class BraceMarks : public QObject
{
public:
    /// For \a view, which shows \a storage and owns this.
    BraceMarks(QPlainTextEdit *view, VXCodeTextStorage *storage);

    /// To be called when the caret or the selection has moved.
    void update();
    /// The brace that belongs to the one at \a index, wherever it stands; nothing when there is none.
    std::optional<TextRange> partnerOf(int index) const;

private:
    TextRange selection() const;
    std::optional<TextRange> partnerWithin(int index, TextRange searched) const;
    void mark(int first, int second);

    QPlainTextEdit *m_view;
    VXCodeTextStorage *m_storage;
    TextRange m_marked; ///< the selection that the marks belong to
};

} // namespace runebook
