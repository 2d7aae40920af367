// The text that shows what a record stands for, and the fonts chosen for it.
#include "document/FontFile.h"
#include "document/GlyphPreview.h"
#include "document/VXDocument.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/Files.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QRawFont>
#include <QRegularExpression>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QString kFontFolder = u"/usr/share/fonts/truetype/dejavu/"_s;

/// One record a line: name, code point, decomposition, production name; "-" for none.
InfoList listOf(const QString &text)
{
    InfoList infos;
    for (const QString &line : text.split(u'\n', Qt::SkipEmptyParts)) {
        const QStringList fields = line.split(u'|');
        InfoPtr info = VXGlyphInfo::init();
        info->setName(fields.value(0).trimmed());
        if (const QString code = fields.value(1).trimmed(); !code.isEmpty())
            info->setUnicode(code);
        if (const QString parts = fields.value(2).trimmed(); !parts.isEmpty())
            info->setDecompose(parts);
        if (const QString production = fields.value(3).trimmed(); !production.isEmpty())
            info->setProduction(production);
        infos.push_back(info);
    }
    return infos;
}

} // namespace

class PreviewTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        UserDefaults::standard().removeObjectForKey(u"VXScriptToPreviewFontPath"_s);
        VXDocument::setNeedsUpdateScriptToFontCache();
    }

    // list: the record shown comes first
    TABLE(shows, (const QString &list, const QString &base, const QString &preview), {
        row("code point", u"a|0061", u"a", u"a");
        row("beyond 16 bits", u"grin|1F600", u"😀", u"😀");
        row("two digits", u"a|61", u"a", u"a");
        row("one digit is none", u"a|9", u"", u"");
        row("no hexadecimal", u"a|WXYZ", u"", u"");
        row("beyond Unicode", u"a|110000", u"", u"");
        row("code point before all", u"f_i|FB01|f, i|uni0041\nf|0066\ni|0069", u"ﬁ", u"ﬁ = f + i");
        row("decomposition", u"f_i||f, i\nf|0066\ni|0069", u"fi", u"fi = f + i");
        row("one without a text", u"f_i||f, i\nf|0066\ni|", u"f", u"f");
        row("one missing", u"f_i||f, i\nf|0066", u"f", u"f");
        row("both missing", u"f_i||f, i", u"", u"");
        row("one component", u"x||f\nf|0066", u"f", u"f");
        row("comma without blank", u"x||f,i\nf|0066\ni|0069", u"", u"");
        row("whole previews of components", u"f_f_i||f, f_i\nf_i||f, i\nf|0066\ni|0069", u"ffi = f + i",
            u"ffi = f + i = f + fi");
        row("decomposition before production", u"x||none|uni0041", u"", u"");
        row("production", u"x|||uni00410042", u"AB", u"AB = A + B");
        row("production, one", u"x|||uni0041", u"A", u"A");
        row("production, five digits", u"x|||u1F6001F601", u"😀😁", u"😀😁 = 😀 + 😁");
        row("production that does not fit", u"x|||uni0041004", u"", u"");
        row("production of a record of the list", u"x|||uni0041\nA|0041", u"A", u"A");
        row("production that is none, base name", u"a.sc|||asmall\na|0061", u"a", u"a");
        row("base name", u"a.sc\na|0061", u"a", u"a");
        row("up to the first dot", u"a.sc.alt\na|0061\na.sc|0062", u"a", u"a");
        row("no base record", u"a.sc", u"", u"");
        row("dot first", u".notdef\na|0061", u"", u"");
        row("base record is composed", u"fi.alt\nfi||f, i\nf|0066\ni|0069", u"fi", u"fi");
        row("halant at the end", u"k||ka, halant-deva\nka|0915\nhalant-deva|094D", u"\u0915\u094D",
            u"\u0915\u094D\u200D = \u0915 + \u094D");
        row("halant first", u"k||halant-deva, ka\nka|0915\nhalant-deva|094D", u"\u094D\u0915",
            u"\u200D\u094D\u0915 = \u094D + \u0915");
        row("halant at both ends", u"k||halant, ka, halant\nka|0915\nhalant|094D", u"\u094D\u0915\u094D",
            u"\u094D\u0915\u094D\u200D = \u094D + \u0915 + \u094D");
        row("halant in the middle", u"k||ka, halant, ka\nka|0915\nhalant|094D", u"\u0915\u094D\u0915",
            u"\u0915\u094D\u0915 = \u0915 + \u094D + \u0915");
        row("halant, parts discarded", u"k||ka, xhalant\nka|0915\nxhalant|", u"\u0915", u"\u0915\u200D");
    })
    {
        VXDocument document;
        document.setInfos(listOf(list));
        QCOMPARE(document.baseStringForInfo(document.objectInInfosAtIndex(0)), base);
        QCOMPARE(document.stringForInfo(document.objectInInfosAtIndex(0)), preview);
        // Nothing is added to the document for it.
        QCOMPARE(document.countOfInfos(), list.count(u'\n') + 1);
    }

    // preview: absent: any
    TABLE(endsWhateverTheListSays, (const QString &list, const QString &preview), {
        row("itself", "a||a", "");
        row("itself twice", "a||a, a", "");
        row("each other", "a||b\nb||a", "");
        row("itself and another", "a||x, a\nx|0078", QString());
        row("by name", "a.b||a.b.c\na||a.b", QString());
        row("ring of three", "a||b, x\nb||c, x\nc||a, x\nx|0078", QString());
        QString chain;
        for (int i = 0; i < 1'000; ++i)
            chain += u"n%1||n%2\n"_s.arg(i).arg(i + 1);
        row("1,000 nested", QString(chain + u"n1000|0078"_s), "x");
        chain.clear();
        for (int i = 0; i < 200'000; ++i)
            chain += u"n%1||n%2\n"_s.arg(i).arg(i + 1);
        row("200,000 nested", QString(chain + u"n200000|0078"_s), QString());
        chain.clear();
        for (int i = 0; i < 60; ++i)
            chain += u"n%1||n%2, n%2\n"_s.arg(i).arg(i + 1);
        row("2^60 parts", QString(chain + u"n60|0078"_s), QString());
        row("a million parts", u"a||"_s + u"x, "_s.repeated(1'000'000) + u"x\nx|0078"_s, QString());
        row("a long production name", u"a|||uni"_s + u"0041"_s.repeated(500'000), QString());
    })
    {
        VXDocument document;
        document.setInfos(listOf(list));
        const QString shown = document.stringForInfo(document.objectInInfosAtIndex(0));
        if (!preview.isNull())
            QCOMPARE(shown, preview);
        QVERIFY2(shown.size() < 100'000, qPrintable(QString::number(shown.size())));
    }

    void showsNothingForNothing()
    {
        const VXDocument document;
        QCOMPARE(document.stringForInfo(nullptr), u""_s);
        QCOMPARE(document.baseStringForInfo(nullptr), u""_s);
        QVERIFY(!document.stringForInfo(VXGlyphInfo::init()).isNull());
    }

    // expected: "." for the script's font, "s" for the system's in light grey
    TABLE(formats, (const QString &text, const QString &expected), {
        row("nothing", "", "");
        row("a", "a", ".");
        row("two parts", "fi = f + i", "..sss.sss.");
        row("first = only, every +", "a = b + c = d + e", ".sss.sss.....sss.");
        row("without blanks", "a+b=c", ".....");
        row("signs side by side", "a +  + b", ".ssssss.");
    })
    {
        QFont font(u"DejaVu Serif"_s);
        font.setPointSizeF(100);
        const FormattedText formatted = VXDocument::formatInfoStringFont(text, font);
        QCOMPARE(formatted.text, text);
        QCOMPARE(formatted.alignment, Qt::AlignHCenter);
        QString signs(text.size(), u'.');
        for (const QTextLayout::FormatRange &range : formatted.formats) {
            const bool isSign = range.format.foreground().color() == QColor(Qt::lightGray);
            QCOMPARE(range.format.font().families().contains(u"DejaVu Serif"_s), !isSign);
            QCOMPARE(range.format.font().pointSizeF(), 100.0);
            for (int i = range.start; isSign && i < range.start + range.length; ++i)
                signs[i] = u's';
        }
        QCOMPARE(signs, expected);
    }

    void formatsARecord()
    {
        VXDocument document;
        document.setInfos(listOf(u"f_i||f, i\nf|0066\ni|0069"_s));
        const InfoPtr info = document.objectInInfosAtIndex(0);
        const FormattedText system = document.formatStringFromInfo(info);
        QCOMPARE(system.text, u"fi = f + i"_s);
        QCOMPARE(system.formats.first().format.font().families(),
                 QFontDatabase::systemFont(QFontDatabase::GeneralFont).families());
        QCOMPARE(system.formats.first().format.font().pointSizeF(), 100.0);
        VXDocument::registerPreviewFontForScript(kFontFolder + u"DejaVuSerif.ttf"_s, u"latin"_s);
        info->setScript(u"latin"_s);
        const FormattedText chosen = document.formatStringFromInfo(info);
        QVERIFY(chosen.formats.first().format.font().family().startsWith(u"DejaVu Serif"_s));
    }

    void choosesFontFiles()
    {
        const auto pairs = [] {
            return UserDefaults::standard().arrayForKey(u"VXScriptToPreviewFontPath"_s);
        };
        VXDocument::registerPreviewFontForScript(u"/a.ttf"_s, u"latin"_s);
        VXDocument::registerPreviewFontForScript(u"/b.ttf"_s, u"greek"_s);
        VXDocument::registerPreviewFontForScript(u"/c.ttf"_s, u"latin"_s);
        QCOMPARE(pairs().size(), 2);
        QCOMPARE(pairs().at(0).toStringList(), QStringList({u"greek"_s, u"/b.ttf"_s}));
        QCOMPARE(pairs().at(1).toStringList(), QStringList({u"latin"_s, u"/c.ttf"_s}));
        QCOMPARE(VXDocument::previewFontForScript(u"latin"_s), u"/c.ttf"_s);
        QVERIFY(VXDocument::previewFontForScript(u"arabic"_s).isNull());
        VXDocument::registerPreviewFontForScript({}, u"latin"_s);
        VXDocument::registerPreviewFontForScript(u"/d.ttf"_s, {});
        QCOMPARE(pairs().size(), 2);
        VXDocument::removePreviewFontForScript(u"latin"_s);
        VXDocument::removePreviewFontForScript(u"arabic"_s);
        QCOMPARE(pairs().size(), 1);
        QVERIFY(VXDocument::previewFontForScript(u"latin"_s).isNull());
    }

    void loadsTheChosenFont()
    {
        QVERIFY(QFile::exists(kFontFolder + u"DejaVuSans-Bold.ttf"_s));
        QVERIFY(!VXDocument::fontForScriptSize(u"latin"_s, 20));
        VXDocument::registerPreviewFontForScript(kFontFolder + u"DejaVuSans.ttf"_s, u"default"_s);
        VXDocument::registerPreviewFontForScript(kFontFolder + u"DejaVuSansMono.ttf"_s, u"latin"_s);
        VXDocument::registerPreviewFontForScript(kFontFolder + u"none.ttf"_s, u"greek"_s);
        VXDocument::registerPreviewFontForScript(QStringLiteral(RUNEBOOK_SOURCE_DIR "/README.md"), u"thai"_s);
        const auto face = [](const QString &script) {
            const std::optional<QFont> font = VXDocument::fontForScriptSize(script, 20);
            if (!font)
                return u"(none)"_s;
            const QFontInfo info(*font);
            return QString(info.family()).remove(QRegularExpression(u" \\(preview \\d+\\)"_s))
                + (info.bold() ? u" bold"_s : u""_s) + (info.italic() ? u" italic"_s : u""_s);
        };
        QCOMPARE(face({}), u"DejaVu Sans"_s);
        QCOMPARE(face(u""_s), u"DejaVu Sans"_s);
        QCOMPARE(face(u"default"_s), u"DejaVu Sans"_s);
        QCOMPARE(face(u"latin"_s), u"DejaVu Sans Mono"_s);
        QCOMPARE(VXDocument::fontForScriptSize(u"latin"_s, 20)->pointSizeF(), 20.0);
        // No way from a script to the default, nor from a file that is no font.
        QCOMPARE(face(u"arabic"_s), u"(none)"_s);
        QCOMPARE(face(u"greek"_s), u"(none)"_s);
        QCOMPARE(face(u"thai"_s), u"(none)"_s);
        // The file that was chosen, not another one of its family.
        VXDocument::registerPreviewFontForScript(kFontFolder + u"DejaVuSans-Bold.ttf"_s, u"latin"_s);
        QCOMPARE(face(u"latin"_s), u"DejaVu Sans bold"_s);
        QCOMPARE(face(u"default"_s), u"DejaVu Sans"_s);
        VXDocument::removePreviewFontForScript(u"latin"_s);
        QCOMPARE(face(u"latin"_s), u"(none)"_s);
        // The defaults may change by another way.
        UserDefaults::standard().setObjectForKey(
            QVariantList {QVariant(QStringList {u"latin"_s, kFontFolder + u"DejaVuSerif.ttf"_s})},
            u"VXScriptToPreviewFontPath"_s);
        QCOMPARE(face(u"latin"_s), u"DejaVu Serif"_s);
        QCOMPARE(face({}), u"(none)"_s);
    }

    void drawsTheFileAsItIsNow()
    {
        // The fonts of DejaVu are installed; what is drawn is the file all the same.
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"mine.ttf"_s);
        const auto tableOfFile = [&path] { return QRawFont(path, 16).fontTable("glyf"); };
        const auto tableDrawn = [](const QString &script = u"latin"_s) {
            const std::optional<QFont> font = VXDocument::fontForScriptSize(script, 20);
            return font ? QRawFont::fromFont(*font).fontTable("glyf") : QByteArray();
        };
        QVERIFY(QFile::copy(kFontFolder + u"DejaVuSerif.ttf"_s, path));
        VXDocument::registerPreviewFontForScript(path, u"latin"_s);
        const QByteArray serif = tableOfFile();
        QVERIFY(!serif.isEmpty() && tableDrawn() == serif);
        // Another design under the names of an installed font, as somebody who draws fonts exports it.
        QFile::remove(path);
        const QByteArray renamed =
            fontWithFamily(contentOf(kFontFolder + u"DejaVuSansMono.ttf"_s), u"DejaVu Serif"_s);
        write(path, renamed);
        QVERIFY(!renamed.isEmpty() && tableOfFile() != serif);
        VXDocument::registerPreviewFontForScript(kFontFolder + u"DejaVuSerif.ttf"_s, u"greek"_s);
        QVERIFY(tableDrawn(u"greek"_s) == serif);
        QTRY_VERIFY(tableDrawn() == tableOfFile());
        const auto number = [&](qsizetype at) { return qFromBigEndian<quint32>(renamed.constData() + at); };
        const int tables = number(4) >> 16;
        qsizetype end = 0; // of the last table; what follows fills up
        for (qsizetype entry = 12; entry < 12 + 16 * tables; entry += 16)
            end = std::max(end, qsizetype(number(entry + 8)) + number(entry + 12));
        for (const qsizetype size : QList<qsizetype> {0, 3, 11, 40, 300, end - 1}) // damaged, it is no font
            QVERIFY(fontWithFamily(renamed.left(size), u"x"_s).isEmpty());
        QVERIFY(!fontWithFamily(renamed.left(end), u"x"_s).isEmpty());
        VXDocument::removePreviewFontForScript(u"latin"_s);
    }

    void takesOddDefaults()
    {
        UserDefaults::standard().setObjectForKey(
            QVariantList {5, u"latin"_s, QVariant(QStringList {u"latin"_s}),
                          QVariant(QStringList {u""_s, kFontFolder + u"DejaVuSans.ttf"_s}),
                          QVariant(QStringList {u"greek"_s, u"/x.ttf"_s})},
            u"VXScriptToPreviewFontPath"_s);
        QVERIFY(!VXDocument::fontForScriptSize(u"latin"_s, 20));
        QVERIFY(!VXDocument::fontForScriptSize({}, 20));
        QCOMPARE(VXDocument::previewFontForScript(u"greek"_s), u"/x.ttf"_s);
        UserDefaults::standard().setObjectForKey(u"text"_s, u"VXScriptToPreviewFontPath"_s);
        QVERIFY(!VXDocument::fontForScriptSize(u"greek"_s, 20));
        QVERIFY(VXDocument::previewFontForScript(u"greek"_s).isNull());
    }
};

RUNEBOOK_TEST_MAIN(PreviewTest)
#include "PreviewTest.moc"
