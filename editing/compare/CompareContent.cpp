#include "editing/compare/CompareContent.h"

#include <QAnyStringView>
#include <functional>

namespace runebook {

namespace {

/// Distinct values shown of one field of many records.
constexpr qsizetype kMaxValues = 5;
constexpr std::size_t kStep = 4096;

quint64 hashOf(std::string_view text)
{
    return qMax<quint64>(1, std::hash<std::string_view>()(text));
}

bool isChoice(GlyphField field)
{
    return field == GlyphField::Case || field == GlyphField::Direction;
}

} // namespace

// FieldContent

FieldContent::FieldContent(GlyphField field, const InfoList &left, const InfoList &right,
                           const CompareOptions &options)
    : m_field(field), m_lists {&left, &right}, m_options(options)
{
}

void FieldContent::finish()
{
    while (!advance(kStep)) { }
}

const InfoList &FieldContent::walked() const
{
    return *m_lists[m_step == Step::ShownRight || m_step == Step::RightSet];
}

bool FieldContent::advance(std::size_t count)
{
    for (; count > 0 && m_step != Step::Done; --count) {
        if (m_next < walked().size()) {
            lookAt(m_next++);
            continue;
        }
        switch (m_step) {
        case Step::ShownLeft:
            goTo(Step::ShownRight);
            break;
        case Step::ShownRight:
            goTo(Step::InTurn);
            break;
        case Step::InTurn:
            conclude(false);
            break;
        case Step::LeftSet:
            goTo(Step::RightSet);
            break;
        default:
            conclude(m_leftSet.distinct() != m_rightSet.distinct());
            break;
        }
    }
    return m_step == Step::Done;
}

void FieldContent::goTo(Step step)
{
    m_step = step;
    m_next = 0;
    m_last.clear();
    // Sets are made only where a look at both lists in turn does not do, which needs two of one length.
    if (m_step == Step::InTurn && m_lists[0]->size() != m_lists[1]->size())
        m_step = Step::LeftSet;
}

void FieldContent::conclude(bool differs)
{
    m_differs = differs;
    m_step = Step::Done;
}

void FieldContent::lookAt(std::size_t place)
{
    const VXGlyphInfo &info = *walked()[place];
    switch (m_step) {
    case Step::ShownLeft:
        if (!show(0, info))
            goTo(Step::ShownRight);
        break;
    case Step::ShownRight:
        if (!show(1, info))
            goTo(Step::InTurn);
        break;
    case Step::InTurn:
        if (comparableValue(info, m_field, m_buffer, m_options)
            != comparableValue(*(*m_lists[1])[place], m_field, m_otherBuffer, m_options))
            goTo(Step::LeftSet);
        break;
    case Step::LeftSet:
        if (const auto value = comparableValue(info, m_field, m_buffer, m_options))
            m_leftSet.add(hashOf(*value));
        break;
    default:
        if (const auto value = comparableValue(info, m_field, m_buffer, m_options)) {
            m_rightSet.add(hashOf(*value));
            if (m_leftSet.count(hashOf(*value)) == 0)
                conclude(true);
        }
        break;
    }
}

/// False when no further record needs a look.
bool FieldContent::show(std::size_t side, const VXGlyphInfo &info)
{
    Values &values = m_values[side];
    if (isChoice(m_field)) {
        values.choices << (m_field == GlyphField::Case ? info.caseValue() : info.direction());
        return true;
    }
    // Neighbours often agree: of very many records few values need a text.
    const std::string_view value = comparableValue(info, m_field, m_buffer).value_or("");
    if (value == m_last)
        return true;
    m_last = value;
    const QString text = info.displayText(m_field);
    if (text.isEmpty() || values.texts.contains(text))
        return true;
    values.hasMore = values.texts.size() == kMaxValues;
    if (!values.hasMore)
        values.texts << text;
    return !values.hasMore;
}

std::vector<FieldContent> contentOf(const InfoList &left, const InfoList &right,
                                    const CompareOptions &options)
{
    std::vector<FieldContent> fields;
    for (const ComparedField &field : comparedFields()) {
        fields.emplace_back(field.field, left, right, options);
        fields.back().finish();
    }
    return fields;
}

bool valuesDiffer(const InfoList &values, const InfoList &others, GlyphField field)
{
    FieldContent content(field, values, others);
    content.finish();
    return content.differs();
}

// CompareContent

CompareContent::CompareContent(QStringList keys, CompareKey key, const InfoList *left, const InfoList *right,
                               const CompareOptions &options)
    : m_keys(std::move(keys)), m_key(key), m_lists {left, right}, m_options(options)
{
}

bool CompareContent::runFor(std::chrono::milliseconds budget)
{
    const auto end = std::chrono::steady_clock::now() + budget;
    do {
        if (advance(kStep))
            return true;
    } while (std::chrono::steady_clock::now() < end);
    return false;
}

bool CompareContent::advance(std::size_t count)
{
    const qsizetype keysEnd = qMin(m_keys.size(), m_entered + static_cast<qsizetype>(count));
    if (m_entered < keysEnd) {
        for (; m_entered < keysEnd; ++m_entered) {
            const QByteArray key = m_keys.at(m_entered).toUtf8();
            m_places[hashOf({key.constData(), static_cast<std::size_t>(key.size())})] =
                static_cast<quint32>(m_entered) + 1;
        }
        return false;
    }
    if (!findRecords(0, count) || !findRecords(1, count))
        return false;
    if (m_fields.empty()) {
        for (const ComparedField &field : comparedFields())
            m_fields.emplace_back(field.field, m_found[0], m_found[1], m_options);
    }
    for (FieldContent &field : m_fields) {
        if (!field.advance(0))
            return field.advance(count) && &field == &m_fields.back();
    }
    return true;
}

/// Looks at some more records; true when there was none left to look at.
bool CompareContent::findRecords(std::size_t side, std::size_t count)
{
    if (!m_lists[side] || m_next[side] == m_lists[side]->size())
        return true;
    const InfoList &infos = *m_lists[side];
    std::size_t &next = m_next[side];
    if (next == 0)
        m_found[side].reserve(qMin(infos.size(), static_cast<std::size_t>(m_keys.size())));
    for (const std::size_t end = next + std::min(count, infos.size() - next); next < end; ++next) {
        if (isWanted(*infos[next]))
            m_found[side].push_back(infos[next]);
    }
    return false;
}

bool CompareContent::isWanted(const VXGlyphInfo &info)
{
    const std::string_view key = keyUtf8(info, m_key, m_buffer);
    const quint32 place = key.empty() ? 0 : m_places.value(hashOf(key));
    return place > 0
        && QAnyStringView::equal(QUtf8StringView(key.data(), static_cast<qsizetype>(key.size())),
                                 m_keys.at(place - 1));
}

} // namespace runebook
