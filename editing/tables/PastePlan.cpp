#include "editing/tables/PastePlan.h"

#include "document/TableFields.h"
#include "editing/fields/CodePointTokens.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "model/EditedValue.h"
#include "model/FieldTable.h"
#include "model/GlyphReading.h"
#include "platform/TurningWindows.h"

#include <QCoreApplication>
#include <QHash>
#include <QLocale>
#include <algorithm>
#include <bit>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(PastePlan)
};

QString number(qint64 count)
{
    return QLocale().toString(qlonglong(count));
}

/// What the field shows when it has the value of a cell.
QString shownOfCell(GlyphField field, const QString &cell)
{
    const auto asWord = [&cell](const QStringList &words) {
        const auto at = std::find_if(words.begin(), words.end(), [&cell](const QString &word) {
            return word.compare(cell.trimmed(), Qt::CaseInsensitive) == 0;
        });
        return at == words.end() ? cell : *at;
    };
    switch (field) {
    case GlyphField::Unicodes:
        return codePointsOfText(cell).kept.join(kListSeparator);
    case GlyphField::Case:
        return asWord(caseWords());
    case GlyphField::Direction:
        return asWord(directionWords());
    default:
        return cell;
    }
}

/// The key as it is compared: the first code point of a cell or a record, however it was written.
QString keyOfCell(CompareKey key, const QString &cell)
{
    if (key != CompareKey::Unicode)
        return cell;
    return codePointsOfText(cell).kept.value(0);
}

QString keyOfRecord(CompareKey key, const VXGlyphInfo &info)
{
    return key == CompareKey::Unicode ? info.unicode().toUpper() : info.stringValue(fieldOfKey(key));
}

bool isChoice(GlyphField field)
{
    return rowOf(field).kind == FieldKind::Choice;
}

/// Whether the record has the value of a cell. Most cells of a table that comes back say what is there
/// already.
bool isSame(const VXGlyphInfo &info, GlyphField field, const QString &cell)
{
    if (rowOf(field).kind == FieldKind::Text) {
        std::string buffer;
        const std::string_view value = info.utf8(field, buffer);
        if (QAnyStringView(QUtf8StringView(value.data(), std::ssize(value))) == QAnyStringView(cell))
            return true;
    }
    // A word that is none would count as the one for nothing there.
    return isCellOf(info, field, cell.toStdString())
        && (!isChoice(field) || objectionToCell(field, cell).isNull());
}

/// Why \a cell cannot stand in \a field, whatever other records there are; null when it can.
QString objectionTo(GlyphField field, const QString &cell)
{
    if (isChoice(field))
        return objectionToCell(field, cell);
    if (field == GlyphField::Unicodes) {
        const QStringList leftOut = codePointsOfText(cell).leftOut;
        if (!leftOut.isEmpty())
            return Texts::tr("“%1” is no code point").arg(leftOut.first());
    }
    return objectionToText(field, shownOfCell(field, cell)).description;
}

/// Stores what the field then shows: code points in their usual form.
void storeShown(VXGlyphInfo &info, GlyphField field, const QString &cell)
{
    if (field == GlyphField::Unicodes)
        storeEdited(info, field, codePointsOfText(cell).kept);
    else
        storeCell(info, field, cell);
}

/// A record with nothing in it, not even a direction.
InfoPtr newRecord()
{
    VXGlyphInfo::Reading record({});
    record.setUnknownName();
    record.setDirection(VXGlyphInfo::DirectionNotSet);
    return record.take();
}

} // namespace

qsizetype PasteChoices::columnOf(GlyphField field) const
{
    const auto it = std::find(fields.begin(), fields.end(), field);
    return it == fields.end() ? -1 : it - fields.begin();
}

GlyphField fieldOfKey(CompareKey key)
{
    switch (key) {
    case CompareKey::Unicode:
        return GlyphField::Unicodes;
    case CompareKey::Production:
        return GlyphField::Production;
    case CompareKey::Name:
        break;
    }
    return GlyphField::Name;
}

PasteChoices usualChoices(const PastedTable &table, const std::vector<GlyphField> &columns,
                          const PasteTarget &target)
{
    PasteChoices choices;
    choices.hasHeadings = table.seemsToHaveHeadings();
    choices.fields.resize(static_cast<std::size_t>(table.columns));
    if (choices.hasHeadings)
        choices.fields = table.namedFields();
    else
        std::copy_n(columns.begin(), std::min(columns.size(), choices.fields.size()), choices.fields.begin());
    choices.rows = target.selected.empty() ? PasteRows::AsNew : PasteRows::OntoSelection;
    if (!choices.hasHeadings)
        return choices;
    for (const CompareKey key : {CompareKey::Production, CompareKey::Unicode, CompareKey::Name}) {
        if (choices.columnOf(fieldOfKey(key)) < 0)
            continue;
        choices.rows = PasteRows::ByKey;
        choices.key = key;
    }
    return choices;
}

// Which rows are for which records

PastePlan::PastePlan(const PastedTable &table, const PasteChoices &choices, const PasteTarget &target)
    : m_table(&table), m_choices(choices), m_selected(std::ssize(target.selected))
{
    for (std::size_t column = 0; column < choices.fields.size(); ++column) {
        if (choices.fields[column])
            m_columns.emplace_back(qsizetype(column), *choices.fields[column]);
    }
    if (m_columns.empty())
        return;
    matchRows(target);
    for (quint32 row = 0; row < m_rows.size(); ++row)
        lookAt(row);
    resolveNames(target.document);
    count();
}

PastePlan PastePlan::madeApart(const PastedTable &table, const PasteChoices &choices,
                               const PasteTarget &target)
{
    constexpr qint64 kUsualRow = 150; // bytes, of a record as of a row
    const qint64 bytes = (std::ssize(target.document.infos()) + std::ssize(table.rows)) * kUsualRow;
    PastePlan plan;
    doApart(bytes, [&] { plan = PastePlan(table, choices, target); });
    return plan;
}

void PastePlan::addRow(quint32 tableRow, InfoPtr info, State state)
{
    m_rows.push_back({tableRow, state, 0, 0, std::move(info)});
}

void PastePlan::matchRows(const PasteTarget &target)
{
    m_rows.reserve(m_table->rows.size());
    switch (m_choices.rows) {
    case PasteRows::ByKey:
        matchByKey(target.document);
        break;
    case PasteRows::OntoSelection:
        matchSelection(target);
        break;
    case PasteRows::AsNew:
        for (quint32 row = firstRow(); row < m_table->rows.size(); ++row)
            addRow(row, nullptr, State::New);
        break;
    }
}

void PastePlan::matchByKey(const VXDocument &document)
{
    const qsizetype column = m_choices.columnOf(fieldOfKey(m_choices.key));
    if (column < 0)
        return;
    struct Found {
        const InfoPtr *info; ///< the first record with the key, as look-ups find it
        quint32 tableRow; ///< that has it; 0: none yet
    };
    QHash<QString, Found> records;
    records.reserve(std::ssize(document.infos()) + std::ssize(m_table->rows));
    for (const InfoPtr &info : document.infos()) {
        const QString key = keyOfRecord(m_choices.key, *info);
        if (auto it = records.find(key); it == records.end())
            records.insert(key, {&info, 0});
    }
    for (quint32 row = firstRow(); row < m_table->rows.size(); ++row) {
        const QString key = keyOfCell(m_choices.key, m_table->cell(row, column));
        if (key.isEmpty()) {
            addRow(row, nullptr, State::Unmatched);
            continue;
        }
        auto it = records.find(key);
        if (it == records.end())
            it = records.insert(key, {nullptr, 0});
        Found &found = it.value();
        if (found.tableRow > 0) {
            addRow(row, nullptr, State::Refused);
            refuse(quint32(m_rows.size() - 1), {},
                   Texts::tr("The row has the same key as row %1.").arg(number(found.tableRow)));
            continue;
        }
        found.tableRow = row + 1;
        if (found.info)
            addRow(row, *found.info, State::Same);
        else
            addRow(row, nullptr, m_choices.addsUnmatched ? State::New : State::Unmatched);
    }
}

void PastePlan::matchSelection(const PasteTarget &target)
{
    const std::size_t first = firstRow();
    const std::size_t rows = m_table->rows.size() - std::min(first, m_table->rows.size());
    m_asksForSizes = rows != target.selected.size() && !m_choices.sizes && rows > 0;
    const PasteSizes sizes = m_choices.sizes.value_or(PasteSizes::OnlyFitting);
    const InfoList &records = sizes == PasteSizes::GoOnBelow ? target.below : target.selected;
    const std::size_t all = sizes == PasteSizes::Repeat && rows > 0 ? records.size() : rows;
    for (std::size_t i = 0; i < all; ++i) {
        const auto row = static_cast<quint32>(first + i % rows);
        if (i < records.size())
            addRow(row, records[i], State::Same);
        else
            addRow(row, nullptr,
                   sizes == PasteSizes::GoOnBelow && m_choices.addsUnmatched ? State::New : State::Unmatched);
    }
}

// What becomes of values

void PastePlan::lookAt(quint32 number)
{
    Row &row = m_rows[number];
    if (row.state == State::Unmatched || row.state == State::Refused)
        return;
    const QStringList &cells = m_table->rows[row.tableRow];
    for (const auto &[column, field] : m_columns) {
        if (column >= cells.size())
            continue; // a row that ends before says nothing about the rest
        const QString &cell = cells.at(column);
        if (cell.isEmpty() && (!row.info || !m_choices.takesEmpty))
            continue;
        if (row.info && isSame(*row.info, field, cell))
            continue; // even if nobody may type it
        if (const QString objection = objectionTo(field, cell); !objection.isEmpty())
            refuse(number, field, objection);
        else if (!row.info || field != GlyphField::Unicodes
                 || row.info->displayText(field) != shownOfCell(field, cell))
            row.changed |= bitOf(field);
    }
    if (row.state == State::Refused)
        row.changed = 0;
}

void PastePlan::refuse(quint32 number, std::optional<GlyphField> field, const QString &reason)
{
    m_refusals.push_back({number, field, reason});
    Row &row = m_rows[number];
    if (field) {
        row.changed &= ~bitOf(*field);
        row.refused |= bitOf(*field);
    }
    // Without its name nobody would know what a new record is.
    if (!field || (!row.info && field == GlyphField::Name)) {
        row.state = State::Refused;
        row.changed = 0;
    }
}

/// The names that records have when all is done: those that keep theirs, and those that get one.
class PastePlan::Names
{
public:
    explicit Names(const VXDocument &document)
    {
        m_kept.reserve(std::ssize(document.infos()));
        for (const InfoPtr &info : document.infos())
            ++m_kept[info->name()];
    }
    void give(const QString &name) { --m_kept[name]; }
    void keep(const QString &name) { ++m_kept[name]; }
    bool isKept(const QString &name) const { return m_kept.value(name) > 0; }
    /// False when another row has taken the name.
    bool take(const QString &name, quint32 row)
    {
        const bool isFree = !m_taken.contains(name);
        if (isFree)
            m_taken.insert(name, row);
        return isFree;
    }
    std::optional<quint32> takerOf(const QString &name) const
    {
        const auto it = m_taken.find(name);
        return it == m_taken.end() ? std::nullopt : std::optional(*it);
    }
    void letGo(const QString &name) { m_taken.remove(name); }
    bool isThere(const QString &name) const { return isKept(name) || m_taken.contains(name); }

private:
    QHash<QString, int> m_kept;
    QHash<QString, quint32> m_taken;
};

void PastePlan::resolveNames(const VXDocument &document)
{
    const qsizetype nameColumn = m_choices.columnOf(GlyphField::Name);
    const qsizetype othersColumn = m_choices.columnOf(GlyphField::AltNames);
    constexpr quint32 kBoth = bitOf(GlyphField::Name) | bitOf(GlyphField::AltNames);
    if (std::none_of(m_rows.begin(), m_rows.end(), [](const Row &row) { return row.changed & kBoth; }))
        return;
    Names names(document);
    const auto isRenamed = [](const Row &row) { return bool(row.changed & bitOf(GlyphField::Name)); };
    const auto newName = [&](const Row &row) { return m_table->cell(row.tableRow, nameColumn); };
    for (const Row &row : m_rows) {
        if (isRenamed(row) && row.info)
            names.give(row.info->name());
    }
    // Whoever does not get a name keeps the old one, which then is not free for another.
    const auto refuseName = [&](quint32 number) {
        for (std::optional<quint32> refused = number; refused;) {
            const Row &row = m_rows[*refused];
            const QString name = newName(row);
            if (names.takerOf(name) == refused)
                names.letGo(name);
            refuse(*refused, GlyphField::Name,
                   Texts::tr("There is another record with the name: %1").arg(name));
            refused = {};
            if (!row.info)
                continue;
            names.keep(row.info->name());
            refused = names.takerOf(row.info->name());
        }
    };
    for (quint32 number = 0; number < m_rows.size(); ++number) {
        if (!isRenamed(m_rows[number]))
            continue;
        const QString name = newName(m_rows[number]);
        if (names.isKept(name) || !names.take(name, number))
            refuseName(number);
    }
    for (quint32 number = 0; number < m_rows.size() && othersColumn >= 0; ++number) {
        if (!(m_rows[number].changed & bitOf(GlyphField::AltNames)))
            continue;
        for (const QString &other : valueAfter(m_rows[number], GlyphField::AltNames).split(kListSeparator)) {
            if (other.isEmpty() || !names.isThere(other))
                continue;
            refuse(number, GlyphField::AltNames, Texts::tr("Repeating name: %1").arg(other));
            break;
        }
    }
}

QString PastePlan::valueAfter(const Row &row, GlyphField field) const
{
    if (row.changed & bitOf(field)) {
        const QString &cell = m_table->cell(row.tableRow, m_choices.columnOf(field));
        return shownOfCell(field, cell);
    }
    return row.info ? row.info->displayText(field) : QString();
}

// What is told of it

void PastePlan::count()
{
    std::sort(m_refusals.begin(), m_refusals.end(), [](const Refusal &a, const Refusal &b) {
        return std::pair(a.row, a.field) < std::pair(b.row, b.field);
    });
    for (Row &row : m_rows) {
        if (row.info && row.changed)
            row.state = State::Changed;
        else if (row.state == State::New && !row.changed)
            row.state = State::Same; // there is nothing in it
        m_counts.records += row.state == State::Changed;
        m_counts.fields += row.state == State::Changed ? std::popcount(row.changed) : 0;
        m_counts.added += row.state == State::New;
        m_counts.unmatched += row.state == State::Unmatched;
    }
}

QString PastePlan::summary() const
{
    const auto counted = [](qsizetype count, const QString &one, const QString &many) {
        return count == 1 ? one : many.arg(number(count));
    };
    QStringList parts;
    if (m_counts.records > 0) {
        const QString fields = counted(m_counts.fields, Texts::tr("in one field"), Texts::tr("in %1 fields"));
        parts << counted(m_counts.records, Texts::tr("one record changes"), Texts::tr("%1 records change"))
                + u' ' + fields;
    }
    if (m_counts.added > 0)
        parts << counted(m_counts.added, Texts::tr("one is new"), Texts::tr("%1 are new"));
    if (m_counts.unmatched > 0)
        parts << counted(m_counts.unmatched, Texts::tr("one row matches nothing"),
                         Texts::tr("%1 rows match nothing"));
    if (!m_refusals.empty())
        parts << counted(std::ssize(m_refusals), Texts::tr("one value is invalid"),
                         Texts::tr("%1 values are invalid"));
    if (m_table && m_table->faultyRows > 0)
        parts << counted(m_table->faultyRows, Texts::tr("one row cannot be read for its quotes"),
                         Texts::tr("%1 rows cannot be read for their quotes"));
    if (parts.isEmpty())
        return Texts::tr("Nothing changes.");
    QString sentence = parts.join(u", "_s);
    sentence[0] = sentence.at(0).toUpper();
    return sentence + u'.';
}

QString PastePlan::sentence(const Refusal &refusal) const
{
    const QString row = number(numberOf(m_rows[refusal.row]));
    return refusal.field ? Texts::tr("Row %1, %2: %3").arg(row, fieldTitle(*refusal.field), refusal.reason)
                         : Texts::tr("Row %1: %2").arg(row, refusal.reason);
}

QString PastePlan::obstacle() const
{
    if (m_columns.empty())
        return Texts::tr("No column has a field.");
    if (m_choices.rows == PasteRows::ByKey && m_choices.columnOf(fieldOfKey(m_choices.key)) < 0)
        return Texts::tr("No column is the key “%1”.").arg(fieldTitle(fieldOfKey(m_choices.key)));
    if (m_asksForSizes)
        return Texts::tr("%1 rows do not fit %2 selected records.")
            .arg(number(std::ssize(m_table->rows) - firstRow()), number(m_selected));
    if (m_choices.stopsAtInvalid && !m_refusals.empty())
        return Texts::tr("There are invalid values.");
    return m_counts.records + m_counts.added == 0 ? Texts::tr("Nothing changes.") : QString();
}

// Doing it

void PastePlan::applyRow(const Row &row, InfoList &added) const
{
    if (row.state != State::Changed && row.state != State::New)
        return;
    const InfoPtr info = row.info ? row.info : newRecord();
    for (const auto &[column, field] : m_columns) {
        if (row.changed & bitOf(field))
            storeShown(*info, field, m_table->cell(row.tableRow, column));
    }
    if (!row.info)
        added.push_back(info);
}

bool PastePlan::apply(VXDocument &document, qsizetype place, const QDeadlineTimer &deadline,
                      Progress &progress) const
{
    constexpr std::size_t kBetweenLooks = 256;
    while (progress.next < m_rows.size()) {
        applyRow(m_rows[progress.next++], progress.added);
        if (progress.next % kBetweenLooks == 0 && deadline.hasExpired())
            return false;
    }
    if (!progress.added.empty())
        document.insertObjectsInInfosAtIndexes(progress.added,
                                               IndexSet::run(place, std::ssize(progress.added)));
    return true;
}

} // namespace runebook
