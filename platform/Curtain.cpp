#include "platform/Curtain.h"

#include "platform/PlainLabel.h"
#include "platform/TurningWindows.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

Curtain::Curtain(const QString &title, QWidget *parent) : QDialog(parent)
{
    constexpr int kWidth = 320;
    setObjectName(u"workApart"_s);
    setWindowTitle(tr("Please wait"));
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

void Curtain::hang()
{
    TurningWindows::setCurtainMaker([](const QString &title, QObject *window) {
        auto curtain = std::make_unique<Curtain>(title, qobject_cast<QWidget *>(window));
        curtain->show();
        return curtain;
    });
}

} // namespace runebook
