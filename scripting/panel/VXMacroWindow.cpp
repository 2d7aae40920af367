#include "scripting/panel/VXMacroWindow.h"

#include "ui_VXMacroWindow_11.h"

#include <QApplication>
#include <QCloseEvent>

VXMacroWindow::VXMacroWindow(QWidget *parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::VXMacroWindow_11>())
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_QuitOnClose, false);
}

VXMacroWindow::~VXMacroWindow() = default;

void VXMacroWindow::saveDocument()
{
    QApplication::beep();
    Q_EMIT saveRefused();
}

void VXMacroWindow::exportFont() { }

void VXMacroWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        Q_EMIT becameKey();
    QMainWindow::changeEvent(event);
}

void VXMacroWindow::closeEvent(QCloseEvent *event)
{
    Q_EMIT closing();
    event->accept();
}
