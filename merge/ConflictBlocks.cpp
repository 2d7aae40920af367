#include "merge/ConflictBlocks.h"

#include "document/ConflictMarkers.h"

namespace runebook {

std::array<QByteArray, 3> sidesOfConflicts(const QByteArray &text)
{
    std::array<QByteArray, 3> sides;
    const char *next = text.constData();
    const char *const end = next + text.size();
    for (const Conflict &conflict : conflictsIn({next, std::size_t(text.size())})) {
        const std::array<std::string_view, 3> parts {conflict.base, conflict.ours, conflict.theirs};
        for (std::size_t side = 0; side < sides.size(); ++side) {
            sides[side].append(next, conflict.whole.data() - next);
            sides[side].append(parts[side].data(), qsizetype(parts[side].size()));
        }
        next = conflict.whole.data() + conflict.whole.size();
    }
    for (QByteArray &side : sides)
        side.append(next, end - next);
    return sides;
}

} // namespace runebook
