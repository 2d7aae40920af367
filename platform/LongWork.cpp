#include "platform/LongWork.h"

#include "platform/Unattended.h"

namespace runebook {

namespace {

constexpr int kSteps = 1000;
constexpr int kPatienceMs = 400;

} // namespace

LongWork::LongWork(const QString &title, QWidget *parent)
{
    if (isUnattended())
        return;
    m_dialog = std::make_unique<QProgressDialog>(parent);
    // Nothing else may be edited half-way.
    m_dialog->setWindowModality(Qt::ApplicationModal);
    m_dialog->setLabelText(title.toHtmlEscaped());
    m_dialog->setMinimumDuration(kPatienceMs);
    m_dialog->setMaximum(kSteps);
    m_dialog->setValue(0);
    // Esc before the window has the keyboard's attention only hides it otherwise, and the work goes on
    // unseen.
    QObject::connect(m_dialog.get(), &QDialog::rejected, m_dialog.get(), &QProgressDialog::cancel);
}

bool LongWork::goOn(double part)
{
    if (!m_dialog)
        return true;
    m_dialog->setValue(qBound(1, static_cast<int>(part * kSteps), kSteps - 1));
    return !m_dialog->wasCanceled();
}

} // namespace runebook
