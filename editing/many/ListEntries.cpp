#include "editing/many/ListEntries.h"

#include "editing/fields/CodePointTokens.h"
#include "editing/fields/EditNames.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "model/EditedValue.h"
#include "model/FieldTable.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array kFields {GlyphField::Anchors, GlyphField::Marks, GlyphField::AltNames,
                              GlyphField::Unicodes, GlyphField::Decompose};

// The clock is asked only so often.
constexpr std::size_t kBetweenLooks = 64;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ListEntries)
};

bool isKeptAsList(GlyphField field)
{
    return rowOf(field).kind == FieldKind::List;
}

QString number(qsizetype count)
{
    return QLocale().toString(qlonglong(count));
}

bool isPause(std::size_t next, const QDeadlineTimer &deadline)
{
    return next % kBetweenLooks == 0 && deadline.hasExpired();
}

} // namespace

std::span<const GlyphField> fieldsWithEntries()
{
    return kFields;
}

bool hasEntries(GlyphField field)
{
    return std::find(kFields.begin(), kFields.end(), field) != kFields.end();
}

QStringList entriesIn(const VXGlyphInfo &info, GlyphField field)
{
    if (isKeptAsList(field))
        return info.entriesOf(field);
    QStringList entries;
    const QString text = info.stringValue(field);
    for (const QStringView part : QStringView(text).split(u',')) {
        if (const QStringView entry = part.trimmed(); !entry.isEmpty())
            entries << entry.toString();
    }
    return entries;
}

TypedEntries typedEntries(GlyphField field, const QString &text)
{
    TypedEntries typed;
    if (field == GlyphField::Unicodes) {
        const CodePointText codePoints = codePointsOfText(text);
        typed.entries = codePoints.kept;
        if (!codePoints.leftOut.isEmpty())
            typed.objection = codePoints.remark();
    } else {
        for (const QStringView part : QStringView(text).split(u',')) {
            if (const QStringView entry = part.trimmed(); !entry.isEmpty())
                typed.entries << entry.toString();
        }
        typed.objection = refusalOfEdited(field, typed.entries);
    }
    typed.entries.removeDuplicates();
    return typed;
}

// Counting

bool EntryCounts::goOn(const QDeadlineTimer &deadline)
{
    while (m_next < m_infos.size()) {
        QStringList entries = entriesIn(*m_infos[m_next], m_field);
        entries.removeDuplicates();
        for (const QString &entry : entries) {
            auto place = m_places.constFind(entry);
            if (place == m_places.constEnd()) {
                place = m_places.insert(entry, std::ssize(m_counts));
                m_counts.push_back({entry, 0});
            }
            ++m_counts[static_cast<std::size_t>(*place)].records;
        }
        if (isPause(++m_next, deadline))
            break;
    }
    return m_next >= m_infos.size();
}

double EntryCounts::progress() const
{
    return m_infos.empty() ? 1 : double(m_next) / double(m_infos.size());
}

std::vector<EntryCounts::Count> EntryCounts::counts() const
{
    std::vector<Count> sorted = m_counts;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Count &a, const Count &b) { return a.records > b.records; });
    return sorted;
}

// Changing

std::optional<QStringList> EntryChange::valueFor(const VXGlyphInfo &info) const
{
    const QStringList before = entriesIn(info, field);
    QStringList entries = before;
    entries.removeIf([this](const QString &entry) { return removed.contains(entry); });
    for (const QString &entry : added) {
        if (!entries.contains(entry))
            entries << entry;
    }
    if (entries == before)
        return {};
    return entries;
}

QString EntryChange::stepName(const InfoList &infos) const
{
    const QString text = removed.isEmpty() ? Texts::tr("Add to %2 of %1")
        : added.isEmpty()                  ? Texts::tr("Remove from %2 of %1")
                                           : Texts::tr("Change %2 of %1");
    return editNameOf(QString(text).replace(u"%2"_s, fieldTitle(field)), infos);
}

EntryPlan::EntryPlan(const VXDocument &document, InfoList infos, EntryChange change)
    : m_document(document), m_infos(std::move(infos)), m_change(std::move(change))
{
    if (m_change.isEmpty())
        m_next = m_infos.size();
}

QString EntryPlan::refusalOf(const InfoPtr &info, const QStringList &value) const
{
    const QString text = value.join(kListSeparator);
    if (m_change.field == GlyphField::Marks && VXGlyphInfo::refusesMarks(text.toStdString()))
        return Texts::tr("No record takes this list of accents.");
    return objectionToText(m_document, {info}, m_change.field, text).description.section(u'\n', 0, 0);
}

bool EntryPlan::planMore(const QDeadlineTimer &deadline)
{
    while (m_next < m_infos.size()) {
        const InfoPtr &info = m_infos[m_next];
        if (const std::optional<QStringList> value = m_change.valueFor(*info)) {
            if (const QString reason = refusalOf(info, *value); !reason.isEmpty())
                m_refusals.push_back({info, reason});
            else
                m_changing.push_back(info);
            if (m_change.field == GlyphField::Unicodes && value->size() > kCodePointsInFile
                && !m_change.added.isEmpty())
                ++m_tooMany;
        }
        if (isPause(++m_next, deadline))
            break;
    }
    return m_next >= m_infos.size();
}

QString EntryPlan::summary() const
{
    if (m_change.isEmpty())
        return Texts::tr("Type what is to be added, or take the tick from what is to go.");
    QStringList sentences;
    sentences << (m_changing.empty() ? Texts::tr("No record changes.")
                      : m_changing.size() == 1
                      ? Texts::tr("One record changes.")
                      : Texts::tr("%1 records change.").arg(number(std::ssize(m_changing))));
    if (m_tooMany > 0)
        sentences << Texts::tr("Records with more than the %1 code points that a file keeps: %2.")
                         .arg(number(kCodePointsInFile), number(m_tooMany));
    if (!m_refusals.empty())
        sentences << (m_refusals.size() == 1
                          ? Texts::tr("One is left as it is:")
                          : Texts::tr("%1 are left as they are:").arg(number(std::ssize(m_refusals))));
    return sentences.join(u' ');
}

bool EntryPlan::applyMore(const QDeadlineTimer &deadline)
{
    while (m_applied < m_changing.size()) {
        VXGlyphInfo &info = *m_changing[m_applied];
        if (const std::optional<QStringList> value = m_change.valueFor(info)) {
            if (isKeptAsList(m_change.field))
                storeEdited(info, m_change.field, *value);
            else
                storeEdited(info, m_change.field, value->join(kListSeparator));
        }
        if (isPause(++m_applied, deadline))
            break;
    }
    return m_applied >= m_changing.size();
}

double EntryPlan::progress() const
{
    return m_changing.empty() ? 1 : double(m_applied) / double(m_changing.size());
}

} // namespace runebook
