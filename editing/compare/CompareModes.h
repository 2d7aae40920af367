#pragma once

#include "editing/compare/ListedKeys.h"

class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QRadioButton;

namespace runebook {

class CompareSheet;

/// Which differences the compare window lists, by which key, and whether it folds away the fields that agree:
/// the commands and controls of it, with how many keys there are of each kind.
class CompareModes : public QObject
{
    Q_OBJECT
public:
    enum Command { ShowOnlyRight, ShowOnlyLeft, ShowDifferent, OnlyDifferences, CommandCount };
    struct Widgets {
        std::array<QRadioButton *, kCompareModeCount> modes;
        std::array<QLabel *, kCompareModeCount> counts;
        QComboBox *key;
        QCheckBox *onlyDifferences;
    };

    CompareModes(ListedKeys &keys, CompareSheet &sheet, const Widgets &widgets);

    QAction *action(Command command) const { return m_actions[command]; }
    static void choose(CompareMode mode);
    static void toggleOnlyDifferences();
    /// Once everything is known: has the list begin with a kind of differences that there is.
    void pickMode() { m_picksMode = true; }

private:
    void followSettings();
    void showSettings();
    void showCounts();
    void pickModeOfDone();

    ListedKeys &m_keys;
    CompareSheet &m_sheet;
    Widgets m_widgets;
    std::array<QAction *, CommandCount> m_actions {};
    bool m_picksMode = false;
};

} // namespace runebook
