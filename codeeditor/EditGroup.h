#pragma once

#include <QTextCursor>

namespace runebook {

/// One user command is one undo step.
class EditGroup
{
public:
    explicit EditGroup(const QTextCursor &cursor) : m_cursor(cursor) { m_cursor.beginEditBlock(); }
    ~EditGroup() { m_cursor.endEditBlock(); }
    Q_DISABLE_COPY_MOVE(EditGroup)

private:
    QTextCursor m_cursor;
};

} // namespace runebook
