#pragma once

#include "editing/search/FieldCondition.h"

#include <QWidget>
#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QToolButton;

namespace runebook {

/// A line in which a condition is made or changed: field, relation, value with what the field is usually
/// filled with. Return takes it when it can be asked, and says why else; Escape leaves.
class ConditionEditor : public QWidget
{
    Q_OBJECT
public:
    /// The values that are offered for a field, the usual ones first.
    using Offers = std::function<QStringList(const FieldAspect &aspect)>;
    ConditionEditor(Offers offers, QWidget *parent);

    /// Shows \a condition and puts the caret into its value.
    void edit(const FieldCondition &condition);
    /// What stands in the line now.
    FieldCondition condition() const;
    QWidget *valueField() const;

Q_SIGNALS:
    void accepted(const runebook::FieldCondition &condition);
    void cancelled();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void build();
    void fillRelations(const FieldCondition &wanted);
    void followRelation();
    void offerValues();
    void accept();
    std::optional<FieldAspect> aspect() const;

    const Offers m_offers;
    FieldCondition m_edited; ///< as it was given, for what does not stand in the line
    QComboBox *m_field;
    QComboBox *m_relation;
    QLineEdit *m_value;
    QCheckBox *m_matchesCase;
    QLabel *m_objection;
};

} // namespace runebook
