// The numbering of sort names and its settings.
#include "editing/SortNumbering.h"
#include "document/VXDocument.h"
#include "platform/UserDefaults.h"
#include "tests/TestMain.h"

#include <limits>

using namespace runebook;
using namespace Qt::StringLiterals;

class SortNumberingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void numbers_data();
    void numbers();
    void hasFallbacks();
    void isUndone();
};

void SortNumberingTest::numbers_data()
{
    QTest::addColumn<SortNumbering>("numbering");
    QTest::addColumn<QStringList>("names");
    constexpr qint32 kLargest = std::numeric_limits<qint32>::max();
    constexpr qint32 kSmallest = std::numeric_limits<qint32>::min();

    const auto row = [](const char *what, const SortNumbering &numbering, const QStringList &names) {
        QTest::newRow(what) << numbering << names;
    };
    row("plain", {u"a"_s, 1, 1, 3}, {u"a001"_s, u"a002"_s, u"a003"_s});
    row("in fives", {u"x"_s, 10, 5, 2}, {u"x10"_s, u"x15"_s, u"x20"_s});
    row("grows wider", {u"a"_s, 998, 1, 3}, {u"a998"_s, u"a999"_s, u"a1000"_s});
    row("down below zero", {u"a"_s, 1, -1, 3}, {u"a001"_s, u"a000"_s, u"a-01"_s});
    row("no step", {u"a"_s, 7, 0, 1}, {u"a7"_s, u"a7"_s});
    row("no digits", {u"a"_s, 9, 1, 0}, {u"a9"_s, u"a10"_s});
    row("negative digits", {u"a"_s, 9, 1, -3}, {u"a9  "_s, u"a10 "_s});
    row("wraps at 32 bits", {u""_s, kLargest, 1, 1}, {u"2147483647"_s, u"-2147483648"_s});
    row("wraps downwards", {u""_s, kSmallest, -1, 1}, {u"-2147483648"_s, u"2147483647"_s});
    row("prefix is no format", {u"%d%@%1"_s, 1, 1, 2}, {u"%d%@%101"_s});
    row("no prefix", {QString(), 1, 1, 2}, {u"01"_s});
}

void SortNumberingTest::numbers()
{
    QFETCH(SortNumbering, numbering);
    QFETCH(QStringList, names);
    InfoList infos;
    for (qsizetype i = 0; i < names.size(); ++i)
        infos.push_back(VXGlyphInfo::init());
    numbering.apply(infos);
    QStringList given;
    for (const InfoPtr &info : infos)
        given << info->sortName();
    QCOMPARE(given, names);
}

void SortNumberingTest::hasFallbacks()
{
    SortNumbering::registerDefaults();
    QCOMPARE(SortNumbering::fromDefaults().nameForNumber(1), u"a001"_s);
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setObjectForKey(u"z"_s, u"sortNamePrefix"_s);
    defaults.setObjectForKey(5, u"sortNameStep"_s);
    defaults.setObjectForKey(20, u"sortNameStart"_s);
    defaults.setObjectForKey(4, u"sortNameDigits"_s);
    SortNumbering::registerDefaults();
    const SortNumbering stored = SortNumbering::fromDefaults();
    QCOMPARE(stored.nameForNumber(stored.numberAt(2)), u"z0030"_s);
    defaults.setObjectForKey(u""_s, u"sortNamePrefix"_s);
    QCOMPARE(SortNumbering::fromDefaults().nameForNumber(1), u"0001"_s);
}

void SortNumberingTest::isUndone()
{
    VXDocument document;
    document.setInfos({VXGlyphInfo::init(), VXGlyphInfo::init()});
    document.infos()[1]->setSortName(u"old"_s);
    document.undoManager()->removeAllActions();
    {
        const UndoGroup group(document.undoManager());
        SortNumbering {u"a"_s, 1, 1, 3}.apply(document.infos());
    }
    QCOMPARE(document.infos()[1]->sortName(), u"a002"_s);
    QCOMPARE(document.undoManager()->stack()->count(), 1);
    document.undoManager()->undo();
    QVERIFY(document.infos()[0]->sortName().isNull());
    QCOMPARE(document.infos()[1]->sortName(), u"old"_s);
}

RUNEBOOK_TEST_MAIN(SortNumberingTest)
#include "SortNumberingTest.moc"
