#pragma once

#include "document/GlyphLookups.h"
#include "document/InfoIndex.h"
#include "document/InfoSequence.h"

#include <QVariantList>
#include <array>
#include <optional>

namespace runebook {

/// Finds records of a list by their values, as a scan from its top would: the first in list order wins. Has
/// an index for each of the fields that are asked for often, which is made when somebody asks and then kept
/// in step by whoever keeps the list.
class InfoLookups final : public GlyphLookups
{
public:
    /// \a infos must live as long.
    explicit InfoLookups(const InfoSequence &infos);

public: // asking
    InfoPtr infoForName(const QString &name) const override;
    InfoPtr infoForUnicode(const QString &unicode) const;
    /// All records whose value for \a key is one of \a values, in list order; nothing when there is none or
    /// the key names no field.
    std::optional<InfoList> infosForKeyValues(const QString &key, const QVariantList &values) const;
    /// The records that a name like "uni00410042" or "u1F600" stands for; free ones are made for code points
    /// that the list does not have. Nothing for other names.
    std::optional<InfoList> baseInfosForUniName(const QString &name) const override;

public: // keeping the indexes in step
    /// The record stands in the list once more.
    void insert(VXGlyphInfo &info);
    /// The record stands in the list once less. To be called while it still counts as listed.
    void remove(VXGlyphInfo &info);
    void drop();
    /// A record, of this list or not, has another value; \a old is the one before. \a changes: how many
    /// changes the command that goes on has made before.
    void fieldHasChanged(VXGlyphInfo &info, GlyphField field, const FieldValue &old, std::size_t changes);

private:
    enum Which { ByName, ByUnicode, ByProduction, IndexCount };

    InfoIndex *indexForField(GlyphField field) const;
    const InfoIndex &ready(InfoIndex &index) const;
    InfoPtr firstFound(InfoIndex &index, const QString &text) const;
    std::optional<InfoList> indexedInfos(GlyphField field, const QVariantList &values) const;
    bool isBefore(const VXGlyphInfo *a, const VXGlyphInfo *b) const;

    const InfoSequence &m_infos;
    mutable std::array<InfoIndex, IndexCount> m_indexes;
    /// Records that stand in other lists, too, change unheard: then the indexes last until any record changes
    /// that was not heard of here.
    quint64 m_heardChanges = 0; ///< of listed records
    mutable quint64 m_unheardChanges = 0; ///< when the indexes were made
};

} // namespace runebook
