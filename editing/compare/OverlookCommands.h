#pragma once

#include <QObject>
#include <array>

class QAction;
class QLabel;
class QMenu;

namespace runebook {

/// The commands that say what the compare window overlooks, and the label that tells of it.
class OverlookCommands : public QObject
{
    Q_OBJECT
public:
    enum Command { IgnoreCase, IgnoreSpaces, CommandCount };

    explicit OverlookCommands(QLabel &label);

    QAction *action(Command command) const { return m_actions[command]; }
    void addFields(QMenu &menu);
    static void toggleCase();
    static void toggleSpaces();

private:
    void show();

    QLabel &m_label;
    std::array<QAction *, CommandCount> m_actions {};
};

} // namespace runebook
