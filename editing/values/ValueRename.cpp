#include "editing/values/ValueRename.h"

#include "editing/fields/CodePointTokens.h"
#include "editing/fields/EditNames.h"
#include "editing/fields/FieldEditing.h"
#include "editing/values/AspectValues.h"
#include "model/EditedValue.h"
#include "model/FieldTable.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kStep = 256;

Error refusal(const QString &reason)
{
    return {u"EditError"_s, 1, reason, {}, {}};
}

} // namespace

QString ValueRename::obstacle(const FieldAspect &aspect)
{
    const bool isEntryOfText = aspect.isList() && aspect.key().part == SearchKey::Part::Whole;
    if (aspect.isField() || isEntryOfText)
        return {};
    return tr("“%1” is worked out of the field “%2” and has no values to rename. Edit that field instead.")
        .arg(aspect.title(), titleOfField(aspect.field()));
}

ValueRename::ValueRename(VXDocument &document, const FieldAspect &aspect, const QString &from,
                         const QString &to)
    : m_document(document), m_aspect(aspect), m_from(from), m_to(to), m_fromUtf8(from.toStdString())
{
    // As the field would store it.
    if (aspect.field() == GlyphField::Unicodes && !to.isEmpty()) {
        const CodePointText typed = codePointsOfText(to);
        if (typed.kept.size() == 1 && typed.leftOut.isEmpty())
            m_to = typed.kept.first();
    }
}

bool ValueRename::hasValue(const VXGlyphInfo &info) const
{
    bool hasAny = false;
    bool hasThis = false;
    forEachValue(m_aspect, info, [&](std::string_view utf8) {
        hasAny = true;
        hasThis |= utf8 == m_fromUtf8;
    });
    return m_from.isEmpty() ? !hasAny : hasThis;
}

bool ValueRename::findUntil(const QDeadlineTimer &deadline)
{
    const auto count = static_cast<std::size_t>(m_document.countOfInfos());
    do {
        const std::size_t end = std::min(m_next + kStep, count);
        for (; m_next < end; ++m_next) {
            const InfoPtr info = m_document.objectInInfosAtIndex(static_cast<qsizetype>(m_next));
            if (hasValue(*info))
                m_found.push_back(info);
        }
    } while (m_next < count && !deadline.hasExpired());
    return m_next >= count;
}

Error ValueRename::objection() const
{
    if (const QString reason = obstacle(m_aspect); !reason.isNull())
        return refusal(reason);
    if (m_to.isEmpty() || m_found.empty())
        return {};
    if (m_aspect.field() == GlyphField::Unicodes) {
        const CodePointText typed = codePointsOfText(m_to);
        if (typed.kept != QStringList(m_to) || !typed.leftOut.isEmpty())
            return refusal(
                tr("“%1” is no code point. A code point has four to six hexadecimal digits.").arg(m_to));
    } else if (isEntry() && (m_to.contains(u',') || m_to != m_to.simplified())) {
        return refusal(tr("“%1” cannot stand in a list: a comma and a blank part its entries.").arg(m_to));
    }
    return objectionToText(m_document, m_found, m_aspect.field(), m_to);
}

void ValueRename::apply(VXGlyphInfo &info)
{
    if (!isEntry()) {
        const bool isStored = setFieldFromText(m_document, {info.shared_from_this()}, m_aspect.field(), m_to);
        Q_ASSERT(isStored);
        return;
    }
    QStringList entries;
    bool isNew = !m_to.isEmpty();
    const QStringList former = m_from.isEmpty() ? QStringList(QString()) : m_aspect.values(info);
    for (const QString &entry : former) {
        const bool isNewText = entry == m_from || entry == m_to;
        if (!isNewText)
            entries << entry;
        else if (std::exchange(isNew, false))
            entries << m_to; // where the first of the two stood
    }
    if (rowOf(m_aspect.field()).kind == FieldKind::List)
        storeEdited(info, m_aspect.field(), entries);
    else
        storeEdited(info, m_aspect.field(), entries.join(kListSeparator));
}

bool ValueRename::applyUntil(const QDeadlineTimer &deadline)
{
    do {
        for (const std::size_t end = std::min(m_done + kStep, m_found.size()); m_done < end; ++m_done)
            apply(*m_found[m_done]);
    } while (m_done < m_found.size() && !deadline.hasExpired());
    return m_done == m_found.size();
}

double ValueRename::progress() const
{
    const auto part = [](std::size_t done, std::size_t all) { return all ? double(done) / double(all) : 1; };
    return (part(m_next, static_cast<std::size_t>(m_document.countOfInfos()))
            + (m_done ? part(m_done, m_found.size()) : 0))
        / 2;
}

QString ValueRename::actionName() const
{
    return editName(tr("Rename Value in 1 Record"), tr("Rename Value in %1 Records"), records());
}

} // namespace runebook
