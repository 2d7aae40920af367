#pragma once

#include "editing/window/WindowParts.h"

#include <QObject>

class QMenu;

namespace runebook {

/// The steps of a document's history, each to be taken back alone: what came behind it stays. What is in the
/// way of a step is said when it is chosen.
class UndoOnlyMenu : public QObject
{
    Q_OBJECT
public:
    UndoOnlyMenu(const WindowParts &parts, QObject *parent);

    /// Puts it behind what stands in \a history.
    void addTo(QMenu &history);
    /// Opens it over the table, for the keyboard.
    void popUp();
    bool hasSteps() const;

private:
    void fill(QMenu &menu);
    void takeBack(int step);

    WindowParts m_parts;
    QMenu *m_menu; ///< owned by the window
};

} // namespace runebook
