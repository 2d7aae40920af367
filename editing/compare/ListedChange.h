#pragma once

#include "editing/compare/ListedKeys.h"
#include "editing/compare/TakeAcross.h"

namespace runebook {

class UndoManager;

/// Commands of the compare window that change a document, each with the list as it is after it. Where nothing
/// but fields has changed, only the records concerned are compared again.
class ListedChange : public QObject
{
    Q_OBJECT
public:
    using Records = std::array<InfoList, 2>; ///< by side
    using Taking =
        std::function<TakeAcross::Outcome(TakeAcross &, const InfoList &theirs, const InfoList &ours)>;

    /// Refers to both.
    ListedChange(ComparedDocuments &documents, ListedKeys &keys);

    /// Has \a taking change the document of \a target, of which there is one on the other side too. \a
    /// records are all records of some keys. The outcome is told even when it is nothing.
    TakeAcross::Outcome take(ComparedDocuments::Side target, const Records &records, const Taking &taking,
                             NextKeys next);
    /// Goes one step back or forward in the history of one of the documents, and selects what comes back.
    void step(VXDocument &target, void (UndoManager::*way)());

private:
    ComparedDocuments &m_documents;
    ListedKeys &m_keys;
    Records m_comparedAgain; ///< last, since the keys were found
};

} // namespace runebook
