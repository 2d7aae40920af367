#pragma once

#include "editing/compare/CompareContent.h"
#include "editing/compare/ListedKeys.h"

namespace runebook {

/// The records of the selected keys on either side, and what is shown of each field; of very many keys found
/// in slices.
class ShownRecords : public QObject
{
    Q_OBJECT
public:
    /// Refers to both.
    ShownRecords(ComparedDocuments &documents, ListedKeys &keys);

    /// Finds those of the keys that are selected now; those of very many keys in the background.
    void update();
    /// The same in the next turn of the event loop.
    void updateSoon() { m_updateTimer.start(0); }
    /// Whether they are still being found.
    bool isFinding() const { return m_content != nullptr; }
    /// Finishes what is still being found.
    void finish();

    InfoChoice &choice(ComparedDocuments::Side side) { return m_choices[side]; }
    const InfoList &infos(ComparedDocuments::Side side) const { return m_choices[side].infos(); }
    bool hasAny() const;
    /// Those of the selected keys, or of all keys listed, once they are found.
    std::array<InfoList, 2> ofSelected();
    std::array<InfoList, 2> ofListed();

Q_SIGNALS:
    /// \a fields are in the order of comparedFields().
    void found(const std::vector<runebook::FieldContent> &fields);
    void stateChanged();

private:
    void goOn(std::chrono::milliseconds budget);
    InfoList recordsFor(const VXDocument *document, const QStringList &keys) const;

    ComparedDocuments &m_documents;
    ListedKeys &m_keys;
    std::array<InfoChoice, 2> m_choices;
    std::unique_ptr<CompareContent> m_content; ///< while records of very many keys are found
    QTimer m_updateTimer;
    QTimer m_workTimer;
};

} // namespace runebook
