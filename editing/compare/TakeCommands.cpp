#include "editing/compare/TakeCommands.h"

#include "editing/compare/CommandRow.h"
#include "editing/compare/CompareSettings.h"
#include "editing/fields/ErrorBubble.h"
#include "editing/fields/GlyphColumns.h"
#include "model/RoundTrip.h"
#include "platform/MenuText.h"
#include "platform/UndoManager.h"
#include "platform/documents/DocumentController.h"

#include <QApplication>
#include <QLocale>
#include <QMenu>
#include <QToolButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Row = CommandRow<TakeCommands, TakeCommands::Command>;

constexpr auto kLeft = ComparedDocuments::Left;
constexpr auto kRight = ComparedDocuments::Right;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {TakeCommands::TakeFieldLeft,
         QT_TR_NOOP("Take Field to the Left"),
         {Qt::ALT | Qt::Key_Comma},
         [](TakeCommands &take) { take.takeCurrentField(kLeft); },
         ":/icons/take-left.svg"},
        {TakeCommands::TakeFieldRight,
         QT_TR_NOOP("Take Field to the Right"),
         {Qt::ALT | Qt::Key_Period},
         [](TakeCommands &take) { take.takeCurrentField(kRight); },
         ":/icons/take-right.svg"},
        {TakeCommands::TakeLeft,
         QT_TR_NOOP("Take to the &Left"),
         {Qt::ALT | Qt::Key_Left},
         [](TakeCommands &take) { take.takeSelected(kLeft); },
         ":/icons/copy-left.svg"},
        {TakeCommands::TakeRight,
         QT_TR_NOOP("Take to the &Right"),
         {Qt::ALT | Qt::Key_Right},
         [](TakeCommands &take) { take.takeSelected(kRight); },
         ":/icons/copy-right.svg"},
        {TakeCommands::TakeAllLeft,
         QT_TR_NOOP("Take All Listed to the Left"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_L},
         [](TakeCommands &take) { take.takeListed(kLeft); }},
        {TakeCommands::TakeAllRight,
         QT_TR_NOOP("Take All Listed to the Right"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_R},
         [](TakeCommands &take) { take.takeListed(kRight); }},
        {TakeCommands::Remove,
         QT_TR_NOOP("Re&move"),
         {Qt::CTRL | Qt::Key_Backspace},
         &TakeCommands::removeSelected},
        {TakeCommands::CopyLeft,
         QT_TR_NOOP("Copy as New Record to the Left"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_D},
         [](TakeCommands &take) { take.copySelected(kLeft); }},
        {TakeCommands::CopyRight,
         QT_TR_NOOP("Copy as New Record to the Right"),
         {Qt::CTRL | Qt::Key_D},
         [](TakeCommands &take) { take.copySelected(kRight); }},
    };
    return rows;
}

/// A copy whose empty fields are absent, as after every edit.
InfoPtr copyOf(const VXGlyphInfo &info)
{
    InfoPtr copy = info.copy();
    std::string buffer;
    for (const GlyphField field : RoundTrip::writtenFields()) {
        if (!copy->stored(field).isAbsent() && copy->utf8(field, buffer).empty())
            copy->clear(field);
    }
    return copy;
}

} // namespace

TakeCommands::TakeCommands(const Parts &parts) : m_parts(parts)
{
    for (const Row &row : commandRows())
        m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
    setUpButton(kLeft);
    setUpButton(kRight);
    connect(&parts.sheet, &CompareSheet::takeRequested, this, &TakeCommands::takeField);
}

/// A button that takes the shown records across, with a menu of what else can be done to that side.
void TakeCommands::setUpButton(Side target)
{
    const bool isLeft = target == kLeft;
    QToolButton *button = m_parts.buttons[target];
    auto *menu = new QMenu(button);
    for (const Command command :
         {isLeft ? TakeLeft : TakeRight, isLeft ? TakeAllLeft : TakeAllRight, isLeft ? CopyLeft : CopyRight})
        menu->addAction(m_actions[command]);
    button->setDefaultAction(m_actions[isLeft ? TakeLeft : TakeRight]);
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setAccessibleName(isLeft ? tr("Take to the Left") : tr("Take to the Right"));
}

// Taking

/// Whether a command may change that side; says why not.
bool TakeCommands::mayChange(Side side) const
{
    const VXDocument *target = m_parts.documents.document(side);
    if (!isOnlyToCompare(target)) // what is being typed in a document window belongs to what is taken
        return target && DocumentController::shared().commitEditing();
    ErrorBubble::show(
        m_parts.buttons[side],
        {u"User"_s,
         1,
         tr("“%1” is read-only: it was opened for this comparison alone.").arg(target->displayName()),
         {},
         {}});
    return false;
}

void TakeCommands::takeSelected(Side target)
{
    m_parts.keys.finish();
    change(
        target, m_parts.records.ofSelected(),
        [](TakeAcross &take, const InfoList &theirs, const InfoList &ours) {
            return take.takeRecords(theirs, ours);
        },
        NextKeys::behindSelection(m_parts.keys.list(), NextKeys::Done::Surely));
}

void TakeCommands::takeListed(Side target)
{
    change(target, m_parts.records.ofListed(),
           [](TakeAcross &take, const InfoList &theirs, const InfoList &ours) {
               return take.takeRecords(theirs, ours);
           },
           {});
}

void TakeCommands::takeField(Side target, std::optional<GlyphField> field)
{
    if (!field)
        return;
    const bool hadFocus = m_parts.sheet.isAncestorOf(QApplication::focusWidget());
    m_parts.keys.finish();
    change(
        target, m_parts.records.ofSelected(),
        [field](TakeAcross &take, const InfoList &theirs, const InfoList &ours) {
            return take.takeField(*field, theirs, ours);
        },
        NextKeys::behindSelection(m_parts.keys.list(), NextKeys::Done::Perhaps));
    // Its arrow has gone, the next one is near.
    if (hadFocus && !m_parts.sheet.focusNextTake(target, *field))
        m_parts.list.setFocus(Qt::OtherFocusReason);
}

void TakeCommands::removeSelected()
{
    m_parts.keys.finish();
    const ListedChange::Records records = m_parts.records.ofSelected();
    change(
        records[kRight].empty() ? kLeft : kRight, records,
        [](TakeAcross &take, const InfoList &theirs, const InfoList &ours) {
            return take.removeMissing(theirs, ours);
        },
        NextKeys::behindSelection(m_parts.keys.list(), NextKeys::Done::Surely));
}

void TakeCommands::change(Side target, const ListedChange::Records &records, const ListedChange::Taking &take,
                          NextKeys next)
{
    if (m_parts.documents.areTwo() && mayChange(target))
        tellLeftOut(target, m_parts.change.take(target, records, take, std::move(next)).leftOut);
}

void TakeCommands::tellLeftOut(Side target, const LeftOut &leftOut) const
{
    if (leftOut.records > 0)
        ErrorBubble::show(m_parts.buttons[target], {u"Runebook"_s, 1, leftOut.text(), {}, {}});
}

// Copying

void TakeCommands::copyFirst(Side target)
{
    const InfoList infos = m_parts.records.ofSelected()[ComparedDocuments::otherSide(target)];
    if (!infos.empty())
        copyRecords({infos.front()}, target);
}

void TakeCommands::copySelected(Side target)
{
    copyRecords(m_parts.records.ofSelected()[ComparedDocuments::otherSide(target)], target);
}

void TakeCommands::copyRecords(const InfoList &infos, Side target)
{
    if (infos.empty() || !mayChange(target))
        return;
    InfoList copies;
    LeftOut leftOut;
    copies.reserve(infos.size());
    for (const InfoPtr &info : infos) {
        InfoPtr copy = copyOf(*info);
        if (const QString refusal = refusalOfEdited(*copy); !refusal.isNull())
            leftOut.add(refusal);
        else
            copies.push_back(std::move(copy));
    }
    tellLeftOut(target, leftOut);
    if (copies.empty())
        return;
    VXDocument *document = m_parts.documents.document(target);
    const UndoGroup group(document->undoManager(),
                          copies.size() == 1
                              ? tr("Copy “%1”").arg(copies.front()->name())
                              : tr("Copy %1 Records").arg(QLocale().toString(std::ssize(copies))));
    if (copies.size() == 1)
        document->addInfo(copies.front());
    else
        document->addInfos(copies);
}

// What can be done

void TakeCommands::validate()
{
    m_parts.sheet.setWritable(m_parts.documents.isWritable(kLeft), m_parts.documents.isWritable(kRight));
    validateFields();
    validateRecords(kLeft);
    validateRecords(kRight);
    const bool hasLeft = !m_parts.records.infos(kLeft).empty();
    const bool hasRight = !m_parts.records.infos(kRight).empty();
    const bool isRemovable = hasLeft != hasRight && m_parts.documents.isWritable(hasLeft ? kLeft : kRight);
    m_actions[Remove]->setEnabled(isRemovable);
    m_actions[Remove]->setText(hasLeft == hasRight ? tr("Re&move")
                                   : hasLeft       ? tr("Re&move from the Left")
                                                   : tr("Re&move from the Right"));
}

void TakeCommands::validateFields()
{
    const std::optional<GlyphField> field = m_parts.sheet.fieldToTake();
    const QString title = field ? menuText(fieldTitle(*field)) : tr("Field");
    m_actions[TakeFieldLeft]->setText(tr("Take %1 to the Left").arg(title));
    m_actions[TakeFieldRight]->setText(tr("Take %1 to the Right").arg(title));
    m_actions[TakeFieldLeft]->setEnabled(field && m_parts.documents.isWritable(kLeft));
    m_actions[TakeFieldRight]->setEnabled(field && m_parts.documents.isWritable(kRight));
}

void TakeCommands::validateRecords(Side target)
{
    const bool isLeft = target == kLeft;
    const bool isWritable = m_parts.documents.isWritable(target);
    const bool canTake = isWritable && !m_parts.records.infos(ComparedDocuments::otherSide(target)).empty();
    m_actions[isLeft ? TakeLeft : TakeRight]->setEnabled(canTake);
    m_actions[isLeft ? CopyLeft : CopyRight]->setEnabled(canTake);
    // Of what only the target has there is nothing to take.
    const CompareMode onlyTarget = isLeft ? CompareMode::OnlyLeft : CompareMode::OnlyRight;
    m_actions[isLeft ? TakeAllLeft : TakeAllRight]->setEnabled(
        isWritable && m_parts.keys.list().rowCount() > 0 && Settings::kCompareMode.value() != onlyTarget);
}

} // namespace runebook
