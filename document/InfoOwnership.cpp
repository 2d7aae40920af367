#include "document/InfoOwnership.h"

#include <algorithm>
#include <utility>

namespace runebook {

namespace {

/// Those in whose lists records stand that belong to others, or to none.
std::vector<InfoOwnership *> &sharers()
{
    static auto &all = *new std::vector<InfoOwnership *>; // the last of them may go after all statics
    return all;
}

} // namespace

InfoOwnership::InfoOwnership(GlyphInfoOwner &owner, InfoSequence &infos, std::function<void()> unheard)
    : m_owner(owner), m_infos(infos), m_unheard(std::move(unheard))
{
    GlyphInfoOwner::ownerlessHasChanged = [](VXGlyphInfo &info) { tellSharers(info, nullptr); };
}

InfoOwnership::~InfoOwnership()
{
    std::erase(sharers(), this);
    dismissAll();
    for (const std::weak_ptr<VXGlyphInfo> &outside : m_outside) {
        if (const InfoPtr info = outside.lock())
            release(info);
    }
}

InfoOwnership *InfoOwnership::of(GlyphInfoOwner *owner)
{
    auto *sharing = dynamic_cast<SharingOwner *>(owner);
    return sharing ? &sharing->ownership() : nullptr;
}

void InfoOwnership::share()
{
    if (m_infos.isShared())
        return;
    m_infos.setShared();
    sharers().push_back(this);
}

bool InfoOwnership::lists(const VXGlyphInfo &info)
{
    if (m_listed.empty()) {
        for (const InfoPtr &listed : m_infos.list())
            m_listed.insert(listed.get());
    }
    return m_listed.contains(&info);
}

void InfoOwnership::tellSharers(const VXGlyphInfo &info, const InfoOwnership *except)
{
    for (InfoOwnership *each : sharers()) {
        if (each != except && each->lists(info))
            each->m_unheard();
    }
}

void InfoOwnership::adopt(const InfoPtr &info)
{
    if (info->listings() > 0 && info->document() != &m_owner) {
        // It stands in the list of one that will not hear of its changes any more.
        share();
        if (InfoOwnership *other = of(info->document()))
            other->share();
    }
    info->setDocument(&m_owner);
    info->setListings(info->listings() + 1);
}

void InfoOwnership::leave(const InfoPtr &info)
{
    info->setListings(qMax(0, info->listings() - 1));
}

void InfoOwnership::release(const InfoPtr &info) const
{
    if (info->document() == &m_owner)
        info->setDocument(nullptr);
}

void InfoOwnership::dismissAll()
{
    for (const InfoPtr &info : m_infos.list()) {
        leave(info);
        release(info);
    }
}

void InfoOwnership::dismiss(const InfoPtr &info)
{
    release(info);
    if (info->listings() > 0)
        share();
}

void InfoOwnership::keepOutside(const InfoPtr &info)
{
    constexpr std::size_t kFewest = 64;
    if (m_outside.size() >= std::max(kFewest, m_nextCleaning)) {
        std::erase_if(m_outside, [](const std::weak_ptr<VXGlyphInfo> &each) { return each.expired(); });
        m_nextCleaning = 2 * m_outside.size();
    }
    m_outside.push_back(info);
}

void InfoOwnership::give(const InfoPtr &info, GlyphInfoOwner *owner)
{
    InfoOwnership *before = of(info->document());
    InfoOwnership *after = of(owner);
    if (before == after)
        return;
    if (info->listings() > 0) {
        for (InfoOwnership *each : {before, after}) {
            if (each)
                each->share();
        }
    }
    info->setDocument(owner);
    if (after)
        after->keepOutside(info);
}

} // namespace runebook
