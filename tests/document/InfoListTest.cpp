// The info list: its operations, their undo, and look-ups that stay right through all of it.
#include "document/VXDocument.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/document/Rivals.h"

#include <QRandomGenerator>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

InfoList namedAll(const QString &names)
{
    InfoList infos;
    for (const QString &name : names.split(u' ', Qt::SkipEmptyParts))
        infos.push_back(named(name));
    return infos;
}

QString namesOf(const InfoList &infos)
{
    QStringList names;
    for (const InfoPtr &info : infos)
        names << info->name();
    return names.join(u' ');
}

} // namespace

using Operation = std::function<void(VXDocument &)>;

class InfoListTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Records without a name are all called the same; looking for that name must not cost the square of
    /// their number.
    void findsAmongRecordsOfOneName()
    {
        constexpr int kCount = 300'000;
        VXDocument document;
        InfoList infos;
        for (int i = 0; i < kCount; ++i)
            infos.push_back(VXGlyphInfo::init());
        document.setInfos(infos);
        QCOMPARE(document.infoForName(u"unknown"_s), infos.front());
        infos[0]->setName(u"a"_s);
        QCOMPARE(document.infoForName(u"unknown"_s), infos[1]);
        document.removeObjectsFromInfosAtIndexes({1, 2});
        QCOMPARE(document.infoForName(u"unknown"_s), infos[3]);
        document.undoManager()->undo();
        QCOMPARE(document.infoForName(u"unknown"_s), infos[0]);
        for (int i = 0; i < 2000; ++i)
            infos[static_cast<std::size_t>(i)]->setName(u"b"_s);
        QCOMPARE(document.infoForName(u"unknown"_s), infos[2000]);
        QCOMPARE(document.infoForName(u"b"_s), infos[0]);
        QCOMPARE(document.infoForKeyValues(u"name"_s, {u"b"_s})->size(), 2000u);
    }

    void setsAndClearsTheDocument()
    {
        VXDocument document;
        document.setInfos(namedAll(u"a b c d e f"_s));
        const InfoList all = document.infos();
        for (const InfoPtr &info : all)
            QCOMPARE(info->document(), &document);
        document.removeObjectFromInfosAtIndex(5);
        QVERIFY(!all[5]->document());
        QCOMPARE(document.indexOfObjectInInfos(all[5]), -1);
        document.undoManager()->undo();
        QCOMPARE(all[5]->document(), &document);
        document.removeObjectsFromInfosAtIndexes({3, 4});
        QCOMPARE(all[3]->document(), &document);
        document.removeInfo(all[0]);
        document.removeInfos({all[1]});
        QCOMPARE(document.indexOfObjectInInfos(all[1]), -1); // although it still says whose it is
        QCOMPARE(all[0]->document(), &document);
        QCOMPARE(all[1]->document(), &document);
        const InfoPtr other = named(u"x"_s);
        document.replaceObjectInInfosAtIndexWithObject(0, other);
        QCOMPARE(other->document(), &document);
        QCOMPARE(namesOf(document.infos()), u"x f"_s);
        document.setInfos({});
        QVERIFY(!other->document());
        QVERIFY(!document.objectInInfosAtIndex(0));
        QVERIFY(!document.objectInInfosAtIndex(-1));
    }

    TABLE(announces, (bool toObservers, const Operation &operation), {
        row("addInfo", true, [](auto &d) { d.addInfo(named(u"x"_s)); });
        row("addInfos", true, [](auto &d) { d.addInfos(namedAll(u"x y"_s)); });
        row("removeInfo", false, [](auto &d) { d.removeInfo(d.objectInInfosAtIndex(1)); });
        row("removeInfos", false, [](auto &d) { d.removeInfos({d.objectInInfosAtIndex(1)}); });
        row("insert", true, [](auto &d) { d.insertObjectInInfosAtIndex(named(u"x"_s), 0); });
        row("insert several", true, [](auto &d) {
            d.insertObjectsInInfosAtIndexes(namedAll(u"x y"_s), {0, 2});
        });
        row("remove at", true, [](auto &d) { d.removeObjectFromInfosAtIndex(0); });
        row("remove several", true, [](auto &d) { d.removeObjectsFromInfosAtIndexes({0, 1}); });
        row("replace", true, [](auto &d) { d.replaceObjectInInfosAtIndexWithObject(0, named(u"x"_s)); });
    })
    {
        VXDocument document;
        document.setInfos(namedAll(u"a b c"_s));
        Follower follower(document);
        follower.list = document.infos();
        QSignalSpy observed(&document, &VXDocument::didChangeInfos);
        operation(document);
        QCOMPARE(observed.size(), toObservers ? 1 : 0);
        QVERIFY(follower.list == document.infos());
    }

    void leavesStepsToTheOthers()
    {
        VXDocument document;
        document.setInfos(namedAll(u"a b"_s));
        QVERIFY(document.isDocumentEdited());
        document.updateChangeCount(Document::ChangeCleared);
        document.replaceObjectInInfosAtIndexWithObject(1, named(u"x"_s));
        QVERIFY(document.isDocumentEdited());
        document.updateChangeCount(Document::ChangeCleared);
        document.removeObjectFromInfosAtIndex(7);
        document.removeObjectsFromInfosAtIndexes({});
        document.replaceObjectInInfosAtIndexWithObject(7, named(u"x"_s));
        QVERIFY(!document.undoManager()->canUndo());
        QCOMPARE(namesOf(document.infos()), u"a x"_s);
        QVERIFY(!document.isDocumentEdited());
    }

    void takesAnyIndexes()
    {
        // From scripts they come as they are written.
        VXDocument document;
        document.setInfos(namedAll(u"a b c d"_s));
        document.removeObjectsFromInfosAtIndexes({3, 1, 3, 9, -1});
        QCOMPARE(namesOf(document.infos()), u"a c"_s);
        document.undoManager()->undo();
        QCOMPARE(namesOf(document.infos()), u"a b c d"_s);
        document.insertObjectsInInfosAtIndexes(namedAll(u"x y"_s), {2, 0});
        QCOMPARE(namesOf(document.infos()), u"x a y b c d"_s);
        document.undoManager()->undo();
        document.insertObjectsInInfosAtIndexes(namedAll(u"x y"_s), {50, 60});
        QCOMPARE(namesOf(document.infos()), u"a b c d x y"_s);
        document.undoManager()->undo();
        QCOMPARE(namesOf(document.infos()), u"a b c d"_s);
        document.undoManager()->redo();
        QCOMPARE(namesOf(document.infos()), u"a b c d x y"_s);
        document.insertObjectsInInfosAtIndexes(namedAll(u"x y"_s), {0});
        QCOMPARE(document.countOfInfos(), 6);
    }

    void looksUp()
    {
        VXDocument document;
        QVERIFY(!document.infoForName(u"a"_s));
        document.setInfos(namedAll(u"a b a é"_s));
        document.objectInInfosAtIndex(1)->setUnicodes({u"0042"_s, u"0041"_s});
        document.objectInInfosAtIndex(2)->setUnicode(u"0041"_s);
        QVERIFY(!document.infoForName(u"A"_s));
        QCOMPARE(document.infoForUnicode(u"0041"_s),
                 document.objectInInfosAtIndex(2)); // the first alone counts
        QVERIFY(!document.infoForUnicode(u"41"_s));
        QVERIFY(!document.infoForUnicode({}));
        QVERIFY(!document.infoForName({}));
        QVERIFY(!document.infoForName(u""_s));
        document.objectInInfosAtIndex(1)->setName(u""_s);
        QCOMPARE(document.infoForName(u""_s), document.objectInInfosAtIndex(1));
        document.objectInInfosAtIndex(1)->setName({});
        QVERIFY(!document.infoForName(u""_s));
        QVERIFY(!document.infoForName({}));
    }

    void looksUpByAnyKey()
    {
        VXDocument document;
        document.setInfos(namedAll(u"a b c"_s));
        document.objectInInfosAtIndex(0)->setScript(u"latin"_s);
        document.objectInInfosAtIndex(2)->setScript(u"latin"_s);
        document.objectInInfosAtIndex(1)->setDirection(1);
        document.objectInInfosAtIndex(1)->setUnicodes({u"1"_s, u"2"_s});
        const auto found = [&](const QString &key, const QVariantList &values) {
            const auto infos = document.infoForKeyValues(key, values);
            return infos ? namesOf(*infos) : u"(none)"_s;
        };
        QCOMPARE(found(u"script"_s, {u"latin"_s}), u"a c"_s);
        QCOMPARE(found(u"script"_s, {u"greek"_s}), u"(none)"_s);
        QCOMPARE(found(u"script"_s, {}), u"(none)"_s);
        QCOMPARE(found(u"script"_s, {QString()}), u"(none)"_s);
        QCOMPARE(found(u"name"_s, {u"c"_s, u"a"_s, u"a"_s}), u"a c"_s);
        QCOMPARE(found(u"name"_s, {u"c"_s, 5}), u"c"_s);
        QCOMPARE(found(u"direction"_s, {1}), u"b"_s);
        QCOMPARE(found(u"unicodes"_s, {QStringList {u"1"_s, u"2"_s}}), u"b"_s);
        QCOMPARE(found(u"accents"_s, {u"a"_s}), u"(none)"_s);
    }

    TABLE(findsBaseInfos, (const QString &name, const QString &expected), {
        row("uni0041", "A");
        row("uni00410042", "A uni0042");
        row("uni0041004", "(none)");
        row("uni", "(none)");
        row("uni004a", "(none)");
        row("uni00E9", "uni00E9");
        row("u1F600", "grin");
        row("u1F6001F601", "grin u1F601");
        row("u0041", "(none)");
        row("u", "(none)");
        row("Uni0041", "(none)");
        row("uni0041.alt", "(none)");
        row("uniABCDEF", "(none)");
        row("A", "(none)");
        row("", "(none)");
    })
    {
        VXDocument document;
        document.setInfos(namedAll(u"A grin"_s));
        document.objectInInfosAtIndex(0)->setUnicode(u"0041"_s);
        document.objectInInfosAtIndex(1)->setUnicode(u"1F600"_s);
        const auto bases = document.baseInfosForUniName(name);
        QCOMPARE(bases ? namesOf(*bases) : u"(none)"_s, expected);
        QCOMPARE(document.countOfInfos(), 2);
        for (const InfoPtr &base : bases.value_or(InfoList())) {
            QCOMPARE(base->unicodes().size(), 1);
            QCOMPARE(base->document() == nullptr, document.indexOfObjectInInfos(base) < 0);
        }
    }

    TABLE(followsRandomEdits, (quint32 seed, bool repeatsRecords), {
        for (quint32 seed = 1; seed <= 6; ++seed)
            row(QString::asprintf("seed %u", seed), seed, false);
        for (quint32 seed = 7; seed <= 10; ++seed)
            row(QString::asprintf("seed %u, records more than once", seed), seed, true);
    })
    {
        Rivals rivals(seed, repeatsRecords);
        for (int round = 0; round < rounds(3'000); ++round) {
            rivals.step();
            rivals.check();
            if (QTest::currentTestFailed()) {
                qWarning("in round %d", round);
                return;
            }
        }
    }

    void indexSetsAscendHoweverTheyAreMade()
    {
        QRandomGenerator random(20);
        const auto somePlaces = [&random] {
            std::vector<qsizetype> places(random.bounded(6u));
            std::generate(places.begin(), places.end(), [&random] { return random.bounded(8); });
            return places;
        };
        for (int round = 0; round < 500; ++round) {
            const std::vector<qsizetype> given = somePlaces();
            const std::vector<qsizetype> others = somePlaces();
            std::set<qsizetype> plain(given.begin(), given.end());
            IndexSet set(given);
            plain.insert(others.begin(), others.end());
            if (round % 2)
                set.unite(IndexSet(others));
            else
                std::copy(others.begin(), others.end(), std::back_inserter(set));
            const qsizetype gone = random.bounded(8);
            plain.erase(gone);
            set.removeIf([gone](qsizetype place) { return place == gone; });
            QVERIFY(std::equal(set.begin(), set.end(), plain.begin(), plain.end()));
            const std::size_t count = plain.size();
            const IndexSet run = IndexSet::run(gone, count);
            QVERIFY(run.size() == count && (run.empty() || run.back() == gone + std::ssize(run) - 1));
        }
    }

    /// One edit after the other near one place, as loops of scripts make them, and places asked for between
    /// them, which must not need the list as a whole.
    TABLE(followsRunsOfEdits, (quint32 seed, bool isShared), {
        for (quint32 seed = 1; seed <= 8; ++seed)
            row(QString::asprintf("seed %u", seed), seed, seed % 4 == 0);
    })
    {
        QRandomGenerator random(seed);
        InfoList plain(900);
        std::generate(plain.begin(), plain.end(), [] { return VXGlyphInfo::init(); });
        VXDocument document;
        document.setInfos(plain);
        VXDocument other;
        if (isShared)
            other.setInfos(plain);
        const auto below = [&random](qsizetype count) {
            return qsizetype(random.bounded(int(qMax<qsizetype>(1, count))));
        };
        for (int run = 0; run < 120; ++run) {
            qsizetype place = random.bounded(3) ? below(plain.size() + 1)
                : random.bounded(2)             ? 0
                                                : std::ssize(plain);
            const int kind = random.bounded(5);
            const int step = random.bounded(3) - 1;
            for (int edits = random.bounded(200); edits > 0; --edits) {
                place = std::clamp<qsizetype>(place + step, 0, std::ssize(plain));
                const qsizetype count = qMin<qsizetype>(random.bounded(8) ? 1 : 3, std::ssize(plain) - place);
                const qsizetype apart = random.bounded(6) ? 1 : 2;
                IndexSet places;
                for (qsizetype i = 0; i < count; ++i)
                    places.push_back(place + i * apart);
                if (kind <= 1 && count > 0 && places.back() < std::ssize(plain)) {
                    document.removeObjectsFromInfosAtIndexes(places);
                    std::for_each(places.rbegin(), places.rend(),
                                  [&](qsizetype i) { plain.erase(plain.begin() + i); });
                } else if (kind == 2 && place < std::ssize(plain)) {
                    plain[std::size_t(place)] = VXGlyphInfo::init();
                    document.replaceObjectInInfosAtIndexWithObject(place, plain[std::size_t(place)]);
                } else {
                    const InfoPtr info = VXGlyphInfo::init();
                    document.insertObjectInInfosAtIndex(info, place);
                    plain.insert(plain.begin() + place, info);
                }
                QCOMPARE(document.countOfInfos(), std::ssize(plain));
                if (plain.empty())
                    continue;
                const qsizetype asked =
                    random.bounded(2) ? below(plain.size()) : qMin(place, std::ssize(plain) - 1);
                QCOMPARE(document.objectInInfosAtIndex(asked), plain[std::size_t(asked)]);
                QCOMPARE(document.indexOfObjectInInfos(plain[std::size_t(asked)]), asked);
            }
            if (random.bounded(3) == 0)
                QVERIFY(document.infos() == plain);
            if (isShared && !other.infos().empty()) {
                const qsizetype asked = below(other.countOfInfos());
                QCOMPARE(other.indexOfObjectInInfos(other.objectInInfosAtIndex(asked)), asked);
                other.removeObjectFromInfosAtIndex(0);
            }
        }
        QVERIFY(document.infos() == plain);
    }

    void sharesRecordsWithAnotherDocument()
    {
        VXDocument one;
        one.setInfos(namedAll(u"a b c"_s));
        QVERIFY(one.infoForName(u"b"_s));
        {
            VXDocument other;
            InfoPtr info = one.objectInInfosAtIndex(1);
            other.setInfos(namedAll(u"x"_s));
            other.addInfo(info);
            QCOMPARE(one.indexOfObjectInInfos(info), 1);
            info->setName(u"new"_s); // heard by the other only
            QCOMPARE(one.infoForName(u"new"_s), info);
            QCOMPARE(other.infoForName(u"new"_s), info);
            QVERIFY(!one.infoForName(u"b"_s));
            QCOMPARE(one.infoForKeyValues(u"name"_s, {u"new"_s, u"c"_s})->size(), 2u);
            one.removeInfo(info);
            other.removeObjectFromInfosAtIndex(1);
            one.undoManager()->removeAllActions();
            other.undoManager()->removeAllActions();
            QCoreApplication::processEvents(); // until then the changes are kept to be announced
            const std::weak_ptr<VXGlyphInfo> watch = info;
            info.reset();
            QVERIFY(watch.expired());
            QVERIFY(!one.infoForName(u"b"_s) && !one.infoForName(u"new"_s) && !other.infoForName(u"new"_s));
        }
        QCOMPARE(namesOf(one.infos()), u"a c"_s);
        QCOMPARE(one.infoForName(u"c"_s), one.objectInInfosAtIndex(1));
    }

    void looksUpQuicklyAlthoughARecordIsShared()
    {
        constexpr int kCount = 20'000;
        VXDocument one;
        InfoList infos;
        for (int i = 0; i < kCount; ++i)
            infos.push_back(named(u"g%1"_s.arg(i)));
        one.setInfos(infos);
        VXDocument other;
        other.addInfo(infos[7]);
        // Made anew for each question this would take minutes.
        for (int i = 0; i < kCount; ++i) {
            QCOMPARE(one.indexOfObjectInInfos(one.infoForName(u"g%1"_s.arg(i))), i);
            infos[static_cast<std::size_t>(i)]->setSortName(u"s"_s);
        }
        infos[7]->setName(u"unheard"_s); // by the one
        QCOMPARE(one.infoForName(u"unheard"_s), infos[7]);
        QVERIFY(!one.infoForName(u"g7"_s));
    }

    void findsManyValuesAmongManyRecords()
    {
        constexpr int kCount = 20'000;
        VXDocument document;
        InfoList infos;
        QVariantList texts;
        QVariantList lists;
        for (int i = 0; i < kCount; ++i) {
            infos.push_back(named(u"g%1"_s.arg(i)));
            infos.back()->setSortName(u"s%1"_s.arg(i));
            infos.back()->setAltNames(QStringList {u"a%1"_s.arg(i), u"b"_s});
            texts << u"s%1"_s.arg(i * 2);
            lists << QVariant(QStringList {u"a%1"_s.arg(i * 4), u"b"_s});
        }
        document.setInfos(infos);
        QCOMPARE(document.infoForKeyValues(u"sortName"_s, texts)->size(), std::size_t(kCount / 2));
        QCOMPARE(document.infoForKeyValues(u"altNames"_s, lists)->size(), std::size_t(kCount / 4));
        QVERIFY(!document.infoForKeyValues(u"category"_s, texts));
        QCOMPARE(document.infoForKeyValues(u"direction"_s, {0, 3.0})->size(), std::size_t(kCount));
    }

    void countsManyListings()
    {
        constexpr int kListings = 65'536 + 2;
        std::weak_ptr<VXGlyphInfo> watch;
        {
            VXDocument document;
            const InfoPtr info = named(u"a"_s);
            watch = info;
            document.setInfos(InfoList(kListings, info));
            QCOMPARE(info->listings(), kListings);
            QCOMPARE(document.infoForName(u"a"_s), info);
            document.removeObjectFromInfosAtIndex(5);
            QCOMPARE(document.indexOfObjectInInfos(info), 0);
            info->setName(u"b"_s);
            QCOMPARE(document.infoForName(u"b"_s), info);
            document.removeInfo(info);
            QCOMPARE(info->listings(), 0);
            QVERIFY(!document.infoForName(u"b"_s));
        }
        QVERIFY(watch.expired());
    }

    void keepsOneChangeOfAField()
    {
        VXDocument document;
        document.setInfos(namedAll(u"a b c"_s));
        std::size_t told = 0;
        connect(&document, &VXDocument::infosChanged, this,
                [&told](const std::vector<VXDocument::Change> &changes) { told += changes.size(); });
        for (int i = 0; i < 100'000; ++i)
            document.objectInInfosAtIndex(i % 3)->setName(u"n%1"_s.arg(i));
        document.flushChanges();
        QVERIFY2(told < 2100, "a list of changes that grows with every setting");
        document.undoManager()->undo();
        QCOMPARE(namesOf(document.infos()), u"a b c"_s);
        document.undoManager()->redo();
        QCOMPARE(namesOf(document.infos()), u"n99999 n99997 n99998"_s);
    }

    void recordsOutliveTheDocument()
    {
        InfoList held;
        {
            VXDocument document;
            document.setInfos(namedAll(u"a b c d e"_s));
            held = document.infos();
            document.removeInfo(held[0]);
            document.removeObjectsFromInfosAtIndexes({0});
            document.removeObjectFromInfosAtIndex(0);
            document.replaceObjectInInfosAtIndexWithObject(0, named(u"x"_s));
            document.undoManager()->undo();
        }
        for (const InfoPtr &info : held) {
            QVERIFY(!info->document());
            info->setName(u"later"_s);
            info->setUnicode(u"41"_s);
            QVERIFY(info->validateName(u"a"_s));
        }
    }

    void tellsOfChangesOnce()
    {
        VXDocument document;
        document.setInfos(namedAll(u"a b c"_s));
        QList<std::vector<VXDocument::Change>> told;
        connect(&document, &VXDocument::infosChanged, this,
                [&told](const std::vector<VXDocument::Change> &changes) { told << changes; });
        for (const InfoPtr &info : document.infos())
            info->setScript(u"latin"_s);
        document.objectInInfosAtIndex(0)->setIndex(4);
        QVERIFY(told.isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(told.size(), 1);
        QCOMPARE(told[0].size(), 4u);
        QCOMPARE(told[0][2].info, document.objectInInfosAtIndex(2));
        QCOMPARE(told[0][2].field, GlyphField::Script);
        document.flushChanges();
        QCOMPARE(told.size(), 1);
        document.undoManager()->undo();
        document.flushChanges();
        QCOMPARE(told.size(), 2);
        QCOMPARE(told[1].size(), 3u);
    }
};

RUNEBOOK_TEST_MAIN(InfoListTest)
#include "InfoListTest.moc"
