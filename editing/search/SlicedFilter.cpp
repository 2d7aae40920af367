#include "editing/search/SlicedFilter.h"

#include <QDeadlineTimer>
#include <algorithm>
#include <utility>

namespace runebook {

namespace {

constexpr int kSliceMs = 6;

bool hasPattern(const PredicateNode &node)
{
    const auto *group = std::get_if<PredicateGroup>(&node.test);
    return group ? std::any_of(group->members.begin(), group->members.end(), hasPattern)
                 : std::holds_alternative<PatternTest>(node.test);
}

} // namespace

SlicedFilter::SlicedFilter(const VXDocument &document, Prepare prepare, Ask ask, QObject *parent)
    : QObject(parent), m_document(document), m_prepare(std::move(prepare)), m_ask(std::move(ask))
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &SlicedFilter::runSlice);
    for (const auto listChange : {&VXDocument::infosInserted, &VXDocument::infosRemoved})
        connect(&document, listChange, this, &SlicedFilter::startAnew);
    connect(&document, &VXDocument::infoReplaced, this, &SlicedFilter::startAnew);
    connect(&document, &VXDocument::infosReset, this, &SlicedFilter::startAnew);
    connect(&document, &VXDocument::infosChanged, this, &SlicedFilter::startAnew);
}

bool SlicedFilter::isFor(const Predicate &predicate)
{
    return hasPattern(predicate.root());
}

void SlicedFilter::start(const Predicate &predicate)
{
    m_predicate = predicate;
    startAnew();
    runSlice();
}

void SlicedFilter::startAnew()
{
    if (!m_predicate)
        return;
    m_passed = RecordBits(static_cast<std::size_t>(m_document.countOfInfos()));
    m_known.reset();
    m_next = 0;
    m_preparedShare = 0;
    m_timer.start();
}

void SlicedFilter::cancel()
{
    m_predicate.reset();
    m_known.reset();
    m_timer.stop();
}

double SlicedFilter::progress() const
{
    if (m_predicate && !isFor(*m_predicate))
        return m_preparedShare;
    return m_passed.size() ? static_cast<double>(m_next) / static_cast<double>(m_passed.size()) : 1;
}

void SlicedFilter::runSlice()
{
    if (!m_known && !isPrepared()) {
        Q_EMIT progressed();
        return;
    }
    if (isFor(*m_predicate)) {
        runPatternSlice();
        return;
    }
    const Predicate ready = *m_predicate;
    cancel();
    Q_EMIT prepared(ready);
}

bool SlicedFilter::isPrepared()
{
    if (const std::optional<double> share = m_prepare(*m_predicate, kSliceMs)) {
        m_preparedShare = *share;
        return false;
    }
    if (isFor(*m_predicate))
        m_known = m_ask(*m_predicate);
    return true;
}

void SlicedFilter::runPatternSlice()
{
    constexpr int kNoLimit = -1;
    Error error;
    const auto next =
        RecordTests(m_document.infos(), kNoLimit)
            .passingFrom(m_predicate->root(), *m_known, m_next, QDeadlineTimer(kSliceMs), m_passed, &error);
    if (!next) {
        cancel();
        Q_EMIT gaveUp(error);
        return;
    }
    m_next = *next;
    if (m_next < m_passed.size()) {
        Q_EMIT progressed();
        return;
    }
    const Predicate predicate = *m_predicate;
    cancel();
    IndexSet passing;
    passing.reserve(m_passed.count());
    m_passed.forEachWhile([&passing](std::size_t place) {
        passing.push_back(static_cast<qsizetype>(place));
        return true;
    });
    Q_EMIT finished(predicate, passing);
}

} // namespace runebook
