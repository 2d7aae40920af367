#include "codeeditor/BraceMatching.h"
#include "platform/UserDefaults.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using runebook::BraceLists;
using runebook::TextRange;

class TestBraceMatching : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void theListsStayAsFirstMade();
    void defaultsMustAgree();
    void findsThePartner_data();
    void findsThePartner();
    void givesUpBeyondAHundredOpenBraces();
    void agreesWithASlowMatcher();
};

/// The first call of the process makes the lists and answers no.
void TestBraceMatching::initTestCase()
{
    QVERIFY(!TE_isOpeningBrace(u'('));
    QVERIFY(TE_isOpeningBrace(u'('));
    QVERIFY(TE_isOpeningBrace(u'\u00AB'));
    QVERIFY(TE_isClosingBrace(u'\u00BB'));
    QVERIFY(!TE_isClosingBrace(u'('));
    QVERIFY(!TE_isOpeningBrace(u'<'));
}

void TestBraceMatching::theListsStayAsFirstMade()
{
    auto &defaults = runebook::UserDefaults::standard();
    defaults.setObjectForKey(u"<"_s, u"TEOpeningBracesCharacters"_s);
    defaults.setObjectForKey(u">"_s, u"TEClosingBracesCharacters"_s);
    initBraces();
    QVERIFY(!TE_isOpeningBrace(u'<'));
    QVERIFY(TE_isOpeningBrace(u'{'));
}

void TestBraceMatching::defaultsMustAgree()
{
    const char *complaint = "Skeigrukra: Values for user defaults keys TEOpeningBracesCharacters and "
                            "TEClosingBracesCharacters must both be present and the same length if either "
                            "one is set.";
    QCOMPARE(BraceLists::fromDefaults(u"<("_s, u">)"_s).opening, u"<("_s);
    QCOMPARE(BraceLists::fromDefaults(QString(), u">"_s).closing, u"}])\u00BB"_s);
    QTest::ignoreMessage(QtWarningMsg, complaint);
    QCOMPARE(BraceLists::fromDefaults(u"<("_s, u">"_s).opening, u"{[(\u00AB"_s);
    QTest::ignoreMessage(QtWarningMsg, complaint);
    QCOMPARE(BraceLists::fromDefaults(u"<"_s, QString()).closing, u"}])\u00BB"_s);
}

void TestBraceMatching::findsThePartner_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("match"); // -1: none
    QTest::newRow("(a[b]c)") << u"(a[b]c)"_s << 0 << 6;
    QTest::newRow("(a[b]c) from the end") << u"(a[b]c)"_s << 6 << 0;
    QTest::newRow("(a[b]c) inner") << u"(a[b]c)"_s << 4 << 2;
    QTest::newRow("crossed") << u"(a]"_s << 0 << -1;
    QTest::newRow("crossed backward") << u"[a)"_s << 2 << -1;
    QTest::newRow("unclosed") << u"((a)"_s << 0 << -1;
    QTest::newRow("unopened") << u"a)"_s << 1 << -1;
    QTest::newRow("no brace") << u"(a)"_s << 1 << -1;
    QTest::newRow("guillemets") << u"x\u00ABa\u00BB"_s << 1 << 3;
    QTest::newRow("quotes are not special") << u"(')')"_s << 0 << 2;
    QTest::newRow("at the last character") << u"a("_s << 1 << -1;
    QTest::newRow("at the first character") << u")a"_s << 0 << -1;
    QTest::newRow("before the text") << u"()"_s << -1 << -1;
    QTest::newRow("behind the text") << u"()"_s << 2 << -1;
    QTest::newRow("empty text") << u""_s << 0 << -1;
    QTest::newRow("far") << u'(' + QString(5000, u'a') + u')' << 0 << 5001;
    QTest::newRow("far backward") << u'(' + QString(5000, u'a') + u')' << 5001 << 0;
}

void TestBraceMatching::findsThePartner()
{
    QFETCH(QString, text);
    QFETCH(int, index);
    QFETCH(int, match);
    const std::optional<TextRange> found = TE_findMatchingBraceForRangeInString(index, text);
    QCOMPARE(found, match < 0 ? std::nullopt : std::optional(TextRange {match, 1}));
}

void TestBraceMatching::givesUpBeyondAHundredOpenBraces()
{
    const auto nested = [](int depth) { return QString(depth, u'(') + QString(depth, u')'); };
    QCOMPARE(TE_findMatchingBraceForRangeInString(0, nested(100)), (TextRange {199, 1}));
    QCOMPARE(TE_findMatchingBraceForRangeInString(199, nested(100)), (TextRange {0, 1}));
    const char *message = "Skeigrukra: Exhausted stack depth for delimiter matching.  Giving up.";
    QTest::ignoreMessage(QtWarningMsg, message);
    QCOMPARE(TE_findMatchingBraceForRangeInString(0, nested(101)), std::nullopt);
    QTest::ignoreMessage(QtWarningMsg, message);
    QCOMPARE(TE_findMatchingBraceForRangeInString(201, nested(101)), std::nullopt);
}

/// A balanced text pairs each brace with the one that a recursive reading pairs it with.
void TestBraceMatching::agreesWithASlowMatcher()
{
    QRandomGenerator random(7);
    const QString opening = u"{[("_s;
    const QString closing = u"}])"_s;
    for (int round = 0; round < 200; ++round) {
        QString text;
        QList<QPair<int, int>> pairs;
        QList<QPair<int, QChar>> open;
        while (text.size() < 80 || !open.isEmpty()) {
            const int choice = random.bounded(4);
            if (choice == 0 && text.size() < 80) {
                const int kind = random.bounded(3);
                open.append({int(text.size()), closing[kind]});
                text += opening[kind];
            } else if (choice == 1 && !open.isEmpty()) {
                pairs.append({open.last().first, int(text.size())});
                text += open.takeLast().second;
            } else {
                text += u'x';
            }
        }
        for (const auto &[first, last] : std::as_const(pairs)) {
            QCOMPARE(TE_findMatchingBraceForRangeInString(first, text), (TextRange {last, 1}));
            QCOMPARE(TE_findMatchingBraceForRangeInString(last, text), (TextRange {first, 1}));
        }
    }
}

RUNEBOOK_TEST_MAIN(TestBraceMatching)
#include "tst_bracematching.moc"
