#pragma once

#include "editing/search/ConditionEditor.h"
#include "editing/search/FilterTokens.h"

#include <QWidget>

class QLabel;
class QToolButton;

namespace runebook {

class CurrentFilter;
class FilterChip;
class FlowLayout;

/// The row of conditions above a table: a chip for each, what joins them between, and the line in which one
/// is made or changed. Arrow keys go along the row; Escape takes all conditions away. It is seen while there
/// are conditions or one is being made.
class FilterBar : public QWidget
{
    Q_OBJECT
public:
    FilterBar(CurrentFilter &filter, ConditionEditor::Offers offers, QWidget *parent);

    /// Opens the line for a new condition, which begins with \a aspect; with nothing, the field used last.
    void addCondition(const std::optional<FieldAspect> &aspect);
    /// The same, beginning with \a condition.
    void addCondition(const FieldCondition &condition);
    void editCondition(int number);
    /// Where the keyboard goes that comes from elsewhere: the first chip, or the line while it is open.
    QWidget *firstStop() const;
    bool isEditing() const;

Q_SIGNALS:
    /// Somebody wants another condition.
    void addRequested();
    /// The keyboard is to go back to the table.
    void left();

protected:
    /// The row itself hands the keyboard on.
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void build();
    void showFilter();
    QWidget *widgetOf(const FilterToken &token);
    FilterChip *makeChip(int number);
    QWidget *makeJoin(const FilterToken &token);
    void change(const std::function<void(RecordFilter &)> &edit);
    void accept(const FieldCondition &condition);
    void closeEditor();
    void focusNumber(int number);
    bool hasKeyboard() const;
    QWidgetList inRow() const;
    /// Of these, where the keyboard can be.
    QWidgetList stops() const;

    CurrentFilter &m_filter;
    const ConditionEditor::Offers m_offers;
    FlowLayout *m_row;
    QWidget *m_rowArea;
    QToolButton *m_add;
    QToolButton *m_clear;
    ConditionEditor *m_editor = nullptr;
    int m_editedNumber = -1; ///< -1: a new one
    int m_focusNext = -1; ///< the condition that gets the keyboard when the row is made anew
    QString m_lastKey;
    QWidgetList m_shown; ///< in the row
};

} // namespace runebook
