#include "app/UnseenDocuments.h"

#include "platform/CallLater.h"
#include "platform/documents/DocumentController.h"
#include "scripting/python/RunPump.h"

#include <utility>

namespace runebook {

UnseenDocuments::UnseenDocuments(QObject *parent) : QObject(parent)
{
    const RunPump &pump = RunPump::shared();
    connect(&pump, &RunPump::runStarted, this,
            [this] { m_beforeRun = DocumentController::shared().documents(); });
    connect(&pump, &RunPump::runEnded, this, [this] { callLater(this, [this] { show(); }); });
}

void UnseenDocuments::show()
{
    const QList<QObject *> before = std::exchange(m_beforeRun, {});
    const QList<Document *> documents = DocumentController::shared().documentList();
    for (auto document = documents.crbegin(); document != documents.crend(); ++document) {
        if (!(*document)->windowController() && !before.contains(*document))
            (*document)->makeWindowControllers();
    }
}

} // namespace runebook
