#include "editing/values/ValuesPanel.h"

#include "editing/values/ValueRename.h"
#include "editing/values/ValueSettings.h"
#include "platform/PlainLabel.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QScrollBar>
#include <QToolButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

FieldAspect rememberedAspect()
{
    return FieldAspect::of(Settings::kValuesField.value()).value_or(*FieldAspect::of(u"category"_s));
}

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

} // namespace

ValuesPanel::ValuesPanel(const VXDocument &document, CurrentFilter &filter, QWidget *parent)
    : QWidget(parent),
      m_filter(filter),
      m_counts(new ValueCounts(document, rememberedAspect(), this)),
      m_model(new ValuesModel(*m_counts, this)),
      m_field(new QComboBox(this)),
      m_search(new QLineEdit(this)),
      m_view(new ValuesView(*m_model, this)),
      m_status(plainLabel({}, this))
{
    setAccessibleName(tr("Values"));
    setMinimumWidth(180);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(buildHeader());
    buildSearch();
    layout->addWidget(m_view, 1);
    m_status->setContentsMargins(8, 3, 8, 3);
    m_status->setWordWrap(true);
    layout->addWidget(m_status);
    m_view->setAccessibleName(tr("Values and how many records have each"));
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    connectView();
    setSort(Settings::kValuesByText.value() ? ValuesModel::ValueColumn : ValuesModel::CountColumn,
            Settings::kValuesAscending.value() ? Qt::AscendingOrder : Qt::DescendingOrder);
    connect(&m_filter, &CurrentFilter::changed, this, &ValuesPanel::followFilter);
    chooseField();
    followFilter();
}

ValuesPanel::~ValuesPanel() = default;

// Building

QWidget *ValuesPanel::buildHeader()
{
    auto *header = new QWidget(this);
    auto *rows = new QVBoxLayout(header);
    rows->setContentsMargins(8, 4, 6, 6);
    auto *row = new QHBoxLayout;
    m_field->setAccessibleName(tr("Field whose values are counted"));
    m_field->setToolTip(m_field->accessibleName());
    m_field->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_field->setMinimumContentsLength(8);
    m_field->setMaxVisibleItems(30);
    for (const FieldAspect &aspect : FieldAspect::all())
        m_field->addItem(aspect.title(), aspect.id());
    connect(m_field, &QComboBox::currentIndexChanged, this, [this] {
        if (const auto aspect = FieldAspect::of(m_field->currentData().toString()))
            setAspect(*aspect);
    });
    auto *close = new QToolButton(header);
    close->setIcon(QIcon(u":/icons/clear.svg"_s));
    close->setAutoRaise(true);
    close->setFocusPolicy(Qt::StrongFocus);
    close->setAccessibleName(tr("Close the values panel"));
    close->setToolTip(close->accessibleName());
    connect(close, &QToolButton::clicked, this, &ValuesPanel::closeRequested);
    row->addWidget(m_field, 1);
    row->addWidget(close);
    rows->addLayout(row);
    rows->addWidget(m_search);
    return header;
}

void ValuesPanel::buildSearch()
{
    m_search->setPlaceholderText(tr("Search values"));
    m_search->setAccessibleName(tr("Search values"));
    m_search->setClearButtonEnabled(true);
    m_search->installEventFilter(this);
    connect(m_search, &QLineEdit::textChanged, this, &ValuesPanel::setSearch);
}

void ValuesPanel::connectView()
{
    connect(m_view, &ValuesView::chosen, this, &ValuesPanel::choose);
    connect(m_view, &ValuesView::choiceTakenBack, this, [this] { setChosen(m_chosenBefore); });
    connect(m_view, &ValuesView::searchTyped, this, [this](const QString &text) {
        m_search->setFocus();
        m_search->setText(m_search->text() + text);
    });
    connect(m_view, &ValuesView::renameRefused, this, [this] {
        const QString obstacle = ValueRename::obstacle(aspect());
        Q_EMIT remarked(obstacle.isNull() ? tr("Very long texts cannot be renamed together.") : obstacle);
    });
    connect(m_view, &QWidget::customContextMenuRequested, this, &ValuesPanel::showMenu);
    connect(m_view->horizontalHeader(), &QHeaderView::sectionClicked, this, [this](int column) {
        const auto [by, direction, searched] = m_model->order();
        const bool isSame = (by == ValueOrder::By::Count) == (column == ValuesModel::CountColumn);
        const bool isUp = isSame ? direction == Qt::DescendingOrder : column == ValuesModel::ValueColumn;
        setSort(column, isUp ? Qt::AscendingOrder : Qt::DescendingOrder);
    });
    connect(&m_view->delegate(), &ValueDelegate::editorOpened, this, [this] { m_model->setHeld(true); });
    connect(&m_view->delegate(), &ValueDelegate::editorClosed, this, [this] { m_model->setHeld(false); });
    connect(m_model, &ValuesModel::renameRequested, this, &ValuesPanel::renameRequested);
    connect(m_model, &ValuesModel::rowsAboutToChange, this, &ValuesPanel::rememberRow);
    connect(m_model, &ValuesModel::rowsChanged, this, &ValuesPanel::restoreRow);
    connect(m_counts, &ValueCounts::changed, this, &ValuesPanel::showStatus);
}

// The field

void ValuesPanel::setAspect(const FieldAspect &aspect)
{
    if (aspect == m_counts->aspect())
        return;
    m_counts->setAspect(aspect);
    m_search->clear();
    m_view->setCurrentIndex({});
    Settings::kValuesField.set(aspect.id());
    chooseField();
    followFilter();
    Q_EMIT aspectChanged();
}

void ValuesPanel::chooseField()
{
    m_field->setCurrentIndex(m_field->findData(aspect().id()));
    m_model->setEditable(ValueRename::obstacle(aspect()).isNull());
}

// What is chosen

void ValuesPanel::followFilter()
{
    m_model->setChosen(ChosenValues::of(aspect(), m_filter.filter()));
}

void ValuesPanel::choose(const QString &value, ValuesView::Choice choice)
{
    ChosenValues chosen = m_chosenBefore = m_model->chosen();
    if (choice == ValuesView::Choice::Only)
        chosen.choose(value);
    else if (choice == ValuesView::Choice::Too)
        chosen.toggle(value);
    else
        chosen.toggleWithout(value);
    setChosen(chosen);
}

void ValuesPanel::setChosen(const ChosenValues &chosen)
{
    RecordFilter filter = m_filter.filter();
    chosen.putInto(filter, aspect());
    m_filter.setFilter(filter);
    followFilter();
}

void ValuesPanel::showMenu(const QPoint &place)
{
    const QModelIndex index = m_view->currentIndex();
    QMenu menu(this);
    const auto add = [&menu](const QString &text, bool isEnabled, auto command) {
        QAction *action = menu.addAction(text, command);
        action->setEnabled(isEnabled);
        return action;
    };
    const auto addChoice = [&](const QString &text, bool isTicked, ValuesView::Choice choice) {
        const QString value = m_view->currentText();
        QAction *action =
            add(text, m_model->canBeChosen(index), [this, value, choice] { this->choose(value, choice); });
        action->setCheckable(true);
        action->setChecked(isTicked && index.isValid());
    };
    const QString value = m_view->currentText();
    const ChosenValues &chosen = m_model->chosen();
    addChoice(tr("Show &Only This\tSpace"), chosen == ChosenValues {{value}, {}}, ValuesView::Choice::Only);
    addChoice(tr("Show This &Too\tCtrl+Space"), chosen.only.contains(value), ValuesView::Choice::Too);
    addChoice(tr("&Leave This Out\tAlt+Return"), chosen.without.contains(value), ValuesView::Choice::Without);
    add(tr("Show &All Values"), !chosen.isEmpty(), [this] { setChosen({}); });
    menu.addSeparator();
    add(tr("&Rename in All Records\tF2"), index.isValid(), [this] { m_view->renameCurrent(); });
    menu.addSeparator();
    add(tr("&Copy\tCtrl+C"), index.isValid(), [this] { m_view->copyCurrent(); });
    add(tr("Copy All Val&ues"), m_model->rowCount() > 0, [this] { m_view->copyAll(); });
    menu.addSeparator();
    add(tr("Sort by &Number of Records"), true,
        [this] { setSort(ValuesModel::CountColumn, Qt::DescendingOrder); });
    add(tr("Sort by &Value"), true, [this] { setSort(ValuesModel::ValueColumn, Qt::AscendingOrder); });
    menu.exec(m_view->viewport()->mapToGlobal(place));
}

// What is listed

void ValuesPanel::setSearch(const QString &text)
{
    ValueOrder order = m_model->order();
    order.searched = text.trimmed();
    m_model->setOrder(order);
}

void ValuesPanel::setSort(int column, Qt::SortOrder direction)
{
    m_model->sort(column, direction);
    m_view->horizontalHeader()->setSortIndicator(column, direction);
    Settings::kValuesByText.set(column == ValuesModel::ValueColumn);
    Settings::kValuesAscending.set(direction == Qt::AscendingOrder);
}

void ValuesPanel::rememberRow()
{
    m_currentRow = m_view->currentIndex().row();
    m_currentText = m_view->currentText();
    m_scrolled = m_view->verticalScrollBar()->value();
}

void ValuesPanel::restoreRow()
{
    showStatus();
    if (m_view->currentIndex().isValid() || m_model->rowCount() == 0)
        return;
    // Of a value that has gone the next one takes the place.
    QModelIndex index = m_currentRow >= 0 ? m_model->indexOfText(m_currentText) : QModelIndex();
    if (!index.isValid())
        index = m_model->index(qBound(0, m_currentRow, m_model->rowCount() - 1), ValuesModel::ValueColumn);
    m_view->verticalScrollBar()->setValue(m_scrolled);
    m_view->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

QString ValuesPanel::statusText() const
{
    return m_status->text();
}

void ValuesPanel::showStatus()
{
    if (!m_counts->isComplete()) {
        m_status->setText(tr("Counting… %1 %").arg(static_cast<int>(100 * m_counts->progress())));
        return;
    }
    const QString records = m_counts->shownRecords() == 1
        ? tr("1 record")
        : tr("%1 records").arg(numberText(m_counts->shownRecords()));
    const qsizetype found = m_model->found();
    if (found > m_model->rowCount())
        m_status->setText(tr("The first %1 of %2 values in %3. Type to find others.")
                              .arg(numberText(m_model->rowCount()), numberText(found), records));
    else if (found == 0 && !m_model->order().searched.isEmpty())
        m_status->setText(tr("No value has “%1” in it.").arg(m_model->order().searched));
    else
        m_status->setText(found == 1 ? tr("1 value in %1").arg(records)
                                     : tr("%1 values in %2").arg(numberText(found), records));
}

// Keys

void ValuesPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape)
        QWidget::keyPressEvent(event);
    else if (!m_search->text().isEmpty())
        m_search->clear();
    else
        Q_EMIT closeRequested();
}

bool ValuesPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_search || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    const bool goesToList = key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter;
    if (goesToList)
        m_view->setFocus();
    return goesToList;
}

} // namespace runebook
