#include "platform/TurningWindows.h"

#include "platform/Background.h"
#include "platform/PlainText.h"
#include "platform/Unattended.h"

#include <QApplication>
#include <QDialog>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QThread>
#include <QVBoxLayout>
#include <chrono>
#include <future>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 kMuch = 32 << 20; // what takes a tenth of a second and more

TurningWindows *current = nullptr; // of the main thread, as what follows
std::shared_future<void> workApart; ///< valid while it is waited for

bool isMainThread()
{
    return QCoreApplication::instance() && QThread::currentThread() == QCoreApplication::instance()->thread();
}

/// Stays until the work is done, whatever is pressed.
class Curtain : public QDialog
{
public:
    Curtain(const QString &title, QWidget *parent) : QDialog(parent)
    {
        constexpr int kWidth = 320;
        setObjectName(u"workApart"_s);
        setWindowTitle(QCoreApplication::translate("TurningWindows", "Please wait"));
        setWindowModality(Qt::ApplicationModal);
        setAttribute(Qt::WA_QuitOnClose, false);
        setWindowFlag(Qt::WindowCloseButtonHint, false);
        auto *layout = new QVBoxLayout(this);
        auto *label = plainLabel(title, this);
        label->setWordWrap(true);
        auto *bar = new QProgressBar(this);
        bar->setRange(0, 0); // how far a disk has come, nobody can tell
        bar->setTextVisible(false);
        bar->setAccessibleName(title);
        bar->setMinimumWidth(kWidth);
        layout->addWidget(label);
        layout->addWidget(bar);
    }
    void reject() override { }
};

} // namespace

TurningWindows::TurningWindows(const QString &title, QWidget *parent) : m_title(title), m_parent(parent)
{
    if (!current && !isUnattended() && qobject_cast<QApplication *>(QCoreApplication::instance()))
        current = this;
}

TurningWindows::~TurningWindows()
{
    if (current == this)
        current = nullptr;
}

bool TurningWindows::areTurning()
{
    return workApart.valid();
}

void TurningWindows::waitForWork()
{
    constexpr std::chrono::seconds kLongest {2};
    if (workApart.valid())
        workApart.wait_for(kLongest);
}

void TurningWindows::turnUntilDone(const std::function<void()> &work)
{
    Curtain curtain(m_title, m_parent);
    curtain.show();
    QEventLoop loop;
    const auto promise = std::make_shared<std::promise<void>>();
    workApart = promise->get_future().share();
    runApart([&work, promise, loop = QPointer<QEventLoop>(&loop)] {
        std::exception_ptr thrown;
        try {
            work();
        } catch (...) {
            thrown = std::current_exception();
        }
        runOnMainThread([loop] {
            if (loop)
                loop->quit();
        });
        if (thrown)
            promise->set_exception(thrown);
        else
            promise->set_value();
    });
    loop.exec();
    // Of a program that is ending the loop comes back at once.
    std::exchange(workApart, {}).get();
}

void doApart(qint64 bytes, const std::function<void()> &work)
{
    if (bytes < kMuch || !isMainThread() || !current || TurningWindows::areTurning())
        work();
    else
        current->turnUntilDone(work);
}

} // namespace runebook
