#include "app/PresentedErrors.h"

#include "document/VXDocument.h"
#include "editing/window/VXWindowController.h"
#include "platform/Error.h"
#include "platform/documents/DocumentController.h"

#include <QTimer>
#include <utility>

namespace runebook {

PresentedErrors::PresentedErrors(QObject *parent) : QObject(parent)
{
    connect(&ErrorPresenter::shared(), &ErrorPresenter::presented, this, [this](const Error &error) {
        constexpr qsizetype kShown = 20;
        if (m_pending.isEmpty())
            QTimer::singleShot(0, this, &PresentedErrors::show);
        if (m_pending.size() < kShown)
            m_pending << error.text();
    });
}

void PresentedErrors::show()
{
    const QStringList texts = std::exchange(m_pending, {});
    const auto *document = qobject_cast<VXDocument *>(DocumentController::shared().currentDocument());
    if (auto *window = document ? qobject_cast<VXWindowController *>(document->windowController()) : nullptr)
        window->showMessage(texts.join(u'\n'));
}

} // namespace runebook
