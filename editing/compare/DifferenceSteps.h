#pragma once

#include "editing/compare/ShownRecords.h"

class QAction;
class QLabel;
class QListView;
class QToolButton;

namespace runebook {

/// Going through the list of keys, with the line that says where in it somebody is.
class DifferenceSteps : public QObject
{
    Q_OBJECT
public:
    enum Command { Next, Previous, SelectAll, CommandCount };
    struct Widgets {
        QListView *list;
        QLabel *position;
        QToolButton *next;
        QToolButton *previous;
    };

    DifferenceSteps(ListedKeys &keys, const ShownRecords &records, const Widgets &widgets);

    QAction *action(Command command) const { return m_actions[command]; }
    /// Behind the last one comes the first again, and the line says so.
    void go(int step);
    void selectAll();
    /// Shows what there is now.
    void show();

private:
    enum class Wrap { None, ToTop, ToEnd };

    void goOn(bool isFromTop);
    QString positionText() const;

    ListedKeys &m_keys;
    const ShownRecords &m_records;
    Widgets m_widgets;
    std::array<QAction *, CommandCount> m_actions {};
    Wrap m_wrap = Wrap::None; ///< how the selection came where it is
};

} // namespace runebook
