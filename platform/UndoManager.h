#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUndoStack>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace runebook {

class UndoManager;

/// What a change touches: one part of a thing (a field of a record, by its number) or all of it. Things are
/// told apart by their addresses.
struct UndoTouch {
    static constexpr int kWhole = -1;
    const void *thing = nullptr;
    int part = kWhole;
    auto operator<=>(const UndoTouch &) const = default;
};

/// The inverse of one change. An edit registers it before it acts; performing it must register the inverse
/// of the inverse with \a manager, which makes the redo.
class UndoOperation
{
public:
    virtual ~UndoOperation() = default;
    virtual void perform(UndoManager &manager) = 0;

public: // for taking back one step without those behind it; what says nothing of itself stands in the way
    /// Appends what the change touches; false where nobody can tell.
    virtual bool appendTouched(std::vector<UndoTouch> &) const { return false; }
    /// Another one that does the same, to be performed now though other steps came behind; null where that
    /// cannot be.
    virtual std::unique_ptr<UndoOperation> duplicate() const { return nullptr; }
    using Span = std::span<const std::unique_ptr<UndoOperation>>;
    /// Makes of itself what it has to be once \a later has happened as well: places in a list are others
    /// then. \a together: all operations of its own step. False where both touch the same places.
    virtual bool passBehind(const UndoOperation &later, Span together)
    {
        Q_UNUSED(later)
        Q_UNUSED(together)
        return true;
    }
};

/// The undo history of one document, kept in a QUndoStack: a step for each user command or script run,
/// however many changes it makes. Changes made outside a group are one step for each turn of the event loop.
/// Main thread only.
class UndoManager : public QObject
{
    Q_OBJECT
public:
    explicit UndoManager(QObject *parent = nullptr);
    ~UndoManager() override;

public: // registering
    void registerOperation(std::unique_ptr<UndoOperation> operation);
    /// The same for a function; it must make its change through operations that register in turn.
    void registerUndo(std::function<void()> inverse);
    /// The operation registered last in the open group, or null: an edit may extend it instead of
    /// registering one more.
    UndoOperation *lastOperation() const;
    /// Names the open step, for the menu texts ("Undo Paste"). The first name given stays.
    Q_INVOKABLE void setActionName(const QString &name);
    /// While disabled nothing is registered: for changes that are no edits, such as reading a file.
    void setRegistrationEnabled(bool enabled) { m_enabled = enabled; }
    bool isRegistrationEnabled() const { return m_enabled; }

public: // groups: everything between begin and the matching end is one step
    Q_INVOKABLE void beginUndoGrouping();
    Q_INVOKABLE void endUndoGrouping();
    /// Takes back what the open group has done so far, as if it had never been.
    void abandonGroup();
    /// Open explicit groups.
    Q_INVOKABLE int groupingLevel() const { return m_level; }
    /// All managers, of documents or not, that have an open explicit group.
    static QList<UndoManager *> withOpenGroups();

public: // places
    /// Where somebody was in the data (a selection), which is not part of them and yet comes back with a
    /// step: remembered when the step begins and before it is undone, given back when it was undone or
    /// redone.
    struct PlaceKeeper {
        std::function<std::shared_ptr<const void>()> remember;
        std::function<void(const std::shared_ptr<const void> &place)> giveBack;
    };
    void setPlaceKeeper(PlaceKeeper keeper) { m_placeKeeper = std::move(keeper); }

public: // history
    Q_INVOKABLE bool canUndo() const;
    Q_INVOKABLE bool canRedo() const;
    /// Closes what is open and takes one step back; does nothing when there is none.
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    /// Forgets all steps. What counts as changed goes on counting as changed.
    Q_INVOKABLE void removeAllActions();
    /// Goes back or forward to the state behind the first \a count steps of the stack.
    void goToStep(int count);
    /// The same for going back, as if the steps behind those had never been: none of them can be redone.
    void takeBackToStep(int count);
    /// The names of all steps, those that were undone last.
    Q_INVOKABLE QStringList stepNames() const;
    bool isUndoing() const { return m_state == State::Undoing; }
    bool isRedoing() const { return m_state == State::Redoing; }
    /// True when the document is as it was saved: the clean index of the stack, nothing pending.
    bool isClean() const;
    /// Whether no step was ever taken, be it one that was undone.
    bool isUntouched() const { return m_stack.count() == 0 && m_open.empty(); }
    void setClean();
    /// Makes the document count as changed whatever the history says (a failed save, a recovered file).
    void resetClean();
    /// The stack, for menus and history lists. Do not push onto it.
    QUndoStack *stack() { return &m_stack; }

public: // what is about steps
    /// The inverses that lead to the other side of a step, from 0; valid until the next change.
    UndoOperation::Span operationsOf(int step) const;
    /// Makes the group that is open a part of the step before it, under its own name if it has one; a step
    /// apart all the same where the document was saved between them. To be called in the group.
    void joinLastStep() { m_joinsLast = m_level > 0; }

public: // one step alone
    /// What keeps a step from being taken back without those behind it.
    struct Obstacle {
        enum Reason : quint8 {
            Unknown, ///< nobody can tell what that step touches
            SameThing, ///< it touches what the other one does
            SamePlaces, ///< the same for places in a list
            Gone, ///< what the step itself has changed is there no more
        };
        Reason reason = Unknown;
        int step = 0; ///< from 0; the step itself where no later one is to blame
        UndoTouch touch;
    };
    /// Takes back the step of that number, from 0, as a new step called \a name, and leaves all others as
    /// they are. Nothing happens where that cannot be: the answer says why, for steps that are not done as
    /// well.
    [[nodiscard]] std::optional<Obstacle> undoOnly(int step, const QString &name);

Q_SIGNALS:
    void cleanChanged(bool clean);
    /// A step has begun, was closed, undone or redone.
    void changed();
    /// A step was closed and is the last of the stack now; not said of those that are redone.
    void recorded();

private:
    class Step;
    const Step &stepAt(int step) const;
    std::optional<Obstacle> laterObstacle(int step) const;
    std::optional<Obstacle> adaptToLater(std::vector<std::unique_ptr<UndoOperation>> &operations,
                                         int step) const;
    enum class State { Recording, Undoing, Redoing };
    using Operations = std::vector<std::unique_ptr<UndoOperation>>;

    std::shared_ptr<const void> currentPlace() const;
    void giveBack(const std::shared_ptr<const void> &place) const;
    Operations performAll(Operations operations, State state);
    void closeGroup();
    void noteCleanChange();

    QUndoStack m_stack;
    Operations m_open;
    QString m_openName;
    PlaceKeeper m_placeKeeper;
    std::shared_ptr<const void> m_openPlace; ///< from before the open step
    int m_level = 0;
    State m_state = State::Recording;
    bool m_enabled = true;
    bool m_closePending = false;
    bool m_wasClean = true;
    bool m_holdsNotice = false;
    bool m_forgetsUndone = false;
    bool m_joinsLast = false;
};

/// One undo step in one scope: opens a group, and closes it when it goes.
class UndoGroup
{
public:
    explicit UndoGroup(UndoManager *manager, const QString &name = {}) : m_manager(manager)
    {
        if (!m_manager)
            return;
        m_manager->beginUndoGrouping();
        if (!name.isEmpty())
            m_manager->setActionName(name);
    }
    ~UndoGroup()
    {
        if (m_manager)
            m_manager->endUndoGrouping();
    }
    UndoGroup(const UndoGroup &) = delete;
    UndoGroup &operator=(const UndoGroup &) = delete;

private:
    UndoManager *m_manager;
};

} // namespace runebook
