#pragma once

#include <QMimeData>
#include <QObject>
#include <memory>

/// What a drag of table rows carries and allows, for those who drag without a mouse: the data are put in by
/// RSRTVArrayController::tableViewWriteRowsWithIndexesToPasteboard, and accepted from it.
class TableDrag : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit TableDrag(QObject *parent = nullptr) : QObject(parent) { }

    /// Null while nothing is dragged.
    const QMimeData *data() const { return m_data.get(); }
    void setData(std::unique_ptr<QMimeData> data) { m_data = std::move(data); }
    /// The types of the data.
    Q_INVOKABLE QStringList types() const { return m_data ? m_data->formats() : QStringList(); }
    /// The operations of Qt::DropAction that are allowed: copying alone while the user holds its modifier.
    Q_INVOKABLE int draggingSourceOperationMask() const { return m_mask; }
    Q_INVOKABLE void setDraggingSourceOperationMask(int mask) { m_mask = mask; }

private:
    std::unique_ptr<QMimeData> m_data;
    int m_mask = Qt::CopyAction | Qt::MoveAction;
};
