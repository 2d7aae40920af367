#include "scripting/panel/RunIndicator.h"

#include "platform/PlainLabel.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptRun.h"

#include <QAccessible>
#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace runebook {

namespace {

constexpr qint64 kRefusalShownMs = 2'000;

} // namespace

RunIndicator::RunIndicator(Stop stop, QWidget *parent) : QWidget(parent), m_label(plainLabel({}, this))
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_label);
    m_label->setAccessibleName(tr("State of the script"));
    RunPump &pump = RunPump::shared();
    if (stop == Stop::WithButton) {
        auto *button = new QToolButton(this);
        button->setText(tr("Stop"));
        button->setAccessibleName(tr("Stop the script"));
        button->setToolTip(tr("Stop the script (Ctrl+.)"));
        row->addWidget(button);
        connect(button, &QToolButton::clicked, &pump, &RunPump::stop);
        pump.addStopControl(button);
    }
    connect(&pump, &RunPump::runStarted, this, &RunIndicator::showRun);
    connect(&pump, &RunPump::refused, this, &RunIndicator::showRefusal);
    connect(&pump, &RunPump::pumped, this, &RunIndicator::look);
    connect(&pump, &RunPump::runEnded, this, &QWidget::hide);
    hide();
}

QString RunIndicator::text() const
{
    return m_label->text();
}

void RunIndicator::showRun()
{
    m_sinceRefusal.invalidate();
    m_label->setBackgroundRole(QPalette::NoRole);
    m_label->setForegroundRole(QPalette::NoRole);
    m_label->setAutoFillBackground(false);
    const QString name = ScriptRun::currentName();
    m_label->setText(name.isEmpty() ? tr("Running…") : tr("Running “%1”…").arg(name));
    show();
}

void RunIndicator::showRefusal()
{
    if (!window()->isActiveWindow())
        return;
    if (!m_sinceRefusal.isValid())
        QApplication::beep();
    m_sinceRefusal.start();
    m_label->setText(tr("Not while a script runs: wait, or stop it with Ctrl+."));
    m_label->setBackgroundRole(QPalette::Highlight);
    m_label->setForegroundRole(QPalette::HighlightedText);
    m_label->setAutoFillBackground(true);
    QAccessibleEvent alert(m_label, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void RunIndicator::look()
{
    // No timer: those wait for the end of the run.
    if (m_sinceRefusal.isValid() && m_sinceRefusal.elapsed() >= kRefusalShownMs)
        showRun();
}

} // namespace runebook
