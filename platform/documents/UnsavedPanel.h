#pragma once

#include "platform/documents/Document.h"

#include <QDialog>
#include <QPointer>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace runebook {

/// Asks about all documents with unsaved changes at once: a list with a tick for each that is to be saved.
class UnsavedPanel : public QDialog
{
    Q_OBJECT
public:
    explicit UnsavedPanel(const QList<Document *> &documents, QWidget *parent);

    /// Those with a tick, in the order of the list; what was closed meanwhile is left out.
    QList<Document *> toSave() const;

Q_SIGNALS:
    /// Save \a documents and close everything; the changes of the others are given up.
    void decided(const QList<runebook::Document *> &documents);

private:
    void showChoice();
    void decide(const QList<Document *> &documents);

    QList<QPointer<Document>> m_documents;
    QTreeWidget *m_list;
    QLabel *m_hint;
    QPushButton *m_save;
};

} // namespace runebook
