#include "editing/window/ManyCommands.h"

#include "editing/fields/EditNames.h"
#include "editing/many/CharactersPlan.h"
#include "editing/many/CharactersSheet.h"
#include "editing/many/EntriesSheet.h"
#include "editing/many/ProductionSheet.h"
#include "editing/many/VariantsSheet.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "model/FieldTable.h"
#include "platform/CallLater.h"
#include "platform/LongWork.h"
#include "platform/MemoryRoom.h"
#include "platform/UndoManager.h"

#include <QTimer>
#include <algorithm>
#include <memory>
#include <new>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kSliceMs = 8;

const QDeadlineTimer kNoDeadline(QDeadlineTimer::Forever);

Error refusal(const QString &text)
{
    return {u"EditError"_s, 1, text, {}, {}};
}

} // namespace

ManyCommands::ManyCommands(const WindowParts &parts, QObject *parent) : QObject(parent), m_parts(parts) { }

InfoList ManyCommands::selectedOrShown() const
{
    return m_parts.list.selectedCount() > 0 ? m_parts.list.selectedObjects() : m_parts.list.arrangedObjects();
}

/// Once what is in the way of the rows, such as the sheet, is gone.
void ManyCommands::select(const InfoList &infos)
{
    if (infos.empty())
        return;
    m_parts.list.setSelectedObjects(infos);
    QTimer::singleShot(0, this, [this, first = infos.front()] {
        if (const qsizetype row = m_parts.list.rowOfObject(first); row >= 0)
            m_parts.table.scrollTo(m_parts.list.index(static_cast<int>(row), 0));
    });
}

/// Once the sheet is closed: long work turns the event loop, which may delete the sheet in the middle of it.
template <class Plan> void ManyCommands::carryOutLater(std::shared_ptr<Plan> plan)
{
    callLater(this, [this, plan] {
        if (carryOut(*plan))
            m_parts.showMessage(plan->summary());
    });
}

// By hand

void ManyCommands::duplicate()
{
    if (m_parts.list.selectedCount() == 0 || !m_parts.commitEditing())
        return;
    FreeNames names(m_parts.document);
    std::vector<NewRecord> copies;
    const InfoList selected = m_parts.list.selectedObjects();
    for (const InfoPtr &info : selected)
        copies.push_back({duplicateOf(*info, names.nameFor(info->name())), info});
    const UndoGroup group(m_parts.document.undoManager(), editNameOf(tr("Duplicate %1"), selected));
    select(insertBehind(m_parts.document, std::move(copies)));
}

void ManyCommands::editEntries(std::optional<GlyphField> field)
{
    if (m_parts.list.selectedCount() == 0 || !m_parts.commitEditing())
        return;
    auto *sheet = new EntriesSheet(m_parts.document, m_parts.list.selectedObjects(), field, &m_parts.window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::accepted, this,
            [this, sheet] { carryOutLater(std::shared_ptr(sheet->takePlan())); });
    sheet->open();
}

void ManyCommands::open(PlanSheet *sheet)
{
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::accepted, this,
            [this, sheet] { carryOutLater(std::shared_ptr(sheet->takePlan())); });
    sheet->open();
}

void ManyCommands::addVariants()
{
    if (m_parts.list.selectedCount() > 0 && m_parts.commitEditing())
        open(new VariantsSheet(m_parts.document, m_parts.list.selectedObjects(), &m_parts.window));
}

InfoPtr ManyCommands::placeForNew() const
{
    return m_parts.list.selectedCount() == 1 ? m_parts.list.selectedObjects().front() : nullptr;
}

void ManyCommands::addCharacters()
{
    if (m_parts.commitEditing())
        open(new CharactersSheet(m_parts.document, placeForNew(), &m_parts.window));
}

void ManyCommands::fillProductionNames()
{
    if (m_parts.commitEditing())
        open(new ProductionSheet(m_parts.document, selectedOrShown(), &m_parts.window));
}

// Carrying out

bool ManyCommands::inSlices(const QString &stepName, const std::function<bool(const QDeadlineTimer &)> &goOn,
                            const std::function<double()> &part)
{
    LongWork work(stepName + u'…', &m_parts.window);
    UndoManager *undo = m_parts.document.undoManager();
    const UndoGroup group(undo, stepName);
    while (!goOn(QDeadlineTimer(kSliceMs))) {
        if (!work.goOn(part())) {
            undo->abandonGroup();
            return false;
        }
    }
    return true;
}

bool ManyCommands::carryOut(RecordPlan &plan)
{
    // With what the table, the selection, the undo history and what is known of problems take.
    constexpr std::size_t kForEachNew = 896;
    constexpr std::size_t kForEachChanged = 64;
    try {
        ensureRoom(std::size_t(plan.countOfTaken()) * (plan.makesRecords() ? kForEachNew : kForEachChanged));
    } catch (const std::bad_alloc &) {
        m_parts.showMessage(tr("There is not enough memory for so many records. Nothing was done."));
        return false;
    }
    const bool isDone = inSlices(
        plan.stepName(), [&plan](const QDeadlineTimer &deadline) { return plan.applyMore(deadline); },
        [&plan] { return plan.applied(); });
    if (isDone)
        select(plan.added());
    return isDone;
}

bool ManyCommands::carryOut(EntryPlan &plan)
{
    return inSlices(
        plan.change().stepName(plan.changing()),
        [&plan](const QDeadlineTimer &deadline) { return plan.applyMore(deadline); },
        [&plan] { return plan.progress(); });
}

// For scripts

bool ManyCommands::carryOutAll(RecordPlan &plan, Error *error)
{
    plan.planMore(kNoDeadline);
    if (const QString obstacle = plan.obstacle(); !obstacle.isNull())
        return fail(error, refusal(obstacle));
    return plan.countOfTaken() == 0 || carryOut(plan);
}

qsizetype ManyCommands::changeEntries(const QString &key, const QStringList &added,
                                      const QStringList &removed, Error *error)
{
    const std::optional<GlyphField> field = fieldForKey(key);
    if (!field || !hasEntries(*field))
        return fail(error, refusal(tr("“%1” is no field with a list of entries.").arg(key))), -1;
    if (!m_parts.commitEditing(error))
        return -1;
    const TypedEntries typed = typedEntries(*field, added.join(kListSeparator));
    if (!typed.objection.isNull())
        return fail(error, refusal(typed.objection)), -1;
    const TypedEntries gone = typedEntries(*field, removed.join(kListSeparator));
    EntryPlan plan(m_parts.document, m_parts.list.selectedObjects(), {*field, typed.entries, gone.entries});
    plan.planMore(kNoDeadline);
    if (!plan.refusals().empty()) {
        const EntryPlan::Refusal &first = plan.refusals().front();
        return fail(error, refusal(first.info->name() + u": "_s + first.reason)), -1;
    }
    return plan.changing().empty() || carryOut(plan) ? std::ssize(plan.changing()) : -1;
}

InfoList ManyCommands::addVariants(const QStringList &suffixes, const QStringList &fields, Error *error)
{
    VariantChoices choices {VariantChoices::suffixesOfText(suffixes.join(u' ')), {}};
    const std::vector<GlyphField> possible = VariantChoices::possibleFields();
    for (const QString &key : fields) {
        const std::optional<GlyphField> field = fieldForKey(key);
        if (!field || std::find(possible.begin(), possible.end(), *field) == possible.end())
            return fail(error, refusal(tr("“%1” is no field that a variant takes over.").arg(key))),
                   InfoList();
        choices.fields.push_back(*field);
    }
    if (!m_parts.commitEditing(error))
        return {};
    VariantsPlan plan(m_parts.document, m_parts.list.selectedObjects(), choices);
    return carryOutAll(plan, error) ? plan.added() : InfoList();
}

InfoList ManyCommands::addCharacters(const QString &text, Error *error)
{
    if (!m_parts.commitEditing(error))
        return {};
    CharactersPlan plan(m_parts.document, TypedCharacters::ofText(text), placeForNew());
    return carryOutAll(plan, error) ? plan.added() : InfoList();
}

qsizetype ManyCommands::fillProductionNames(const QString &rule, bool onlyEmpty, Error *error)
{
    const std::optional<ProductionRule> known = productionRuleOfWord(rule);
    if (!known)
        return fail(error, refusal(tr("“%1” is none of list, codepoint, parts.").arg(rule))), -1;
    if (!m_parts.commitEditing(error))
        return -1;
    ProductionPlan plan(m_parts.document, selectedOrShown(), *known,
                        onlyEmpty ? ProductionPlan::Which::OnlyEmpty : ProductionPlan::Which::All);
    return carryOutAll(plan, error) ? plan.countOfTaken() : -1;
}

} // namespace runebook
