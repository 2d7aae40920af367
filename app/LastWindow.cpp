#include "app/LastWindow.h"

#include "platform/CallLater.h"
#include "platform/documents/DocumentController.h"

#include <QApplication>
#include <QWidget>
#include <algorithm>

namespace runebook {

LastWindow::LastWindow(QObject *parent) : QObject(parent)
{
    QApplication::setQuitOnLastWindowClosed(false);
    const auto lookLater = [this] { callLater(this, [this] { look(); }); };
    connect(&DocumentController::shared(), &DocumentController::documentsChanged, this, lookLater);
    connect(qApp, &QGuiApplication::lastWindowClosed, this, lookLater);
}

void LastWindow::look()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const bool isLeft = std::any_of(windows.begin(), windows.end(), [](const QWidget *window) {
        return window->isVisible() && window->testAttribute(Qt::WA_QuitOnClose);
    });
    if (!isLeft && DocumentController::shared().documentList().isEmpty())
        QApplication::quit();
}

} // namespace runebook
