#pragma once

#include "platform/Error.h"

#include <QLineEdit>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>

class RSRTVArrayController;

namespace runebook {

/// Paints and edits the cells of the table of records. What was typed is committed only when it differs from
/// what stood there; a text that is refused stays in its open editor. Fields with a vocabulary offer its
/// words.
class GlyphCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    static constexpr int kMargin = 4; ///< left and right of the text, as the header has it

    GlyphCellDelegate(RSRTVArrayController &controller, QObject *parent);

    /// The editor of the cell that is being edited, or null.
    QLineEdit *editor() const { return m_editor; }
    /// Whether it holds something that is not in the record yet.
    bool hasPendingText() const;
    /// Puts back what the cell holds; the editor stays open.
    void revertEditor();
    /// Gives what is being typed to the record and closes the editor. False, an error and a word at the cell
    /// when the text is refused; the editor stays open then.
    bool commitEditor(Error *refusal = nullptr);

    /// Opens the sheet for a value that is too long for a cell; false when it is not.
    bool editElsewhere(const QModelIndex &index) const;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    /// Shows the whole text of a cell that has room for a part of it only, or where the list controller's
    /// delegate wants it.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool paintAsAsked(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void showViewAsAsked(const QModelIndex &index) const;
    Error objection() const;
    void sayAtCell(const QString &text) const;

    RSRTVArrayController &m_controller;
    mutable QPointer<QLineEdit> m_editor;
    mutable QPersistentModelIndex m_edited;
};

} // namespace runebook
