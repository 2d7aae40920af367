#pragma once

#include "document/VXDocument.h"

#include <QAbstractListModel>
#include <QItemSelectionModel>
#include <QPointer>
#include <optional>

namespace runebook {

/// Marks a document that was opened for a comparison alone and has no window: what was copied into it would
/// be lost, so the compare window only reads it.
void setOnlyToCompare(VXDocument &document);
/// Whether it is such a one. A window of its own makes it a document like any other.
bool isOnlyToCompare(const VXDocument *document);

/// The open documents of which a pop-up chooses one. Keeps the choice when its content is replaced.
class DocumentChoice : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int selectionIndex READ selectionIndex WRITE setSelectionIndex NOTIFY selectionIndexChanged)
public:
    using QAbstractListModel::QAbstractListModel;

    Q_INVOKABLE QList<QObject *> arrangedObjects() const;
    void setContent(const QList<VXDocument *> &documents);
    /// -1 while there is no document.
    Q_INVOKABLE int selectionIndex() const { return m_selectionIndex; }
    /// Does nothing for an index outside the list.
    Q_INVOKABLE void setSelectionIndex(int index);
    /// The chosen document alone, or nothing.
    Q_INVOKABLE QList<QObject *> selectedObjects() const;
    /// Null when there is none or when it was closed.
    VXDocument *document() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// Another index or another document under it.
    void selectionIndexChanged();

private:
    QList<QPointer<VXDocument>> m_documents;
    int m_selectionIndex = -1;
};

/// The keys found by a comparison, as the rows of a list with a selection.
class KeyList : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit KeyList(QObject *parent = nullptr);

    Q_INVOKABLE QStringList arrangedObjects() const { return m_keys; }
    /// Selects \a rows, or without them keeps those keys selected that are still there, else the first.
    void setContent(const QStringList &keys, std::optional<IndexSet> rows = {});
    Q_INVOKABLE QStringList selectedObjects() const;
    qsizetype selectedCount() const;
    /// Ascending.
    Q_INVOKABLE runebook::IndexSet selectionIndexes() const;
    /// False, and nothing changed, when an index is outside the list.
    Q_INVOKABLE bool setSelectionIndexes(const runebook::IndexSet &indexes);
    QItemSelectionModel *selectionModel() { return &m_selection; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    void selectionChanged();

private:
    IndexSet rowsOf(const QStringList &keys) const;
    void select(const IndexSet &rows);

    QStringList m_keys;
    QItemSelectionModel m_selection;
};

/// The records that a detail pane shows; all of them are selected.
class InfoChoice : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    Q_INVOKABLE InfoList arrangedObjects() const { return m_infos; }
    Q_INVOKABLE InfoList selectedObjects() const { return m_infos; }
    const InfoList &infos() const { return m_infos; }
    void setContent(InfoList infos) { m_infos = std::move(infos); }

private:
    InfoList m_infos;
};

} // namespace runebook
