#include "editing/compare/ShownRecords.h"

#include "editing/compare/CompareSettings.h"
#include "editing/compare/Overlooked.h"
#include "editing/compare/TakeAcross.h"

namespace runebook {

using namespace std::chrono_literals;

namespace {

constexpr auto kBudget = 10ms;

/// From here on a look at every record is quicker than looking up every key.
constexpr qsizetype kManyKeys = 1000;

} // namespace

ShownRecords::ShownRecords(ComparedDocuments &documents, ListedKeys &keys)
    : m_documents(documents), m_keys(keys)
{
    m_updateTimer.setSingleShot(true);
    connect(&m_updateTimer, &QTimer::timeout, this, &ShownRecords::update);
    m_workTimer.setSingleShot(true);
    connect(&m_workTimer, &QTimer::timeout, this, [this] { goOn(kBudget); });
    // It looks at the lists as they were.
    connect(&documents, &ComparedDocuments::changed, this, [this] { m_content.reset(); });
    connect(&documents, &ComparedDocuments::closed, this, [this] { m_content.reset(); });
    // The list of keys stays, the records shown are those of now.
    connect(&keys, &ListedKeys::becameStale, this, &ShownRecords::updateSoon);
}

InfoList ShownRecords::recordsFor(const VXDocument *document, const QStringList &keys) const
{
    if (!document || keys.isEmpty())
        return {};
    QVariantList values;
    for (const QString &each : keys)
        values << each;
    return document->infoForKeyValues(propertyOfKey(Settings::kCompareKey.value()), values)
        .value_or(InfoList());
}

void ShownRecords::update()
{
    m_updateTimer.stop();
    m_workTimer.stop();
    m_content.reset();
    const QStringList keys = m_keys.list().selectedObjects();
    const VXDocument *left = m_documents.document(ComparedDocuments::Left);
    const VXDocument *right = m_documents.document(ComparedDocuments::Right);
    if (keys.size() > kManyKeys) {
        m_content = std::make_unique<CompareContent>(keys, Settings::kCompareKey.value(),
                                                     left ? &left->infos() : nullptr,
                                                     right ? &right->infos() : nullptr, overlookedOptions());
        // Not at once: whoever undoes what concerns many waits for the list alone.
        m_workTimer.start(0);
        Q_EMIT stateChanged();
        return;
    }
    m_choices[ComparedDocuments::Left].setContent(recordsFor(left, keys));
    m_choices[ComparedDocuments::Right].setContent(recordsFor(right, keys));
    Q_EMIT found(
        contentOf(infos(ComparedDocuments::Left), infos(ComparedDocuments::Right), overlookedOptions()));
    Q_EMIT stateChanged();
}

void ShownRecords::goOn(std::chrono::milliseconds budget)
{
    if (!m_content)
        return;
    if (!m_content->runFor(budget)) {
        m_workTimer.start(0);
        Q_EMIT stateChanged();
        return;
    }
    const std::unique_ptr<CompareContent> content = std::move(m_content);
    m_workTimer.stop();
    Q_EMIT found(content->fields());
    m_choices[ComparedDocuments::Left].setContent(content->takeLeft());
    m_choices[ComparedDocuments::Right].setContent(content->takeRight());
    Q_EMIT stateChanged();
}

void ShownRecords::finish()
{
    while (m_content)
        goOn(1000ms);
}

bool ShownRecords::hasAny() const
{
    return !infos(ComparedDocuments::Left).empty() || !infos(ComparedDocuments::Right).empty();
}

std::array<InfoList, 2> ShownRecords::ofSelected()
{
    finish();
    return {infos(ComparedDocuments::Left), infos(ComparedDocuments::Right)};
}

std::array<InfoList, 2> ShownRecords::ofListed()
{
    m_keys.finish();
    const KeyList &list = m_keys.list();
    if (list.selectedCount() == list.rowCount())
        return ofSelected();
    std::array<InfoList, 2> records;
    for (const ComparedDocuments::Side side : ComparedDocuments::kSides) {
        if (const VXDocument *document = m_documents.document(side)) {
            records[side] =
                recordsWithKeys(document->infos(), Settings::kCompareKey.value(), list.arrangedObjects());
        }
    }
    return records;
}

} // namespace runebook
