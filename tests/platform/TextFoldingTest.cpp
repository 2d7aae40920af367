#include "platform/TextFolding.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QFile>
#include <QHash>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

constexpr Folding kCaseOnly = Fold::Case;
constexpr Folding kMarksOnly = Fold::Diacritics;
constexpr Folding kCaseAndMarks = Fold::Case | Fold::Diacritics;
constexpr Folding kEveryFolding[] = {{}, kCaseOnly, kMarksOnly, kCaseAndMarks};

QString fromPoints(QStringView spaceSeparatedHex)
{
    QString text;
    for (const QStringView part : spaceSeparatedHex.split(u' ', Qt::SkipEmptyParts))
        text += QChar::fromUcs4(part.toUInt(nullptr, 16));
    return text;
}

QString fromPoint(char32_t point)
{
    return QStringView(QChar::fromUcs4(point)).toString();
}

bool isKnownToQt(char32_t point)
{
    return QChar::unicodeVersion(point) != QChar::Unicode_Unassigned;
}

/// The records of a file of the Unicode character database, each as its trimmed fields.
QList<QStringList> unicodeRecords(const QString &name)
{
    QList<QStringList> records;
    QFile file(u"/usr/share/unicode/"_s + name);
    if (!file.open(QIODevice::ReadOnly))
        return records;
    while (!file.atEnd()) {
        QString line = QString::fromUtf8(file.readLine());
        line.truncate(line.indexOf(u'#') < 0 ? line.size() : line.indexOf(u'#'));
        QStringList fields = line.split(u';');
        for (QString &field : fields)
            field = field.trimmed();
        if (fields.size() > 2)
            records += fields;
    }
    return records;
}

/// Folding as the definitions of Unicode say it, over the whole text at once and with nothing remembered.
/// Qt's simple case folding is made full by the data file.
struct SlowFolding {
    QHash<char32_t, QString> fullCase;

    SlowFolding()
    {
        for (const QStringList &record : unicodeRecords(u"CaseFolding.txt"_s)) {
            if (record[1] == "C"_L1 || record[1] == "F"_L1)
                fullCase[record[0].toUInt(nullptr, 16)] = fromPoints(record[2]);
        }
    }
    static QString withoutMarks(const QString &text)
    {
        QString bare;
        for (const char32_t point : codePoints(text.normalized(QString::NormalizationForm_D))) {
            if (!QChar::isMark(point)
                || (QChar::category(point) == QChar::Mark_SpacingCombining
                    && QChar::combiningClass(point) == 0))
                bare += QChar::fromUcs4(point);
        }
        return bare;
    }
    QString fold(const QString &text, Folding folding) const
    {
        QString folded = folding.testFlag(Fold::Diacritics) ? withoutMarks(text) : text;
        if (folding.testFlag(Fold::Case)) {
            QString lower;
            for (const char32_t point : codePoints(folded))
                lower += fullCase.value(point, fromPoint(point));
            folded = folding.testFlag(Fold::Diacritics) ? withoutMarks(lower) : lower;
        }
        return folded;
    }
    /// Like toUcs4(), which replaces lone surrogates.
    static QList<char32_t> codePoints(const QString &text)
    {
        QList<char32_t> points;
        for (qsizetype i = 0; i < text.size(); ++i) {
            if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
                points += QChar::surrogateToUcs4(text[i], text[i + 1]);
                ++i;
            } else {
                points += text[i].unicode();
            }
        }
        return points;
    }
};

QString randomText(QRandomGenerator &random, bool loneSurrogates)
{
    static const QString alphabet = u"aAzZ@[`{ .-_09ßẞſKÅéÉe\u0301\u0323İıΣσςΐﬁøØłŉǰがかै\u09CB한\u1100\u1161"
                                    u"\u0345ᾳᾼ\u20DD\U0001D15E𐐀𐐨😀"_s;
    QString text;
    const int length = random.bounded(40);
    for (int i = 0; i < length; ++i) {
        switch (random.bounded(8)) {
        case 0: {
            char32_t point = random.bounded(0x110000);
            if (!QChar::isSurrogate(point) && isKnownToQt(point))
                text += QChar::fromUcs4(point);
            break;
        }
        case 1:
            if (loneSurrogates)
                text += QChar(char16_t(0xD800 + random.bounded(0x800)));
            break;
        case 2:
            text += u"afii Acutecomb.SC"_s.left(random.bounded(18));
            break;
        default: {
            const QList<char32_t> points = SlowFolding::codePoints(alphabet);
            text += QChar::fromUcs4(points[random.bounded(int(points.size()))]);
        }
        }
    }
    return text;
}

} // namespace

class TextFoldingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // alikeUnder: the foldings under which both are one: "c", "d", "cd"
    TABLE(pairs, (const QString &one, const QString &other, const QString &alikeUnder), {
        row("@ `: neighbours of the letters", u"@[AZ"_s, u"`{az"_s, {});
        row("ß ss", u"Straße"_s, u"Strasse"_s, u"c cd"_s);
        row("ß SS", u"ß"_s, u"SS"_s, u"c cd"_s);
        row("İ i", u"İ"_s, u"i"_s, u"cd"_s);
        row("ı i", u"ı"_s, u"i"_s, {});
        row("ᾼ αι: iota below is a mark", u"ᾼ"_s, u"αι"_s, u"c"_s);
        row("lone surrogates differ", QString(QChar(0xD800)), QString(QChar(0xDC00)), {});
        row("lone surrogate between letters", u"A"_s + QChar(0xD83D) + u"B"_s,
            u"a"_s + QChar(0xD83D) + u"b"_s, u"c cd"_s);
    })
    {

        QStringList alike, alikeInBytes;
        const std::pair<QString, Folding> named[] = {
            {u"-"_s, {}}, {u"c"_s, kCaseOnly}, {u"d"_s, kMarksOnly}, {u"cd"_s, kCaseAndMarks}};
        for (const auto &[name, folding] : named) {
            if (foldForSearch(one, folding) == foldForSearch(other, folding))
                alike += name;
            if (foldedUtf8(one, folding) == foldedUtf8(other, folding))
                alikeInBytes += name;
        }
        QCOMPARE(alike.join(u' '), alikeUnder);
        QCOMPARE(alikeInBytes.join(u' '), alikeUnder);
    }

    void caseFollowsUnicodeData()
    {
        const SlowFolding model;
        QVERIFY(!model.fullCase.isEmpty());
        for (char32_t point = 0; point <= QChar::LastValidCodePoint; ++point) {
            // The file may be of a later version than Qt's tables.
            if (!isKnownToQt(point) || QChar::isSurrogate(point))
                continue;
            const QString folded = foldForSearch(fromPoint(point), kCaseOnly);
            if (folded != model.fullCase.value(point, fromPoint(point)))
                QFAIL(qPrintable(u"U+%1 folds to %2"_s.arg(point, 4, 16).arg(folded)));
        }
    }

    void marksFollowUnicodeData()
    {
        struct Character {
            QString category, decomposition;
            int combiningClass = 0;
        };
        QHash<char32_t, Character> characters;
        for (const QStringList &record : unicodeRecords(u"UnicodeData.txt"_s)) {
            // First and last of a range: ideographs, and the Hangul syllables that decompose by rule.
            if (record[1].endsWith(u'>'))
                continue;
            const QString canonical = record[5].startsWith(u'<') ? QString() : fromPoints(record[5]);
            characters[record[0].toUInt(nullptr, 16)] = {record[2], canonical, record[3].toInt()};
        }
        QVERIFY(!characters.isEmpty());

        const auto expected = [&characters](const auto &self, char32_t point) -> QString {
            const Character character = characters.value(point);
            QString bare;
            for (const char32_t part : character.decomposition.toUcs4())
                bare += self(self, part);
            const bool mark = character.category == "Mn"_L1 || character.category == "Me"_L1
                || character.combiningClass != 0;
            return !character.decomposition.isEmpty() ? bare : mark ? QString() : fromPoint(point);
        };
        for (const char32_t point : characters.keys()) {
            if (!isKnownToQt(point))
                continue;
            const QString folded = foldForSearch(fromPoint(point), kMarksOnly);
            if (folded != expected(expected, point))
                QFAIL(qPrintable(u"U+%1 folds to %2"_s.arg(point, 4, 16).arg(folded)));
        }
    }

    void randomTextsFollowTheModel()
    {
        const SlowFolding model;
        QVERIFY(!model.fullCase.isEmpty());
        QRandomGenerator random(20250);
        for (int round = 0; round < rounds(5000); ++round) {
            QString text = randomText(random, round % 2 == 1);
            while (round % 50 == 0 && text.size() < 1500)
                text += QString(random.bounded(300), u'Q') + randomText(random, false);
            for (const Folding folding : kEveryFolding) {
                const QString folded = foldForSearch(text, folding);
                // In UTF-16 two lone surrogates become one character when the mark between them goes.
                if (text.isValidUtf16() || !folding.testFlag(Fold::Diacritics)) {
                    QCOMPARE(folded, model.fold(text, folding));
                    QCOMPARE(foldedUtf8(text, folding), foldedUtf8(folded, {}));
                }
                // A column holds proper UTF-8: there the two byte forms agree with Qt's own conversion.
                if (text.isValidUtf16()) {
                    std::string fromBytes = "kept:";
                    appendFoldedUtf8(fromBytes, text.toStdString(), folding);
                    QCOMPARE(fromBytes, "kept:" + folded.toStdString());
                }
            }
        }
    }

    void foldingGoesPieceByPiece()
    {
        QRandomGenerator random(77);
        for (int round = 0; round < rounds(2000); ++round) {
            const QString one = randomText(random, false), other = randomText(random, false);
            for (const Folding folding : kEveryFolding) {
                QCOMPARE(foldForSearch(one + other, folding),
                         foldForSearch(one, folding) + foldForSearch(other, folding));
            }
        }
    }

    // folded: under case and diacritics
    TABLE(malformedBytesStay, (const QByteArray &bytes, const QByteArray &folded), {
        row("lone trail byte", QByteArray("A\x80Z"), QByteArray("a\x80z"));
        row("cut at the end", QByteArray("AB\xC3"), QByteArray("ab\xC3"));
        row("cut before a letter",
            QByteArray("\xE1\xBA"
                       "A"),
            QByteArray("\xE1\xBA"
                       "a"));
        row("overlong slash", QByteArray("\xC0\xAF\xE0\x80\xAF"), QByteArray("\xC0\xAF\xE0\x80\xAF"));
        row("above the last code point", QByteArray("\xF4\x90\x80\x80Q"), QByteArray("\xF4\x90\x80\x80q"));
        row("lone surrogate", QByteArray("\xED\xA0\x80Q"), QByteArray("\xED\xA0\x80q"));
        row("well-formed after it", QByteArray("\xFF\xC3\x89"),
            QByteArray("\xFF"
                       "e"));
        row("a zero byte", QByteArray("A\0B", 3), QByteArray("a\0b", 3));
    })
    {
        std::string out;
        appendFoldedUtf8(out, std::string_view(bytes.constData(), size_t(bytes.size())), kCaseAndMarks);
        QCOMPARE(QByteArray::fromStdString(out), folded);
    }
};

RUNEBOOK_TEST_MAIN(TextFoldingTest)
#include "TextFoldingTest.moc"
