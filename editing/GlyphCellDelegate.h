#pragma once

#include <QStyledItemDelegate>

class VXDocument;

namespace runebook {

/// Paints and edits the cells of the table of records. What was typed is committed only when it differs from
/// what stood there; fields with a vocabulary offer its words.
class GlyphCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    GlyphCellDelegate(VXDocument &document, QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    /// Shows the whole text of a cell that has room for a part of it only.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

private:
    VXDocument &m_document;
};

} // namespace runebook
