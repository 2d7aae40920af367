#include "editing/compare/CompareContent.h"
#include "editing/compare/FoundKeys.h"
#include "editing/compare/TakeAcross.h"
#include "editing/compare/TextDifference.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QHash>
#include <QMap>
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

QStringList keysOf(const InfoList &left, const InfoList &right, CompareKey key, CompareMode mode,
                   const CompareOptions &options = {})
{
    KeyComparison comparison(left, right, key, mode, options);
    comparison.finish(mode);
    return comparison.keys(mode);
}

/// The records as they are when what is overlooked has been taken out of them.
InfoList withoutOverlooked(const InfoList &infos, const CompareOptions &options)
{
    const auto seen = [&options](const QString &text, GlyphField field) {
        QString rest = options.ignores(field) ? u"same"_s : text;
        if (options.ignoresSpaces)
            rest.remove(u' ');
        return options.ignoresCase ? rest.toCaseFolded() : rest;
    };
    InfoList rest;
    for (const InfoPtr &info : infos) {
        rest.push_back(VXGlyphInfo::init());
        rest.back()->takeValuesOf(*info);
        rest.back()->setCategory(seen(info->category(), GlyphField::Category));
        rest.back()->setDesc(seen(info->desc(), GlyphField::Desc));
    }
    return rest;
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
        const QStringList categories {u"Letter"_s, u"letter"_s, u"Let ter"_s, u"Mark"_s};
        line += u"category=\"%1\" "_s.arg(categories.at(roll(4)));
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

QStringList linesOf(const VXDocument &document)
{
    QStringList lines;
    for (const InfoPtr &info : document.infos())
        lines << info->lineXMLFormatVersion(2);
    return lines;
}

/// The names of \a ours after what only \a theirs has was put behind the neighbour that it follows there.
QStringList namesWithMissing(QStringList ours, const QStringList &theirs)
{
    QString neighbour;
    for (const QString &name : theirs) {
        if (!ours.contains(name))
            ours.insert(ours.indexOf(neighbour) + 1, name);
        neighbour = name;
    }
    return ours;
}

/// The text with its parts in brackets.
QString bracketed(const QString &text, const std::vector<TextPart> &parts)
{
    QString result;
    qsizetype done = 0;
    for (const TextPart &part : parts) {
        result += text.mid(done, part.begin - done) + u'[' + text.mid(part.begin, part.length) + u']';
        done = part.begin + part.length;
    }
    return result + text.mid(done);
}

QString unmarked(const QString &text, const std::vector<TextPart> &parts)
{
    QString rest = text;
    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
        rest.remove(part->begin, part->length);
    return rest;
}

} // namespace

/// What comparisons of lists, values and texts find.
class CompareTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(keys,
          (const QString &left, const QString &right, int key, const QStringList &onlyRight,
           const QStringList &onlyLeft, const QStringList &different),
          {
              const QStringList none;
              const QString a = u"name=\"A\" description=\"first\"\n"_s;
              const QString b = u"name=\"B\" description=\"second\"\n"_s;
              const QString changedA = u"name=\"A\" category=\"Mark\" description=\"first\"\n"_s;

              row("without description: never equal", "name=\"A\"", "name=\"A\"", 0, none, none, {u"A"_s});
              row("description on the right alone: passes", "name=\"A\"", a, 0, none, none, none);
              row("description on the left alone", a, "name=\"A\"", 0, none, none, {u"A"_s});
              row("an empty description is none", "name=\"A\" description=\"\"", a, 0, none, none, none);
              row("other has two: the later counts, equal", a, changedA + a, 0, none, none, none);
              row("other has two: the later counts, different", a, a + changedA, 0, none, none, {u"A"_s});
              row("source has two: listed twice", changedA + b + changedA, a + b, 0, none, none,
                  {u"A"_s, u"A"_s});
              row("without the key: skipped", a + u"unicode=\"0042\" name=\"B\" description=\"d\""_s, b, 1,
                  none, {u"0042"_s}, none);
          })
    {
        const InfoList leftInfos = recordsOf(left);
        const InfoList rightInfos = recordsOf(right);
        const CompareKey compareKey = static_cast<CompareKey>(key);
        QCOMPARE(keysOf(leftInfos, rightInfos, compareKey, CompareMode::OnlyRight), onlyRight);
        QCOMPARE(keysOf(leftInfos, rightInfos, compareKey, CompareMode::OnlyLeft), onlyLeft);
        QCOMPARE(keysOf(leftInfos, rightInfos, compareKey, CompareMode::Different), different);
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

    TABLE(againstTheRule, (int seed), {
        for (int seed = 1; seed <= 40; ++seed)
            row(u"seed %1"_s.arg(seed), seed);
    })
    {
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
        // After edits of some records a look at those is enough.
        const auto foundNow = [&] {
            KeyComparison comparison(left, right, CompareKey::Name, CompareMode::Different);
            comparison.finish(CompareMode::Different);
            return FoundKeys::of(comparison, CompareMode::Different);
        };
        FoundKeys found = foundNow();
        QStringList edited;
        for (const InfoPtr &info : right) {
            if (dice.roll(4) == 0)
                edited << info->name();
            if (edited.contains(info->name()) && dice.roll(2))
                info->setDesc(u"d%1"_s.arg(dice.roll(3)));
        }
        const InfoList some = recordsWithKeys(left, CompareKey::Name, edited);
        std::vector<quint32> places;
        for (const InfoPtr &info : some)
            places.push_back(static_cast<quint32>(std::find(left.begin(), left.end(), info) - left.begin()));
        found.compareAgain(some, places, recordsWithKeys(right, CompareKey::Name, edited), CompareKey::Name,
                           {});
        QCOMPARE(found.keys, foundNow().keys);
        QVERIFY(found.fields == foundNow().fields && found.places == foundNow().places);
        for (int overlooked = 1; overlooked < 16; ++overlooked) {
            CompareOptions options {.ignoresCase = (overlooked & 1) != 0,
                                    .ignoresSpaces = (overlooked & 2) != 0};
            options.ignoredFields = (overlooked & 4 ? bitOf(GlyphField::Category) : 0)
                | (overlooked & 8 ? bitOf(GlyphField::Desc) : 0);
            QCOMPARE(keysOf(left, right, CompareKey::Name, CompareMode::Different, options),
                     keysByRule(withoutOverlooked(left, options), withoutOverlooked(right, options),
                                CompareKey::Name, CompareMode::Different));
        }
    }

    /// Taking everything of one kind across leaves nothing of that kind, puts each record where a person
    /// would, and comes back by one undo step.
    TABLE(takesAcross, (int seed), {
        for (int seed = 1; seed <= 60; ++seed)
            row(u"seed %1"_s.arg(seed), seed);
    })
    {
        Dice dice(static_cast<unsigned>(seed));
        QMap<QString, QString> unique; // each name and code point once, all with a description
        for (int i = dice.roll(50); i >= 0; --i)
            unique.insert(u"g%1"_s.arg(dice.roll(60)), dice.line());
        const auto lines = [&](bool isChanged) {
            QStringList all;
            for (auto it = unique.cbegin(); it != unique.cend(); ++it) {
                const QString own = isChanged && dice.roll(3) == 0 ? dice.line() : it.value();
                const QString kept = own.mid(own.indexOf(u"category"_s)).section(u"description"_s, 0, 0);
                const QString line = u"unicode=\"%1\" name=\"%2\" %3 description=\"d%4\""_s
                                         .arg(it.key().mid(1).toInt() + 0x100, 4, 16, QChar(u'0'))
                                         .arg(it.key(), kept)
                                         .arg(isChanged ? dice.roll(2) : 0);
                if (dice.roll(5))
                    all.insert(dice.roll(4) ? all.size() : dice.roll(static_cast<int>(all.size()) + 1), line);
            }
            return all.join(u'\n');
        };
        const auto left = documentOf(recordsOf(lines(false)));
        const auto right = documentOf(recordsOf(lines(true)));
        const QStringList names = namesOf(right->infos()).split(u' ', Qt::SkipEmptyParts);
        const QStringList theirs = namesOf(left->infos()).split(u' ', Qt::SkipEmptyParts);
        const QStringList before = linesOf(*right);
        const CompareKey key = dice.roll(2) ? CompareKey::Name : CompareKey::Unicode;
        TakeAcross across(*left, *right, key);
        for (const CompareMode mode :
             {CompareMode::Different, CompareMode::OnlyLeft, CompareMode::OnlyRight}) {
            const QStringList keys = keysOf(left->infos(), right->infos(), key, mode);
            const InfoList ours = recordsWithKeys(right->infos(), key, keys);
            const InfoList taken = recordsWithKeys(left->infos(), key, keys);
            const TakeAcross::Outcome outcome = mode == CompareMode::OnlyRight
                ? across.removeMissing(taken, ours)
                : across.takeRecords(taken, ours);
            QCOMPARE(outcome.changed + outcome.inserted + outcome.removed, keys.size());
            QCOMPARE(keysOf(left->infos(), right->infos(), key, mode), QStringList());
            if (mode == CompareMode::Different)
                QCOMPARE(namesOf(right->infos()).split(u' ', Qt::SkipEmptyParts), names);
            if (mode == CompareMode::OnlyLeft)
                QCOMPARE(namesOf(right->infos()).split(u' '), namesWithMissing(names, theirs));
        }
        QStringList sorted[] = {linesOf(*left), linesOf(*right)};
        for (QStringList &each : sorted)
            each.sort();
        QCOMPARE(sorted[1], sorted[0]);
        const QStringList after = linesOf(*right);
        const int steps = right->undoManager()->stack()->count();
        QVERIFY(steps <= 3);
        right->undoManager()->goToStep(0);
        QCOMPARE(linesOf(*right), before);
        right->undoManager()->goToStep(steps);
        QCOMPARE(linesOf(*right), after);
    }

    /// Equal records of one key find each other, the others pair up in order; what no save would write is
    /// left out; one field alone brings nothing new.
    void takesWhatFits()
    {
        const auto left = documentOf(recordsOf(u"name=\"A\" category=\"x\"\nname=\"A\" script=\"s\"\n"
                                               "name=\"A\" script=\"t\"\nname=\"B\" marks=\"m\""_s));
        const auto right = documentOf(recordsOf(u"name=\"A\" script=\"s\"\nname=\"A\""_s));
        left->infos()[3]->setSortName(u"x <!-- y"_s);
        TakeAcross across(*left, *right, CompareKey::Name);
        QVERIFY(!across.takeField(GlyphField::Script, left->infos(), right->infos()).hasDone());
        const TakeAcross::Outcome outcome = across.takeRecords(left->infos(), right->infos());
        QCOMPARE(outcome.changed, 1);
        QCOMPARE(outcome.inserted, 1);
        QCOMPARE(outcome.leftOut.records, 1);
        QCOMPARE(right->infos()[0]->script(), u"s"_s);
        QCOMPARE(right->infos()[1]->category() + right->infos()[2]->script(), u"xt"_s);
    }

    TABLE(parts, (const QString &left, const QString &right), {
        row("equal", "acute, grave", "acute, grave");
        row("both empty", "", "");
        row("one empty", "[acute, grave]", "");
        row("a word added", "acute, grave", "acute, [breve, ]grave");
        row("a word added at the end", "acute", "acute[, grave]");
        row("two words apart", "[a, ]b, c, d", "b, c, d[, e]");
        row("one word for another, by character", "uni1EA[E]", "uni1EA[F]");
        row("inside a word", "LATIN CAP[IT]AL A", "LATIN CAPAL A");
        row("repeated letters", "aa", "aa[a]");
        row("not between a letter and its mark", "caf[e\u0301]", "caf[e]");
        row("not through a pair", "x[\U0001F600]", "x[\U0001F601]");
        row("case", "[L]atin", "[l]atin");
    })
    {
        const auto plain = [](QString text) { return text.remove(u'[').remove(u']'); };
        const TextDifference difference = differenceOfTexts(plain(left), plain(right));
        QCOMPARE(bracketed(plain(left), difference.left), left);
        QCOMPARE(bracketed(plain(right), difference.right), right);
    }

    /// What is not marked is the same on both sides, and equal texts have no marks.
    void randomTexts()
    {
        std::mt19937 random(7);
        const QStringList words {u"a"_s, u"acute"_s, u"b"_s, u", "_s, u"ae\u0301"_s, u"\U0001F600"_s, u" "_s};
        const auto text = [&](unsigned length) {
            QString made;
            for (unsigned i = random() % length; i > 0; --i)
                made += words.at(static_cast<qsizetype>(random() % 7));
            return made;
        };
        for (int round = 0; round < rounds(2000); ++round) {
            const unsigned length = round % 50 == 0 ? 900 : 12;
            const QString left = text(length);
            const QString right = round % 10 == 0 ? left : text(length);
            const TextDifference difference = differenceOfTexts(left, right);
            QCOMPARE(unmarked(left, difference.left), unmarked(right, difference.right));
            if (left == right)
                QVERIFY(difference.left.empty() && difference.right.empty());
        }
    }

    /// Every field that files keep, the ones that the records' own equality overlooks included.
    TABLE(differingFields, (const QString &right, const QString &fields), {
        const QString base = u"unicode=\"0041\" unicodeLegacy=\"F041\" name=\"A\" case=\"upper\" "
                             "description=\"d\" marks=\"m\""_s;
        const auto changed = [&](const char *name, const QString &before, const QString &after,
                                 const char *fields) {
            row(name, QString(base).replace(before, after), fields);
        };
        changed("none", u"x"_s, u"x"_s, "");
        changed("case", u"upper"_s, u"lower"_s, "case");
        changed("legacy", u"F041"_s, u"F042"_s, "unicodeLegacy");
        changed("code points", u"unicode=\"0041\""_s, u"unicode=\"0041\" unicode2=\"0042\""_s, "unicodes");
        changed("old sort name", u"name=\"A\""_s, u"name=\"A\" sortNameOld=\"x\""_s, "sortNameOld");
        changed("name and marks", u"name=\"A\""_s, u"name=\"B\" marks=\"\""_s, "name");
        changed("description gone", u"description=\"d\" "_s, {}, "desc");
        changed("direction", u"name=\"A\""_s, u"name=\"A\" direction=\"LTR\""_s, "direction");
    })
    {
        const InfoPtr left = recordsOf(u"unicode=\"0041\" unicodeLegacy=\"F041\" name=\"A\" case=\"upper\" "
                                       "description=\"d\" marks=\"m\""_s)
                                 .front();
        QStringList keys;
        for (const ComparedField *field : runebook::differingFields(*left, *recordsOf(right).front()))
            keys << keyOfField(field->field);
        QCOMPARE(keys.join(u' '), fields);
    }

    /// What is found step by step is what a look at everything finds.
    void stepsFindTheSame()
    {
        std::mt19937 random(11);
        const auto upTo = [&random](int limit) { return static_cast<int>(random() % unsigned(limit)); };
        const QStringList texts {{}, u""_s, u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s};
        const auto made = [&] {
            InfoList infos;
            for (int i = upTo(6); i > 0; --i) {
                infos.push_back(VXGlyphInfo::init());
                infos.back()->setDesc(texts.at(upTo(texts.size())));
                infos.back()->setAltNames(QStringList(upTo(3), texts.at(2 + upTo(2))));
                infos.back()->setCase(upTo(3));
            }
            return infos;
        };
        const auto valuesOf = [](const InfoList &infos, GlyphField field) {
            QSet<QString> values;
            for (const InfoPtr &info : infos)
                values << (field == GlyphField::Case ? QString::number(info->caseValue())
                                                     : info->displayText(field));
            values.remove({});
            return values;
        };
        int different = 0;
        for (int round = 0; round < rounds(2000); ++round) {
            const InfoList left = made();
            const InfoList right = round % 4 ? made() : left;
            for (const GlyphField field : {GlyphField::Desc, GlyphField::AltNames, GlyphField::Case}) {
                FieldContent content(field, left, right);
                const auto step = static_cast<std::size_t>(1 + upTo(4));
                while (!content.advance(step)) { }
                QCOMPARE(content.differs(), valuesOf(left, field) != valuesOf(right, field));
                different += content.differs();
            }
            FieldContent shown(GlyphField::Desc, left, right);
            shown.finish();
            QStringList distinct;
            for (const InfoPtr &info : left)
                distinct << info->desc();
            distinct.removeDuplicates();
            distinct.removeAll(QString());
            QCOMPARE(shown.left().texts, distinct.first(qMin<qsizetype>(5, distinct.size())));
            QCOMPARE(shown.left().hasMore, distinct.size() > 5);
        }
        QVERIFY(different > 500);
    }
};

RUNEBOOK_TEST_MAIN(CompareTest)
#include "CompareTest.moc"
