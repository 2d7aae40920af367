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

/// One number for all that a file holds of a record.
size_t hashOfValues(const VXGlyphInfo &info)
{
    size_t hash = qHashMulti(0, info.caseValue(), info.direction(), info.unicodes(), info.altNames());
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
    if (m_revision == content.revision)
        return m_records;
    constexpr std::size_t kAtOnce = 512;
    std::vector<Record> found;
    RoundTrip roundTrip(content.fileVersion, RoundTrip::Of::Everything);
    std::vector<VXGlyphInfo *> infos;
    std::vector<qsizetype> places;
    std::vector<RoundTrip::Outcome> outcomes;
    const auto look = [&] {
        roundTrip.check(infos, outcomes);
        for (std::size_t i = 0; i < outcomes.size(); ++i) {
            const bool takesOthers = outcomes[i] == RoundTrip::Outcome::TakesOthers;
            // Of a record that nobody has changed the reading has told already what becomes of it.
            const bool isTold = infos[i]->isAsRead() && content.fileVersion == content.readVersion;
            if (takesOthers || (outcomes[i] != RoundTrip::Outcome::Same && !isTold))
                found.push_back({places[i], takesOthers});
        }
        infos.clear();
        places.clear();
    };
    doApartFor(content, [&] {
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
    });
    m_records = std::move(found);
    m_revision = content.revision;
    return m_records;
}

SavingLosses UnkeptValues::losses(const Content &content)
{
    constexpr qsizetype kListed = 1000;
    SavingLosses losses;
    const std::vector<Record> &records = unkept(content);
    if (records.empty())
        return losses;
    const RoundTrip roundTrip(content.fileVersion, RoundTrip::Of::Everything);
    const auto look = [&](qsizetype place, bool takesOthers) {
        const VXGlyphInfo &info = *recordAt(content, place);
        if (!takesOthers && m_accepted.contains(hashOfValues(info)))
            return;
        ++losses.count;
        losses.takingOthers += takesOthers;
        if (losses.listed.size() >= kListed)
            return;
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
    const std::vector<Record> &records = unkept(content);
    if (records.empty())
        return;
    doApartFor(content, [&] {
        for (const auto &[place, takesOthers] : records) {
            if (!takesOthers)
                m_accepted.insert(hashOfValues(*recordAt(content, place)));
        }
    });
}

std::vector<UnkeptValues::Fix> UnkeptValues::fixes(const Content &content)
{
    std::vector<Fix> plan;
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
