#pragma once

#include "document/VXDocument.h"

#include <QFrame>
#include <QTimer>

class QLabel;
class QPushButton;

namespace runebook {

/// Says above the table that another program has changed, replaced, emptied or removed the document's file,
/// and lets the user choose without standing in the way. A document without changes reads its file again by
/// itself, once the file has been quiet for a second and if it reads without problems, unless the user does
/// not want that (default "VXReloadChangedFiles").
class ChangedOnDisk : public QFrame
{
    Q_OBJECT
public:
    explicit ChangedOnDisk(VXDocument &document, QWidget *parent = nullptr);

    /// Reloading by itself is the usual way.
    static void registerDefaults();

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
    void reloadWhenQuiet();
    void noteReloaded();
    /// \a reason: why the file was not reloaded by itself.
    void showChoice(FileWatch::Change change, const QString &reason = {});
    QPushButton *addButton(const QString &text, void (ChangedOnDisk::*answer)());

    VXDocument &m_document;
    QTimer m_quiet; ///< since the last change of the file
    QLabel *m_label;
    QPushButton *m_reload;
    QPushButton *m_keep;
    QPushButton *m_compare;
    QPushButton *m_save;
};

} // namespace runebook
