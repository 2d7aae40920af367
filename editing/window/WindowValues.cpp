#include "editing/window/WindowValues.h"

#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/search/SearchFilter.h"
#include "editing/search/SlicedFilter.h"
#include "editing/values/ValueRename.h"
#include "editing/values/ValueSettings.h"
#include "editing/values/ValuesPanel.h"
#include "editing/window/WindowSearch.h"
#include "platform/CallLater.h"
#include "platform/LongWork.h"

#include <QApplication>
#include <QLocale>
#include <QSplitter>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QDeadlineTimer slice()
{
    constexpr int kSliceMs = 8;
    return QDeadlineTimer(kSliceMs);
}

std::optional<FieldAspect> aspectOf(const QString &id, Error *error)
{
    const std::optional<FieldAspect> aspect = FieldAspect::of(id);
    if (aspect)
        return aspect;
    QStringList ids;
    for (const FieldAspect &each : FieldAspect::all())
        ids << each.id();
    fail(error,
         {u"EditError"_s,
          1,
          WindowValues::tr("“%1” is nothing that records have values of.").arg(id),
          {},
          WindowValues::tr("Values can be counted of: %1.").arg(ids.join(", "_L1))});
    return {};
}

} // namespace

WindowValues::WindowValues(const WindowParts &parts, WindowSearch &search, QSplitter &split, QObject *parent)
    : QObject(parent), m_parts(parts), m_search(search), m_split(split)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &WindowValues::followRows);
    connect(&m_idleTimer, &QTimer::timeout, this, &WindowValues::prepareClick);
}

WindowValues::~WindowValues() = default;

// The panel

void WindowValues::buildPanel()
{
    m_panel = new ValuesPanel(m_parts.document, m_parts.filter, &m_split);
    m_split.addWidget(m_panel);
    m_split.setStretchFactor(0, 1);
    m_split.setStretchFactor(1, 0);
    const int width = Settings::kValuesWidth.value();
    m_split.setSizes({qMax(width, m_split.width() - width), width});
    connect(m_panel, &ValuesPanel::aspectChanged, this, &WindowValues::noteRows);
    // The editor of the value is still open.
    connect(m_panel, &ValuesPanel::renameRequested, m_panel, [this](const QString &from, const QString &to) {
        callLater(this, [=, this, id = m_panel->aspect().id()] { renameTyped(id, from, to); });
    });
    connect(m_panel, &ValuesPanel::remarked, this,
            [this](const QString &text) { m_parts.showMessage(text); });
    connect(m_panel, &ValuesPanel::closeRequested, this, [this] { setShown(false); });
    connect(&m_split, &QSplitter::splitterMoved, m_panel,
            [this] { Settings::kValuesWidth.set(m_split.sizes().value(1)); });
    connect(&m_parts.list, &QAbstractItemModel::modelReset, m_panel, [this] { noteRows(); });
    m_slicedFilter = m_search.makeSlicedFilter(m_panel);
    connect(m_slicedFilter, &SlicedFilter::finished, this,
            [this](const Predicate &, const IndexSet &passing) {
                takePlaces(m_parts.list.placesShownWith(passing));
            });
    connect(m_slicedFilter, &SlicedFilter::prepared, this,
            [this](const Predicate &predicate) { takePlaces(m_parts.list.placesShownBy(predicate)); });
    m_panel->show();
    noteRows();
}

bool WindowValues::isShown() const
{
    return m_panel;
}

void WindowValues::setShown(bool isShown)
{
    if (isShown == this->isShown())
        return;
    if (isShown) {
        buildPanel();
    } else {
        const bool hadFocus = m_panel->isAncestorOf(QApplication::focusWidget());
        m_timer.stop();
        m_idleTimer.stop();
        ValuesPanel *panel = std::exchange(m_panel, nullptr);
        panel->hide();
        panel->deleteLater(); // it may have asked for this itself
        if (hadFocus)
            m_parts.table.setFocus();
    }
    Settings::kValuesShown.set(isShown);
    Q_EMIT shownChanged();
}

void WindowValues::toggle()
{
    setShown(!isShown());
    if (m_panel)
        m_panel->view().setFocus();
}

bool WindowValues::show(const QString &id, Error *error)
{
    const std::optional<FieldAspect> aspect = aspectOf(id, error);
    if (!aspect)
        return false;
    setShown(true);
    m_panel->setAspect(*aspect);
    return true;
}

// What is counted

void WindowValues::noteRows()
{
    m_timer.start(0);
}

void WindowValues::followRows()
{
    if (!m_panel)
        return;
    m_slicedFilter->cancel();
    m_idleTimer.start(0);
    const FieldAspect &aspect = m_panel->aspect();
    const std::optional<Predicate> predicate = m_search.wanted(filterWithout(aspect)).predicate;
    const bool isNarrowed = !ChosenValues::of(aspect, m_parts.filter.filter()).isEmpty();
    if (isNarrowed && predicate
        && (SlicedFilter::isFor(*predicate) || !m_parts.list.isFilteredAtOnce(*predicate)))
        m_slicedFilter->start(*predicate);
    else
        takePlaces(placesFor(aspect));
}

void WindowValues::takePlaces(const std::optional<IndexSet> &places)
{
    if (m_panel)
        m_panel->counts().setShown(places);
}

RecordFilter WindowValues::filterWithout(const FieldAspect &aspect) const
{
    RecordFilter filter = m_parts.filter.filter();
    ChosenValues().putInto(filter, aspect);
    return filter;
}

std::optional<IndexSet> WindowValues::placesFor(const FieldAspect &aspect) const
{
    if (ChosenValues::of(aspect, m_parts.filter.filter()).isEmpty())
        return m_parts.list.arrangedPlaces();
    return m_parts.list.placesShownBy(m_search.wanted(filterWithout(aspect)).predicate);
}

/// The first click shall not wait for what answers it.
void WindowValues::prepareClick()
{
    constexpr int kSliceMs = 8;
    if (!m_panel->counts().isComplete())
        return;
    RecordFilter filter;
    filter.add(FieldCondition::isOneOf(m_panel->aspect(), {u"a"_s}));
    const std::optional<Predicate> click = filter.predicate();
    if (!click || m_parts.list.prepareFilter(*click, kSliceMs))
        m_idleTimer.stop();
}

std::optional<QVariantList> WindowValues::counts(const QString &id, Error *error)
{
    const std::optional<FieldAspect> aspect = aspectOf(id, error);
    if (!aspect)
        return {};
    m_parts.document.flushChanges();
    ValueCounts counts(m_parts.document, *aspect);
    counts.setShown(placesFor(*aspect));
    counts.finish();
    ListedValues listed(counts.valueCount());
    listed.start({}, {});
    while (!listed.runUntil(counts, QDeadlineTimer(QDeadlineTimer::Forever))) { }
    QVariantList pairs;
    for (const ValueCounts::Value value : listed.values()) {
        const QString text = value == ValueCounts::kNone ? QString() : ListedValues::titleOf(counts, value);
        pairs << QVariant(QVariantList {text, qlonglong(counts.shown(value))});
    }
    return pairs;
}

// Renaming

std::optional<WindowValues::Renamed> WindowValues::rename(const QString &id, const QString &from,
                                                          const QString &to, Error *error)
{
    const std::optional<FieldAspect> aspect = aspectOf(id, error);
    if (!aspect || !m_parts.commitEditing(error))
        return {};
    ValueRename renaming(m_parts.document, *aspect, from, to);
    if (!apply(renaming, error))
        return {};
    const InfoList &infos = renaming.found();
    const auto isUnseen = [this](const InfoPtr &info) { return m_parts.list.rowOfObject(info) < 0; };
    const Renamed renamed {renaming.records(), std::count_if(infos.begin(), infos.end(), isUnseen)};
    // Who had chosen it sees its records under their new value.
    RecordFilter filter = m_parts.filter.filter();
    ChosenValues chosen = ChosenValues::of(*aspect, filter);
    chosen.rename(from, to);
    chosen.putInto(filter, *aspect);
    m_parts.filter.setFilter(filter);
    return renamed;
}

bool WindowValues::apply(ValueRename &renaming, Error *error)
{
    const Error stopped {u"EditError"_s, 2, tr("No value was renamed, since that was stopped."), {}, {}};
    LongWork work(tr("Renaming…"), &m_parts.window);
    while (!renaming.findUntil(slice())) {
        if (!work.goOn(renaming.progress()))
            return fail(error, stopped);
    }
    if (const Error objection = renaming.objection(); !objection.domain.isEmpty())
        return fail(error, objection);
    if (renaming.records() == 0)
        return true;
    UndoManager *undoManager = m_parts.document.undoManager();
    const UndoGroup group(undoManager, renaming.actionName());
    while (!renaming.applyUntil(slice())) {
        if (work.goOn(renaming.progress()))
            continue;
        undoManager->abandonGroup();
        return fail(error, stopped);
    }
    return true;
}

void WindowValues::renameTyped(const QString &id, const QString &from, const QString &to)
{
    Error error;
    const std::optional<Renamed> renamed = rename(id, from, to, &error);
    m_parts.showMessage(renamed ? renamedText(from, to, *renamed) : error.text());
}

QString WindowValues::renamedText(const QString &from, const QString &to, const Renamed &renamed)
{
    const auto number = [](qsizetype count) { return QLocale().toString(qlonglong(count)); };
    const QString records = number(renamed.records);
    if (renamed.records == 0)
        return tr("No record has this value any more.");
    QString text = from.isEmpty() ? tr("Records without a value that are “%1” now: %2.").arg(to, records)
        : to.isEmpty()            ? tr("Records that are “%1” no more: %2.").arg(from, records)
                                  : tr("“%1” is “%2” now. Records: %3.").arg(from, to, records);
    if (renamed.unseen > 0)
        text += u' ' + tr("Not shown of these: %1.").arg(number(renamed.unseen));
    return text;
}

} // namespace runebook
