#include "editing/values/AspectValues.h"

#include "model/FieldTable.h"

#include <string>

namespace runebook {

namespace {

/// More than any list of values tells apart.
constexpr qsizetype kMostUnits = 10'000;

void visitEntries(std::string_view rest, const std::function<void(std::string_view)> &visit)
{
    constexpr std::string_view kSeparator = ", ";
    for (;;) {
        const std::size_t end = rest.find(kSeparator);
        if (const std::string_view entry = rest.substr(0, end); !entry.empty())
            visit(entry);
        if (end == rest.npos)
            return;
        rest.remove_prefix(end + kSeparator.size());
    }
}

} // namespace

void forEachValue(const FieldAspect &aspect, const VXGlyphInfo &info,
                  const std::function<void(std::string_view)> &visit)
{
    const SearchKey key = aspect.key();
    // Most values stand in the bytes of the file: nothing is made of them.
    const bool isWhole = key.part == SearchKey::Part::Whole && key.field != GlyphField::Unicodes
        && rowOf(key.field).kind != FieldKind::Choice && rowOf(key.field).kind != FieldKind::Number;
    const FieldValue *value = isWhole && isStored(key.field) ? &info.stored(key.field) : nullptr;
    if (value && value->isAbsent())
        return;
    if (value && value->isPiece()) {
        const std::string_view bytes = value->bytes(info.sourceData());
        if (aspect.isList())
            visitEntries(bytes, visit);
        else if (!bytes.empty())
            visit(bytes);
        return;
    }
    if (value && value->view().size() > kMostUnits) {
        const QByteArray beginning = value->view().first(kMostUnits).toUtf8();
        visit({beginning.constData(), static_cast<std::size_t>(beginning.size())});
        return;
    }
    for (const QString &text : aspect.values(info)) {
        const QByteArray utf8 = text.toUtf8();
        if (!utf8.isEmpty())
            visit({utf8.constData(), static_cast<std::size_t>(utf8.size())});
    }
}

bool concerns(const FieldAspect &aspect, GlyphField changed)
{
    const GlyphField field = aspect.field();
    return field == changed || (field == GlyphField::Unicode && changed == GlyphField::Unicodes);
}

} // namespace runebook
