#include "editing/window/WindowSearch.h"

#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/search/CurrentFilter.h"
#include "editing/search/SearchFilter.h"
#include "editing/search/SlicedFilter.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/GoToPanel.h"

#include <QScopedValueRollback>

namespace runebook {

using namespace Qt::StringLiterals;

WindowSearch::WindowSearch(const WindowParts &parts, QObject *parent) : QObject(parent), m_parts(parts)
{
    buildSlicedFilter();
    connect(&m_parts.searchField, &VXSearchField::searchChanged, this, &WindowSearch::filterInfos);
    connect(&m_parts.filter, &CurrentFilter::changed, this, &WindowSearch::filterInfos);
    connect(&m_parts.searchField, &VXSearchField::settingsChanged, this, [this] { m_idleTimer.start(); });
    connect(&m_parts.document, &VXDocument::infosReset, this, [this] { m_idleTimer.start(); });
    connect(&m_idleTimer, &QTimer::timeout, this, &WindowSearch::prepare);
    m_idleTimer.setInterval(0);
    m_idleTimer.start();
}

SlicedFilter *WindowSearch::makeSlicedFilter(QObject *parent) const
{
    const auto prepare = [this](const Predicate &predicate, int milliseconds) -> std::optional<double> {
        if (m_parts.list.prepareFilter(predicate, milliseconds))
            return {};
        return m_parts.list.preparedShare(predicate);
    };
    const auto ask = [this](const Predicate &predicate) { return m_parts.list.answersOf(predicate); };
    return new SlicedFilter(m_parts.document, prepare, ask, parent);
}

/// What takes longer than a slice shows its results when it has them all; until then the rows stay.
void WindowSearch::buildSlicedFilter()
{
    m_slicedFilter = makeSlicedFilter(this);
    connect(m_slicedFilter, &SlicedFilter::prepared, this, [this](const Predicate &predicate) {
        apply([&]() -> std::optional<Error> {
            m_parts.list.setFilterPredicate(predicate);
            return {};
        });
    });
    connect(m_slicedFilter, &SlicedFilter::finished, this,
            [this](const Predicate &predicate, const IndexSet &passing) {
                apply([&]() -> std::optional<Error> {
                    m_parts.list.setFilterPredicate(predicate, passing);
                    return {};
                });
            });
    connect(m_slicedFilter, &SlicedFilter::gaveUp, this, [this](const Error &error) {
        apply([&]() -> std::optional<Error> {
            m_parts.list.setFilterPredicate(std::optional<Predicate>());
            return error;
        });
    });
    connect(m_slicedFilter, &SlicedFilter::progressed, this,
            [this] { Q_EMIT progressed(m_slicedFilter->progress()); });
}

void WindowSearch::prepare()
{
    constexpr int kSliceMs = 8;
    const std::optional<Predicate> likely = SearchFilter(SearchSettings::current()).result(u"a"_s).predicate;
    if (!likely || m_parts.list.prepareFilter(*likely, kSliceMs))
        m_idleTimer.stop();
}

void WindowSearch::filterInfos()
{
    if (m_isApplying || !m_parts.commitEditing())
        return;
    m_slicedFilter->cancel();
    const auto [predicate, problem] = wanted(m_parts.filter.filter());
    // A script, which runs in one step of undoing, goes on with the rows as soon as it has set the filter.
    const bool isInScript = m_parts.document.undoManager()->groupingLevel() > 0;
    if (predicate && !isInScript
        && (SlicedFilter::isFor(*predicate) || !m_parts.list.isFilteredAtOnce(*predicate))) {
        m_slicedFilter->start(*predicate);
        return;
    }
    apply([&]() -> std::optional<Error> {
        Error gaveUp;
        if (!m_parts.list.setFilterPredicate(predicate, &gaveUp))
            return gaveUp;
        return problem;
    });
}

SearchResult WindowSearch::wanted(const RecordFilter &filter) const
{
    SearchResult result = SearchFilter(SearchSettings::current()).result(m_parts.searchField.stringValue());
    Error tooLong;
    if (const std::optional<Predicate> conditions = filter.predicate(&tooLong))
        result.predicate = result.predicate ? Predicate::all({*result.predicate, *conditions}) : *conditions;
    else if (!tooLong.domain.isEmpty())
        result.problem = tooLong;
    return result;
}

void WindowSearch::apply(const std::function<std::optional<Error>()> &setFilter)
{
    {
        const QScopedValueRollback applying(m_isApplying, true);
        m_parts.searchField.setProblem(setFilter());
        m_parts.list.setDraggingEnabled(!m_parts.list.isFiltered());
        Q_EMIT applied();
    }
    Q_EMIT finished();
}

bool WindowSearch::isFiltering() const
{
    return m_isApplying || m_slicedFilter->isRunning();
}

void WindowSearch::setCondition(const std::function<bool(qsizetype)> &condition)
{
    apply([&] {
        m_parts.list.setCondition(condition);
        return m_parts.searchField.problem();
    });
}

void WindowSearch::focusField()
{
    m_parts.searchField.setFocus(Qt::ShortcutFocusReason);
    m_parts.searchField.selectAll();
}

void WindowSearch::goToInfo()
{
    auto *panel = new GoToPanel(m_parts.document, &m_parts.window);
    connect(panel, &GoToPanel::chosen, this, &WindowSearch::showInfo);
    panel->open();
}

void WindowSearch::showInfo(const InfoPtr &info)
{
    if (!info || info->listings() == 0 || !m_parts.commitEditing())
        return;
    Q_EMIT leaving();
    if (m_parts.list.rowOfObject(info) < 0) {
        m_parts.searchField.setStringValue(u""_s);
        Q_EMIT allWanted();
        RecordFilter filter = m_parts.filter.filter();
        filter.setOff(true);
        m_parts.filter.setFilter(filter);
        filterInfos();
    }
    m_parts.table.goToRow(static_cast<int>(m_parts.list.rowOfObject(info)));
    m_parts.table.setFocus();
    Q_EMIT arrived();
}

} // namespace runebook
