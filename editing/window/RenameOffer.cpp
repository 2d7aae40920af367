#include "editing/window/RenameOffer.h"

#include "document/VXDocument.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/window/NameUsesSearch.h"
#include "editing/window/UsesDialog.h"
#include "editing/window/WindowSettings.h"
#include "model/InfoFieldUndo.h"
#include "platform/CallLater.h"
#include "platform/LongWork.h"
#include "platform/MessageBar.h"

#include <QLocale>
#include <QScopedValueRollback>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using FieldUndo = InfoFieldUndo<VXGlyphInfo, GlyphField, FieldValue>;

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

} // namespace

RenameOffer::RenameOffer(const WindowParts &parts, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_search(new NameUsesSearch(
          parts.document,
          [this] { return NameUses::ofFormer(m_parts.document.infos(), m_parts.document, m_renamed); }, this))
{
    connect(m_parts.document.undoManager(), &UndoManager::recorded, this, &RenameOffer::noteStep);
    connect(m_search, &NameUsesSearch::finished, this, &RenameOffer::offer);
}

// What was renamed

void RenameOffer::noteStep()
{
    const UndoManager &history = *m_parts.document.undoManager();
    if (m_isFollowing)
        return;
    const int step = m_parts.document.undoManager()->stack()->index() - 1;
    forgetUndone();
    const bool hadSome = hasRenamed();
    bool hasMore = false;
    for (const auto &operation : history.operationsOf(step)) {
        if (const auto *fields = dynamic_cast<const FieldUndo *>(operation.get())) {
            fields->forEach([&](const InfoPtr &info, GlyphField field, const FieldValue &old) {
                if (field != GlyphField::Name || info->listings() == 0)
                    return;
                add({info, old.toString(info->sourceData())});
                hasMore = true;
            });
        }
    }
    if (!hasMore)
        return;
    m_step = hadSome ? -1 : step;
    // A reload is no renaming: the document is as it was saved once that is done.
    callLater(this, [this] {
        Q_EMIT changed();
        if (m_parts.document.undoManager()->isClean())
            clear();
        else if (Settings::kRenamesElsewhere.value() != RenamesElsewhere::Never)
            look();
    });
}

/// Who is renamed twice had the first name.
void RenameOffer::add(const Renamed &renamed)
{
    constexpr std::size_t kFew = 64; // typed ones; a command over many tells of each once
    const auto isSame = [&](const Renamed &each) { return each.info == renamed.info; };
    if (m_renamed.size() < kFew && std::any_of(m_renamed.begin(), m_renamed.end(), isSame))
        return;
    m_renamed.push_back(renamed);
}

void RenameOffer::forgetUndone()
{
    std::erase_if(m_renamed, [](const Renamed &each) {
        return each.info->listings() == 0 || each.info->name() == each.former;
    });
}

void RenameOffer::clear()
{
    m_renamed.clear();
    m_search->stop();
    Q_EMIT changed();
}

// Offering

void RenameOffer::look()
{
    forgetUndone();
    if (hasRenamed())
        m_search->start();
}

QString RenameOffer::question(const NameUses &uses) const
{
    const qsizetype others = uses.countOfRecords();
    if (m_renamed.size() == 1) {
        const QString former = cellDisplayText(m_renamed.front().former);
        return others == 1
            ? tr("One other record uses the name “%1”, which is “%2” now.")
                  .arg(former, cellDisplayText(m_renamed.front().info->name()))
            : tr("%3 other records use the name “%1”, which is “%2” now.")
                  .arg(former, cellDisplayText(m_renamed.front().info->name()), numberText(others));
    }
    return others == 1 ? tr("One other record uses a name that was changed.")
                       : tr("%1 other records use names that were changed (%2).")
                             .arg(numberText(others), numberText(uses.countOfNames()));
}

void RenameOffer::offer()
{
    const NameUses &uses = m_search->uses();
    if (uses.uses().empty()) {
        if (uses.leftOut().records > 0)
            m_parts.showMessage(uses.leftOut().text());
        clear();
        return;
    }
    const QString asked = question(uses);
    m_search->stop();
    if (Settings::kRenamesElsewhere.value() == RenamesElsewhere::Always) {
        followAll();
        return;
    }
    m_parts.messages.ask(asked,
                         {{tr("Rename There &Too"), [this] { followAll(); }},
                          {tr("S&how…"), [this] { showList(); }},
                          {tr("&Leave Them"), [this] { clear(); }}});
}

UsesDialog *RenameOffer::showList()
{
    forgetUndone();
    if (!hasRenamed()) {
        m_parts.showMessage(tr("No record was renamed since the last time that others followed."));
        return nullptr;
    }
    const auto maker = [this, renamed = m_renamed] {
        return NameUses::ofFormer(m_parts.document.infos(), m_parts.document, renamed);
    };
    const QString title = m_renamed.size() == 1
        ? tr("Rename “%1” to “%2” in Other Records")
              .arg(cellDisplayText(m_renamed.front().former), cellDisplayText(m_renamed.front().info->name()))
        : tr("Rename in Other Records");
    auto *search = new NameUsesSearch(m_parts.document, maker, this);
    auto *list = new UsesDialog(title, search, &m_parts.window);
    connect(list, &UsesDialog::showRequested, this, &RenameOffer::showRequested);
    connect(list, &UsesDialog::followRequested, this, [this, list] {
        list->hide();
        const NameUses uses = list->search().uses();
        std::vector<bool> chosen(uses.uses().size());
        for (std::size_t i = 0; i < chosen.size(); ++i)
            chosen[i] = list->isChosen(i);
        list->close();
        follow(uses, [&chosen](std::size_t use) { return chosen[use]; });
    });
    list->show();
    return list;
}

// Following

void RenameOffer::followAll()
{
    if (!m_parts.commitEditing())
        return;
    forgetUndone();
    NameUses uses = NameUses::ofFormer(m_parts.document.infos(), m_parts.document, m_renamed);
    LongWork work(tr("Looking for names…"), &m_parts.window);
    constexpr std::chrono::milliseconds kSlice(20);
    while (!uses.runFor(kSlice)) {
        if (!work.goOn(uses.progress()))
            return;
    }
    follow(uses, {});
}

/// As a part of the step that has renamed, where that is still the last one.
void RenameOffer::follow(const NameUses &uses, const std::function<bool(std::size_t)> &isChosen)
{
    UndoManager &history = *m_parts.document.undoManager();
    const QScopedValueRollback following(m_isFollowing, true);
    std::optional<qsizetype> records;
    {
        const UndoGroup group(&history);
        const bool isLast = m_step >= 0 && m_step == history.stack()->index() - 1;
        LongWork work(tr("Renaming…"), &m_parts.window);
        records = uses.follow(isChosen, [&work](double done) { return work.goOn(done); });
        if (!records) {
            history.abandonGroup();
        } else {
            history.setActionName(nameOfRenaming(m_renamed, *records + (isLast ? std::ssize(m_renamed) : 0)));
            if (isLast)
                history.joinLastStep();
        }
    }
    m_parts.document.flushChanges();
    if (!records)
        return;
    QString told = *records == 1 ? tr("Renamed in one other record.")
                                 : tr("Renamed in %1 other records.").arg(numberText(*records));
    if (uses.leftOut().records > 0)
        told += u'\n' + uses.leftOut().text();
    m_parts.showMessage(told);
    clear();
}

} // namespace runebook
