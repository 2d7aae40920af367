#pragma once

#include "editing/search/FieldAspect.h"
#include "editing/search/RecordFilter.h"
#include "editing/window/WindowParts.h"

#include <QObject>

class QMenu;
class QVBoxLayout;

namespace runebook {

class FilterBar;

/// The conditions that a window's records have to meet besides the search: the row of chips above the table,
/// made when it is first needed, and the filters that the user has saved.
class WindowFilters : public QObject
{
    Q_OBJECT
public:
    /// The row goes into \a layout, in front of its last part, the table.
    WindowFilters(const WindowParts &parts, QVBoxLayout &layout, QObject *parent);

    /// Null until it is shown for the first time.
    FilterBar *bar() const { return m_bar; }
    /// Opens the line for a new condition.
    void addCondition();
    /// The same for a regular expression, and takes it out of the search field.
    void addPattern(const QString &pattern);
    void clear();
    bool hasConditions() const;
    /// Whether there are conditions and not all of them are switched off.
    bool isOn() const;
    void setOn(bool isOn);
    /// What was cleared or replaced last comes back.
    void bringBack();
    bool canBringBack() const { return !m_former.isEmpty(); }
    /// Asks for a name.
    void save();
    void manage();
    /// Fills \a menu with the saved filters, to be chosen.
    void listSaved(QMenu &menu);

public: // for scripts
    /// What is asked now, as a text; empty when nothing is.
    QString text() const;
    /// The filter with that name, or the one that the text says; an empty text clears.
    bool setText(const QString &nameOrText, Error *error);

protected:
    /// Escape in the empty search field takes the conditions away.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void show();
    void follow();
    QStringList offersFor(const FieldAspect &aspect) const;

    WindowParts m_parts;
    QVBoxLayout &m_layout;
    FilterBar *m_bar = nullptr;
    RecordFilter m_last; ///< as it was before the next change
    RecordFilter m_former;
};

} // namespace runebook
