#include "app/RunWatchWindow.h"

#include "platform/Appearance.h"
#include "platform/PlainLabel.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(RunWatchWindow)
};

/// Ends \a program and waits until it is gone: its locks and its place as the one program have to be free.
void endProgram(pid_t program)
{
    ::kill(program, SIGKILL);
    while (::getppid() == program)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

void becomeProgram(const QString &sessionFile)
{
    const QByteArray program = QFile::encodeName(QCoreApplication::applicationFilePath());
    const QByteArray file = QFile::encodeName(sessionFile);
    ::execl(program.constData(), program.constData(), "--reopen", file.constData(), nullptr);
}

} // namespace

int showRunWatchWindow(const QString &sessionFile, const QString &name, const QString &since)
{
    const pid_t program = ::getppid();
    Appearance::shared().apply(); // it looks like a window of the program that it speaks for
    QApplication::setWindowIcon(QIcon(u":/icons/runebook.svg"_s));
    QMessageBox box;
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(Texts::tr("Script Still Running"));
    setPlainTexts(
        box, Texts::tr("“%1” has been running since %2, and Runebook cannot answer.").arg(name, since),
        Texts::tr(
            "It works inside of Python itself, where it cannot be stopped. You can wait for it, or end "
            "Runebook and open it again with the same windows. What was unsaved before the script began "
            "comes back; what the script has changed does not."));
    QPushButton *end = box.addButton(Texts::tr("&End and Reopen"), QMessageBox::DestructiveRole);
    QPushButton *wait = box.addButton(Texts::tr("&Wait"), QMessageBox::RejectRole);
    box.setDefaultButton(wait);
    box.setEscapeButton(wait);
    // A program that has ended by itself needs no window any more.
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &box, [&box, program] {
        if (::getppid() != program)
            box.reject();
    });
    look.start(500);
    box.exec();
    if (box.clickedButton() != end || ::getppid() != program)
        return 0;
    endProgram(program);
    becomeProgram(sessionFile);
    return 1;
}

} // namespace runebook
