// Who names whom, and what becomes of that when names change: against a list of texts in which everything is
// looked for by splitting and joining.
#include "document/NameUses.h"
#include "document/VXDocument.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// A record as texts: name, decomposition, marks, alternate names.
using Texts = QStringList;

Texts textsOf(const VXGlyphInfo &info)
{
    return {info.name(), info.decompose(), info.marks(), info.altNames().join(u", ")};
}

InfoPtr recordOf(const Texts &texts)
{
    InfoPtr info = VXGlyphInfo::init();
    info->setName(texts[0]);
    if (!texts[1].isEmpty())
        info->setDecompose(texts[1]);
    if (!texts[2].isEmpty())
        info->setMarks(texts[2]);
    if (!texts[3].isEmpty())
        info->setAltNames(texts[3].split(u", "_s));
    return info;
}

QString follow(const QString &list, const QMap<QString, QString> &names)
{
    QStringList parts = list.split(u", "_s);
    for (QString &part : parts)
        part = names.value(part, part);
    return parts.join(u", ");
}

/// The name that \a name becomes when \a former becomes \a now; the same if it has nothing to do with it.
QString built(const QString &name, const QString &former, const QString &now)
{
    if (name.startsWith(former + u'.'))
        return now + name.mid(former.size());
    const qsizetype dot = qMax(qsizetype(-1), name.indexOf(u'.', 1));
    const QString stem = dot < 0 ? name : name.left(dot);
    const QString rest = name.mid(stem.size());
    const QString script = stem.contains(u'-') ? stem.mid(stem.lastIndexOf(u'-')) : QString();
    QStringList parts = stem.chopped(script.size()).split(u'_');
    if (parts.size() < 2 || !now.endsWith(script) || now.contains(u'.'))
        return name;
    for (QString &part : parts) {
        if (part + script == former)
            part = now.chopped(script.size());
    }
    return parts.join(u'_') + script + rest;
}

} // namespace

class NameUsesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void followsLikeSplitTexts()
    {
        const QStringList letters {u"a"_s,      u"b"_s,         u"f"_s,    u"alef-ar"_s,
                                   u"lam-ar"_s, u"acutecomb"_s, u".null"_s};
        const QStringList endings {u""_s, u""_s, u".sc"_s, u".ss01"_s, u".sc.ss01"_s};
        qsizetype followed = 0;
        for (quint32 seed = 0; seed < quint32(rounds(150)); ++seed) {
            QRandomGenerator random(seed);
            const auto pick = [&](const QStringList &from) { return from[random.bounded(from.size())]; };
            const auto name = [&] {
                const QString letter = pick(letters);
                const bool isLigature = random.bounded(3) == 0 && !letter.contains(u'-');
                const QString more = letter == u"alef-ar"_s ? u"lam_"_s
                    : isLigature                            ? pick(letters.mid(0, 3)) + u'_'
                                                            : u""_s;
                return (random.bounded(2) ? more : u""_s) + letter + pick(endings);
            };
            const auto list = [&](int most) {
                QStringList names;
                for (int i = random.bounded(most); i > 0; --i)
                    names << name();
                return names.join(u", ");
            };
            QList<Texts> plain;
            VXDocument document;
            InfoList infos;
            QSet<QString> known;
            for (int i = 0; i < 12; ++i) {
                const Texts texts {name(), list(4), list(3), list(3)};
                if (known.contains(texts[0]))
                    continue;
                known << texts[0];
                plain << texts;
                infos.push_back(recordOf(texts));
            }
            document.setInfos(infos);
            const auto chosen = random.bounded(plain.size());
            const QString former = plain[chosen][0];
            const QString now = former.contains(u'-') && random.bounded(2) ? u"new-ar"_s : u"new"_s;

            QMap<QString, QString> names {{former, now}};
            for (const Texts &texts : plain) {
                const QString after = built(texts[0], former, now);
                if (after != texts[0] && !known.contains(after))
                    names[texts[0]] = after;
            }
            QSet<qsizetype> changed;
            QList<Texts> expected = plain;
            for (qsizetype i = 0; i < plain.size(); ++i) {
                expected[i][0] = names.value(plain[i][0], plain[i][0]);
                for (int field = 1; field < 4; ++field)
                    expected[i][field] = follow(plain[i][field], names);
                if (expected[i] != plain[i] && (i != chosen || expected[i].mid(1) != plain[i].mid(1)))
                    changed << i;
            }
            const qsizetype count = document.renameInfoToReferences(infos[std::size_t(chosen)], now, true);
            followed += count;
            QCOMPARE(count, changed.size());
            for (qsizetype i = 0; i < plain.size(); ++i)
                QCOMPARE(textsOf(*infos[std::size_t(i)]), expected[i]);
            QCOMPARE(document.undoManager()->stack()->count(), 1);
            document.undoManager()->undo();
            for (qsizetype i = 0; i < plain.size(); ++i)
                QCOMPARE(textsOf(*infos[std::size_t(i)]), plain[i]);

            QList<qsizetype> users;
            for (qsizetype i = 0; i < plain.size(); ++i) {
                if (std::any_of(plain[i].begin() + 1, plain[i].end(),
                                [&](const QString &text) { return text.split(u", "_s).contains(former); }))
                    users << i;
            }
            QList<qsizetype> found;
            for (const InfoPtr &info : document.infosUsingName(former))
                found << document.indexOfObjectInInfos(info);
            QCOMPARE(found, users);
        }
        QVERIFY(followed > rounds(150));
    }

    /// What is not chosen stays, and so does what names it.
    void leavesWhatIsNotChosen()
    {
        VXDocument document;
        document.setInfos({recordOf({u"x"_s, {}, {}, {}}), recordOf({u"a.sc"_s, {}, {}, {}}),
                           recordOf({u"b"_s, u"a, a.sc"_s, {}, {}}), recordOf({u"c"_s, {}, u"a"_s, {}})});
        NameUses uses = NameUses::ofFormer(document.infos(), document, {{document.infos()[0], u"a"_s}});
        QCOMPARE(uses.progress(), 0.0);
        uses.finish();
        QCOMPARE(uses.countOfRecords(), 3);
        QCOMPARE(uses.textAfter(uses.uses()[1]), u"x, x.sc"_s);
        QCOMPARE(uses.follow([](std::size_t use) { return use == 1; }), 1);
        QCOMPARE(textsOf(*document.infos()[1]).join(u'|'), u"a.sc|||"_s);
        QCOMPARE(textsOf(*document.infos()[2]).join(u'|'), u"b|x, a.sc||"_s);
        QCOMPARE(textsOf(*document.infos()[3]).join(u'|'), u"c||a|"_s);
        QVERIFY(!uses.follow({}, [](double) { return false; }));
    }

    /// A name that another record has is not followed, two that were swapped are, and one that would be taken
    /// twice is told.
    void followsSwappedNamesAndNoneThatIsTaken()
    {
        VXDocument document;
        document.setInfos({recordOf({u"b"_s, {}, {}, {}}), recordOf({u"a"_s, {}, {}, {}}),
                           recordOf({u"c"_s, u"a, b"_s, {}, {}}), recordOf({u"d.sc"_s, {}, {}, {}}),
                           recordOf({u"e.sc"_s, {}, {}, {}})});
        const InfoList &infos = document.infos();
        NameUses swapped =
            NameUses::ofFormer(document.infos(), document, {{infos[0], u"a"_s}, {infos[1], u"b"_s}});
        swapped.finish();
        QCOMPARE(swapped.follow(), 1);
        QCOMPARE(infos[2]->decompose(), u"b, a"_s);
        NameUses taken = NameUses::ofFormer(document.infos(), document, {{infos[0], u"a"_s}});
        taken.finish();
        QVERIFY(taken.uses().empty());
        infos[2]->setName(u"e"_s);
        NameUses twice = NameUses::ofFormer(document.infos(), document, {{infos[2], u"d"_s}});
        twice.finish();
        QVERIFY(twice.uses().empty());
        QCOMPARE(twice.leftOut().records, 1);
        Error error;
        QCOMPARE(document.renameInfoToReferences(infos[2], u"a b"_s, true, &error), 0);
        QVERIFY(!error.description.isEmpty());
        QCOMPARE(infos[2]->name(), u"e"_s);
    }
};

RUNEBOOK_TEST_MAIN(NameUsesTest)
#include "NameUsesTest.moc"
