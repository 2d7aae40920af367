#include "editing/CompareKeys.h"
#include "editing/CompareContent.h"
#include "tests/TestMain.h"
#include "tests/editing/CompareRecords.h"

#include <QHash>
#include <random>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

QString valueOf(const VXGlyphInfo &info, CompareKey key)
{
    return info.valueForKey(propertyOfKey(key)).toString();
}

/// The key list as its rule is told, without any short cut.
QStringList keysByRule(const InfoList &left, const InfoList &right, CompareKey key, CompareMode mode)
{
    const InfoList &source = mode == CompareMode::OnlyRight ? right : left;
    const InfoList &other = mode == CompareMode::OnlyRight ? left : right;
    QHash<QString, InfoPtr> map;
    for (const InfoPtr &info : other) {
        if (!valueOf(*info, key).isEmpty())
            map.insert(valueOf(*info, key), info);
    }
    QStringList keys;
    for (const InfoPtr &info : source) {
        const QString value = valueOf(*info, key);
        if (value.isEmpty())
            continue;
        const InfoPtr match = map.value(value);
        if (mode == CompareMode::Different ? match && !info->isEqualToInfo(match) : !match)
            keys << value;
    }
    return keys;
}

QStringList keysOf(const InfoList &left, const InfoList &right, CompareKey key, CompareMode mode)
{
    KeyComparison comparison(left, right, key, mode);
    comparison.finish(mode);
    return comparison.keys(mode);
}

/// Makes lists that differ in every way two files can: records left out, added, repeated, edited, moved, with
/// and without description, code point and production name.
class Dice
{
public:
    explicit Dice(unsigned seed) : m_random(seed) { }
    int roll(int sides) { return static_cast<int>(m_random() % static_cast<unsigned>(sides)); }

    QString line()
    {
        QString line = u"name=\"g%1\" "_s.arg(roll(60));
        if (roll(3))
            line.prepend(u"unicode=\"%1\" "_s.arg(0x41 + roll(40), 4, 16, QChar(u'0')).toUpper());
        line += u"category=\"%1\" "_s.arg(roll(2) ? u"Letter"_s : u"Mark"_s);
        if (roll(3) == 0)
            line += u"production=\"uni%1\" "_s.arg(roll(30));
        if (roll(4))
            line += u"description=\"d%1\" "_s.arg(roll(3));
        return line;
    }

    QStringList changed(const QStringList &lines)
    {
        QStringList changed;
        for (const QString &each : lines) {
            const int what = roll(12);
            if (what == 0)
                continue;
            changed << (what == 1 ? line() : each);
            if (what == 2)
                changed << (roll(2) ? line() : each);
            if (what == 3 && changed.size() > 3)
                changed.move(changed.size() - 1, roll(static_cast<int>(changed.size())));
        }
        return changed;
    }

private:
    std::mt19937 m_random;
};

} // namespace

class CompareKeysTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void propertyOfNumber()
    {
        QCOMPARE(propertyOfKey(compareKeyFromNumber(0)), u"name"_s);
        QCOMPARE(propertyOfKey(compareKeyFromNumber(1)), u"unicode"_s);
        QCOMPARE(propertyOfKey(compareKeyFromNumber(2)), u"production"_s);
        QCOMPARE(propertyOfKey(compareKeyFromNumber(3)), u"name"_s);
        QCOMPARE(propertyOfKey(compareKeyFromNumber(-1)), u"name"_s);
    }

    void keys_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::addColumn<int>("key");
        QTest::addColumn<QStringList>("onlyRight");
        QTest::addColumn<QStringList>("onlyLeft");
        QTest::addColumn<QStringList>("different");
        const QStringList none;
        const QString a = u"name=\"A\" description=\"first\"\n"_s;
        const QString b = u"name=\"B\" description=\"second\"\n"_s;
        const QString changedA = u"name=\"A\" category=\"Mark\" description=\"first\"\n"_s;

        QTest::newRow("identical") << a + b << a + b << 0 << none << none << none;
        QTest::newRow("identical in another order") << a + b << b + a << 0 << none << none << none;
        QTest::newRow("disjoint") << a << b << 0 << QStringList {u"B"_s} << QStringList {u"A"_s} << none;
        QTest::newRow("one empty") << a + b << QString() << 0 << none << QStringList {u"A"_s, u"B"_s} << none;
        QTest::newRow("one field") << a + b << changedA + b << 0 << none << none << QStringList {u"A"_s};
        QTest::newRow("without description: never equal")
            << u"name=\"A\""_s << u"name=\"A\""_s << 0 << none << none << QStringList {u"A"_s};
        QTest::newRow("description on the right alone: passes")
            << u"name=\"A\""_s << a << 0 << none << none << none;
        QTest::newRow("description on the left alone")
            << a << u"name=\"A\""_s << 0 << none << none << QStringList {u"A"_s};
        QTest::newRow("absent and empty are one")
            << u"name=\"A\" category=\"\" altNames=\"\" unicode=\"\" description=\"d\""_s
            << u"name=\"A\" script=\"\" description=\"d\""_s << 0 << none << none << none;
        QTest::newRow("an empty description is none")
            << u"name=\"A\" description=\"\""_s << a << 0 << none << none << none;
        QTest::newRow("case takes no part")
            << u"name=\"A\" case=\"upper\" description=\"d\""_s
            << u"name=\"A\" case=\"lower\" description=\"d\""_s << 0 << none << none << none;
        QTest::newRow("other has two: the later counts, equal")
            << a << changedA + a << 0 << none << none << none;
        QTest::newRow("other has two: the later counts, different")
            << a << a + changedA << 0 << none << none << QStringList {u"A"_s};
        QTest::newRow("source has two: listed twice")
            << changedA + b + changedA << a + b << 0 << none << none << QStringList {u"A"_s, u"A"_s};
        QTest::newRow("missing twice") << a + b + a << b << 0 << none << QStringList {u"A"_s, u"A"_s} << none;
        QTest::newRow("without the key: skipped") << a + u"unicode=\"0042\" name=\"B\" description=\"d\""_s
                                                  << b << 1 << none << QStringList {u"0042"_s} << none;
        QTest::newRow("by code point, other names") << u"unicode=\"0041\" name=\"A\" description=\"d\""_s
                                                    << u"unicode=\"0041\" name=\"Alpha\" description=\"d\""_s
                                                    << 1 << none << none << QStringList {u"0041"_s};
        QTest::newRow("by production") << u"name=\"A\" production=\"x\" description=\"d\""_s
                                       << u"name=\"A\" production=\"y\" description=\"d\""_s << 2
                                       << QStringList {u"y"_s} << QStringList {u"x"_s} << none;
    }

    void keys()
    {
        QFETCH(const QString, left);
        QFETCH(const QString, right);
        QFETCH(const int, key);
        const InfoList leftInfos = recordsOf(left);
        const InfoList rightInfos = recordsOf(right);
        const CompareKey compareKey = compareKeyFromNumber(key);
        QTEST(keysOf(leftInfos, rightInfos, compareKey, CompareMode::OnlyRight), "onlyRight");
        QTEST(keysOf(leftInfos, rightInfos, compareKey, CompareMode::OnlyLeft), "onlyLeft");
        QTEST(keysOf(leftInfos, rightInfos, compareKey, CompareMode::Different), "different");
    }

    void recordsOfKeys()
    {
        const InfoList infos =
            recordsOf(u"unicode=\"0041\" name=\"A\"\nname=\"B\"\nunicode=\"0042\" name=\"C\"\n"
                      "unicode=\"0041\" name=\"D\""_s);
        const auto names = [&](CompareKey key, const QStringList &keys) {
            QString joined;
            CompareContent content(keys, key, nullptr, &infos);
            while (!content.runFor(std::chrono::milliseconds(0))) { }
            for (const InfoPtr &info : content.right())
                joined += info->name();
            return joined;
        };
        QCOMPARE(names(CompareKey::Name, {}), QString());
        QCOMPARE(names(CompareKey::Name, {u"C"_s, u"A"_s, u"X"_s, u"A"_s}), u"AC"_s);
        QCOMPARE(names(CompareKey::Unicode, {u"0041"_s}), u"AD"_s);
        QCOMPARE(names(CompareKey::Production, {u"A"_s}), QString());
    }

    /// What was read and then edited is compared by its fields, not by the line that it once was.
    void editedRecords()
    {
        const InfoList left = recordsOf(u"name=\"A\" category=\"Letter\" description=\"d\"\n"
                                        "name=\"B\" description=\"d\""_s);
        const InfoList right = recordsOf(u"name=\"A\" category=\"Letter\" description=\"d\"\n"
                                         "name=\"B\" description=\"d\""_s);
        left[0]->setCategory(u"Mark"_s);
        QCOMPARE(keysOf(left, right, CompareKey::Name, CompareMode::Different), QStringList(u"A"_s));
        left[0]->setCategory(u"Letter"_s);
        QCOMPARE(keysOf(left, right, CompareKey::Name, CompareMode::Different), QStringList());
        right[1]->setDesc({});
        QCOMPARE(keysOf(left, right, CompareKey::Name, CompareMode::Different), QStringList(u"B"_s));
        right[1]->setName(u"C"_s);
        QCOMPARE(keysOf(left, right, CompareKey::Name, CompareMode::OnlyRight), QStringList(u"C"_s));
    }

    void againstTheRule_data()
    {
        QTest::addColumn<int>("seed");
        for (int seed = 1; seed <= 40; ++seed)
            QTest::addRow("seed %d", seed) << seed;
    }

    void againstTheRule()
    {
        QFETCH(const int, seed);
        Dice dice(static_cast<unsigned>(seed));
        QStringList lines;
        for (int i = dice.roll(120); i >= 0; --i)
            lines << dice.line();
        const InfoList left = recordsOf(lines.join(u'\n'));
        const InfoList right = recordsOf(dice.changed(lines).join(u'\n'));
        for (int i = dice.roll(5); i > 0; --i) {
            left[static_cast<std::size_t>(dice.roll(static_cast<int>(left.size())))]->setName(
                u"g%1"_s.arg(dice.roll(60)));
        }
        for (const CompareKey key : {CompareKey::Name, CompareKey::Unicode, CompareKey::Production}) {
            for (const CompareMode mode :
                 {CompareMode::OnlyRight, CompareMode::OnlyLeft, CompareMode::Different})
                QCOMPARE(keysOf(left, right, key, mode), keysByRule(left, right, key, mode));
        }
    }

    /// A comparison that is done a bit at a time tells how far it is and comes to the same end.
    void inSteps()
    {
        QStringList lines;
        for (int i = 0; i < 20'000; ++i)
            lines << u"name=\"g%1\" description=\"d\""_s.arg(i);
        const InfoList left = recordsOf(lines.join(u'\n'));
        lines[10'000] = u"name=\"g10000\" description=\"e\""_s;
        lines[10'001] = u"name=\"new\" description=\"d\""_s;
        const InfoList right = recordsOf(lines.join(u'\n'));

        KeyComparison comparison(left, right, CompareKey::Name, CompareMode::Different);
        QCOMPARE(comparison.progress(), 0.0);
        int steps = 0;
        double last = 0;
        while (!comparison.isDone(CompareMode::Different)) {
            QVERIFY(!comparison.isDone(CompareMode::OnlyRight));
            comparison.runFor(std::chrono::milliseconds(0));
            QVERIFY(comparison.progress() > last);
            last = comparison.progress();
            ++steps;
        }
        QVERIFY(steps > 5);
        QCOMPARE(last, 1.0);
        QCOMPARE(comparison.keys(CompareMode::Different), QStringList(u"g10000"_s));
        while (!comparison.runFor(std::chrono::milliseconds(0))) { }
        QCOMPARE(comparison.keys(CompareMode::OnlyRight), QStringList(u"new"_s));
        QCOMPARE(comparison.keys(CompareMode::OnlyLeft), QStringList(u"g10001"_s));
    }
};

RUNEBOOK_TEST_MAIN(CompareKeysTest)
#include "CompareKeysTest.moc"
