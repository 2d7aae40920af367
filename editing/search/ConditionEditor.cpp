#include "editing/search/ConditionEditor.h"

#include "editing/fields/SignalColors.h"
#include "platform/PlainLabel.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStringListModel>
#include <QVBoxLayout>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMostFields = 30; // in the list that opens, so that it needs no scrolling

/// Completes what stands behind the last comma.
class LastEntryCompleter final : public QCompleter
{
public:
    using QCompleter::QCompleter;
    QStringList splitPath(const QString &path) const override
    {
        return {path.mid(path.lastIndexOf(u',') + 1).trimmed()};
    }
    QString pathFromIndex(const QModelIndex &index) const override
    {
        const QString typed = static_cast<const QLineEdit *>(widget())->text();
        const qsizetype comma = typed.lastIndexOf(u',');
        const QString chosen = index.data().toString();
        return comma < 0 ? chosen : typed.left(comma) + ", "_L1 + chosen;
    }
};

using Relation = FieldCondition::Relation;

/// A relation and whether it is turned round, as the data of an item.
int codeOf(Relation relation, bool isNegated)
{
    return static_cast<int>(relation) * 2 + isNegated;
}

} // namespace

ConditionEditor::ConditionEditor(Offers offers, QWidget *parent)
    : QWidget(parent),
      m_offers(std::move(offers)),
      m_field(new QComboBox(this)),
      m_relation(new QComboBox(this)),
      m_value(new QLineEdit(this)),
      m_matchesCase(new QCheckBox(tr("&Match case"), this)),
      m_objection(plainLabel({}, this))
{
    for (const FieldAspect &each : FieldAspect::all())
        m_field->addItem(each.title(), each.id());
    m_field->setMaxVisibleItems(kMostFields);
    m_value->setMaxLength(std::numeric_limits<int>::max());
    m_field->setAccessibleName(tr("Field"));
    m_relation->setAccessibleName(tr("Relation"));
    m_value->setAccessibleName(tr("Value"));
    m_value->setClearButtonEnabled(true);
    m_objection->setWordWrap(true);
    m_objection->hide();
    build();
    connect(m_field, &QComboBox::activated, this, [this] { fillRelations(condition()); });
    connect(m_relation, &QComboBox::activated, this, &ConditionEditor::followRelation);
    connect(m_value, &QLineEdit::textEdited, m_objection, &QWidget::hide);
    connect(m_value, &QLineEdit::returnPressed, this, &ConditionEditor::accept);
}

void ConditionEditor::build()
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *line = new QHBoxLayout;
    line->addWidget(m_field);
    line->addWidget(m_relation);
    line->addWidget(m_value, 1);
    line->addWidget(m_matchesCase);
    auto *done = new QPushButton(tr("&Apply"), this);
    auto *leave = new QPushButton(tr("Cancel"), this);
    for (QPushButton *each : {done, leave}) {
        each->setAutoDefault(false);
        line->addWidget(each);
    }
    connect(done, &QPushButton::clicked, this, &ConditionEditor::accept);
    connect(leave, &QPushButton::clicked, this, &ConditionEditor::cancelled);
    layout->addLayout(line);
    layout->addWidget(m_objection);
    // Narrow windows show as much of the names as fits.
    for (QComboBox *box : {m_field, m_relation}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(10);
    }
}

std::optional<FieldAspect> ConditionEditor::aspect() const
{
    return FieldAspect::of(m_field->currentData().toString());
}

void ConditionEditor::edit(const FieldCondition &condition)
{
    m_edited = condition;
    int at = m_field->findData(condition.key);
    if (const std::optional<FieldAspect> known = FieldAspect::of(condition.key); at < 0 && known)
        at = m_field->findData(known->id());
    if (at < 0) { // what only scripts and those who type it know
        m_field->addItem(condition.key, condition.key);
        at = m_field->count() - 1;
    }
    m_field->setCurrentIndex(at);
    m_matchesCase->setChecked(!condition.folding.testFlag(Fold::Case));
    m_value->setText(condition.valueText());
    fillRelations(condition);
    m_objection->hide();
    valueField()->setFocus();
    m_value->selectAll();
}

/// Those of the field, and the one that \a wanted has if it is another.
void ConditionEditor::fillRelations(const FieldCondition &wanted)
{
    const std::optional<FieldAspect> looked = aspect();
    QList<Relation> relations = looked ? FieldCondition::relationsFor(*looked) : QList<Relation>();
    if (wanted.key == m_edited.key && !relations.contains(m_edited.relation))
        relations.prepend(m_edited.relation);
    m_relation->clear();
    for (const Relation relation : relations) {
        m_relation->addItem(FieldCondition::titleOf(relation, false), codeOf(relation, false));
        const bool isOfNumbers = relation >= Relation::Equals;
        if (!isOfNumbers || (wanted.isNegated && relation == wanted.relation))
            m_relation->addItem(FieldCondition::titleOf(relation, true), codeOf(relation, true));
    }
    const int same = m_relation->findData(codeOf(wanted.relation, wanted.isNegated));
    m_relation->setCurrentIndex(qMax(0, same));
    followRelation();
}

void ConditionEditor::followRelation()
{
    const FieldCondition shown = condition();
    m_value->setEnabled(shown.hasValue());
    m_matchesCase->setVisible(shown.comparesTexts());
    m_value->setPlaceholderText(shown.relation == Relation::In            ? tr("latin, greek")
                                    : shown.relation == Relation::InRange ? tr("0041-005A")
                                    : shown.relation == Relation::Matches
                                    ? tr("Regular expression: .*alt[0-9]")
                                    : QString());
    m_objection->hide();
    offerValues();
}

void ConditionEditor::offerValues()
{
    const std::optional<FieldAspect> looked = aspect();
    const FieldCondition shown = condition();
    if (!looked || shown.relation == Relation::Matches || !shown.comparesTexts()) {
        m_value->setCompleter(nullptr);
        return;
    }
    QCompleter *completer =
        shown.relation == Relation::In ? new LastEntryCompleter(m_value) : new QCompleter(m_value);
    completer->setModel(new QStringListModel(m_offers(*looked), completer));
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    m_value->setCompleter(completer); // which deletes the former, as a child of the field
}

FieldCondition ConditionEditor::condition() const
{
    FieldCondition condition = m_edited;
    condition.key = m_field->currentData().toString();
    const int code = m_relation->currentData().toInt();
    condition.relation = static_cast<Relation>(code / 2);
    condition.isNegated = code % 2;
    condition.setValueText(m_value->text());
    condition.folding = {};
    if (condition.comparesTexts() && !m_matchesCase->isChecked())
        condition.folding = Fold::Case | Fold::Diacritics;
    condition.isOff = false;
    return condition;
}

QWidget *ConditionEditor::valueField() const
{
    return m_value->isEnabled() ? static_cast<QWidget *>(m_value) : m_relation;
}

void ConditionEditor::accept()
{
    const FieldCondition wanted = condition();
    const QString objection = wanted.objection();
    if (objection.isNull()) {
        if (m_value->completer())
            m_value->completer()->popup()->hide(); // it would outlive the line
        Q_EMIT accepted(wanted);
        return;
    }
    QPalette colors;
    colors.setColor(QPalette::WindowText, SignalColors::warningText(palette()));
    m_objection->setPalette(colors);
    m_objection->setText(objection);
    m_objection->show();
    m_value->setFocus();
    m_value->setAccessibleDescription(objection);
    QAccessibleEvent told(m_value, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&told);
}

void ConditionEditor::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT cancelled();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (auto *button = qobject_cast<QPushButton *>(focusWidget()))
            button->click();
        else if (focusWidget() != m_value) // which has told of it itself
            accept();
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace runebook
