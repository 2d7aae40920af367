#include "scripting/bridge/ScriptApplication.h"

#include "platform/DocumentController.h"

#include <QApplication>

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

QString ScriptApplication::version() const
{
    return QCoreApplication::applicationVersion();
}

} // namespace runebook
