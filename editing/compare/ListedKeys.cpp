#include "editing/compare/ListedKeys.h"

#include "editing/compare/CompareSettings.h"
#include "editing/compare/Overlooked.h"

#include <algorithm>
#include <bit>

namespace runebook {

using namespace std::chrono_literals;

namespace {

/// A comparison in the background works so long at a time, and the window stays alive.
constexpr auto kBudget = 10ms;

} // namespace

ListedKeys::ListedKeys(ComparedDocuments &documents) : m_documents(documents)
{
    m_counts.fill(-1);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] { goOn(kBudget); });
    connect(&documents, &ComparedDocuments::changedByOthers, this, &ListedKeys::documentsHaveChanged);
    connect(&documents, &ComparedDocuments::closed, this, [this] {
        m_comparison.reset(); // it looks at the lists
        update();
    });
}

// Comparing

void ListedKeys::documentsHaveChanged()
{
    if (m_comparison) {
        update();
        return;
    }
    // The list stays as it is while the user works through it.
    m_isStale = true;
    Q_EMIT becameStale();
}

void ListedKeys::update()
{
    m_timer.stop();
    m_comparison.reset();
    m_counts.fill(-1);
    m_isListed = m_isCancelled = m_isStale = false;
    m_found = {};
    Q_EMIT begun();
    if (!m_documents.areTwo()) {
        setFound({});
        show({});
        Q_EMIT countsChanged();
        return;
    }
    // What is still to be announced of edits made before this is no news afterwards.
    m_documents.flush();
    m_isStale = false;
    m_mode = Settings::kCompareMode.value();
    m_comparison =
        std::make_unique<KeyComparison>(m_documents.document(ComparedDocuments::Left)->infos(),
                                        m_documents.document(ComparedDocuments::Right)->infos(),
                                        Settings::kCompareKey.value(), m_mode, overlookedOptions());
    goOn(m_patience);
}

void ListedKeys::goOn(std::chrono::milliseconds budget)
{
    if (!m_comparison)
        return;
    const bool isDone = m_comparison->runFor(budget);
    for (const CompareMode each : {CompareMode::OnlyRight, CompareMode::OnlyLeft, CompareMode::Different}) {
        if (m_comparison->isDone(each))
            m_counts[static_cast<std::size_t>(each)] = m_comparison->keys(each).size();
    }
    Q_EMIT countsChanged();
    const bool isNew = !m_isListed && m_comparison->isDone(m_mode);
    FoundKeys found;
    if (isNew)
        found = FoundKeys::of(*m_comparison, m_mode);
    m_isListed |= isNew;
    if (isDone)
        m_comparison.reset();
    else
        m_timer.start(0);
    if (isNew) {
        setFound(std::move(found));
        show(keysToList());
    } else {
        Q_EMIT stateChanged();
    }
    if (isDone)
        Q_EMIT done();
}

void ListedKeys::cancel()
{
    if (!m_comparison)
        return;
    m_timer.stop();
    m_comparison.reset();
    m_isCancelled = !m_isListed;
    if (m_isCancelled)
        show({});
    Q_EMIT stateChanged();
}

void ListedKeys::finish()
{
    if (!isFinding())
        return;
    m_comparison->finish(m_mode);
    goOn(0ms);
}

// The list

void ListedKeys::setFound(FoundKeys found)
{
    m_found = std::move(found);
    const std::vector<FieldCount> counts = fieldCounts();
    const bool isOffered = std::any_of(counts.begin(), counts.end(), [this](const FieldCount &each) {
        return each.field->field == m_field;
    });
    if (!isOffered)
        m_field.reset();
    Q_EMIT fieldCountsChanged();
}

std::vector<ListedKeys::FieldCount> ListedKeys::fieldCounts() const
{
    std::array<qsizetype, 32> counts {};
    for (const FieldBits bits : m_found.fields) {
        for (FieldBits rest = bits; rest != 0; rest &= rest - 1)
            ++counts.at(static_cast<std::size_t>(std::countr_zero(rest)));
    }
    std::vector<FieldCount> found;
    for (qsizetype i = 0; i < comparedFields().size(); ++i) {
        if (const qsizetype count = counts.at(static_cast<std::size_t>(i)))
            found.push_back({&comparedFields().at(i), count});
    }
    return found;
}

void ListedKeys::listField(std::optional<GlyphField> field)
{
    m_field = field;
    show(keysToList());
}

/// Those of the keys found that the chosen field lets through.
QStringList ListedKeys::keysToList() const
{
    if (!m_field)
        return m_found.keys;
    QStringList keys;
    const FieldBits bit = bitOf(*m_field);
    for (std::size_t i = 0; i < m_found.fields.size(); ++i) {
        if (m_found.fields[i] & bit)
            keys << m_found.keys.at(static_cast<qsizetype>(i));
    }
    return keys;
}

void ListedKeys::show(const QStringList &keys)
{
    const std::optional<NextKeys> next = std::exchange(m_next, {});
    // Tells of its selection, whatever it is; the panes follow.
    m_list.setContent(keys, next ? next->rowsIn(keys) : std::nullopt);
    if (next && !keys.isEmpty())
        Q_EMIT wentOn(next->isPastEnd() && m_list.selectionIndexes() == IndexSet {0});
}

// After a command

bool ListedKeys::isUpToDate()
{
    // What was changed before and is still to be announced makes it stale.
    m_documents.flush();
    return m_documents.areTwo() && m_isListed && !m_comparison && !m_isStale
        && m_mode == CompareMode::Different;
}

void ListedKeys::listAgain(const std::array<InfoList, 2> &records, NextKeys next)
{
    const InfoList &left = records[ComparedDocuments::Left];
    const VXDocument &document = *m_documents.document(ComparedDocuments::Left);
    std::vector<quint32> places;
    places.reserve(left.size());
    for (const InfoPtr &info : left)
        places.push_back(static_cast<quint32>(document.placeOf(info.get())));
    FoundKeys found = std::move(m_found);
    found.compareAgain(left, places, records[ComparedDocuments::Right], Settings::kCompareKey.value(),
                       overlookedOptions());
    m_counts[static_cast<std::size_t>(CompareMode::Different)] = found.keys.size();
    Q_EMIT countsChanged();
    setFound(std::move(found));
    m_next = std::move(next);
    show(keysToList());
}

void ListedKeys::listAnew(NextKeys next)
{
    m_next = std::move(next);
    update();
}

} // namespace runebook
