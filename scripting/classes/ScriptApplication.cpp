#include "scripting/classes/ScriptApplication.h"

#include "platform/documents/Document.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentWindows.h"

#include <QApplication>
#include <QMenuBar>

namespace runebook {

namespace {

QPointer<QObject> &chosenObject()
{
    static QPointer<QObject> object;
    return object;
}

} // namespace

ScriptApplication &ScriptApplication::shared()
{
    static ScriptApplication application;
    return application;
}

QObject *ScriptApplication::object()
{
    return chosenObject() ? chosenObject().data() : &shared();
}

void ScriptApplication::setObject(QObject *application)
{
    chosenObject() = application;
}

QList<QObject *> ScriptApplication::orderedDocuments() const
{
    return DocumentController::shared().orderedDocuments();
}

QObject *ScriptApplication::keyWindow() const
{
    return QApplication::activeWindow();
}

QObject *ScriptApplication::mainMenu() const
{
    QList<QWidget *> windows {QApplication::activeWindow()};
    for (Document *document : DocumentController::shared().documentList())
        windows << DocumentWindows::of(*document);
    for (const QWidget *window : windows) {
        auto *bar = window ? window->findChild<QMenuBar *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
        if (bar)
            return bar;
    }
    return nullptr;
}

QString ScriptApplication::version() const
{
    return QCoreApplication::applicationVersion();
}

} // namespace runebook
