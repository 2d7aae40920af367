#pragma once

#include "editing/compare/CompareSheet.h"
#include "editing/compare/ListedChange.h"
#include "editing/compare/ShownRecords.h"

class QAction;
class QToolButton;

namespace runebook {

/// Taking fields and records across, removing and copying them: the commands, the buttons above the records
/// and the arrows between the fields. What is taken makes the target's records like those of the other side,
/// in place; the next difference is selected then.
class TakeCommands : public QObject
{
    Q_OBJECT
public:
    using Side = ComparedDocuments::Side;
    enum Command {
        TakeFieldLeft,
        TakeFieldRight,
        TakeLeft,
        TakeRight,
        TakeAllLeft,
        TakeAllRight,
        Remove,
        CopyLeft,
        CopyRight,
        CommandCount
    };
    struct Parts {
        ComparedDocuments &documents;
        ListedKeys &keys;
        ShownRecords &records;
        ListedChange &change;
        CompareSheet &sheet;
        QWidget &list; ///< has the focus when no further field can be taken
        std::array<QToolButton *, 2> buttons; ///< by the side into which they take
    };

    explicit TakeCommands(const Parts &parts);

    QAction *action(Command command) const { return m_actions[command]; }
    /// Takes the records of the selected keys into the side \a target: every field of those that both have,
    /// and what it lacks, behind the neighbour that it follows on the other side.
    void takeSelected(Side target);
    /// The same for all keys that are listed.
    void takeListed(Side target);
    /// Takes one field of the records of the selected keys.
    void takeField(Side target, std::optional<GlyphField> field);
    /// The differing field that has the focus, or the first one.
    void takeCurrentField(Side target) { takeField(target, m_parts.sheet.fieldToTake()); }
    /// Removes the records of the selected keys that only one side has.
    void removeSelected();
    /// Appends a copy of the first record shown on the other side, or of all of them as one step, whatever is
    /// there.
    void copyFirst(Side target);
    void copySelected(Side target);
    void validate();

private:
    void setUpButton(Side target);
    bool mayChange(Side side) const;
    void change(Side target, const ListedChange::Records &records, const ListedChange::Taking &take,
                NextKeys next);
    void copyRecords(const InfoList &infos, Side target);
    void tellLeftOut(Side target, const LeftOut &leftOut) const;
    void validateFields();
    void validateRecords(Side target);

    Parts m_parts;
    std::array<QAction *, CommandCount> m_actions {};
};

} // namespace runebook
