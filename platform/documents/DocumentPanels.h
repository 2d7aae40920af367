#pragma once

#include "platform/documents/Document.h"

#include <QList>
#include <functional>

class QWidget;

namespace runebook {

/// The panels in which the user opens, saves and closes documents. They are sheets: nothing here waits in a
/// loop of its own; what comes after an answer is given as a function.
namespace DocumentPanels {

/// Asks for files and opens them.
void open(QWidget *parent);
/// Opens files as after a drop or from the list of recent ones; failures are shown in one sheet.
void openFiles(const QStringList &paths, QWidget *parent);
/// What is said while the file \a path is being opened.
QString openingTitle(const QString &path);
/// Saves to the document's file, asking for one when it has none. \a then is told whether it was saved.
void save(Document &document, QWidget *parent, std::function<void(bool saved)> then = {});
void saveAs(Document &document, QWidget *parent, std::function<void(bool saved)> then = {});
/// Reads the document's file again, asking first when changes would be lost.
void revert(Document &document, QWidget *parent);
/// Asks about unsaved changes, then closes. \a then is told whether the document was closed.
void close(Document &document, std::function<void(bool closed)> then = {});
/// Closes all documents. Of several with unsaved changes one panel asks what is saved; nothing is closed
/// unless all of that could be saved. \a then is told whether all are closed.
void closeAll(std::function<void(bool closed)> then);
/// Shows an error in a sheet on \a parent.
void present(const Error &error, QWidget *parent);

} // namespace DocumentPanels

} // namespace runebook
