#include "editing/search/FilterBar.h"

#include "editing/search/CurrentFilter.h"
#include "editing/search/FilterChip.h"
#include "editing/search/FlowLayout.h"
#include "platform/PlainLabel.h"

#include <QApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMostChips = 60; // more are shown by their number alone

QToolButton *flatButton(const QString &text, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setText(text);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

} // namespace

FilterBar::FilterBar(CurrentFilter &filter, ConditionEditor::Offers offers, QWidget *parent)
    : QWidget(parent),
      m_filter(filter),
      m_offers(std::move(offers)),
      m_row(nullptr),
      m_rowArea(new QWidget(this)),
      m_add(flatButton(tr("Add"), m_rowArea)),
      m_clear(flatButton(tr("Clear"), m_rowArea))
{
    setObjectName(u"filterBar"_s);
    setAccessibleName(tr("Filter"));
    m_rowArea->setAccessibleName(tr("Conditions"));
    m_row = new FlowLayout(m_rowArea);
    build();
    connect(&m_filter, &CurrentFilter::changed, this, &FilterBar::showFilter);
    showFilter();
}

void FilterBar::build()
{
    m_add->setIcon(QIcon(u":/icons/add.svg"_s));
    m_add->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_add->setToolTip(tr("Add a condition"));
    m_add->setAccessibleName(tr("Add a condition"));
    m_clear->setToolTip(tr("Take all conditions away (Esc)"));
    m_clear->setAccessibleName(tr("Take all conditions away"));
    connect(m_add, &QToolButton::clicked, this, &FilterBar::addRequested);
    connect(m_clear, &QToolButton::clicked, this, [this] {
        m_filter.setFilter({});
        Q_EMIT left();
    });
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 4, 8, 4);
    layout->setSpacing(4);
    layout->addWidget(m_rowArea);
}

// The row

void FilterBar::showFilter()
{
    // The chip that has the keyboard goes; it must not fall to the button that takes all away.
    if (hasKeyboard() && !isEditing())
        setFocus(Qt::NoFocusReason);
    for (QWidget *each : m_shown) {
        each->hide();
        each->deleteLater(); // it may be the one whose key is being handled
    }
    m_shown.clear();
    while (QLayoutItem *item = m_row->takeAt(0))
        delete item;
    const std::vector<FilterToken> tokens = tokensOf(m_filter.filter());
    for (const FilterToken &token : tokens) {
        if (token.number >= kMostChips)
            break;
        m_shown += widgetOf(token);
    }
    if (const int more = m_filter.filter().countOfConditions() - kMostChips; more > 0)
        m_shown += plainLabel(tr("and %1 more conditions").arg(more), m_rowArea);
    m_shown.removeAll(nullptr);
    for (QWidget *each : m_shown)
        m_row->addWidget(each);
    m_row->addWidget(m_add);
    m_row->addWidget(m_clear);
    for (QWidget *each : m_shown)
        each->show();
    // The order of Tab is that of the row.
    QWidget *before = nullptr;
    for (QWidget *each : inRow()) {
        if (before)
            setTabOrder(before, each);
        before = each;
    }
    m_rowArea->setVisible(!tokens.empty());
    setVisible(!tokens.empty() || isEditing());
    updateGeometry();
    if (m_focusNext >= 0)
        focusNumber(std::exchange(m_focusNext, -1));
}

QWidget *FilterBar::widgetOf(const FilterToken &token)
{
    using Kind = FilterToken::Kind;
    switch (token.kind) {
    case Kind::Condition:
        return makeChip(token.number);
    case Kind::Join:
        return makeJoin(token);
    case Kind::Open:
        return plainLabel(u"("_s, m_rowArea);
    case Kind::NotOpen:
        return plainLabel(tr("not ("), m_rowArea);
    case Kind::Close:
        return plainLabel(u")"_s, m_rowArea);
    case Kind::Everything:
        return plainLabel(tr("everything"), m_rowArea);
    case Kind::Nothing:
        return plainLabel(tr("nothing"), m_rowArea);
    }
    return nullptr;
}

FilterChip *FilterBar::makeChip(int number)
{
    auto *chip = new FilterChip(conditionAt(m_filter.filter(), number), number, m_rowArea);
    connect(chip, &FilterChip::editRequested, this, &FilterBar::editCondition);
    connect(chip, &FilterChip::removeRequested, this, [this](int removed) {
        const bool isLast = removed + 1 == m_filter.filter().countOfConditions();
        m_focusNext = isLast ? removed - 1 : removed;
        change([removed](RecordFilter &filter) { removeConditionAt(filter, removed); });
        if (m_filter.filter().isEmpty())
            Q_EMIT left();
    });
    connect(chip, &FilterChip::changeRequested, this, [this](int changed, const FieldCondition &condition) {
        m_focusNext = changed;
        change([&](RecordFilter &filter) { setConditionAt(filter, changed, condition); });
    });
    return chip;
}

QWidget *FilterBar::makeJoin(const FilterToken &token)
{
    const bool isAll = token.join == RecordFilter::Join::All;
    const QString word = isAll ? tr("and") : tr("or");
    if (token.number < 0)
        return plainLabel(word, m_rowArea);
    QToolButton *button = flatButton(word, m_rowArea);
    button->setToolTip(isAll ? tr("Both have to be met; press for one of them")
                             : tr("One of them has to be met; press for both"));
    button->setAccessibleName(isAll ? tr("and: both have to be met") : tr("or: one has to be met"));
    connect(button, &QToolButton::clicked, this, [this, number = token.number] {
        m_focusNext = number;
        change([number](RecordFilter &filter) { toggleJoinAfter(filter, number); });
    });
    return button;
}

void FilterBar::change(const std::function<void(RecordFilter &)> &edit)
{
    RecordFilter filter = m_filter.filter();
    edit(filter);
    m_filter.setFilter(filter);
}

// Making and changing a condition

bool FilterBar::isEditing() const
{
    return m_editor && !m_editor->isHidden();
}

void FilterBar::addCondition(const std::optional<FieldAspect> &aspect)
{
    const std::optional<FieldAspect> first = aspect ? aspect : FieldAspect::of(m_lastKey);
    FieldCondition condition;
    condition.key = first ? first->id() : u"name"_s;
    condition.relation = first ? FieldCondition::relationsFor(*first).first() : condition.relation;
    condition.folding = Fold::Case | Fold::Diacritics;
    addCondition(condition);
}

void FilterBar::addCondition(const FieldCondition &condition)
{
    if (!m_editor) {
        m_editor = new ConditionEditor(m_offers, this);
        layout()->addWidget(m_editor);
        connect(m_editor, &ConditionEditor::accepted, this, &FilterBar::accept);
        connect(m_editor, &ConditionEditor::cancelled, this, &FilterBar::closeEditor);
    }
    m_editedNumber = -1;
    m_editor->show();
    show();
    m_editor->edit(condition);
}

void FilterBar::editCondition(int number)
{
    addCondition(conditionAt(m_filter.filter(), number));
    m_editedNumber = number;
}

void FilterBar::accept(const FieldCondition &condition)
{
    const int number = m_editedNumber;
    const bool isThere = number >= 0 && number < m_filter.filter().countOfConditions();
    m_lastKey = condition.key;
    Q_EMIT left(); // first, or the keyboard would fall to a button of the row
    m_editor->hide();
    change([&](RecordFilter &filter) {
        isThere ? setConditionAt(filter, number, condition) : filter.add(condition);
    });
    setVisible(!m_filter.filter().isEmpty());
}

void FilterBar::closeEditor()
{
    if (m_editedNumber >= 0)
        focusNumber(m_editedNumber);
    else
        Q_EMIT left();
    m_editor->hide();
    setVisible(!m_filter.filter().isEmpty());
}

// The keyboard

bool FilterBar::hasKeyboard() const
{
    return isAncestorOf(QApplication::focusWidget());
}

QWidgetList FilterBar::inRow() const
{
    QWidgetList all = m_shown;
    all.append(m_add);
    all.append(m_clear);
    return all;
}

QWidgetList FilterBar::stops() const
{
    QWidgetList stops;
    for (QWidget *each : inRow()) {
        if (each->focusPolicy() != Qt::NoFocus)
            stops += each;
    }
    return stops;
}

void FilterBar::focusNumber(int number)
{
    for (QWidget *each : m_shown) {
        if (auto *chip = qobject_cast<FilterChip *>(each); chip && chip->number() == number)
            chip->setFocus(Qt::TabFocusReason);
    }
}

QWidget *FilterBar::firstStop() const
{
    return isEditing() ? m_editor->valueField() : stops().first();
}

void FilterBar::focusInEvent(QFocusEvent *event)
{
    if (event->reason() != Qt::NoFocusReason)
        firstStop()->setFocus(event->reason());
}

void FilterBar::keyPressEvent(QKeyEvent *event)
{
    const QWidgetList all = stops();
    const qsizetype at = all.indexOf(focusWidget());
    const bool isForward = event->key() == Qt::Key_Right;
    if (event->key() == Qt::Key_Escape) {
        m_filter.setFilter({});
        Q_EMIT left();
    } else if (event->key() == Qt::Key_Down) {
        Q_EMIT left();
    } else if (at >= 0 && (isForward || event->key() == Qt::Key_Left)) {
        const bool goesOn = isForward == (layoutDirection() == Qt::LeftToRight);
        all.at(qBound(qsizetype(0), at + (goesOn ? 1 : -1), all.size() - 1))->setFocus(Qt::TabFocusReason);
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace runebook
