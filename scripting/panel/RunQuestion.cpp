#include "scripting/panel/RunQuestion.h"

#include "platform/CallLater.h"
#include "platform/Error.h"
#include "platform/MessageBar.h"
#include "platform/documents/Document.h"
#include "platform/documents/DocumentController.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/RunSummary.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/RunSteps.h"

#include <QBoxLayout>
#include <QLocale>
#include <QMainWindow>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// A bar of its own below the window's, which may have something to say, too.
MessageBar *makeBar(QMainWindow &window)
{
    auto *usual = window.findChild<MessageBar *>();
    auto *column = usual ? qobject_cast<QBoxLayout *>(usual->parentWidget()->layout()) : nullptr;
    if (!column)
        return nullptr;
    auto *bar = new MessageBar(usual->parentWidget());
    column->insertWidget(column->indexOf(usual) + 1, bar);
    return bar;
}

QString questionAbout(qsizetype glyphs, bool wasStopped)
{
    const QString number = QLocale().toString(glyphs);
    if (wasStopped) {
        return glyphs == 1
            ? RunQuestion::tr("1 glyph was changed before the script was stopped.")
            : RunQuestion::tr("%1 glyphs were changed before the script was stopped.").arg(number);
    }
    return glyphs == 1 ? RunQuestion::tr("1 glyph was changed before the error.")
                       : RunQuestion::tr("%1 glyphs were changed before the error.").arg(number);
}

} // namespace

RunQuestion::RunQuestion(const RunSummary &summary, QObject *parent)
    : QObject(parent), m_summary(summary), m_steps(new RunSteps(this))
{
    connect(m_steps, &RunSteps::passed, this, [this] {
        if (m_bar)
            m_bar->hide();
    });
}

void RunQuestion::begin()
{
    m_isOfPanel = m_panel && m_panel->isActiveWindow();
    m_steps->begin();
}

void RunQuestion::end()
{
    const bool hasFailed = ScriptRun::outcome().hasFailed;
    const QString question = questionAbout(m_summary.glyphs(), RunPump::shared().wasStopped());
    callLater(this, [this, hasFailed, question] {
        if (!m_steps->end() || !hasFailed)
            return;
        callLater(this, [this, question] { decide(question); }); // windows of new documents are made first
    });
}

void RunQuestion::decide(const QString &question)
{
    const int answer = Settings::kAfterFailedRun.value();
    if (answer == Keep || m_steps->documents().isEmpty())
        return;
    m_bar = barInPlace();
    if (answer == TakeBack)
        takeBack();
    else if (m_bar)
        m_bar->ask(question, {{tr("&Keep"), [] {}}, {tr("&Take Back"), [this] { takeBack(); }}});
}

void RunQuestion::takeBack()
{
    // What is still being typed is an edit; where it is one, there is nothing to take back behind it.
    Error refusal;
    if (!DocumentController::shared().commitEditing(&refusal)) {
        ErrorPresenter::shared().present(refusal);
        return;
    }
    if (m_steps->documents().isEmpty())
        return;
    m_steps->takeBack();
    const QString text = tr("Taken back: all is as it was before the run.");
    if (m_bar)
        m_bar->showMessage(text, MessageBar::Stay::ShortTime);
    Q_EMIT tookBack(text);
}

/// The bar in the window where the user looks; another one goes.
MessageBar *RunQuestion::barInPlace()
{
    QMainWindow *window = placeForBar();
    if (m_bar && m_bar->window() == window)
        return m_bar;
    if (m_bar)
        m_bar->deleteLater();
    return window ? makeBar(*window) : nullptr;
}

QMainWindow *RunQuestion::placeForBar() const
{
    const bool isPanelSeen = m_panel && m_panel->isVisible();
    if (m_isOfPanel && isPanelSeen)
        return m_panel;
    for (const Document *document : m_steps->documents()) {
        auto *window = qobject_cast<QMainWindow *>(document->windowController());
        if (window && window->isVisible() && !window->isMinimized())
            return window;
    }
    return isPanelSeen ? m_panel.data() : nullptr;
}

} // namespace runebook
