// What the program knows about characters, against the files of Unicode and against Qt.
#include "model/UnicodeData.h"

#include "tests/TestMain.h"

#include <QElapsedTimer>
#include <QHash>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr char32_t kLast = 0x10FFFF;

/// The lines of a file of Unicode as their trimmed fields, without comments.
QList<QStringList> rows(const QString &name)
{
    QList<QStringList> found;
    QFile file(u"/usr/share/unicode/"_s + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("unicode-data is not installed");
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine());
        QStringList fields = line.left(line.indexOf(u'#')).split(u';');
        for (QString &field : fields)
            field = field.trimmed();
        if (fields.size() > 1)
            found += fields;
    }
    return found;
}

char32_t hex(const QString &text)
{
    return text.toUInt(nullptr, 16);
}

/// A value for each code point that a file lists by ranges.
QHash<char32_t, QString> valuesByRange(const QString &file)
{
    QHash<char32_t, QString> values;
    for (const QStringList &row : rows(file)) {
        const QStringList ends = row.at(0).split(u".."_s);
        for (char32_t code = hex(ends.first()); code <= hex(ends.last()); ++code)
            values.insert(code, row.at(1));
    }
    return values;
}

QString listOf(const UnicodeData::Decomposition &decomposition)
{
    QStringList words = decomposition.tag.isEmpty() ? QStringList() : QStringList(decomposition.tag);
    for (const char32_t part : decomposition.parts)
        words += QString::number(part, 16).toUpper().rightJustified(4, u'0');
    return words.join(u' ');
}

} // namespace

class UnicodeDataTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCharacterIsAsItsFilesSay();
    void everyCharacterIsAsQtSays();
    void namesLeadBack();
    void searchFindsWords_data();
    void searchFindsWords();
    void withoutDataNothingIsKnown();
};

/// Name, category, bidi class, mappings, decomposition; script and block; aliases.
void UnicodeDataTest::everyCharacterIsAsItsFilesSay()
{
    const UnicodeData &data = UnicodeData::shared();
    QVERIFY(data.isLoaded());
    const QHash<char32_t, QString> scripts = valuesByRange(u"Scripts.txt"_s);
    const QHash<char32_t, QString> blocks = valuesByRange(u"Blocks.txt"_s);
    QHash<char32_t, QStringList> aliases;
    for (const QStringList &row : rows(u"NameAliases.txt"_s))
        aliases[hex(row.at(0))] += row.at(1);
    // Where no rule gives the name, it is that of the list of all derived names.
    QHash<char32_t, QString> names;
    for (const QStringList &row : rows(u"extracted/DerivedName.txt"_s)) {
        const QStringList ends = row.at(0).split(u".."_s);
        for (char32_t code = hex(ends.first()); code <= hex(ends.last()); ++code)
            names.insert(code, QString(row.at(1)).replace(u'*', QString::number(code, 16).toUpper()));
    }
    QHash<char32_t, QStringList> characters;
    const QList<QStringList> list = rows(u"UnicodeData.txt"_s);
    for (qsizetype i = 0; i < list.size(); ++i) {
        const bool isRange = list.at(i).at(1).endsWith(u", First>"_s);
        for (char32_t code = hex(list.at(i).at(0)); code <= hex(list.at(i + (isRange ? 1 : 0)).at(0)); ++code)
            characters.insert(code, list.at(i));
        i += isRange ? 1 : 0;
    }
    QVERIFY(characters.size() > 280000 && names.size() > 140000);
    const QStringList none(15);
    for (char32_t code = 0; code <= kLast; ++code) {
        const QStringList row = characters.value(code, none);
        const bool isAssigned = !row.at(2).isEmpty();
        const auto orSelf = [code](const QString &text, char32_t other) { return text.isEmpty() ? other : hex(text); };
        const char32_t upper = orSelf(row.at(12), code);
        const bool isHangul = code >= 0xAC00 && code <= 0xD7A3; // its decomposition follows from its place
        const bool isTrue = data.isAssigned(code) == isAssigned
            && data.category(code) == (isAssigned ? row.at(2) : u"Cn"_s)
            && data.bidiClass(code) == (isAssigned ? row.at(4) : u"L"_s)
            && data.combiningClass(code) == row.at(3).toInt() && data.isMirrored(code) == (row.at(9) == "Y"_L1)
            && data.upper(code) == upper && data.lower(code) == orSelf(row.at(13), code)
            && data.title(code) == (row.at(14).isEmpty() ? upper : hex(row.at(14)))
            && (isHangul || listOf(data.decomposition(code)) == row.at(5))
            && data.script(code) == scripts.value(code, u"Unknown"_s) && data.block(code) == blocks.value(code)
            && data.name(code) == names.value(code) && data.aliases(code) == aliases.value(code);
        if (!isTrue)
            QFAIL(qPrintable(u"U+%1: %2 %3 %4"_s.arg(code, 4, 16).arg(data.name(code), data.category(code),
                                                                       data.script(code))));
    }
}

/// Hangul's decompositions are in no file; of all others Qt's may be of an older version of Unicode.
void UnicodeDataTest::everyCharacterIsAsQtSays()
{
    const UnicodeData &data = UnicodeData::shared();
    int known = 0;
    for (char32_t code = 0; code <= kLast; ++code) {
        if (QChar::unicodeVersion(code) == QChar::Unicode_Unassigned)
            continue;
        ++known;
        const QString whole = QString::fromUcs4(&code, 1);
        QString parts;
        const UnicodeData::Decomposition decomposition = data.decomposition(code);
        for (const char32_t part : decomposition.parts)
            parts += QString::fromUcs4(&part, 1);
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        // Qt leaves alone what has a mapping to several characters besides.
        const auto isSame = [code](char32_t ours, char32_t qts) { return ours == qts || qts == code; };
        const bool isTrue = isSame(data.upper(code), QChar::toUpper(code))
            && isSame(data.lower(code), QChar::toLower(code)) && isSame(data.title(code), QChar::toTitleCase(code))
            && (data.isMirrored(code) || !QChar::hasMirrored(code)) // Qt: those with a counterpart
            && data.combiningClass(code) == QChar::combiningClass(code)
            && (isSurrogate || !decomposition.tag.isEmpty() || parts.isEmpty()
                || parts.normalized(QString::NormalizationForm_D) == whole.normalized(QString::NormalizationForm_D));
        if (!isTrue)
            QFAIL(qPrintable(u"U+%1"_s.arg(code, 4, 16)));
    }
    QVERIFY(known > 250000);
    for (const QString &block : data.blocks())
        QCOMPARE(data.block(data.rangeOfBlock(block.toUpper())->second), block);
    QCOMPARE(listOf(data.decomposition(0xAC01)), u"AC00 11A8"_s);
    QCOMPARE(listOf(data.decomposition(0xAC00)), u"1100 1161"_s);
}

/// Every name and alias, in small letters, has its code point; what is no name has none.
void UnicodeDataTest::namesLeadBack()
{
    const UnicodeData &data = UnicodeData::shared();
    int known = 0;
    for (char32_t code = 0; code <= kLast; code += code >= 0x4E00 && code < 0x1FFFF ? 7 : 1) {
        QStringList names = data.aliases(code);
        if (!data.name(code).isNull())
            names += data.name(code);
        known += int(names.size());
        for (const QString &name : names)
            QCOMPARE(data.codePointOfName(u"  "_s + name.toLower()), std::optional<char32_t>(code));
    }
    QVERIFY(known > 40000);
    for (const QString &none : {u""_s, u"-"_s, u"LATIN"_s, u"LATIN SMALL LETTER"_s, u"CJK UNIFIED IDEOGRAPH-0041"_s,
                                u"HANGUL SYLLABLE"_s, u"HANGUL SYLLABLE X"_s, u"LATIN-SMALL LETTER A"_s,
                                u"CJK UNIFIED IDEOGRAPH-4e000"_s, u"É"_s})
        QVERIFY2(!data.codePointOfName(none), qPrintable(none));
}

void UnicodeDataTest::searchFindsWords_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("first");
    QTest::newRow("a whole name") << u"greek small letter alpha"_s << u"3B1 1F71 3AC"_s;
    QTest::newRow("words in another order") << u"alpha greek small"_s << u"3B1 1F71 3AC"_s;
    QTest::newRow("the beginning of a word") << u"euro s"_s << u"20AC"_s;
    QTest::newRow("an alias") << u"line feed"_s << u"A"_s;
    QTest::newRow("a rule") << u"cjk unified ideograph-4e00"_s << u"4E00"_s;
    QTest::newRow("a syllable") << u"hangul syllable gag"_s << u"AC01"_s;
    QTest::newRow("nothing") << u"letter xyzzy"_s << QString();
}

void UnicodeDataTest::searchFindsWords()
{
    QFETCH(QString, words);
    QFETCH(QString, first);
    QStringList found;
    for (const UnicodeData::Found &each : UnicodeData::shared().search(words, 3))
        found += QString::number(each.codePoint, 16).toUpper();
    QVERIFY2(first.isEmpty() ? found.isEmpty() : found.join(u' ').startsWith(first), qPrintable(found.join(u' ')));
}

void UnicodeDataTest::withoutDataNothingIsKnown()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"cut.dat"_s);
    QVERIFY(QFile::copy(RUNEBOOK_BUILD_DIR "/share/runebook/unicode.dat"_L1, path));
    QFile file(path);
    QVERIFY(file.resize(file.size() / 2));
    for (const QString &each : {path, folder.filePath(u"none.dat"_s)}) {
        const UnicodeData data(each);
        QVERIFY(!data.isLoaded() && data.name(0x41).isNull() && data.category(0x41) == "Cn"_L1
                && data.upper(0x61) == 0x61 && data.decomposition(0xE9).parts.empty() && data.blocks().isEmpty()
                && data.search(u"a").isEmpty() && !data.codePointOfName(u"space"));
    }
}

RUNEBOOK_TEST_MAIN(UnicodeDataTest)
#include "UnicodeDataTest.moc"
