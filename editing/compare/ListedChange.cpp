#include "editing/compare/ListedChange.h"

#include "editing/compare/CompareSettings.h"
#include "editing/compare/Overlooked.h"
#include "platform/UndoManager.h"

#include <algorithm>
#include <unordered_set>

namespace runebook {

namespace {

/// Which records change, as long as it lives, and whether nothing else does.
class ChangedRecords : public QObject
{
public:
    ChangedRecords(const VXDocument &document, CompareKey key) : m_key(key)
    {
        const auto moved = [this] { m_areKeptInPlace = false; };
        connect(&document, &VXDocument::infosInserted, this, moved);
        connect(&document, &VXDocument::infosRemoved, this, moved);
        connect(&document, &VXDocument::infoReplaced, this, moved);
        connect(&document, &VXDocument::infosReset, this, moved);
        connect(&document, &VXDocument::infosChanged, this, &ChangedRecords::note);
    }

    /// Whether all of them stand where they stood, under the key that they had.
    bool areKeptInPlace() const { return m_areKeptInPlace; }
    QStringList keys() const
    {
        QStringList keys;
        std::string buffer;
        for (const InfoPtr &info : m_infos) {
            const std::string_view key = keyUtf8(*info, m_key, buffer);
            keys += QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
        }
        return keys;
    }
    bool areAllAmong(const InfoList &infos) const
    {
        std::unordered_set<const VXGlyphInfo *> known(static_cast<std::size_t>(infos.size()));
        for (const InfoPtr &info : infos)
            known.insert(info.get());
        return std::all_of(m_infos.begin(), m_infos.end(),
                           [&known](const InfoPtr &info) { return known.contains(info.get()); });
    }

private:
    void note(const std::vector<VXDocument::Change> &changes)
    {
        constexpr GlyphField kFields[] {GlyphField::Name, GlyphField::Unicodes, GlyphField::Production};
        for (const VXDocument::Change &change : changes) {
            m_areKeptInPlace &= change.field != kFields[static_cast<int>(m_key)];
            if (m_infos.empty() || m_infos.back() != change.info)
                m_infos.push_back(change.info);
        }
    }

    CompareKey m_key;
    InfoList m_infos;
    bool m_areKeptInPlace = true;
};

} // namespace

ListedChange::ListedChange(ComparedDocuments &documents, ListedKeys &keys)
    : m_documents(documents), m_keys(keys)
{
    connect(&keys, &ListedKeys::begun, this, [this] { m_comparedAgain = {}; });
}

TakeAcross::Outcome ListedChange::take(ComparedDocuments::Side target, const Records &records,
                                       const Taking &taking, NextKeys next)
{
    const ComparedDocuments::Side source = ComparedDocuments::otherSide(target);
    VXDocument &document = *m_documents.document(target);
    const bool wasUpToDate = m_keys.isUpToDate();
    TakeAcross::Outcome outcome;
    m_documents.change(document, [&] {
        TakeAcross across(*m_documents.document(source), document, Settings::kCompareKey.value(),
                          overlookedOptions());
        outcome = taking(across, records[source], records[target]);
    });
    if (wasUpToDate && outcome.changed > 0 && outcome.inserted + outcome.removed == 0) {
        m_comparedAgain = records;
        m_keys.listAgain(m_comparedAgain, std::move(next));
    } else if (outcome.hasDone()) {
        m_keys.listAnew(std::move(next));
    }
    return outcome;
}

void ListedChange::step(VXDocument &target, void (UndoManager::*way)())
{
    m_keys.finish();
    NextKeys next = NextKeys::atWhatComesBack(m_keys.list());
    const bool wasUpToDate = m_keys.isUpToDate();
    const CompareKey key = Settings::kCompareKey.value();
    ChangedRecords changed(target, key);
    m_documents.change(target, [&] { (target.undoManager()->*way)(); });
    if (!wasUpToDate || !changed.areKeptInPlace()) {
        m_keys.listAnew(std::move(next));
        return;
    }
    // Mostly it is what was compared again last.
    const bool isRight = &target == m_documents.document(ComparedDocuments::Right);
    if (!changed.areAllAmong(m_comparedAgain[isRight])) {
        const QStringList keys = changed.keys();
        for (const ComparedDocuments::Side side : ComparedDocuments::kSides)
            m_comparedAgain[side] = recordsWithKeys(m_documents.document(side)->infos(), key, keys);
    }
    m_keys.listAgain(m_comparedAgain, std::move(next));
}

} // namespace runebook
