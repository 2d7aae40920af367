// Finding records by name and by code point, and the texts of previews, once the indexes are there.
#include "benchmarks/BenchmarkSupport.h"
#include "document/GlyphPreview.h"
#include "document/VXDocument.h"

#include <QHash>
#include <map>
#include <random>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kTexts = 4096; // looked up in turns

enum class Renames { None, Thousand };

/// A document with its indexes built, and what is looked up in it: the texts of records from all over it.
struct Indexed {
    Indexed(int records, Renames renames)
    {
        document.readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
        std::mt19937 random(1);
        const auto anyRecord = [&] { return document.infos()[random() % document.infos().size()]; };
        while (document.countOfInfos() && infos.size() < kTexts)
            infos.push_back(anyRecord());
        document.infoForName(u"A"_s);
        document.infoForUnicode(u"0041"_s);
        for (int i = 0; renames == Renames::Thousand && document.countOfInfos() && i < 1000; ++i)
            anyRecord()->setName(u"renamed%1"_s.arg(i));
        document.flushChanges();
        for (const InfoPtr &info : infos)
            names << info->name();
        while (document.countOfInfos() && codePoints.size() < static_cast<qsizetype>(kTexts)) {
            if (const QString codePoint = anyRecord()->unicode(); !codePoint.isEmpty())
                codePoints << codePoint;
        }
        for (const InfoPtr &info : document.infos()) {
            if (!peerByName.contains(info->name()))
                peerByName.insert(info->name(), info);
            if (const QString codePoint = info->unicode();
                !codePoint.isEmpty() && !peerByCodePoint.contains(codePoint))
                peerByCodePoint.insert(codePoint, info);
        }
    }

    VXDocument document;
    InfoList infos;
    QStringList names;
    QStringList codePoints;
    QHash<QString, InfoPtr> peerByName;
    QHash<QString, InfoPtr> peerByCodePoint;
};

Indexed &indexed(int records, Renames renames)
{
    static std::map<std::pair<int, Renames>, std::unique_ptr<Indexed>> all;
    std::unique_ptr<Indexed> &one = all[{records, renames}];
    if (!one)
        one = std::make_unique<Indexed>(records, renames);
    return *one;
}

/// Calls \a find with one text after the other; every one of them must be found.
template <typename Find> void lookUp(benchmark::State &state, const QStringList &texts, Find find)
{
    qsizetype next = 0;
    qsizetype missing = 0;
    for ([[maybe_unused]] auto _ : state) {
        missing += !find(texts.at(next));
        next = (next + 1) % static_cast<qsizetype>(kTexts);
    }
    if (missing)
        state.SkipWithError("a record was not found");
}

void byName(benchmark::State &state, int records, Renames renames)
{
    const Indexed &in = indexed(records, renames);
    lookUp(state, in.names, [&](const QString &name) { return in.document.infoForName(name); });
}

void byNameInHash(benchmark::State &state, int records, Renames renames)
{
    const Indexed &in = indexed(records, renames);
    lookUp(state, in.names, [&](const QString &name) { return in.peerByName.value(name); });
}

void byCodePoint(benchmark::State &state, int records)
{
    const Indexed &in = indexed(records, Renames::None);
    lookUp(state, in.codePoints, [&](const QString &text) { return in.document.infoForUnicode(text); });
}

void byCodePointInHash(benchmark::State &state, int records)
{
    const Indexed &in = indexed(records, Renames::None);
    lookUp(state, in.codePoints, [&](const QString &text) { return in.peerByCodePoint.value(text); });
}

void previewText(benchmark::State &state, int records)
{
    const Indexed &in = indexed(records, Renames::None);
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(in.document.stringForInfo(in.infos[next]));
        next = (next + 1) % kTexts;
    }
}

void previewWithFonts(benchmark::State &state, int records)
{
    const Indexed &in = indexed(records, Renames::None);
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(in.document.formatStringFromInfo(in.infos[next]));
        next = (next + 1) % kTexts;
    }
}

void registerAll()
{
    for (const int records : {150'000, 1'000'000}) {
        const QString size = QString::number(records);
        addRepeated("find-name/"_L1 + size, byName, records, Renames::None);
        addRepeated("find-name/"_L1 + size + ":peer"_L1, byNameInHash, records, Renames::None);
        addRepeated("find-renamed/"_L1 + size, byName, records, Renames::Thousand);
        addRepeated("find-renamed/"_L1 + size + ":peer"_L1, byNameInHash, records, Renames::Thousand);
        addRepeated("find-code-point/"_L1 + size, byCodePoint, records);
        addRepeated("find-code-point/"_L1 + size + ":peer"_L1, byCodePointInHash, records);
    }
    addRepeated(u"preview/150000"_s, previewText, 150'000);
    addRepeated(u"preview-fonts/150000"_s, previewWithFonts, 150'000);
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
