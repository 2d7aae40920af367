// What the compare window does to the documents: taking across, removing, undoing, saving.
#include "editing/compare/CompareMenus.h"
#include "editing/compare/TakeAcross.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/ErrorBubble.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"
#include "ui_VXCompareDataWindow.h"

#include <QApplication>
#include <QScopedValueRollback>
#include <QSet>
#include <algorithm>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// Beyond so many keys it is not looked for which ones came back.
constexpr qsizetype kManyListed = 100'000;

CompareSheet::Side otherSide(CompareSheet::Side side)
{
    return side == CompareSheet::Left ? CompareSheet::Right : CompareSheet::Left;
}

/// Which records change, as long as it lives, and whether nothing else does.
class ChangedRecords : public QObject
{
public:
    ChangedRecords(VXDocument &document, CompareKey key) : m_key(key)
    {
        const auto moved = [this] { m_areKeptInPlace = false; };
        connect(&document, &VXDocument::infosInserted, this, moved);
        connect(&document, &VXDocument::infosRemoved, this, moved);
        connect(&document, &VXDocument::infoReplaced, this, moved);
        connect(&document, &VXDocument::infosReset, this, moved);
        connect(&document, &VXDocument::infosChanged, this, &ChangedRecords::note);
    }

    /// Whether all of them stand where they stood, under the key that they had.
    bool areKeptInPlace() const { return m_areKeptInPlace; }
    QStringList keys() const
    {
        QStringList keys;
        std::string buffer;
        for (const InfoPtr &info : m_infos) {
            const std::string_view key = keyUtf8(*info, m_key, buffer);
            keys += QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
        }
        return keys;
    }
    bool areAllAmong(InfoList infos)
    {
        std::sort(infos.begin(), infos.end());
        std::sort(m_infos.begin(), m_infos.end());
        m_infos.erase(std::unique(m_infos.begin(), m_infos.end()), m_infos.end());
        return std::includes(infos.begin(), infos.end(), m_infos.begin(), m_infos.end());
    }

private:
    void note(const std::vector<VXDocument::Change> &changes)
    {
        constexpr GlyphField kFields[] {GlyphField::Name, GlyphField::Unicodes, GlyphField::Production};
        for (const VXDocument::Change &change : changes) {
            m_areKeptInPlace &= change.field != kFields[static_cast<int>(m_key)];
            if (m_infos.empty() || m_infos.back() != change.info)
                m_infos.push_back(change.info);
        }
    }

    CompareKey m_key;
    InfoList m_infos;
    bool m_areKeptInPlace = true;
};

} // namespace

// Taking

void VXCompareDataWindow::takeLeft()
{
    takeRecords(CompareSheet::Left, Scope::Selected);
}

void VXCompareDataWindow::takeRight()
{
    takeRecords(CompareSheet::Right, Scope::Selected);
}

void VXCompareDataWindow::takeAllLeft()
{
    takeRecords(CompareSheet::Left, Scope::Listed);
}

void VXCompareDataWindow::takeAllRight()
{
    takeRecords(CompareSheet::Right, Scope::Listed);
}

void VXCompareDataWindow::takeFieldLeft(const QString &key)
{
    takeField(CompareSheet::Left, fieldForKey(key));
}

void VXCompareDataWindow::takeFieldRight(const QString &key)
{
    takeField(CompareSheet::Right, fieldForKey(key));
}

void VXCompareDataWindow::takeCurrentFieldLeft()
{
    takeField(CompareSheet::Left, m_sheet->fieldToTake());
}

void VXCompareDataWindow::takeCurrentFieldRight()
{
    takeField(CompareSheet::Right, m_sheet->fieldToTake());
}

bool VXCompareDataWindow::isWritable(CompareSheet::Side side) const
{
    const VXDocument *chosen = document(side);
    return chosen && chosen != document(otherSide(side)) && !isOnlyToCompare(chosen);
}

/// Whether a command may change that side; says why not.
bool VXCompareDataWindow::mayChange(CompareSheet::Side side)
{
    VXDocument *target = document(side);
    if (!isOnlyToCompare(target)) // what is being typed in a document window belongs to what is taken
        return target && DocumentController::shared().commitEditing();
    ErrorBubble::show(
        buttonOf(side),
        {u"User"_s,
         1,
         tr("“%1” is read-only: it was opened for this comparison alone.").arg(target->displayName()),
         {},
         {}});
    return false;
}

QWidget *VXCompareDataWindow::buttonOf(CompareSheet::Side side) const
{
    return side == CompareSheet::Left ? m_ui->takeLeftButton : m_ui->takeRightButton;
}

/// The records of the selected keys, or of all that are listed.
std::array<InfoList, 2> VXCompareDataWindow::recordsIn(Scope scope)
{
    if (scope == Scope::Selected || filteredKeys()->selectedCount() == m_filteredKeys.rowCount())
        return {leftInfoList()->infos(), rightInfoList()->infos()};
    std::array<InfoList, 2> records;
    for (const CompareSheet::Side side : {CompareSheet::Left, CompareSheet::Right}) {
        if (const VXDocument *chosen = document(side))
            records[side] = recordsWithKeys(chosen->infos(), key(), m_filteredKeys.arrangedObjects());
    }
    return records;
}

void VXCompareDataWindow::takeRecords(CompareSheet::Side target, Scope scope)
{
    change(target, scope, [](TakeAcross &take, const InfoList &theirs, const InfoList &ours) {
        return take.takeRecords(theirs, ours);
    });
}

void VXCompareDataWindow::takeField(CompareSheet::Side target, std::optional<GlyphField> field)
{
    if (!field)
        return;
    const bool hadFocus = m_sheet->isAncestorOf(QApplication::focusWidget());
    change(
        target, Scope::Selected,
        [field](TakeAcross &take, const InfoList &theirs, const InfoList &ours) {
            return take.takeField(*field, theirs, ours);
        },
        GoOn::OnceDone);
    // Its arrow has gone, the next one is near.
    if (hadFocus && !m_sheet->focusNextTake(target, *field))
        m_ui->keyView->setFocus(Qt::OtherFocusReason);
}

void VXCompareDataWindow::removeShown()
{
    const CompareSheet::Side side =
        rightInfoList()->infos().empty() ? CompareSheet::Left : CompareSheet::Right;
    change(side, Scope::Selected, [](TakeAcross &take, const InfoList &theirs, const InfoList &ours) {
        return take.removeMissing(theirs, ours);
    });
}

void VXCompareDataWindow::change(CompareSheet::Side side, Scope scope, const Taking &take, GoOn goOn)
{
    VXDocument *target = document(side);
    VXDocument *source = document(otherSide(side));
    if (!target || !source || target == source || !mayChange(side))
        return;
    const std::array<InfoList, 2> records = recordsIn(scope);
    TakeAcross::Outcome outcome;
    AfterChange after = placeAfter(scope, goOn);
    const bool wasUpToDate = isUpToDate();
    {
        const QScopedValueRollback working(m_isChanging, true);
        TakeAcross across(*source, *target, key(), options());
        outcome = take(across, records[otherSide(side)], records[side]);
        target->flushChanges();
    }
    if (wasUpToDate && outcome.changed > 0 && outcome.inserted + outcome.removed == 0) {
        m_comparedAgain = records;
        listAgain(std::move(after));
    } else if (outcome.hasDone()) {
        listAnew(std::move(after));
    }
    if (outcome.leftOut.records > 0)
        ErrorBubble::show(buttonOf(side), {u"Runebook"_s, 1, outcome.leftOut.text(), {}, {}});
}

// The list after a change

/// Where the list is to go on: at the first key behind those that the command is about.
VXCompareDataWindow::AfterChange VXCompareDataWindow::placeAfter(Scope scope, GoOn goOn)
{
    AfterChange after;
    after.goOn = goOn;
    const IndexSet rows = filteredKeys()->selectionIndexes();
    if (scope == Scope::Listed || rows.empty())
        return after;
    if (goOn == GoOn::OnceDone)
        after.keys = m_filteredKeys.selectedObjects();
    after.row = rows.back() + 1;
    after.formerCount = m_filteredKeys.rowCount();
    if (after.row < after.formerCount)
        after.nextKey = m_filteredKeys.index(static_cast<int>(after.row)).data().toString();
    return after;
}

/// Whether the list is that of the documents as they are, so that only what a command changes has to be
/// compared again.
bool VXCompareDataWindow::isUpToDate()
{
    // What was changed before and is still to be announced makes it stale.
    for (const CompareSheet::Side side : {CompareSheet::Left, CompareSheet::Right})
        document(side)->flushChanges();
    return m_isListed && !m_comparison && !m_isStale && m_comparedMode == CompareMode::Different;
}

/// Lists what is found now that some keys have changed records, all of which are in m_comparedAgain.
void VXCompareDataWindow::listAgain(AfterChange after)
{
    const std::array<InfoList, 2> &records = m_comparedAgain;
    std::vector<quint32> places;
    places.reserve(records[CompareSheet::Left].size());
    for (const InfoPtr &info : records[CompareSheet::Left])
        places.push_back(static_cast<quint32>(document(CompareSheet::Left)->placeOf(info.get())));
    m_found.compareAgain(records[CompareSheet::Left], places, records[CompareSheet::Right], key(), options());
    m_counts[static_cast<std::size_t>(CompareMode::Different)] = m_found.keys.size();
    m_after = std::move(after);
    showCounts();
    showFieldCounts();
    showKeys(keysToList());
}

void VXCompareDataWindow::listAnew(AfterChange after)
{
    m_after = std::move(after);
    updateFilters();
}

/// The rows of \a keys that the last command leaves to be looked at; nothing when the selection stays.
std::optional<IndexSet> VXCompareDataWindow::rowsAfterChange(const AfterChange &after,
                                                             const QStringList &keys) const
{
    if (after.goOn == GoOn::AtWhatCameBack) {
        const QSet<QString> known(after.keys.begin(), after.keys.end());
        IndexSet rows;
        for (qsizetype row = 0; row < keys.size() && keys.size() <= kManyListed; ++row) {
            if (!known.contains(keys.at(row)))
                rows.push_back(row);
        }
        return rows.empty() ? std::nullopt : std::optional(rows);
    }
    // Of a field that was taken other ones may still differ: then the record is not done.
    const QSet<QString> undone(after.keys.begin(), after.keys.end());
    if (std::any_of(keys.begin(), keys.end(), [&undone](const QString &key) { return undone.contains(key); }))
        return {};
    if (after.nextKey.isNull())
        return IndexSet {};
    qsizetype row = after.row + keys.size() - after.formerCount;
    if (keys.value(row) != after.nextKey)
        row = keys.indexOf(after.nextKey);
    return row < 0 ? IndexSet {} : IndexSet {row};
}

void VXCompareDataWindow::showKeys(const QStringList &keys)
{
    const std::optional<AfterChange> after = std::exchange(m_after, {});
    // Tells of its selection, whatever it is; the panes follow.
    m_filteredKeys.setContent(keys, after ? rowsAfterChange(*after, keys) : std::nullopt);
    if (!after || keys.isEmpty())
        return;
    m_ui->keyView->scrollTo(
        m_filteredKeys.index(static_cast<int>(m_filteredKeys.selectionIndexes().front())));
    const bool isPastEnd = after->goOn != GoOn::AtWhatCameBack && after->row > 0 && after->nextKey.isNull();
    if (isPastEnd && m_filteredKeys.selectionIndexes() == IndexSet {0})
        m_wrap = Wrap::ToTop;
    showState();
}

// History

void VXCompareDataWindow::undo()
{
    stepInHistory(m_history.toUndo(document(CompareSheet::Left), document(CompareSheet::Right)),
                  &UndoManager::undo);
}

void VXCompareDataWindow::redo()
{
    stepInHistory(m_history.toRedo(document(CompareSheet::Left), document(CompareSheet::Right)),
                  &UndoManager::redo);
}

void VXCompareDataWindow::stepInHistory(VXDocument *target, void (UndoManager::*step)())
{
    if (!target || !DocumentController::shared().commitEditing())
        return;
    AfterChange after;
    after.goOn = GoOn::AtWhatCameBack;
    after.keys = filteredKeys()->arrangedObjects();
    const bool wasUpToDate = document(CompareSheet::Left) && document(CompareSheet::Right) && isUpToDate();
    ChangedRecords changed(*target, key());
    {
        const QScopedValueRollback working(m_isChanging, true);
        (target->undoManager()->*step)();
        target->flushChanges();
    }
    if (!wasUpToDate || !changed.areKeptInPlace()) {
        listAnew(std::move(after));
        return;
    }
    // Mostly it is what was compared again last.
    if (!changed.areAllAmong(m_comparedAgain[target == document(CompareSheet::Right)])) {
        const QStringList keys = changed.keys();
        for (const CompareSheet::Side side : {CompareSheet::Left, CompareSheet::Right})
            m_comparedAgain[side] = recordsWithKeys(document(side)->infos(), key(), keys);
    }
    listAgain(std::move(after));
}

void VXCompareDataWindow::saveDocuments()
{
    if (!DocumentController::shared().commitEditing())
        return;
    for (const CompareSheet::Side side : {CompareSheet::Left, CompareSheet::Right}) {
        VXDocument *chosen = document(side);
        if (chosen && chosen->isDocumentEdited() && !isOnlyToCompare(chosen))
            DocumentPanels::save(*chosen, this, [this](bool) { showActions(); });
    }
}
