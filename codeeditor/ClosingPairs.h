#pragma once

#include "codeeditor/EditableCode.h"

#include <QList>
#include <QTextCursor>

namespace runebook {

/// Brackets and quotes that close themselves while code is typed, by the rules of PairTyping: knows the
/// closers that came by themselves and were not reached yet.
class ClosingPairs
{
public:
    /// \a code must live as long.
    explicit ClosingPairs(EditableCode &code) : m_code(code) { }

    void setEnabled(bool isEnabled) { m_isEnabled = isEnabled; }
    /// A closer that stands there by itself is typed over; an opener brings its closer along. False: the
    /// character is typed as any other.
    bool type(QChar typed);
    /// Deletes both halves of a pair that closed itself and is still empty.
    bool deletePair();

private:
    bool typeOver(QChar typed);
    bool isInside(int place) const;
    void forgetClosers();

    EditableCode &m_code;
    bool m_isEnabled = false;
    QList<QTextCursor> m_closers; ///< outermost first
};

} // namespace runebook
