#include "scripting/python/RunSteps.h"

#include "platform/UndoManager.h"
#include "platform/documents/Document.h"
#include "platform/documents/DocumentController.h"

#include <algorithm>
#include <utility>

namespace runebook {

RunSteps::RunSteps(QObject *parent) : QObject(parent) { }

void RunSteps::begin()
{
    m_running.clear();
    follow();
    connect(&DocumentController::shared(), &DocumentController::documentsChanged, this, &RunSteps::follow,
            Qt::UniqueConnection);
}

void RunSteps::follow()
{
    for (Document *document : DocumentController::shared().documentList()) {
        const auto isThis = [document](const History &one) { return one.document == document; };
        if (std::any_of(m_running.begin(), m_running.end(), isThis))
            continue;
        QUndoStack *stack = document->undoManager()->stack();
        connect(stack, &QUndoStack::indexChanged, this, [this, place = m_running.size()](int index) {
            m_running[place].lowest = std::min(m_running[place].lowest, index);
        });
        m_running.push_back({document, stack->index(), stack->index()});
    }
}

bool RunSteps::end()
{
    disconnect(&DocumentController::shared(), nullptr, this, nullptr);
    bool isWhole = true;
    for (const History &one : m_running) {
        if (!one.document)
            continue;
        one.document->undoManager()->stack()->disconnect(this);
        isWhole = isWhole && one.lowest >= one.first;
    }
    std::erase_if(m_running, [](const History &one) {
        return !one.document || one.document->undoManager()->stack()->index() <= one.first;
    });
    if (m_running.empty())
        return false; // it may have been a look at what the last one has left
    pass();
    if (!isWhole)
        return false;
    m_left = std::exchange(m_running, {});
    for (const History &one : m_left) {
        connect(one.document->undoManager(), &UndoManager::changed, this, &RunSteps::pass);
        connect(one.document, &QObject::destroyed, this, &RunSteps::pass);
    }
    return true;
}

QList<Document *> RunSteps::documents() const
{
    QList<Document *> documents;
    for (Document *document : DocumentController::shared().documentList()) {
        const auto isThis = [document](const History &one) { return one.document == document; };
        if (std::any_of(m_left.begin(), m_left.end(), isThis))
            documents << document;
    }
    return documents;
}

void RunSteps::takeBack()
{
    const std::vector<History> left = m_left;
    pass();
    for (const History &one : left) {
        if (one.document)
            one.document->undoManager()->takeBackToStep(one.first);
    }
}

void RunSteps::pass()
{
    const std::vector<History> left = std::exchange(m_left, {});
    for (const History &one : left) {
        if (!one.document)
            continue;
        one.document->undoManager()->disconnect(this);
        one.document->disconnect(this);
    }
    if (!left.empty())
        Q_EMIT passed();
}

} // namespace runebook
