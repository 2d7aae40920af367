#pragma once

#include "editing/values/ValuesModel.h"

#include <QStyledItemDelegate>

namespace runebook {

/// Draws values: in front of one that is chosen a tick, of one that is left out a cross and a line through
/// it; beside the number of records a bar as long as its share of the largest.
class ValueDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

Q_SIGNALS:
    void editorOpened() const;
    void editorClosed() const;
};

} // namespace runebook
