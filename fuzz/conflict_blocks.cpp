// Three texts with a zero byte between: whatever they hold, conflicts lie one behind the other with their
// sides in them, merging keeps its laws, and every conflict that is written is found again with both sides.
#include "document/ConflictMarkers.h"
#include "document/GlyphDataReader.h"
#include "fuzz/Require.h"
#include "merge/MergedText.h"

using namespace runebook;

namespace {

bool isWithin(std::string_view part, std::string_view whole)
{
    return part.data() == nullptr
        || (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

void checkConflicts(std::string_view text)
{
    std::vector<std::size_t> strays;
    const char *next = text.data();
    for (const Conflict &conflict : conflictsIn(text, &strays)) {
        REQUIRE(conflict.whole.data() >= next, QStringLiteral("overlap"), QString());
        REQUIRE(isWithin(conflict.whole, text), QStringLiteral("conflict"), QString());
        for (const std::string_view part : {conflict.ours, conflict.base, conflict.theirs, conflict.oursLabel,
                                            conflict.baseLabel, conflict.theirsLabel})
            REQUIRE(isWithin(part, conflict.whole), QStringLiteral("side"), QString());
        next = conflict.whole.data() + conflict.whole.size();
    }
    for (const std::size_t stray : strays)
        REQUIRE(stray < text.size(), QString::number(stray), QString::number(text.size()));
}

QByteArray merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs)
{
    const auto merge = ThreeWayMerge::of(base, ours, theirs, {});
    return merge ? textOf(*merge) : QByteArray();
}

bool hasMarkers(const QByteArray &text)
{
    return text.contains("<<<<<<<") || text.contains("|||||||") || text.contains("=======")
        || text.contains(">>>>>>>");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray all = madeValid(data, size);
    checkConflicts({all.constData(), std::size_t(all.size())});
    GlyphDataReader reader;
    static_cast<void>(reader.read(all));

    const QList<QByteArray> parts = all.split('\0');
    const QByteArray base = parts.value(0), ours = parts.value(1), theirs = parts.value(2);
    const auto merge = ThreeWayMerge::of(base, ours, theirs, {});
    if (!merge)
        return 0;
    const QByteArray text = textOf(*merge);
    REQUIRE(merged(ours, ours, ours) == ours, QString::fromUtf8(merged(ours, ours, ours)),
            QString::fromUtf8(ours));
    REQUIRE(merged(base, ours, ours) == ours, QString::fromUtf8(merged(base, ours, ours)),
            QString::fromUtf8(ours));
    if (hasMarkers(all))
        return 0;
    const std::string whole = text.toStdString();
    const auto found = qsizetype(conflictsIn(whole).size());
    REQUIRE(found == merge->openConflicts(), QString::number(found), QString::number(merge->openConflicts()));
    return 0;
}
