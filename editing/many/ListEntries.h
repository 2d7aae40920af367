#pragma once

#include "document/VXDocument.h"

#include <QDeadlineTimer>
#include <QHash>
#include <span>

namespace runebook {

/// The fields whose value is a list: anchors, accents, alternate names, code points, decomposition.
std::span<const GlyphField> fieldsWithEntries();
bool hasEntries(GlyphField field);
/// The entries of one record, blanks around them left out; the same one may stand there several times.
QStringList entriesIn(const VXGlyphInfo &info, GlyphField field);

/// What somebody typed as entries of a field.
struct TypedEntries {
    QStringList entries; ///< each once; code points in their final form
    QString objection; ///< why they cannot be taken; null when they can
};
TypedEntries typedEntries(GlyphField field, const QString &text);

/// How many records have which entry, counted in slices.
class EntryCounts
{
public:
    struct Count {
        QString entry;
        qsizetype records = 0;
    };

    EntryCounts() = default;
    EntryCounts(InfoList infos, GlyphField field) : m_infos(std::move(infos)), m_field(field) { }
    /// Goes on until \a deadline; true when all are counted.
    bool goOn(const QDeadlineTimer &deadline);
    /// The part that is done, 0 to 1.
    double progress() const;
    /// Those that most records have first; equals as they came.
    std::vector<Count> counts() const;

private:
    InfoList m_infos;
    GlyphField m_field = GlyphField::Anchors;
    std::size_t m_next = 0;
    QHash<QString, qsizetype> m_places;
    std::vector<Count> m_counts;
};

/// Entries that many records get and lose.
struct EntryChange {
    GlyphField field = GlyphField::Anchors;
    QStringList added; ///< behind the others, to records that do not have them
    QStringList removed; ///< wherever they stand
    friend bool operator==(const EntryChange &, const EntryChange &) = default;

    bool isEmpty() const { return added.isEmpty() && removed.isEmpty(); }
    /// What becomes of the field of one record; nothing when it stays as it is.
    std::optional<QStringList> valueFor(const VXGlyphInfo &info) const;
    /// "Add to Anchors of A and 11 Others".
    QString stepName(const InfoList &infos) const;
};

/// Which records such a change is for, found out before it is made, both in slices. A record whose field
/// refuses what it would become is left as it is.
class EntryPlan
{
public:
    struct Refusal {
        InfoPtr info;
        QString reason;
    };

    EntryPlan(const VXDocument &document, InfoList infos, EntryChange change);
    const EntryChange &change() const { return m_change; }
    /// Goes on until \a deadline; true when every record was looked at.
    bool planMore(const QDeadlineTimer &deadline);
    const InfoList &changing() const { return m_changing; }
    const std::vector<Refusal> &refusals() const { return m_refusals; }
    QString summary() const;
    /// Goes on until \a deadline; true when all changes are made. To be called inside of one undo group.
    bool applyMore(const QDeadlineTimer &deadline);
    double progress() const;

private:
    QString refusalOf(const InfoPtr &info, const QStringList &value) const;

    const VXDocument &m_document;
    InfoList m_infos;
    EntryChange m_change;
    std::size_t m_next = 0;
    std::size_t m_applied = 0;
    InfoList m_changing;
    std::vector<Refusal> m_refusals;
    qsizetype m_tooMany = 0; ///< records with more code points than a file keeps
};

} // namespace runebook
