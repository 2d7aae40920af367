#pragma once

#include "document/VXDocument.h"

#include <QFrame>

class QLabel;
class QPushButton;

namespace runebook {

/// Says above the table that another program has changed, replaced, emptied or removed the document's file,
/// and lets the user choose without standing in the way. A document without changes reads its file again by
/// itself when the user wants it so (default "VXReloadChangedFiles").
class ChangedOnDisk : public QFrame
{
    Q_OBJECT
public:
    explicit ChangedOnDisk(VXDocument &document, QWidget *parent = nullptr);

    QString text() const;

Q_SIGNALS:
    /// A passing remark: the file was read again, or why it could not be.
    void remarked(const QString &text);

public: // the answers
    void keepMine();
    void reload();
    /// Shows the document beside what the file holds now.
    void compare();
    void saveAgain();

private:
    void fileHasChanged(FileWatch::Change change);
    void showChoice(FileWatch::Change change);
    QPushButton *addButton(const QString &text, void (ChangedOnDisk::*answer)());

    VXDocument &m_document;
    QLabel *m_label;
    QPushButton *m_reload;
    QPushButton *m_keep;
    QPushButton *m_compare;
    QPushButton *m_save;
};

} // namespace runebook
