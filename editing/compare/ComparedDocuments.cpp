#include "editing/compare/ComparedDocuments.h"

#include "platform/documents/DocumentController.h"

#include <QScopedValueRollback>

namespace runebook {

ComparedDocuments::ComparedDocuments()
{
    for (const DocumentChoice &each : m_choices)
        connect(&each, &DocumentChoice::selectionIndexChanged, this, &ComparedDocuments::tellChosen);
}

bool ComparedDocuments::areTwo() const
{
    return document(Left) && document(Right) && document(Left) != document(Right);
}

bool ComparedDocuments::isWritable(Side side) const
{
    const VXDocument *chosen = document(side);
    return chosen && chosen != document(otherSide(side)) && !isOnlyToCompare(chosen);
}

void ComparedDocuments::choose(VXDocument *left, VXDocument *right)
{
    QList<VXDocument *> documents;
    for (Document *document : DocumentController::shared().documentList()) {
        if (auto *ours = qobject_cast<VXDocument *>(document))
            documents << ours;
    }
    {
        const QScopedValueRollback choosing(m_isChoosing, true);
        for (DocumentChoice &each : m_choices)
            each.setContent(documents);
        DocumentChoice &leftChoice = m_choices[Left];
        DocumentChoice &rightChoice = m_choices[Right];
        if (left)
            leftChoice.setSelectionIndex(static_cast<int>(documents.indexOf(left)));
        // No check against the end of the list: past it the choice stays.
        if (right)
            rightChoice.setSelectionIndex(static_cast<int>(documents.indexOf(right)));
        else if (documents.size() >= 2 && leftChoice.selectionIndex() == rightChoice.selectionIndex())
            rightChoice.setSelectionIndex(rightChoice.selectionIndex() + 1);
    }
    tellChosen();
}

void ComparedDocuments::tellChosen()
{
    if (m_isChoosing)
        return;
    watch();
    Q_EMIT chosen();
}

void ComparedDocuments::watch()
{
    for (const QMetaObject::Connection &watch : std::as_const(m_watches))
        disconnect(watch);
    m_watches.clear();
    for (const Side side : kSides) {
        const VXDocument *watched = document(side);
        if (!watched)
            continue;
        const auto changed = &ComparedDocuments::tellChanged;
        m_watches << connect(watched, &VXDocument::infosInserted, this, changed)
                  << connect(watched, &VXDocument::infosRemoved, this, changed)
                  << connect(watched, &VXDocument::infoReplaced, this, changed)
                  << connect(watched, &VXDocument::infosReset, this, changed)
                  << connect(watched, &VXDocument::infosChanged, this, changed)
                  << connect(watched, &QObject::destroyed, this, &ComparedDocuments::closed);
    }
}

void ComparedDocuments::tellChanged()
{
    Q_EMIT changed();
    if (!m_isChanging)
        Q_EMIT changedByOthers();
}

void ComparedDocuments::change(VXDocument &target, const std::function<void()> &command)
{
    const QScopedValueRollback changing(m_isChanging, true);
    command();
    target.flushChanges();
}

void ComparedDocuments::flush() const
{
    for (const Side side : kSides) {
        if (VXDocument *each = document(side))
            each->flushChanges();
    }
}

} // namespace runebook
