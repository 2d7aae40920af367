#include "document/UnkeptValues.h"

#include "document/GlyphDataWriter.h"
#include "model/RoundTrip.h"
#include "platform/TurningWindows.h"

#include <QLocale>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr qsizetype kTold = 20;

/// One number for all that a file holds of a record. What may be missing in a table may not in glyph data.
size_t hashOfValues(const VXGlyphInfo &info, const UnkeptValues::Content &content)
{
    size_t hash = qHashMulti(content.table ? 1 : 0, info.caseValue(), info.direction(), info.unicodes(),
                             info.altNames());
    for (const GlyphField field : RoundTrip::writtenFields())
        hash = qHashMulti(hash, info.stringValue(field));
    return hash;
}

QString callOf(const VXGlyphInfo &info, qsizetype place)
{
    const QString name = info.name().left(80);
    return name.isEmpty() ? UnkeptValues::tr("record %1").arg(QLocale().toString(qlonglong(place + 1)))
                          : name;
}

/// Does \a work apart if \a content is large.
template <typename Work> void doApartFor(const UnkeptValues::Content &content, const Work &work)
{
    doApart(GlyphDataWriter::sizeOf(content.infos, content.fileVersion), work);
}

const InfoPtr &recordAt(const UnkeptValues::Content &content, qsizetype place)
{
    return content.infos[static_cast<std::size_t>(place)];
}

} // namespace

const std::vector<UnkeptValues::Record> &UnkeptValues::unkept(const Content &content)
{
    const std::vector<TableColumn> columns =
        content.table ? content.table->columns : std::vector<TableColumn>();
    if (m_revision == content.revision && m_isOfTable == bool(content.table) && m_columns == columns)
        return m_records;
    std::vector<Record> found;
    doApartFor(content, [&] {
        if (content.table)
            findInTable(content, found);
        else
            findInGlyphData(content, found);
    });
    m_records = std::move(found);
    m_revision = content.revision;
    m_isOfTable = bool(content.table);
    m_columns = columns;
    return m_records;
}

void UnkeptValues::findInTable(const Content &content, std::vector<Record> &found) const
{
    qsizetype place = -1;
    for (const InfoPtr &info : content.infos) {
        ++place;
        if (!content.table->keepsLineOf(*info) && hasTableLosses(*info, *content.table))
            found.push_back({place, false});
    }
}

void UnkeptValues::findInGlyphData(const Content &content, std::vector<Record> &found) const
{
    constexpr std::size_t kAtOnce = 512;
    RoundTrip roundTrip(content.fileVersion, RoundTrip::Of::Everything);
    std::vector<VXGlyphInfo *> infos;
    std::vector<qsizetype> places;
    std::vector<RoundTrip::Outcome> outcomes;
    const bool isOwnFile = content.fileVersion == content.readVersion && !content.readTable;
    const auto look = [&] {
        roundTrip.check(infos, outcomes);
        for (std::size_t i = 0; i < outcomes.size(); ++i) {
            const bool takesOthers = outcomes[i] == RoundTrip::Outcome::TakesOthers;
            // Of a record that nobody has changed the reading has told already what becomes of it.
            const bool isTold = infos[i]->isAsRead() && isOwnFile;
            if (takesOthers || (outcomes[i] != RoundTrip::Outcome::Same && !isTold))
                found.push_back({places[i], takesOthers});
        }
        infos.clear();
        places.clear();
    };
    qsizetype place = -1;
    for (const InfoPtr &info : content.infos) {
        ++place;
        if (!info->unchangedLine(content.fileVersion).empty())
            continue;
        infos.push_back(info.get());
        places.push_back(place);
        if (infos.size() == kAtOnce)
            look();
    }
    look();
}

namespace {

/// What a table has besides its records, as sentences with the heading that they are about.
std::vector<std::pair<QString, QString>> asidesOf(const TableForm &form)
{
    std::vector<std::pair<QString, QString>> sentences;
    for (const TableColumn &column : form.columns) {
        if (!column.field)
            sentences.emplace_back(
                column.heading,
                UnkeptValues::tr("The column “%1” is left out: it is no field of glyph data.")
                    .arg(column.heading));
    }
    const auto rows = std::count_if(form.asides.begin(), form.asides.end(),
                                    [&form](const TableForm::Aside &aside) { return form.hasText(aside); });
    if (rows > 0)
        sentences.emplace_back(QString(), UnkeptValues::tr("Rows that could not be read are left out."));
    return sentences;
}

size_t hashOfAside(const std::pair<QString, QString> &aside)
{
    return qHashMulti(2, aside.first, aside.second);
}

} // namespace

/// What a table would keep beside its records, and glyph data does not.
void UnkeptValues::addAsides(const Content &content, SavingLosses &losses) const
{
    if (content.table || !content.readTable)
        return;
    for (const auto &aside : asidesOf(*content.readTable)) {
        if (m_accepted.contains(hashOfAside(aside)))
            continue;
        ++losses.count;
        losses.listed << SavingLoss {-1, tr("The table"), aside.first, aside.second, false};
    }
}

SavingLosses UnkeptValues::losses(const Content &content)
{
    constexpr qsizetype kListed = 1000;
    SavingLosses losses;
    losses.isFixable = !content.table;
    addAsides(content, losses);
    const std::vector<Record> &records = unkept(content);
    if (records.empty())
        return losses;
    const RoundTrip roundTrip(content.fileVersion, RoundTrip::Of::Everything);
    const auto look = [&](qsizetype place, bool takesOthers) {
        const VXGlyphInfo &info = *recordAt(content, place);
        if (!takesOthers && m_accepted.contains(hashOfValues(info, content)))
            return;
        ++losses.count;
        losses.takingOthers += takesOthers;
        if (losses.listed.size() >= kListed)
            return;
        if (content.table) {
            for (const TableLoss &loss : tableLosses(info, *content.table))
                losses.listed << SavingLoss {place, callOf(info, place), titleOfField(loss.field),
                                             loss.sentence(info), false};
            return;
        }
        for (const RoundTrip::Loss &loss : roundTrip.losses(info)) {
            const QString title = titleOfField(loss.field);
            losses.listed << SavingLoss {place, callOf(info, place), title, sentenceOfLoss(info, loss, title),
                                         RoundTrip::takesOthers(info, loss.field)};
        }
    };
    doApartFor(content, [&] {
        for (const auto &[place, takesOthers] : records)
            look(place, takesOthers);
    });
    return losses;
}

bool UnkeptValues::takesOthers(const Content &content)
{
    const std::vector<Record> &records = unkept(content);
    return std::any_of(records.begin(), records.end(),
                       [](const Record &record) { return record.takesOthers; });
}

void UnkeptValues::accept(const Content &content)
{
    if (!content.table && content.readTable) {
        for (const auto &aside : asidesOf(*content.readTable))
            m_accepted.insert(hashOfAside(aside));
    }
    const std::vector<Record> &records = unkept(content);
    if (records.empty())
        return;
    doApartFor(content, [&] {
        for (const auto &[place, takesOthers] : records) {
            if (!takesOthers)
                m_accepted.insert(hashOfValues(*recordAt(content, place), content));
        }
    });
}

std::vector<UnkeptValues::Fix> UnkeptValues::fixes(const Content &content)
{
    std::vector<Fix> plan;
    if (content.table) // a table lacks columns, and nobody can put values into another form for that
        return plan;
    const std::vector<Record> &records = unkept(content);
    doApartFor(content, [&] {
        for (const auto &[place, takesOthers] : records) {
            const InfoPtr &info = recordAt(content, place);
            if (std::vector<FieldFix> fields = savableForm(*info, content.fileVersion); !fields.empty())
                plan.push_back({info, std::move(fields)});
        }
    });
    return plan;
}

Error UnkeptValues::refusal(const QString &url, const SavingLosses &losses)
{
    return {u"SavingLossesError"_s,
            2,
            tr("“%1” was not written: values would take other records with them.").arg(url),
            losses.lines(kTold).join(u'\n'),
            {}};
}

Error UnkeptValues::notice(const QString &url, const SavingLosses &losses, const QString &domain)
{
    return {domain,
            3,
            tr("“%1” does not hold all values of its records.").arg(url),
            losses.lines(kTold).join(u'\n'),
            {}};
}

} // namespace runebook
