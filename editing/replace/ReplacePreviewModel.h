#pragma once

#include "editing/replace/FindReplace.h"

#include <QAbstractTableModel>

namespace runebook {

/// The first changes of a replacement as rows: the record's name, the field before, the field after. Long
/// texts are shown from shortly before the first change on, and no further than a line can hold.
class ReplacePreviewModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, BeforeColumn, AfterColumn, ColumnCount };

    explicit ReplacePreviewModel(QObject *parent = nullptr) : QAbstractTableModel(parent) { }
    void setPreviews(std::vector<ReplacePreview> previews);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    std::vector<ReplacePreview> m_previews;
};

} // namespace runebook
