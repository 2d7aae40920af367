#include "document/VXDocument.h"

// Of a document: writing it, what that leaves out or changes, and the form in which it is autosaved.

#include "document/AutosaveForm.h"
#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/OpenConflicts.h"
#include "document/SavableForm.h"
#include "document/SavingChanges.h"
#include "document/TabbedTable.h"
#include "platform/CheckedFile.h"
#include "platform/FilePath.h"
#include "platform/TurningWindows.h"

#include <QLocale>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kXMLType = "public.xml"_L1;
constexpr auto kTableType = "public.plain-text"_L1;

/// One number for all that a file holds of a record.
size_t hashOfValues(const VXGlyphInfo &info)
{
    size_t hash = qHashMulti(0, info.caseValue(), info.direction(), info.unicodes(), info.altNames());
    for (const GlyphField field : RoundTrip::writtenFields())
        hash = qHashMulti(hash, info.stringValue(field));
    return hash;
}

QString callOf(const VXGlyphInfo &info, qsizetype place)
{
    const QString name = info.name().left(80);
    return name.isEmpty() ? VXDocument::tr("record %1").arg(QLocale().toString(qlonglong(place + 1))) : name;
}

} // namespace

const VXDocument::Unkept &VXDocument::unkept() const
{
    if (m_unkept && m_unkept->revision == m_revision)
        return *m_unkept;
    constexpr std::size_t kAtOnce = 512;
    Unkept found {{}, m_revision};
    RoundTrip roundTrip(m_fileVersion, RoundTrip::Of::Everything);
    std::vector<VXGlyphInfo *> infos;
    std::vector<qsizetype> places;
    std::vector<RoundTrip::Outcome> outcomes;
    const auto look = [&] {
        roundTrip.check(infos, outcomes);
        for (std::size_t i = 0; i < outcomes.size(); ++i) {
            const bool takesOthers = outcomes[i] == RoundTrip::Outcome::TakesOthers;
            // Of a record that nobody has changed the reading has told already what becomes of it.
            const bool isTold = infos[i]->isAsRead() && m_fileVersion == m_readVersion;
            if (takesOthers || (outcomes[i] != RoundTrip::Outcome::Same && !isTold))
                found.records.push_back({places[i], takesOthers});
        }
        infos.clear();
        places.clear();
    };
    const auto lookAtAll = [&](const InfoList &all) {
        qsizetype place = -1;
        for (const InfoPtr &info : all) {
            ++place;
            if (!info->unchangedLine(m_fileVersion).empty())
                continue;
            infos.push_back(info.get());
            places.push_back(place);
            if (infos.size() == kAtOnce)
                look();
        }
        look();
    };
    doApart(GlyphDataWriter::sizeOf(this->infos(), m_fileVersion),
            [&, &all = this->infos()] { lookAtAll(all); });
    m_unkept = std::move(found);
    return *m_unkept;
}

SavingLosses VXDocument::savingLosses(const QString &type) const
{
    constexpr qsizetype kListed = 1000;
    SavingLosses losses;
    if (type != kXMLType || unkept().records.empty())
        return losses;
    const RoundTrip roundTrip(m_fileVersion, RoundTrip::Of::Everything);
    const auto look = [&](const InfoList &all, qsizetype place, bool takesOthers) {
        const VXGlyphInfo &info = *all[static_cast<std::size_t>(place)];
        if (!takesOthers && m_acceptedLosses.contains(hashOfValues(info)))
            return;
        ++losses.count;
        losses.takingOthers += takesOthers;
        if (losses.listed.size() >= kListed)
            return;
        for (const RoundTrip::Loss &loss : roundTrip.losses(info)) {
            const QString title = titleOfField(loss.field);
            losses.listed << SavingLoss {place, callOf(info, place), title, sentenceOfLoss(info, loss, title),
                                         RoundTrip::takesOthers(info, loss.field)};
        }
    };
    doApart(GlyphDataWriter::sizeOf(infos(), m_fileVersion), [&, &all = infos()] {
        for (const auto &[place, takesOthers] : m_unkept->records)
            look(all, place, takesOthers);
    });
    return losses;
}

void VXDocument::noteAcceptedLosses()
{
    const std::vector<Unkept::Record> &records = unkept().records;
    if (records.empty())
        return;
    doApart(GlyphDataWriter::sizeOf(infos(), m_fileVersion), [&, &all = infos()] {
        for (const auto &[place, takesOthers] : records) {
            if (!takesOthers)
                m_acceptedLosses.insert(hashOfValues(*all[static_cast<std::size_t>(place)]));
        }
    });
}

qsizetype VXDocument::fixSavingLosses()
{
    std::vector<std::pair<InfoPtr, std::vector<FieldFix>>> plan;
    doApart(GlyphDataWriter::sizeOf(infos(), m_fileVersion),
            [&, &all = infos(), &records = unkept().records] {
                for (const auto &[place, takesOthers] : records) {
                    const InfoPtr &info = all[static_cast<std::size_t>(place)];
                    if (std::vector<FieldFix> fixes = savableForm(*info, m_fileVersion); !fixes.empty())
                        plan.emplace_back(info, std::move(fixes));
                }
            });
    const UndoGroup group(undoManager(), tr("Fix Values"));
    for (const auto &[info, fixes] : plan) {
        for (const FieldFix &fix : fixes)
            storeEdited(*info, fix.field, fix.value);
    }
    flushChanges();
    return static_cast<qsizetype>(plan.size());
}

bool VXDocument::readAutosavedContents(const QString &path, bool *isWhole, Error *error)
{
    *isWhole = true;
    const std::optional<QByteArray> bytes = readUtf8File(path, error);
    if (!bytes)
        return false;
    AutosavedContent content = readAutosavedContent(*bytes);
    *isWhole = content.isWhole;
    m_fileVersion = content.fileVersion;
    m_readVersion = m_fileVersion;
    m_readNotes = content.notes;
    m_fileNotes = m_readNotes;
    // They are not in the file of the document: whoever restores them compares both.
    for (const InfoPtr &info : content.infos)
        info->setNotAsRead();
    install(std::move(content.infos));
    return true;
}

bool VXDocument::writeToURLOfType(const QString &url, const QString &type, Error *error)
{
    constexpr qsizetype kTold = 20;
    ContentProducer produce;
    Error losses;
    if (type == kXMLType) {
        const std::vector<Unkept::Record> &records = unkept().records;
        if (std::any_of(records.begin(), records.end(),
                        [](const auto &record) { return record.takesOthers; })) {
            losses = {u"SavingLossesError"_s,
                      2,
                      tr("“%1” was not written: values would take other records with them.").arg(url),
                      savingLosses(type).lines(kTold).join(u'\n'),
                      {}};
            // A script that does not ask for the reason is told all the same.
            if (!error)
                ErrorPresenter::shared().present(losses);
            return fail(error, losses);
        }
        // A save has asked before. Who writes otherwise, as scripts do, is told.
        if (const SavingLosses lost = savedState() ? SavingLosses() : savingLosses(type); !lost.isEmpty())
            losses = {losesSilently() ? u"Notice"_s : u"SavingLossesError"_s,
                      3,
                      tr("“%1” does not hold all values of its records.").arg(url),
                      lost.lines(kTold).join(u'\n'),
                      {}};
        produce = GlyphDataWriter(infos(), m_fileVersion);
    } else if (type == kTableType) {
        produce = TabbedWriter(infos());
    } else {
        return false;
    }
    bool isSaved = false;
    doApart(GlyphDataWriter::sizeOf(infos(), m_fileVersion),
            [&] { isSaved = FileSaver::save(pathFromURL(url), produce, error, savedState()); });
    if (!isSaved)
        return false;
    if (!losses.domain.isEmpty())
        ErrorPresenter::shared().present(losses);
    return true;
}

QStringList VXDocument::savingWillChange() const
{
    if (m_isFileUnreadable)
        return {tr("The file could not be read; saving replaces all that is in it.")};
    QStringList changes = m_fileNotes ? savingChanges(*m_fileNotes, m_fileVersion) : QStringList();
    if (const qsizetype open = openConflicts(*this); open > 0)
        changes.prepend(open == 1
                            ? tr("One conflict of a merge is not resolved: what ours has is saved for it.")
                            : tr("%1 conflicts of a merge are not resolved: what ours has is saved for them.")
                                  .arg(QLocale().toString(qlonglong(open))));
    return changes;
}

void VXDocument::takeSavedForm(const QString &type)
{
    const std::vector<LostCodePoints> lost =
        type == kXMLType ? lostCodePoints(infos(), m_fileVersion) : std::vector<LostCodePoints>();
    if (lost.empty())
        return;
    const UndoGroup group(undoManager(), tr("Save"));
    for (const LostCodePoints &each : lost)
        each.info->setUnicodes(each.kept);
}

void VXDocument::learnFormOf(const QString &original)
{
    m_isFileUnreadable = false;
    if (fileKind(original) != FileKind::Regular || fileType() != kXMLType)
        return;
    GlyphDataReader reader;
    m_isFileUnreadable = !reader.read(original);
    // What was met while the content was read is not kept either.
    ReadNotes notes = m_fileNotes.value_or(ReadNotes());
    notes.append(reader.notes(), 0);
    m_fileNotes = notes;
}

std::unique_ptr<SlicedContent> VXDocument::slicedContent() const
{
    return std::make_unique<AutosaveSlices>(infos(), m_fileVersion,
                                            [this, revision = m_revision] { return m_revision == revision; });
}
