#include "editing/search/SearchColumns.h"

#include "editing/search/RecordTests.h"
#include "editing/search/SearchTexts.h"

#include <algorithm>

namespace runebook {

namespace {

bool concerns(SearchKey key, GlyphField changed)
{
    return key.field == changed || (key.field == GlyphField::Unicode && changed == GlyphField::Unicodes);
}

/// Above so many changed records it is quicker to take the whole column anew.
std::size_t mostChangedRecords(std::size_t records)
{
    return 64 + records / 16;
}

} // namespace

/// The texts of all records, in list order, and over them those of records that changed since.
struct SearchColumns::Column {
    Column(SearchKey key, Folding folding) : texts(key, folding), overlay(key, folding) { }

    void noteChanged(const InfoPtr &info)
    {
        // A long text is better taken anew with all others, which is done in slices.
        if (changed.size() >= mostChangedRecords(texts.count()) || texts.areLong(*info)) {
            forget();
            return;
        }
        changed.push_back(info);
        isOverlayStale = true;
    }

    void forget()
    {
        texts.clear();
        changed.clear();
        overlay.clear();
        overlaidPlaces.clear();
        isOverlayStale = false;
    }

    SearchTexts texts; ///< of the first records of the list only, while it is being made
    std::vector<InfoPtr> changed; ///< some perhaps several times, some perhaps no longer in the list
    SearchTexts overlay; ///< one entry for each of overlaidPlaces
    std::vector<std::size_t> overlaidPlaces;
    bool isOverlayStale = false;
};

SearchColumns::SearchColumns(const VXDocument &document) : m_document(document) { }

SearchColumns::~SearchColumns() = default;

// Keeping in step

void SearchColumns::noteChange(const VXDocument::Change &change)
{
    for (const auto &column : m_columns) {
        if (column->texts.count() > 0 && concerns(column->texts.key(), change.field))
            column->noteChanged(change.info);
    }
}

void SearchColumns::noteReplacement(qsizetype place)
{
    for (const auto &column : m_columns) {
        if (column->texts.count() > static_cast<std::size_t>(place))
            column->noteChanged(m_document.objectInInfosAtIndex(place));
    }
}

void SearchColumns::noteInsertion(const IndexSet &places)
{
    const std::size_t before = static_cast<std::size_t>(m_document.countOfInfos()) - places.size();
    for (const auto &column : m_columns) {
        if (column->texts.count() != before || column->texts.areMany()) {
            column->forget();
            continue;
        }
        column->texts.insert(places, m_document.infos());
        column->isOverlayStale = true;
    }
}

void SearchColumns::noteRemoval(const IndexSet &places)
{
    const std::size_t before = static_cast<std::size_t>(m_document.countOfInfos()) + places.size();
    for (const auto &column : m_columns) {
        if (column->texts.count() != before || column->texts.areMany()) {
            column->forget();
            continue;
        }
        column->texts.remove(places);
        column->isOverlayStale = true;
    }
}

void SearchColumns::reset()
{
    m_columns.clear();
}

const SearchColumns::Column *SearchColumns::knownColumn(SearchKey key, Folding folding) const
{
    const auto found = std::find_if(m_columns.begin(), m_columns.end(), [&](const auto &column) {
        return column->texts.key() == key && column->texts.folding() == folding;
    });
    return found == m_columns.end() ? nullptr : found->get();
}

SearchColumns::Column &SearchColumns::columnFor(SearchKey key, Folding folding)
{
    if (const Column *known = knownColumn(key, folding))
        return const_cast<Column &>(*known);
    return *m_columns.emplace_back(std::make_unique<Column>(key, folding));
}

/// Takes the texts of further records until \a deadline; true when those of all are there.
bool SearchColumns::fill(Column &column, const QDeadlineTimer &deadline, Long what) const
{
    constexpr std::size_t kRecordsBetweenLooks = 256;
    const InfoList &infos = m_document.infos();
    if (column.texts.count() > infos.size())
        column.forget();
    if (column.texts.count() == 0)
        column.texts.reserve(infos.size());
    // At least one step a call, so that whoever calls again gets there.
    while (column.texts.count() < infos.size()) {
        const std::size_t end = std::min(column.texts.count() + kRecordsBetweenLooks, infos.size());
        for (std::size_t i = column.texts.count(); i < end; ++i) {
            if (!column.texts.isOpen() && !column.texts.areLong(*infos[i])) {
                column.texts.append(*infos[i]);
                continue;
            }
            if (what == Long::EndThere)
                return false;
            while (!column.texts.appendPart(*infos[i])) {
                if (deadline.hasExpired())
                    return false;
            }
        }
        if (deadline.hasExpired())
            break;
    }
    return column.texts.count() == infos.size();
}

void SearchColumns::refresh(Column &column) const
{
    // A record that stands in the list twice has more places than one.
    const auto isTwice = [](const InfoPtr &info) { return info->listings() > 1; };
    if (column.isOverlayStale && std::any_of(column.changed.begin(), column.changed.end(), isTwice))
        column.forget();
    fill(column, QDeadlineTimer(QDeadlineTimer::Forever));
    if (!column.isOverlayStale)
        return;
    column.isOverlayStale = false;
    std::sort(column.changed.begin(), column.changed.end());
    column.changed.erase(std::unique(column.changed.begin(), column.changed.end()), column.changed.end());
    std::erase_if(column.changed,
                  [this](const InfoPtr &info) { return m_document.indexOfObjectInInfos(info) < 0; });
    column.overlay.clear();
    column.overlaidPlaces.clear();
    for (const InfoPtr &info : column.changed) {
        column.overlay.append(*info);
        column.overlaidPlaces.push_back(static_cast<std::size_t>(m_document.indexOfObjectInInfos(info)));
    }
}

// Asking

std::optional<RecordBits> SearchColumns::bitsPassing(const Predicate &predicate, Error *error)
{
    RecordBits passed;
    if (!ask(predicate.root(), RecordBits::allOf(m_document.infos().size()), passed, error))
        return std::nullopt;
    return passed;
}

std::optional<std::vector<bool>> SearchColumns::evaluate(const Predicate &predicate, Error *error)
{
    const std::optional<RecordBits> passed = bitsPassing(predicate, error);
    if (!passed)
        return std::nullopt;
    std::vector<bool> answer(passed->size());
    passed->forEachWhile([&answer](std::size_t place) { return answer[place] = true; });
    return answer;
}

std::optional<IndexSet> SearchColumns::placesPassing(const Predicate &predicate, Error *error)
{
    const std::optional<RecordBits> passed = bitsPassing(predicate, error);
    if (!passed)
        return std::nullopt;
    IndexSet places;
    places.reserve(passed->count());
    passed->forEachWhile([&places](std::size_t place) {
        places.push_back(static_cast<qsizetype>(place));
        return true;
    });
    return places;
}

bool SearchColumns::ask(const PredicateNode &node, const RecordBits &asked, RecordBits &passed, Error *error)
{
    if (const auto *group = std::get_if<PredicateGroup>(&node.test))
        return ask(*group, asked, passed, error);
    const RecordTests oneByOne(m_document.infos(), m_patternTimeLimitMs);
    if (const auto *pattern = std::get_if<PatternTest>(&node.test)) {
        std::optional<RecordBits> matching = oneByOne.passing(*pattern, asked, error);
        if (matching)
            passed = *std::move(matching);
        return matching.has_value();
    }
    if (const auto *number = std::get_if<NumberTest>(&node.test))
        passed = oneByOne.passing(*number, asked);
    else
        passed = *columnAnswer(node);
    passed &= asked;
    return true;
}

std::optional<RecordBits> SearchColumns::columnAnswer(const PredicateNode &test)
{
    if (const auto *text = std::get_if<TextTest>(&test.test))
        return askColumn(*text, text->folding);
    if (const auto *list = std::get_if<ListTest>(&test.test))
        return askColumn(*list, list->folding);
    if (const auto *range = std::get_if<HexRangeTest>(&test.test))
        return askColumn(*range, {});
    return std::nullopt;
}

KnownBits SearchColumns::answersOf(const Predicate &predicate)
{
    KnownBits known;
    addAnswers(predicate.root(), known);
    return known;
}

void SearchColumns::addAnswers(const PredicateNode &node, KnownBits &known)
{
    if (const auto *group = std::get_if<PredicateGroup>(&node.test)) {
        for (const PredicateNode &member : group->members)
            addAnswers(member, known);
    } else if (std::optional<RecordBits> answer = columnAnswer(node)) {
        known.emplace(&node, *std::move(answer));
    }
}

/// Asks each member only about the records that the members before it left open, as one asks about a single
/// record: so a regular expression is never tried where it cannot matter.
bool SearchColumns::ask(const PredicateGroup &group, const RecordBits &asked, RecordBits &passed,
                        Error *error)
{
    const bool isAll = group.kind == PredicateGroup::Kind::All;
    RecordBits open = asked;
    for (const PredicateNode &member : group.members) {
        if (open.none())
            break;
        RecordBits yes;
        if (!ask(member, open, yes, error))
            return false;
        if (isAll)
            open = std::move(yes);
        else
            open -= yes;
    }
    if (group.kind == PredicateGroup::Kind::Any)
        passed = RecordBits(asked) -= open;
    else
        passed = std::move(open);
    return true;
}

template <typename Test> RecordBits SearchColumns::askColumn(const Test &test, Folding folding)
{
    Column &column = columnFor(SearchKey::of(test.key), folding);
    if (!column.texts.key().isAnnounced())
        column.forget();
    refresh(column);
    RecordBits passed = column.texts.passing(test);
    const RecordBits overlaid = column.overlay.passing(test);
    for (std::size_t i = 0; i < column.overlaidPlaces.size(); ++i)
        passed.assign(column.overlaidPlaces[i], overlaid.test(i));
    return passed;
}

// Making columns beforehand

bool SearchColumns::prepare(const Predicate &predicate, int milliseconds)
{
    return prepare(predicate.root(), QDeadlineTimer(milliseconds), Long::Take);
}

bool SearchColumns::prepareUpToLong(const Predicate &predicate)
{
    return prepare(predicate.root(), QDeadlineTimer(QDeadlineTimer::Forever), Long::EndThere);
}

/// Visits what the tests of \a node look into, in their order, until \a visit answers false.
template <typename Visit> bool SearchColumns::forEachColumn(const PredicateNode &node, Visit visit)
{
    if (const auto *group = std::get_if<PredicateGroup>(&node.test)) {
        return std::all_of(group->members.begin(), group->members.end(),
                           [&](const PredicateNode &member) { return forEachColumn(member, visit); });
    }
    const auto visitAnnounced = [&](const QString &key, Folding folding) {
        const SearchKey searched = SearchKey::of(key);
        return !searched.isAnnounced() || visit(searched, folding);
    };
    if (const auto *text = std::get_if<TextTest>(&node.test))
        return visitAnnounced(text->key, text->folding);
    if (const auto *list = std::get_if<ListTest>(&node.test))
        return visitAnnounced(list->key, list->folding);
    if (const auto *range = std::get_if<HexRangeTest>(&node.test))
        return visitAnnounced(range->key, {});
    return true;
}

bool SearchColumns::prepare(const PredicateNode &node, const QDeadlineTimer &deadline, Long what)
{
    return forEachColumn(
        node, [&](SearchKey key, Folding folding) { return fill(columnFor(key, folding), deadline, what); });
}

double SearchColumns::preparedShare(const Predicate &predicate) const
{
    double shares = 0;
    int columns = 0;
    forEachColumn(predicate.root(), [&](SearchKey key, Folding folding) {
        const Column *column = knownColumn(key, folding);
        shares += column ? column->texts.shareOf(m_document.infos().size()) : 0;
        ++columns;
        return true;
    });
    return columns > 0 ? shares / columns : 1;
}

} // namespace runebook
