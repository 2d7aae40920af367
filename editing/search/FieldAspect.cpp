#include "editing/search/FieldAspect.h"

#include "model/FieldTable.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// Titles of what is worked out; a choice has that of its field.
constexpr struct {
    QLatin1StringView id;
    const char *title;
} kTitles[] {
    {"anchor"_L1, QT_TRANSLATE_NOOP("FieldAspect", "Any Anchor")},
    {"mark"_L1, QT_TRANSLATE_NOOP("FieldAspect", "Any Accent")},
    {"component"_L1, QT_TRANSLATE_NOOP("FieldAspect", "Any Component")},
    {"suffix"_L1, QT_TRANSLATE_NOOP("FieldAspect", "Suffix")},
    {"nameLength"_L1, QT_TRANSLATE_NOOP("FieldAspect", "Name Length")},
    {"hasCodePoint"_L1, QT_TRANSLATE_NOOP("FieldAspect", "Has Code Point")},
    {"codePointCount"_L1, QT_TRANSLATE_NOOP("FieldAspect", "Number of Code Points")},
};

} // namespace

FieldAspect::FieldAspect(const QString &id, SearchKey key, bool isField)
    : m_id(id), m_key(key), m_isField(isField)
{
}

/// Behind each field what is worked out of it; of a choice the words take the place of its numbers.
QList<FieldAspect> FieldAspect::makeAll()
{
    QList<FieldAspect> aspects;
    for (const FieldRow &row : kFieldTable) {
        if (!row.title || row.field == GlyphField::UnicodeChar)
            continue;
        if (row.kind != FieldKind::Choice)
            aspects += FieldAspect(keyOfField(row.field), SearchKey::of(keyOfField(row.field)), true);
        for (const QString &id : workedOutKeys()) {
            if (const SearchKey key = SearchKey::of(id); key.field == row.field)
                aspects += FieldAspect(id, key, row.kind == FieldKind::Choice);
        }
    }
    return aspects;
}

const QList<FieldAspect> &FieldAspect::all()
{
    static const QList<FieldAspect> aspects = makeAll();
    return aspects;
}

std::optional<FieldAspect> FieldAspect::of(QStringView id)
{
    const SearchKey key = SearchKey::of(id);
    if (key.kind == SearchKey::Kind::Unknown)
        return {};
    const auto found = std::find_if(all().begin(), all().end(),
                                    [key](const FieldAspect &each) { return each.m_key == key; });
    return found == all().end() ? std::nullopt : std::optional(*found);
}

QString FieldAspect::title() const
{
    const auto *row = std::find_if(std::begin(kTitles), std::end(kTitles),
                                   [this](const auto &each) { return m_id == each.id; });
    return row == std::end(kTitles) ? titleOfField(m_key.field) : tr(row->title);
}

QStringList FieldAspect::values(const VXGlyphInfo &info) const
{
    QStringList texts = textsOf(predicateValue(info, m_key));
    texts.removeAll(QString());
    return texts;
}

QStringList FieldAspect::vocabulary() const
{
    if (m_key.part == SearchKey::Part::Presence)
        return {u"yes"_s, u"no"_s};
    const bool isUsed = m_key.part == SearchKey::Part::Whole || m_key.part == SearchKey::Part::Word;
    const auto words = rowOf(m_key.field).vocabulary;
    return isUsed && words ? words() : QStringList();
}

} // namespace runebook
