// What a typed text searches for in every mode, with every option.
#include "editing/search/SearchFilter.h"
#include "editing/search/SearchColumns.h"
#include "editing/search/SearchMenu.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

using namespace runebook;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(SearchSettings)

namespace {

constexpr bool kIgnoreCase = false;
constexpr bool kMatchCase = true;
constexpr bool kRegex = true;

SearchSettings settingsFor(SearchMode mode, bool matchesCase = false, bool isRegex = false)
{
    return {static_cast<int>(mode), matchesCase, isRegex};
}

/// "A|B" as two records without a name, with these values under \a key.
InfoList recordsFromText(const QString &key, const QString &text)
{
    InfoList infos;
    for (const QString &value : text.split(u'|')) {
        const InfoPtr info = VXGlyphInfo::init();
        info->setName({});
        info->setValueForKey(value, key);
        infos.push_back(info);
    }
    return infos;
}

void forgetSettings()
{
    for (const QString &key : {u"SearchState"_s, u"SearchStateMatchCase"_s, u"SearchStateRegex"_s})
        UserDefaults::standard().removeObjectForKey(key);
    RecentSearches::clear();
}

} // namespace

class SearchFilterTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { forgetSettings(); }

    // predicate: null: none, everything is shown
    TABLE(predicates, (const SearchSettings &settings, const QString &text, const QString &predicate), {
        const auto modeRows = [&row](const char *name, SearchMode mode, const char *text,
                                     const char *ignoring, const char *matching) {
            row(name, settingsFor(mode, kIgnoreCase), text, ignoring);
            row(QString::fromUtf8(name) + ", match case"_L1, settingsFor(mode, kMatchCase), text, matching);
        };
        using enum SearchMode;
        const char *const allIgnoring = "(name contains[cd] \"a b\") || (unicode contains[cd] \"a b\") || "
                                        "(production contains[cd] \"a b\")";
        modeRows(
            "all", All, "a b", allIgnoring,
            "(name contains \"a b\") || (unicode contains[cd] \"a b\") || (production contains \"a b\")");
        row("no mode yet", SearchSettings {}, "a b", allIgnoring);
        modeRows("name", Name, "a", "name contains[cd] \"a\"", "name contains[d] \"a\"");
        modeRows("name, words", Name, "a b", "(name contains[cd] \"a\") && (name contains[cd] \"b\")",
                 "(name contains[d] \"a\") && (name contains[d] \"b\")");
        row("name, two blanks", settingsFor(Name), "a  b",
            "(name contains[cd] \"a\") && (name contains[cd] \"b\")");
        row("name, blank behind", settingsFor(Name), "a ", "(name contains[cd] \"a\")");
        row("name, escaped quote", settingsFor(Name), "a\\\"b", "name contains[cd] \"a\\\"b\"");
        row("name, percent", settingsFor(Name), "a%@", "name contains[cd] \"a%@\"");
        modeRows("unicode", Unicode, "00e", "unicode contains[cd] \"00e\"", "unicode contains[cd] \"00e\"");
        row("range", settingsFor(Unicode), "0041-0043", "unicode IN HEXRANGE(0041, 0043)");
        row("range, short and small", settingsFor(Unicode), "a-1f600", "unicode IN HEXRANGE(000A, 1F600)");
        row("range, open at the front", settingsFor(Unicode), "-43", "unicode IN HEXRANGE(0000, 0043)");
        row("range, no number is 0", settingsFor(Unicode), "xyz-43", "unicode IN HEXRANGE(0000, 0043)");
        row("range, long", settingsFor(Unicode), "0-FFFFFFF", "unicode IN HEXRANGE(0000, FFFFFFF)");
        row("range, beyond all texts", settingsFor(Unicode), "0-7FFFFFFF",
            "unicode IN HEXRANGE(0000, FFFFFFF)");
        row("range from below 0", settingsFor(Unicode), "FFFFFFFF-41", "unicode IN HEXRANGE(0000, 0041)");
        row("range below 0", settingsFor(Unicode), "80000000-FFFFFFFF", "unicode IN HEXRANGE(0001, 0000)");
        row("range, backwards", settingsFor(Unicode), "0043-0041", "unicode contains[cd] \"0043-0041\"");
        row("range of one", settingsFor(Unicode), "0041-0041", "unicode contains[cd] \"0041-0041\"");
        row("range to below 0", settingsFor(Unicode), "0-FFFFFFFF", "unicode contains[cd] \"0-FFFFFFFF\"");
        row("range, open behind", settingsFor(Unicode), "41-", "unicode contains[cd] \"41-\"");
        row("range of three", settingsFor(Unicode), "1-2-3", "unicode contains[cd] \"1-2-3\"");
        for (const auto &[mode, key] : {std::pair(Category, "category"),
                                        {Script, "script"},
                                        {Anchors, "anchors"},
                                        {Accents, "accents"},
                                        {Description, "desc"}}) {
            const QByteArray whole = key + QByteArray(" contains[cd] \"_a b\"");
            modeRows(key, mode, "_a b", whole.constData(), whole.constData());
        }
        modeRows("subcategory", Subcategory, "a b", "subCategory contains[cd] \"a b\"",
                 "subCategory contains[d] \"a b\"");
        modeRows("decompose", Decompose, "a b", "decompose contains[cd] \"a b\"",
                 "decompose contains \"a b\"");
        modeRows("production", Production, "u", "production contains[cd] \"u\"", "production contains \"u\"");
        modeRows("production, words", Production, "u  0",
                 "(production contains[cd] \"u\") && (production contains[cd] \"0\")",
                 "(production contains \"u\") && (production contains \"0\")");
        modeRows("alternate name", AlternateName, "a b", "altNames contains[cd] \"a b\"",
                 "altNames contains \"a b\"");
        row("unknown mode", SearchSettings {13, false, false}, "a", QString());

        row("empty", settingsFor(Name), "", QString());
        row("character", settingsFor(Category), "ä", "category contains[cd] \"00E4\"");
        row("only the first counts", settingsFor(Category), "ätext", "category contains[cd] \"00E4\"");
        row("only the first decides", settingsFor(Category), "aä", "category contains[cd] \"aä\"");
        row("blank", settingsFor(Name), " a b", "name contains[cd] \"0020\"");
        row("quotation mark", settingsFor(Name), "\"a", "name contains[cd] \"0022\"");
        row("beyond 16 bits", settingsFor(Category), "\U0001F600", "category contains[cd] \"1F600\"");
        row("low bits of a letter", settingsFor(Category), "\U00010041", "category contains[cd] \"10041\"");
        row("minus", settingsFor(Name), "-x", "name contains[cd] \"-x\"");
        row("dot", settingsFor(Name), ".notdef", "name contains[cd] \".notdef\"");
        row("underscore", settingsFor(Name), "_a", "name contains[cd] \"_a\"");
        row("quotes and backslashes as an argument", settingsFor(Category), "a\"b\\",
            "category contains[cd] \"a\\\"b\\\\\"");

        row("regex", settingsFor(Category, kIgnoreCase, kRegex), "^a.*", "name MATCHES \"^a.*\"");
        row("regex, match case", settingsFor(Name, kMatchCase, kRegex), "a", "name MATCHES \"a\"");
        row("regex, character", settingsFor(Name, kIgnoreCase, kRegex), "é", "name MATCHES \"é\"");
        row("regex, beyond 16 bits", settingsFor(Name, kIgnoreCase, kRegex), "\U0001F600+",
            "name MATCHES \"1F600\"");
        row("regex, backslash", settingsFor(Name, kIgnoreCase, kRegex), "\\d+", "name MATCHES \"\\\\d+\"");
    })
    {
        const SearchResult result = SearchFilter(settings).result(text);
        QVERIFY2(!result.problem, result.problem ? qPrintable(result.problem->text()) : "");
        QCOMPARE(result.predicate.has_value(), !predicate.isNull());
        if (result.predicate)
            QCOMPARE(result.predicate->predicateFormat(), predicate);
    }

    TABLE(problems, (const SearchSettings &settings, const QString &text, int code), {
        using enum SearchMode;
        const QString quoteInside = u"a\"b"_s;
        row("name", settingsFor(Name), quoteInside, int(Predicate::SyntaxError));
        row("name, words", settingsFor(Name), "x a\"b", int(Predicate::SyntaxError));
        row("name, backslash", settingsFor(Name), "a\\", int(Predicate::SyntaxError));
        row("subcategory", settingsFor(Subcategory), quoteInside, int(Predicate::SyntaxError));
        row("production, words", settingsFor(Production), "x a\"b", int(Predicate::SyntaxError));
        row("long", settingsFor(All), QString(2 << 20, u'a'), int(Predicate::TooLong));
        for (const char *pattern : {"(", "[a", "a)(b", "*a", "(?<n"}) {
            row(pattern, settingsFor(Name, false, kRegex), QString::fromLatin1(pattern),
                int(Predicate::InvalidPattern));
        }
    })
    {
        const SearchResult result = SearchFilter(settings).result(text);
        QVERIFY(!result.predicate);
        QVERIFY(result.problem);
        QCOMPARE(result.problem->domain, Predicate::errorDomain());
        QCOMPARE(result.problem->code, code);
        QVERIFY(!result.problem->description.isEmpty());
        QVERIFY(!result.problem->failureReason.isEmpty());
    }

    TABLE(finds,
          (const SearchSettings &settings, const QString &text, const QString &key, const QString &values,
           const QString &found),
          {
              using enum SearchMode;
              row("all, match case respects marks", settingsFor(All, kMatchCase), "a", "name", "A|Á|á|a",
                  "a");
              row("name, match case overlooks marks", settingsFor(Name, kMatchCase), "a", "name", "A|Á|á|a",
                  "á|a");
              row("range", settingsFor(Unicode), "0041-0043", "unicode", "0040|0041|0042|0043|0044|41|00041",
                  "0041|0042|0043");
              row("alternate name is whole", settingsFor(AlternateName), "alpha", "altNames",
                  "Alpha, x|alphabet|x|x, ALPHA", "Alpha, x|x, ALPHA");
              row("accents are the marks", settingsFor(Accents), "acute", "marks", "a, ACUTE|grave",
                  "a, ACUTE");
              row("regex is whole", settingsFor(Name, kIgnoreCase, kRegex), "a.*", "name", "ab|ba|Ab|a",
                  "ab|a");
          })
    {
        VXDocument document;
        document.setInfos(recordsFromText(key, values));
        SearchColumns columns(document);
        const SearchResult result = SearchFilter(settings).result(text);
        QVERIFY(result.predicate);
        const std::optional<IndexSet> places = columns.placesPassing(*result.predicate);
        QVERIFY(places);
        QStringList passing;
        for (const qsizetype place : *places)
            passing += values.split(u'|').at(place);
        QCOMPARE(passing.join(u'|'), found);
    }

    TABLE(itemStates, (const SearchSettings &settings, int tag, bool ticked, bool enabled), {
        const SearchSettings plain {3, true, false};
        const SearchSettings pattern {3, true, true};
        row("the mode", plain, 3, true, true);
        row("another mode", plain, 1, false, true);
        row("no mode yet", {}, 1, false, true);
        row("match case", plain, 2001, true, true);
        row("match case off", {}, 2001, false, true);
        row("regex off", plain, 2002, false, true);
        row("regex on", pattern, 2002, true, true);
        row("the mode under regex", pattern, 3, true, false);
        row("match case under regex", pattern, 2001, true, false);
        row("clear under regex", pattern, 1002, false, true);
    })
    {
        QCOMPARE(SearchMenu::stateOfItem(tag, settings), (SearchMenu::ItemState {ticked, enabled}));
    }

    void recentSearches()
    {
        for (const QString &text : {u"a"_s, u""_s, u"b"_s, u"a"_s})
            RecentSearches::add(text);
        QCOMPARE(RecentSearches::texts(), (QStringList {u"a"_s, u"b"_s}));
        for (int i = 0; i < 20; ++i)
            RecentSearches::add(QString::number(i));
        QCOMPARE(RecentSearches::texts().size(), 10);
        QCOMPARE(RecentSearches::texts().first(), u"19"_s);
        RecentSearches::clear();
        QCOMPARE(RecentSearches::texts(), QStringList());
    }
};

RUNEBOOK_TEST_MAIN(SearchFilterTest)
#include "SearchFilterTest.moc"
