#include "editing/many/NewRecords.h"

#include "model/CodePointRules.h"
#include "model/EditedValue.h"
#include "model/FieldTable.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kDigits = 3;

/// \a name without a number such as ".001" at its end.
QString stemOf(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    const QStringView number = dot > 0 ? QStringView(name).sliced(dot + 1) : QStringView();
    const bool isNumber = number.size() == kDigits
        && std::all_of(number.begin(), number.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    return isNumber ? name.first(dot) : name;
}

bool isCodePointField(GlyphField field)
{
    return field == GlyphField::Unicodes || field == GlyphField::Unicode || field == GlyphField::UnicodeChar;
}

void takeField(VXGlyphInfo &copy, const VXGlyphInfo &info, GlyphField field)
{
    if (field == GlyphField::Case)
        copy.setCase(info.caseValue());
    else if (field == GlyphField::Direction)
        copy.setDirection(info.direction());
    else
        storeEdited(copy, field, info.entriesOf(field));
}

} // namespace

QString FreeNames::nameFor(const QString &name)
{
    const QString stem = stemOf(name.isEmpty() ? VXGlyphInfo().name() : name);
    int &last = m_last[stem];
    QString free;
    do {
        free = stem + u'.' + QString::number(++last).rightJustified(kDigits, u'0');
    } while (m_given.contains(free) || m_document.infoForName(free));
    m_given.insert(free);
    return free;
}

QString nameOfCodePoint(const QString &codePoint)
{
    constexpr qsizetype kShort = 4;
    if (objectionToCodePoint(codePoint.toStdString()) != CodePointObjection::None)
        return {};
    return (codePoint.size() == kShort ? u"uni"_s : u"u"_s) + codePoint;
}

InfoPtr recordLike(const VXGlyphInfo &info, const QString &name, const std::vector<GlyphField> &fields)
{
    InfoPtr copy = VXGlyphInfo::init();
    copy->setName(name);
    copy->setDirection(VXGlyphInfo::DirectionNotSet);
    for (const GlyphField field : fields)
        takeField(*copy, info, field);
    return copy;
}

InfoPtr duplicateOf(const VXGlyphInfo &info, const QString &name)
{
    InfoPtr copy = info.copy(); // shares what was read
    copy->setName(name);
    copy->clear(GlyphField::Unicodes);
    for (const FieldRow &row : kFieldTable) {
        if (!row.isCopied && row.title && !isCodePointField(row.field))
            takeField(*copy, info, row.field);
    }
    return copy;
}

InfoList insertBehind(VXDocument &document, std::vector<NewRecord> records)
{
    std::vector<std::pair<qsizetype, InfoPtr>> placed;
    placed.reserve(records.size());
    for (NewRecord &record : records) {
        const qsizetype place = document.indexOfObjectInInfos(record.behind);
        placed.emplace_back(place < 0 ? document.countOfInfos() : place + 1, std::move(record.info));
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    InfoList infos;
    std::vector<qsizetype> places;
    infos.reserve(placed.size());
    places.reserve(placed.size());
    for (auto &[place, info] : placed) {
        places.push_back(place + std::ssize(infos));
        infos.push_back(std::move(info));
    }
    document.insertObjectsInInfosAtIndexes(infos, IndexSet(std::move(places)));
    return infos;
}

} // namespace runebook
