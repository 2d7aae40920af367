#pragma once

#include "editing/fields/MarkedText.h"

#include <QStyledItemDelegate>

namespace runebook {

/// Draws one line of plain text with marked parts: on a tint, and struck out where text goes, so that the
/// difference does not hang on the colour alone.
class MarkedTextDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    enum class Mark { Removed, Inserted };

    explicit MarkedTextDelegate(Mark mark, QObject *parent = nullptr)
        : QStyledItemDelegate(parent), m_mark(mark)
    {
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

private:
    Mark m_mark;
};

} // namespace runebook
