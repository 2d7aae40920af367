#include "document/ReloadedContent.h"

#include <algorithm>
#include <functional>

namespace runebook {

namespace {

/// Something by which a record is found again, and its place in a list.
struct Mark {
    std::size_t hash;
    std::size_t place;
    // NOLINTNEXTLINE(modernize-use-nullptr): what the compiler makes of it
    auto operator<=>(const Mark &) const = default;
};

using Text = std::function<std::string_view(const VXGlyphInfo &info, std::string &buffer)>;

std::string_view nameOf(const VXGlyphInfo &info, std::string &buffer)
{
    return info.utf8(GlyphField::Name, buffer);
}

bool haveSame(const Text &text, const VXGlyphInfo &a, const VXGlyphInfo &b)
{
    std::string bufferA;
    std::string bufferB;
    return text(a, bufferA) == text(b, bufferB);
}

std::vector<Mark> marksOf(const InfoList &infos, const std::vector<std::size_t> &places, const Text &text)
{
    std::vector<Mark> marks;
    std::string buffer;
    for (const std::size_t place : places) {
        if (const std::string_view found = text(*infos[place], buffer); !found.empty())
            marks.push_back({std::hash<std::string_view>()(found), place});
    }
    std::sort(marks.begin(), marks.end());
    return marks;
}

/// Fills what is still missing in \a found with those of \a former that have the same text.
void findBy(const Text &text, const InfoList &former, const InfoList &fresh, std::vector<bool> &isTaken,
            InfoList &found)
{
    const auto open = [](std::size_t count, auto isDone) {
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < count; ++i) {
            if (!isDone(i))
                places.push_back(i);
        }
        return places;
    };
    const std::vector<std::size_t> wanting =
        open(fresh.size(), [&](std::size_t i) { return bool(found[i]); });
    if (wanting.empty())
        return;
    const std::vector<Mark> old =
        marksOf(former, open(former.size(), [&](std::size_t i) { return bool(isTaken[i]); }), text);
    auto next = old.begin();
    for (const Mark &mark : marksOf(fresh, wanting, text)) {
        while (next != old.end() && next->hash < mark.hash)
            ++next;
        if (next == old.end())
            break;
        if (next->hash != mark.hash || !haveSame(text, *former[next->place], *fresh[mark.place]))
            continue;
        isTaken[next->place] = true;
        found[mark.place] = former[next->place];
        ++next;
    }
}

} // namespace

InfoList formerRecords(const InfoList &former, const InfoList &fresh)
{
    InfoList found(fresh.size());
    std::vector<bool> isTaken(former.size());
    const auto take = [&](std::size_t oldPlace, std::size_t place) {
        isTaken[oldPlace] = true;
        found[place] = former[oldPlace];
    };
    // Most files change in few places: what stands in front of and behind them needs no look-up.
    const std::size_t shorter = std::min(former.size(), fresh.size());
    std::size_t head = 0;
    while (head < shorter && haveSame(nameOf, *former[head], *fresh[head])) {
        take(head, head);
        ++head;
    }
    for (std::size_t tail = 1; tail + head <= shorter; ++tail) {
        const std::size_t oldPlace = former.size() - tail;
        const std::size_t place = fresh.size() - tail;
        if (!haveSame(nameOf, *former[oldPlace], *fresh[place]))
            break;
        take(oldPlace, place);
    }
    findBy(nameOf, former, fresh, isTaken, found);
    findBy([](const VXGlyphInfo &info, std::string &buffer) { return info.unicodeUtf8(buffer); }, former,
           fresh, isTaken, found);
    return found;
}

void takeReloaded(InfoList &fresh, const InfoList &former, int fileVersion)
{
    const InfoList known = formerRecords(former, fresh);
    for (std::size_t i = 0; i < fresh.size(); ++i) {
        if (!known[i])
            continue;
        const std::string_view line = known[i]->unchangedLine(fileVersion);
        if (line.empty() || line != fresh[i]->unchangedLine(fileVersion))
            known[i]->takeValuesOf(*fresh[i]);
        fresh[i] = known[i];
    }
}

} // namespace runebook
