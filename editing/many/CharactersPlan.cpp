#include "editing/many/CharactersPlan.h"

#include "editing/fields/EditNames.h"
#include "editing/fields/GlyphColumns.h"
#include "model/EditedValue.h"
#include "model/StringHelpers.h"
#include "model/UnicodeData.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr char32_t kLast = 0x10FFFF;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CharactersPlan)
};

QString number(qsizetype count)
{
    return QLocale().toString(qlonglong(count));
}

bool isSurrogate(char32_t codePoint)
{
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

/// Adds what of a range is in none of those before.
void addRange(std::vector<std::pair<char32_t, char32_t>> &ranges, char32_t first, char32_t last)
{
    std::vector<std::pair<char32_t, char32_t>> rest {std::minmax(first, last)};
    for (const auto &[low, high] : std::vector(ranges)) {
        std::vector<std::pair<char32_t, char32_t>> left;
        for (const auto &[begin, end] : rest) {
            if (begin < low)
                left.emplace_back(begin, std::min(end, char32_t(low - 1)));
            if (end > high)
                left.emplace_back(std::max(begin, char32_t(high + 1)), end);
        }
        rest = std::move(left);
    }
    ranges.insert(ranges.end(), rest.begin(), rest.end());
}

} // namespace

// What is meant

TypedCharacters TypedCharacters::ofText(const QString &text)
{
    TypedCharacters typed;
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        typed.objection = Texts::tr("Paste characters, type a range such as U+0400-04FF, or choose a block.");
        return typed;
    }
    if (const auto block = UnicodeData::shared().rangeOfBlock(trimmed)) {
        typed.ranges = {*block};
        return typed;
    }
    static const QRegularExpression kNumbers(
        u"^(?:(?:(?:U\\+|0x)[0-9A-F]+|[0-9A-F]{4,6}(?=\\s*[-–]\\s*))(?:\\s*[-–]\\s*(?:U\\+|0x)?[0-9A-F]+)?[\\s,;]*)+$"_s,
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression kNumber(
        u"(?:U\\+|0x)?([0-9A-F]+)(?:\\s*[-–]\\s*(?:U\\+|0x)?([0-9A-F]+))?"_s,
        QRegularExpression::CaseInsensitiveOption);
    if (kNumbers.match(trimmed).hasMatch()) {
        for (const QRegularExpressionMatch &match : kNumber.globalMatch(trimmed)) {
            const quint32 first = match.captured(1).toUInt(nullptr, 16);
            const quint32 last = match.hasCaptured(2) ? match.captured(2).toUInt(nullptr, 16) : first;
            if (std::max(first, last) > kLast || match.captured(1).size() > 6) {
                typed.objection = Texts::tr("The last code point is U+10FFFF.");
                return typed;
            }
            addRange(typed.ranges, first, last);
        }
        return typed;
    }
    QSet<char32_t> seen;
    for (const uint character : trimmed.toUcs4()) {
        if (QChar::isSpace(character) || seen.contains(character))
            continue;
        seen.insert(character);
        typed.ranges.emplace_back(character, character);
    }
    return typed;
}

qsizetype TypedCharacters::count() const
{
    qsizetype count = 0;
    for (const auto &[first, last] : ranges)
        count += qsizetype(last - first) + 1;
    return count;
}

CharactersPlan::CharactersPlan(VXDocument &document, TypedCharacters characters, InfoPtr behind)
    : RecordPlan(document),
      m_characters(std::move(characters)),
      m_behind(std::move(behind)),
      m_names(document)
{
}

// Finding out

InfoPtr CharactersPlan::recordWith(char32_t codePoint) const
{
    const InfoPtr first = document().infoForUnicode(hexStringFromInt(codePoint));
    return first ? first : m_further.value(codePoint);
}

/// The document looks up names and first code points alone.
void CharactersPlan::noteFurther(const InfoPtr &info)
{
    const QStringList codePoints = info->unicodes();
    for (qsizetype i = 1; i < codePoints.size(); ++i)
        m_further.insert(hexStringToInt(codePoints.at(i)), info);
    for (const QString &name : info->altNames())
        m_altNames.insert(name);
}

/// The record that a character has, or will have, goes by that name.
QString CharactersPlan::nameOf(char32_t codePoint) const
{
    if (const InfoPtr info = recordWith(codePoint))
        return info->name();
    const qsizetype row = m_rowsByCharacter.value(codePoint, -1);
    return row >= 0 && isTaken(row) ? m_rows[std::size_t(row)].name : QString();
}

/// As proposed, unless that is what another character is called.
QString CharactersPlan::newNameOf(char32_t codePoint) const
{
    const QString name = proposedName(codePoint, [this](char32_t other) { return nameOf(other); });
    const InfoPtr namesake = document().infoForName(name);
    const bool isAnothers =
        m_names.isGiven(name) || m_altNames.contains(name) || (namesake && !namesake->unicodes().isEmpty());
    return isAnothers ? nameOfCodePoint(hexStringFromInt(codePoint)) : name;
}

void CharactersPlan::lookAt(char32_t codePoint)
{
    if (isSurrogate(codePoint) || !UnicodeData::shared().isAssigned(codePoint)) {
        ++m_unassigned;
        return;
    }
    Row row {codePoint, newNameOf(codePoint), {}};
    if (const InfoPtr info = recordWith(codePoint)) {
        ++m_present;
        row.name = info->name();
        row.objection = Texts::tr("Is there already");
    } else if (!m_names.objectionTo(row.name).isNull()) {
        row.objection = Texts::tr("Another record has the name already");
    } else {
        ++m_doable;
        m_rowsByCharacter.insert(codePoint, std::ssize(m_rows));
    }
    m_rows.push_back(std::move(row));
}

bool CharactersPlan::planMore(const QDeadlineTimer &deadline)
{
    while (m_noted < document().countOfInfos() && !m_characters.ranges.empty()) {
        noteFurther(document().objectInInfosAtIndex(m_noted));
        if (isPause(std::size_t(++m_noted), deadline))
            return false;
    }
    while (m_range < m_characters.ranges.size()) {
        const auto &[first, last] = m_characters.ranges[m_range];
        lookAt(first + m_inRange);
        if (first + m_inRange++ == last) {
            ++m_range;
            m_inRange = 0;
        }
        if (isPause(std::size_t(++m_lookedAt), deadline))
            break;
    }
    return m_range >= m_characters.ranges.size();
}

double CharactersPlan::planned() const
{
    const double all = double(m_characters.count()) + double(document().countOfInfos());
    return all > 0 ? (double(m_lookedAt) + double(m_noted)) / all : 1;
}

// Showing

QStringList CharactersPlan::headings() const
{
    return {fieldTitle(GlyphField::Name), fieldTitle(GlyphField::Unicodes), Texts::tr("Character"),
            fieldTitle(GlyphField::Category), fieldTitle(GlyphField::Desc)};
}

const ProposedFields &CharactersPlan::fieldsOf(qsizetype row) const
{
    if (m_shownRow != row) {
        m_shownFields = proposedFields(m_rows[std::size_t(row)].codePoint,
                                       [this](char32_t other) { return nameOf(other); });
        m_shownRow = row;
    }
    return m_shownFields;
}

QString CharactersPlan::text(qsizetype row, int column) const
{
    const Row &shown = m_rows[std::size_t(row)];
    switch (column) {
    case NameColumn:
        return cellDisplayText(shown.name);
    case UnicodeColumn:
        return hexStringFromInt(shown.codePoint);
    case CharacterColumn: {
        const bool isSeen = QChar::isPrint(shown.codePoint);
        // A mark needs something to stand on.
        const QString base = QChar::isMark(shown.codePoint) ? QString(QChar(0x25CC)) : QString();
        return isSeen ? base + QString::fromUcs4(&shown.codePoint, 1) : QString();
    }
    case CategoryColumn:
        return fieldsOf(row).category;
    default:
        return fieldsOf(row).description;
    }
}

RecordPlan::Remark CharactersPlan::remark(qsizetype row) const
{
    const QString &objection = m_rows[std::size_t(row)].objection;
    return {objection, !objection.isNull()};
}

QString CharactersPlan::obstacle() const
{
    return m_characters.objection;
}

QString CharactersPlan::summary() const
{
    QStringList sentences {countOfTaken() == 0 ? Texts::tr("Nothing is new.")
                               : countOfTaken() == 1
                               ? Texts::tr("One record is new.")
                               : Texts::tr("%1 records are new.").arg(number(countOfTaken()))};
    if (m_present > 0)
        sentences << Texts::tr("Already there: %1.").arg(number(m_present));
    if (const qsizetype refused = countOfRows() - m_doable - m_present; refused > 0)
        sentences << Texts::tr("With a name that cannot be given: %1.").arg(number(refused));
    if (m_unassigned > 0)
        sentences << Texts::tr("Code points without a character: %1.").arg(number(m_unassigned));
    return sentences.join(u' ');
}

// Doing it

InfoPtr CharactersPlan::recordOf(qsizetype row) const
{
    const ProposedFields &fields = fieldsOf(row);
    InfoPtr info = VXGlyphInfo::init();
    info->setName(m_rows[std::size_t(row)].name);
    info->setUnicode(hexStringFromInt(m_rows[std::size_t(row)].codePoint));
    storeEdited(*info, GlyphField::Category, fields.category);
    storeEdited(*info, GlyphField::SubCategory, fields.subCategory);
    storeEdited(*info, GlyphField::Script, fields.script);
    storeEdited(*info, GlyphField::Production, fields.production);
    storeEdited(*info, GlyphField::Decompose, fields.decomposition.join(kListSeparator));
    storeEdited(*info, GlyphField::Desc, fields.description);
    info->setCase(fields.letterCase);
    info->setDirection(fields.direction);
    return info;
}

QString CharactersPlan::stepName() const
{
    return editName(Texts::tr("Add Character %1").arg(firstTaken()), Texts::tr("Add %1 Characters"),
                    countOfTaken());
}

bool CharactersPlan::applyMore(const QDeadlineTimer &deadline)
{
    while (m_made < m_rows.size()) {
        if (isTaken(qsizetype(m_made))) {
            m_shownRow = -1; // with the names that are taken now
            m_records.push_back({recordOf(qsizetype(m_made)), m_behind});
        }
        if (isPause(++m_made, deadline))
            break;
    }
    if (m_made < m_rows.size())
        return false;
    if (!m_records.empty())
        setAdded(insertBehind(document(), std::move(m_records)));
    return true;
}

double CharactersPlan::applied() const
{
    return m_rows.empty() ? 1 : double(m_made) / double(m_rows.size());
}

} // namespace runebook
