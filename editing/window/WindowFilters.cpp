#include "editing/window/WindowFilters.h"

#include "document/VXDocument.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphTableView.h"
#include "editing/search/CurrentFilter.h"
#include "editing/search/FilterBar.h"
#include "editing/search/SavedFilters.h"
#include "editing/search/SavedFiltersSheet.h"
#include "editing/search/VXSearchField.h"

#include <QAction>
#include <QDeadlineTimer>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QSet>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace runebook {

WindowFilters::WindowFilters(const WindowParts &parts, QVBoxLayout &layout, QObject *parent)
    : QObject(parent), m_parts(parts), m_layout(layout)
{
    connect(&m_parts.filter, &CurrentFilter::changed, this, &WindowFilters::follow);
    m_parts.searchField.installEventFilter(this);
}

void WindowFilters::follow()
{
    if (!m_last.isEmpty() && m_parts.filter.filter().isEmpty())
        m_former = m_last;
    m_last = m_parts.filter.filter();
    if (!m_last.isEmpty())
        show();
}

void WindowFilters::show()
{
    if (m_bar)
        return;
    m_bar = new FilterBar(
        m_parts.filter, [this](const FieldAspect &aspect) { return offersFor(aspect); },
        m_layout.parentWidget());
    m_layout.insertWidget(m_layout.count() - 1, m_bar);
    connect(m_bar, &FilterBar::addRequested, this, &WindowFilters::addCondition);
    connect(m_bar, &FilterBar::left, &m_parts.table, qOverload<>(&QWidget::setFocus));
}

void WindowFilters::addCondition()
{
    show();
    // The column in which somebody is comes first, as in finding and replacing.
    const int column = m_parts.table.currentIndex().column();
    if (column < 0) {
        m_bar->addCondition(std::nullopt);
        return;
    }
    const GlyphField field = glyphColumns()[static_cast<std::size_t>(column)].field;
    const QList<FieldAspect> &all = FieldAspect::all();
    const auto aspect = std::find_if(all.begin(), all.end(), [field](const FieldAspect &each) {
        return each.isField() && each.field() == field;
    });
    m_bar->addCondition(aspect == all.end() ? std::nullopt : std::optional(*aspect));
}

void WindowFilters::addPattern(const QString &pattern)
{
    m_parts.searchField.clearSearch();
    show();
    FieldCondition condition;
    condition.key = QStringLiteral("production");
    condition.relation = FieldCondition::Relation::Matches;
    condition.values = {pattern};
    m_bar->addCondition(condition);
}

bool WindowFilters::eventFilter(QObject *watched, QEvent *event)
{
    const bool isEscape = (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress)
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape;
    if (!isEscape || !hasConditions() || !m_parts.searchField.stringValue().isEmpty())
        return QObject::eventFilter(watched, event);
    event->accept();
    if (event->type() == QEvent::KeyPress)
        clear();
    return true;
}

void WindowFilters::clear()
{
    m_parts.filter.setFilter({});
}

bool WindowFilters::hasConditions() const
{
    return !m_parts.filter.filter().isEmpty();
}

bool WindowFilters::isOn() const
{
    return m_parts.filter.filter().isAsking();
}

void WindowFilters::setOn(bool isOn)
{
    RecordFilter filter = m_parts.filter.filter();
    filter.setOff(!isOn);
    m_parts.filter.setFilter(filter);
}

void WindowFilters::bringBack()
{
    const RecordFilter former = std::exchange(m_former, m_parts.filter.filter());
    m_parts.filter.setFilter(former);
}

// Saved filters

void WindowFilters::save()
{
    auto *sheet = new QInputDialog(&m_parts.window, Qt::Sheet);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    sheet->setWindowTitle(tr("Save Filter"));
    sheet->setLabelText(tr("&Name of the filter; one with the same name is replaced:"));
    sheet->setComboBoxItems(SavedFilters::names());
    sheet->setComboBoxEditable(true);
    sheet->setTextValue({});
    sheet->setOkButtonText(tr("&Save"));
    connect(sheet, &QInputDialog::textValueSelected, this, [this](const QString &typed) {
        const QString name = typed.trimmed();
        if (name.isEmpty() || !isOn())
            return;
        SavedFilters::save(name, text());
        m_parts.showMessage(tr("Saved: View > Filters > %1").arg(cellDisplayText(name)));
    });
    sheet->open();
}

void WindowFilters::manage()
{
    auto *sheet = new SavedFiltersSheet(&m_parts.window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void WindowFilters::listSaved(QMenu &menu)
{
    constexpr int kMostKeys = 9;
    const QString now = text();
    int number = 0;
    for (const QString &name : SavedFilters::names()) {
        QString title = cellDisplayText(name).replace(u'&', QStringLiteral("&&"));
        if (++number <= kMostKeys)
            title = u'&' + QString::number(number) + u' ' + title;
        QAction *item = menu.addAction(title);
        item->setCheckable(true);
        item->setChecked(!now.isEmpty() && SavedFilters::textOf(name) == now);
        connect(item, &QAction::triggered, this, [this, name] {
            Error error;
            if (m_parts.commitEditing() && !setText(name, &error))
                m_parts.showMessage(error.text());
        });
    }
}

// For scripts

QString WindowFilters::text() const
{
    return m_parts.filter.filter().text();
}

bool WindowFilters::setText(const QString &nameOrText, Error *error)
{
    const std::optional<RecordFilter> filter = SavedFilters::find(nameOrText, error);
    if (!filter)
        return false;
    m_parts.filter.setFilter(*filter);
    return true;
}

/// The usual words, then what the records have, as far as that is found at once.
QStringList WindowFilters::offersFor(const FieldAspect &aspect) const
{
    constexpr int kLongestMs = 8;
    constexpr qsizetype kMost = 2000;
    constexpr std::size_t kRecordsBetweenLooks = 64;
    constexpr qsizetype kLongestValue = 200;
    QStringList offers = aspect.vocabulary();
    QSet<QString> known(offers.begin(), offers.end());
    if (aspect.field() == GlyphField::Desc)
        return offers; // nearly each record has its own
    const QDeadlineTimer deadline(kLongestMs);
    const InfoList &infos = m_parts.document.infos();
    for (std::size_t i = 0; i < infos.size() && offers.size() < kMost; ++i) {
        if (i % kRecordsBetweenLooks == 0 && deadline.hasExpired())
            break;
        for (const QString &value : aspect.values(*infos[i])) {
            if (value.size() > kLongestValue || known.contains(value))
                continue;
            known.insert(value);
            offers += value;
        }
    }
    return offers;
}

} // namespace runebook
