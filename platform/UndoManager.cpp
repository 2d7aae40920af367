#include "platform/UndoManager.h"

#include "platform/CallLater.h"

#include <QUndoCommand>
#include <algorithm>
#include <iterator>
#include <utility>

namespace runebook {

namespace {

class FunctionOperation final : public UndoOperation
{
public:
    explicit FunctionOperation(std::function<void()> inverse) : m_inverse(std::move(inverse)) { }
    void perform(UndoManager &) override { m_inverse(); }

private:
    std::function<void()> m_inverse;
};

} // namespace

/// One closed group on the stack. It holds the operations that lead to the other side of the step: those
/// that undo it while it is done, those that redo it while it is undone.
class UndoManager::Step final : public QUndoCommand
{
public:
    Step(UndoManager &manager, Operations operations, const QString &name, std::shared_ptr<const void> before,
         bool joins)
        : QUndoCommand(name),
          m_manager(manager),
          m_operations(std::move(operations)),
          m_before(std::move(before)),
          m_joins(joins)
    {
    }

    int id() const override { return 1; } // so that the stack asks each whether it takes the next one in

    bool mergeWith(const QUndoCommand *next) override
    {
        auto *step = static_cast<Step *>(const_cast<QUndoCommand *>(next)); // NOLINT: it goes afterwards
        if (!step->m_joins)
            return false;
        std::move(step->m_operations.begin(), step->m_operations.end(), std::back_inserter(m_operations));
        if (!step->text().isEmpty())
            setText(step->text());
        return true;
    }

    void undo() override
    {
        m_after = m_manager.currentPlace();
        m_operations = m_manager.performAll(std::move(m_operations), State::Undoing);
        m_manager.giveBack(m_before);
        setObsolete(m_manager.m_forgetsUndone); // the stack drops it
    }

    void redo() override
    {
        // Pushing a command calls redo(); the change is made already then.
        if (std::exchange(m_isNew, false))
            return;
        m_operations = m_manager.performAll(std::move(m_operations), State::Redoing);
        m_manager.giveBack(m_after);
    }

    const Operations &operations() const { return m_operations; }

private:
    UndoManager &m_manager;
    Operations m_operations;
    std::shared_ptr<const void> m_before;
    std::shared_ptr<const void> m_after;
    bool m_isNew = true;
    bool m_joins = false;
};

/// Seldom more than a few. Never destroyed: documents that are open to the end leave it then.
static QList<UndoManager *> &managersInGroups()
{
    static auto &managers = *new QList<UndoManager *>;
    return managers;
}

UndoManager::UndoManager(QObject *parent) : QObject(parent)
{
    connect(&m_stack, &QUndoStack::indexChanged, this, &UndoManager::changed);
    connect(&m_stack, &QUndoStack::cleanChanged, this, &UndoManager::noteCleanChange);
}

UndoManager::~UndoManager()
{
    managersInGroups().removeOne(this);
    // The stack tells of its own end; nobody may hear that from a half-destroyed manager.
    m_stack.disconnect(this);
}

void UndoManager::registerOperation(std::unique_ptr<UndoOperation> operation)
{
    if (!m_enabled)
        return;
    const bool first = m_open.empty();
    if (first && m_state == State::Recording)
        m_openPlace = currentPlace();
    m_open.push_back(std::move(operation));
    if (m_state != State::Recording || !first)
        return;
    if (m_level == 0 && !m_closePending) {
        m_closePending = true;
        callLater(this, [this] {
            m_closePending = false;
            if (m_level == 0)
                closeGroup();
        });
    }
    noteCleanChange();
    Q_EMIT changed();
}

void UndoManager::registerUndo(std::function<void()> inverse)
{
    registerOperation(std::make_unique<FunctionOperation>(std::move(inverse)));
}

UndoOperation *UndoManager::lastOperation() const
{
    return m_enabled && !m_open.empty() ? m_open.back().get() : nullptr;
}

void UndoManager::setActionName(const QString &name)
{
    if (m_openName.isEmpty() && m_state == State::Recording)
        m_openName = name;
}

void UndoManager::beginUndoGrouping()
{
    if (m_state != State::Recording)
        return;
    if (m_level++ == 0) {
        managersInGroups().append(this);
        closeGroup();
    }
}

void UndoManager::endUndoGrouping()
{
    if (m_state != State::Recording || m_level == 0)
        return;
    if (--m_level == 0) {
        managersInGroups().removeOne(this);
        closeGroup();
    }
}

QList<UndoManager *> UndoManager::withOpenGroups()
{
    return managersInGroups();
}

void UndoManager::abandonGroup()
{
    if (m_state != State::Recording)
        return;
    m_openName.clear();
    performAll(std::exchange(m_open, {}), State::Undoing);
    noteCleanChange();
    Q_EMIT changed();
}

void UndoManager::closeGroup()
{
    Operations operations = std::exchange(m_open, {});
    const QString name = std::exchange(m_openName, {});
    std::shared_ptr<const void> place = std::exchange(m_openPlace, {});
    const bool joins = std::exchange(m_joinsLast, false);
    if (operations.empty())
        return;
    m_stack.push(new Step(*this, std::move(operations), name, std::move(place), joins));
    Q_EMIT recorded();
}

std::shared_ptr<const void> UndoManager::currentPlace() const
{
    return m_placeKeeper.remember ? m_placeKeeper.remember() : nullptr;
}

void UndoManager::giveBack(const std::shared_ptr<const void> &place) const
{
    if (m_placeKeeper.giveBack)
        m_placeKeeper.giveBack(place);
}

bool UndoManager::canUndo() const
{
    return m_stack.canUndo() || (m_state == State::Recording && !m_open.empty());
}

bool UndoManager::canRedo() const
{
    return m_stack.canRedo() && m_open.empty();
}

void UndoManager::undo()
{
    if (m_state != State::Recording)
        return;
    // A running script's group is closed first; its own end then finds nothing more to close.
    closeGroup();
    m_stack.undo();
}

void UndoManager::redo()
{
    if (m_state != State::Recording)
        return;
    closeGroup();
    m_stack.redo();
}

void UndoManager::goToStep(int count)
{
    if (m_state != State::Recording)
        return;
    closeGroup();
    m_stack.setIndex(count);
}

void UndoManager::takeBackToStep(int count)
{
    if (m_state != State::Recording)
        return;
    closeGroup();
    // Steps that were undone before lie on those that go now.
    m_forgetsUndone = !m_stack.canRedo();
    while (m_stack.index() > std::max(count, 0))
        m_stack.undo();
    m_forgetsUndone = false;
}

void UndoManager::removeAllActions()
{
    // What was changed is changed all the same. An empty stack would say for a moment that nothing was, and
    // who hears that takes the autosaved content away.
    const bool wasClean = isClean();
    m_holdsNotice = true;
    m_open.clear();
    m_openName.clear();
    m_openPlace.reset();
    m_stack.clear();
    if (!wasClean)
        m_stack.resetClean();
    m_holdsNotice = false;
    noteCleanChange();
}

QStringList UndoManager::stepNames() const
{
    QStringList names;
    for (int i = 0; i < m_stack.count(); ++i)
        names << m_stack.text(i);
    return names;
}

// One step alone

namespace {

/// What a step touches, to be asked for what others touch.
class Touched
{
public:
    /// False where nobody can tell.
    bool add(const UndoOperation &operation) { return operation.appendTouched(m_touches); }
    void settle()
    {
        std::sort(m_touches.begin(), m_touches.end());
        m_touches.erase(std::unique(m_touches.begin(), m_touches.end()), m_touches.end());
    }
    const std::vector<UndoTouch> &all() const { return m_touches; }
    bool meets(const UndoTouch &other) const
    {
        // The whole of a thing comes before its parts.
        auto found =
            std::lower_bound(m_touches.begin(), m_touches.end(), UndoTouch {other.thing, UndoTouch::kWhole});
        const auto isOfThing = [&] { return found != m_touches.end() && found->thing == other.thing; };
        if (!isOfThing())
            return false;
        if (other.part == UndoTouch::kWhole || found->part == UndoTouch::kWhole)
            return true;
        return std::binary_search(found, m_touches.end(), other);
    }

private:
    std::vector<UndoTouch> m_touches;
};

} // namespace

const UndoManager::Step &UndoManager::stepAt(int step) const
{
    return *static_cast<const Step *>(m_stack.command(step));
}

UndoOperation::Span UndoManager::operationsOf(int step) const
{
    return stepAt(step).operations();
}

/// The first step behind \a step that touches what it touches.
std::optional<UndoManager::Obstacle> UndoManager::laterObstacle(int step) const
{
    Touched touched;
    for (const auto &operation : stepAt(step).operations()) {
        if (!touched.add(*operation))
            return Obstacle {Obstacle::Unknown, step, {}};
    }
    touched.settle();
    for (int i = step + 1; i < m_stack.index(); ++i) {
        std::vector<UndoTouch> later;
        for (const auto &operation : stepAt(i).operations()) {
            if (!operation->appendTouched(later))
                return Obstacle {Obstacle::Unknown, i, {}};
        }
        const auto same = std::find_if(later.begin(), later.end(),
                                       [&touched](const UndoTouch &touch) { return touched.meets(touch); });
        if (same != later.end())
            return Obstacle {Obstacle::SameThing, i, *same};
    }
    return {};
}

/// Has \a operations, those of \a step, happen behind all steps that are done.
std::optional<UndoManager::Obstacle> UndoManager::adaptToLater(Operations &operations, int step) const
{
    for (int i = step + 1; i < m_stack.index(); ++i) {
        for (const auto &later : stepAt(i).operations()) {
            for (const auto &operation : operations) {
                if (!operation->passBehind(*later, operations))
                    return Obstacle {Obstacle::SamePlaces, i, {}};
            }
        }
    }
    return {};
}

std::optional<UndoManager::Obstacle> UndoManager::undoOnly(int step, const QString &name)
{
    if (m_state != State::Recording)
        return Obstacle {Obstacle::Unknown, step, {}};
    closeGroup();
    if (step < 0 || step >= m_stack.index())
        return Obstacle {Obstacle::Gone, step, {}};
    if (const std::optional<Obstacle> obstacle = laterObstacle(step))
        return obstacle;
    Operations operations;
    for (const auto &operation : stepAt(step).operations()) {
        operations.push_back(operation->duplicate());
        if (!operations.back())
            return Obstacle {Obstacle::Gone, step, {}};
    }
    if (const std::optional<Obstacle> obstacle = adaptToLater(operations, step))
        return obstacle;
    const UndoGroup group(this, name);
    for (auto operation = operations.rbegin(); operation != operations.rend(); ++operation)
        (*operation)->perform(*this);
    return {};
}

UndoManager::Operations UndoManager::performAll(Operations operations, State state)
{
    m_state = state;
    m_open.clear();
    for (auto operation = operations.rbegin(); operation != operations.rend(); ++operation)
        (*operation)->perform(*this);
    m_state = State::Recording;
    return std::exchange(m_open, {});
}

bool UndoManager::isClean() const
{
    return m_stack.isClean() && (m_state != State::Recording || m_open.empty());
}

void UndoManager::setClean()
{
    closeGroup();
    m_stack.setClean();
    noteCleanChange();
}

void UndoManager::resetClean()
{
    m_stack.resetClean();
    noteCleanChange();
}

void UndoManager::noteCleanChange()
{
    if (m_holdsNotice)
        return;
    const bool clean = isClean();
    if (std::exchange(m_wasClean, clean) != clean)
        Q_EMIT cleanChanged(clean);
}

} // namespace runebook
