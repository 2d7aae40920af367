#pragma once

#include "document/InfoSequence.h"
#include "model/GlyphInfoOwner.h"

#include <functional>
#include <memory>
#include <unordered_set>
#include <vector>

namespace runebook {

class InfoOwnership;

/// An owner of records that may stand in the lists of others, too.
class SharingOwner : public GlyphInfoOwner
{
public:
    virtual InfoOwnership &ownership() = 0;

protected:
    ~SharingOwner() = default;
};

/// What a document is to records. Those in its list belong to it, and so do some that have left the list:
/// they lose it when it ends. A record may stand in the lists of several documents and belongs to one of
/// them; the others do not hear of its changes from the record, and are told here.
class InfoOwnership
{
public:
    /// Both must live as long. \a unheard is called when a record of the list has changed that belongs to
    /// another document or to none.
    InfoOwnership(GlyphInfoOwner &owner, InfoSequence &infos, std::function<void()> unheard);
    /// No record belongs to the owner any more.
    ~InfoOwnership();
    Q_DISABLE_COPY_MOVE(InfoOwnership)

    /// The record comes into the list: it belongs to the owner, and is listed once more.
    void adopt(const InfoPtr &info);
    /// The record goes out of the list: it is listed once less.
    static void leave(const InfoPtr &info);
    /// All records of the list go out of it and out of the owner's hands.
    void dismissAll();
    /// A record that has left the list does not belong to the owner any more.
    void dismiss(const InfoPtr &info);
    /// A record outside of the list goes on belonging to the owner.
    void keepOutside(const InfoPtr &info);
    /// Makes \a owner, which may be null, the one that \a info belongs to, as records of its list do.
    static void give(const InfoPtr &info, GlyphInfoOwner *owner);

    /// Other records stand in the list than before.
    void noteListChanged() { m_listed.clear(); }
    /// Tells the documents that list \a info and others' records that it has changed; \a except the one that
    /// knows.
    static void tellSharers(const VXGlyphInfo &info, const InfoOwnership *except);

private:
    static InfoOwnership *of(GlyphInfoOwner *owner);
    /// Records of the list have another owner, or none: their changes have to be asked about.
    void share();
    bool lists(const VXGlyphInfo &info);
    void release(const InfoPtr &info) const;

    GlyphInfoOwner &m_owner;
    InfoSequence &m_infos;
    std::function<void()> m_unheard;
    /// Records that left the list and still belong to the owner, and some that were given away since.
    std::vector<std::weak_ptr<VXGlyphInfo>> m_outside;
    std::size_t m_nextCleaning = 0;
    /// Of one that shares: the records of its list, as long as the list stays the same.
    std::unordered_set<const VXGlyphInfo *> m_listed;
};

} // namespace runebook
