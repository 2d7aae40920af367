// The record: its setters and their undo, copies, archives, values by key, equality.
#include "model/FieldTable.h"
#include "model/VXGlyphInfo.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/model/PlainRecord.h"
#include "tests/model/RecordingOwner.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

using Edit = std::function<void(VXGlyphInfo &)>;

const QString kArabicMarks =
    u"fathatan-ar, dammatan-ar, fatha-ar, damma-ar, shadda-ar, sukun-ar, madda-ar, hamzaabove-ar, "
    "noonghunna-ar, alefabove-ar, kasratan-ar, kasra-ar, hamzabelow-ar, alefbelow-ar"_s;

/// A record in which every field has a value.
void fill(VXGlyphInfo &info)
{
    info.setUnicodes({u"0041"_s, u"0042"_s});
    info.setAltNames(QStringList {u"b"_s, u"c"_s});
    info.setCase(VXGlyphInfo::lower);
    info.setDirection(VXGlyphInfo::RTL);
    info.setIndex(7);
    for (const QString &key : PlainRecord::textKeys())
        info.setValueForKey(QString(u"old "_s + key), key);
}

} // namespace

class GlyphInfoTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void beginsEmpty()
    {
        const InfoPtr info = VXGlyphInfo::init();
        PlainRecord expected;
        expected.texts.insert(u"name"_s, u"unknown"_s);
        QVERIFY(PlainRecord::of(*info) == expected);
        QVERIFY(info->unicode().isNull());
        QCOMPARE(info->index(), 0u);
        QVERIFY(!info->document());
        QVERIFY(!info->documentObject());
    }

    TABLE(everySetterUndoesAndRedoes, (const QString &key, const Edit &edit), {
        for (const QString &key : PlainRecord::textKeys()) {
            if (key == u"unicodeLegacy" || key == u"unicharString")
                continue;
            for (const QString &value : {u"new"_s, u""_s, QString()}) {
                const QString label = key + (value.isNull() ? u" absent"_s : u" \"%1\""_s.arg(value));
                row(label, key, Edit([=](VXGlyphInfo &info) { info.setValueForKey(value, key); }));
            }
            if (key != u"desc") {
                row(key + u" unchanged"_s, key,
                    Edit([=](VXGlyphInfo &info) { info.setValueForKey(info.valueForKey(key), key); }));
            }
        }
        row("unicodes", "unicodes", [](auto &i) { i.setUnicodes({u"1f600"_s}); });
        row("unicodes none", "unicodes", [](auto &i) { i.setUnicodes({}); });
        row("unicodes unchanged", "unicodes", [](auto &i) { i.setUnicodes(i.unicodes()); });
        row("unicode", "unicodes", [](auto &i) { i.setUnicode(u"xyz"_s); });
        row("unicode absent", "unicodes", [](auto &i) { i.setUnicode({}); });
        row("addUnicode", "unicodes", [](auto &i) { i.addUnicode(u"43"_s); });
        row("altNames", "altNames", [](auto &i) { i.setAltNames(QStringList {u"x"_s}); });
        row("altNames none", "altNames", [](auto &i) { i.setAltNames(QStringList()); });
        row("altNames text", "altNames", [](auto &i) { i.setAltNames(u"x, y"_s); });
        row("altNames absent", "altNames", [](auto &i) { i.setAltNames(QString()); });
        row("direction", "direction", [](auto &i) { i.setDirection(VXGlyphInfo::BIDI); });
        row("direction not set", "direction", [](auto &i) { i.setDirection(VXGlyphInfo::DirectionNotSet); });
        row("case", "case", [](auto &i) { i.setCase(VXGlyphInfo::other); });
        row("marks, nearly the refused ones", "marks",
            [](auto &i) { i.setMarks(QString(kArabicMarks).replace(u"madda-ar, "_s, u"madda-ar,"_s)); });
    })
    {
        for (const bool isFilled : {false, true}) {
            RecordingOwner owner;
            const InfoPtr info = owner.add();
            if (isFilled)
                fill(*info);
            else if (key == u"desc" || key == u"direction" || key == u"case")
                info->setDesc(u"begin"_s), info->setDirection(VXGlyphInfo::VTR), info->setCase(4);
            owner.manager.removeAllActions();
            owner.manager.setClean();
            owner.heard.clear();

            PlainRecord before = PlainRecord::of(*info);
            edit(*info);
            const PlainRecord after = PlainRecord::of(*info);
            QCOMPARE(owner.heard, QStringList {key});
            QVERIFY(!owner.manager.isClean());
            QCoreApplication::processEvents();
            QCOMPARE(owner.manager.stack()->count(), 1);
            // Undoing sets the code points again, and with them the number of the first.
            if (key == u"unicodes" && before.unicodes.isEmpty())
                before.unicodeChar = 0xFFFFFF;
            for (int round = 0; round < 2; ++round) {
                owner.manager.undo();
                QVERIFY2(PlainRecord::of(*info) == before, qPrintable(PlainRecord::of(*info).toString()));
                QVERIFY(owner.manager.isClean());
                owner.manager.redo();
                QVERIFY2(PlainRecord::of(*info) == after, qPrintable(PlainRecord::of(*info).toString()));
            }
            QCOMPARE(owner.heard.size(), 5);
            QCOMPARE(QSet<QString>(owner.heard.begin(), owner.heard.end()), QSet<QString> {key});
            QCOMPARE(owner.manager.stack()->count(), 1);
        }
    }

    TABLE(someSettersLeaveNoStep, (bool changes, const QString &heard, const Edit &edit), {
        row("index", true, "index", [](auto &i) { i.setIndex(12345678901234567u); });
        row("legacy code point", true, "", [](auto &i) { i.setUnicodeLegacy(u"E000"_s); });
        row("legacy by its old key", true, "",
            [](auto &i) { i.setValueForKey(u"E001"_s, u"unicodeLegecy"_s); });
        row("character slot", true, "", [](auto &i) { i.setUnicharString(u"A"_s); });
        row("the refused marks", false, "", [](auto &i) { i.setMarks(kArabicMarks); });
        row("same case", false, "", [](auto &i) { i.setCase(i.caseValue()); });
        row("same direction", false, "", [](auto &i) { i.setDirection(i.direction()); });
        row("same description", false, "", [](auto &i) { i.setDesc(i.desc()); });
        row("same description by key", false, "",
            [](auto &i) { i.setValueForKey(i.valueForKey(u"desc"_s), u"description"_s); });
        row("ignored key", false, "", [](auto &i) { i.setValueForUndefinedKey(u"x"_s, u"sortNameOld"_s); });
    })
    {
        for (const bool isFilled : {false, true}) {
            RecordingOwner owner;
            const InfoPtr info = owner.add();
            if (isFilled)
                fill(*info);
            owner.manager.removeAllActions();
            owner.manager.setClean();
            owner.heard.clear();
            const PlainRecord before = PlainRecord::of(*info);
            const quint64 index = info->index();
            edit(*info);
            QCOMPARE(PlainRecord::of(*info) != before || info->index() != index, changes);
            QCOMPARE(owner.heard.join(u' '), heard);
            QVERIFY(!owner.manager.canUndo());
            QVERIFY(owner.manager.isClean());
        }
    }

    TABLE(storesCodePoints, (const QStringList &given, const QStringList &stored, quint32 number), {
        row("empty entries go", {u""_s, u"41"_s, u"1f600"_s}, {u"41"_s, u"1F600"_s}, 0x41);
        row("none", {}, {}, 0xFFFFFF);
        row("only empty ones", {u""_s, QString()}, {}, 0xFFFFFF);
        row("prefix", {u"0x41"_s}, {u"0X41"_s}, 0x41);
        row("prefix alone", {u"0x"_s}, {u"0X"_s}, 0);
        row("prefix, no digit", {u"0xg"_s}, {u"0XG"_s}, 0);
        row("as far as there are digits", {u"41g1"_s}, {u"41G1"_s}, 0x41);
        row("no digit", {u"xyz"_s}, {u"XYZ"_s}, 0);
        row("minus", {u"-41"_s}, {u"-41"_s}, 0);
        row("zero", {u"0000"_s}, {u"0000"_s}, 0);
        row("repeated", {u"41"_s, u"41"_s}, {u"41"_s, u"41"_s}, 0x41);
        row("separator inside", {u"41, 42"_s}, {u"41, 42"_s}, 0x41);
    })
    {
        const InfoPtr info = VXGlyphInfo::init();
        info->setUnicodes(given);
        QCOMPARE(info->unicodes(), stored);
        QCOMPARE(info->unicodeChar(), number);
        QCOMPARE(info->unicode(), stored.value(0));
        QCOMPARE(info->unicode().isNull(), stored.isEmpty());
        const InfoPtr added = VXGlyphInfo::init();
        for (const QString &unicode : given)
            added->addUnicode(unicode);
        QCOMPARE(added->unicodes(), stored);
    }

    void copies()
    {
        RecordingOwner owner;
        const InfoPtr info = owner.add();
        fill(*info);
        const InfoPtr copy = info->copy();
        PlainRecord expected = PlainRecord::of(*info);
        for (const QString &left : {u"desc"_s, u"sortNameOld"_s, u"unicharString"_s})
            expected.texts.remove(left);
        expected.unicodeChar = 0;
        QCOMPARE(PlainRecord::of(*copy).toString(), expected.toString());
        QVERIFY(PlainRecord::of(*copy) == expected);
        QCOMPARE(copy->index(), 7u);
        QVERIFY(!copy->document());
        copy->setUnicodes(copy->unicodes());
        QCOMPARE(copy->unicodeChar(), 0x41u);
        // Neither looks at the other afterwards.
        copy->addUnicode(u"43"_s);
        info->setAltNames(QStringList());
        QCOMPARE(info->unicodes().size(), 2);
        QCOMPARE(copy->altNames().size(), 2);
        QVERIFY(!info->isEqualToInfo(info->copy()));
    }

    void archives()
    {
        RecordingOwner owner;
        const InfoPtr info = owner.add();
        fill(*info);
        info->setDirection(VXGlyphInfo::BIDI);
        QVariantMap coder;
        info->encodeWithCoder(coder);
        QByteArray bytes;
        {
            QDataStream out(&bytes, QIODevice::WriteOnly);
            out << coder;
        }
        QVariantMap read;
        QDataStream in(bytes);
        in >> read;
        const InfoPtr decoded = VXGlyphInfo::initWithCoder(read);
        PlainRecord expected = PlainRecord::of(*info);
        expected.texts.remove(u"unicodeLegacy"_s);
        expected.texts.remove(u"unicharString"_s);
        expected.unicodeChar = 0;
        QVERIFY2(PlainRecord::of(*decoded) == expected, qPrintable(PlainRecord::of(*decoded).toString()));
        QCOMPARE(decoded->index(), 7u);
        QCOMPARE(decoded->direction(), -1);
        QVERIFY(!decoded->document());
    }

    void archivesNothingMore()
    {
        const InfoPtr info = VXGlyphInfo::init();
        fill(*info);
        QVariantMap coder;
        info->encodeWithCoder(coder);
        QCOMPARE(
            QStringList(coder.keys()).join(u' '),
            u"altNames anchors case category decompose desc direction index marks name production script "
            "sortName sortNameKeep sortNameOld subCategory unicodes"_s);
        // Without a name in it, the record has none: not even the one that a new record gets.
        const InfoPtr empty = VXGlyphInfo::initWithCoder({});
        QVERIFY(empty->name().isNull());
        QVERIFY(PlainRecord::of(*empty) == PlainRecord());
    }

    void answersByKey()
    {
        RecordingOwner owner;
        const InfoPtr info = owner.add();
        fill(*info);
        for (const QString &key : PlainRecord::textKeys())
            QCOMPARE(info->valueForKey(key), QVariant(QString(u"old "_s + key)));
        QCOMPARE(info->valueForKey(u"unicodes"_s), QVariant(QStringList {u"0041"_s, u"0042"_s}));
        QCOMPARE(info->valueForKey(u"unicode"_s), QVariant(u"0041"_s));
        QCOMPARE(info->valueForKey(u"unicodeChar"_s).toUInt(), 0x41u);
        QCOMPARE(info->valueForKey(u"altNames"_s), QVariant(QStringList {u"b"_s, u"c"_s}));
        QCOMPARE(info->valueForKey(u"direction"_s).toInt(), 1);
        QCOMPARE(info->valueForKey(u"case"_s).toInt(), 2);
        QCOMPARE(info->valueForKey(u"index"_s).toULongLong(), 7u);
        QCOMPARE(info->valueForKey(u"document"_s).value<QObject *>(), &owner);
        for (const QString &key : {u"accents"_s, u"Name"_s, u"description"_s, u""_s}) {
            Error error;
            QVERIFY(!info->valueForKey(key, &error).isValid());
            QVERIFY2(!error.domain.isEmpty(), qPrintable(key));
        }
    }

    TABLE(takesValuesByKey, (const QString &key, const QVariant &value, bool taken), {
        row("text", "name", u"a"_s, true);
        row("absent text", "name", QVariant(QString()), true);
        row("nothing", "name", QVariant(), true);
        row("number for a text", "name", 5, false);
        row("list for a text", "name", QStringList {u"a"_s}, false);
        row("text for unicodes", "unicodes", u"test"_s, false);
        row("text for direction", "direction", u"RTL"_s, false);
        row("text for case", "case", u"upper"_s, false);
        row("text for index", "index", u"5"_s, false);
        row("text for unicodeChar", "unicodeChar", u"5"_s, false);
        row("number for unicodeChar", "unicodeChar", 5, false);
        row("text for document", "document", u"5"_s, false);
        row("list for unicodes", "unicodes", QStringList {u"41"_s}, true);
        row("list of anything for unicodes", "unicodes", QVariantList {u"41"_s}, true);
        row("text for unicode", "unicode", u"41"_s, true);
        row("list for unicode", "unicode", QStringList {u"41"_s}, false);
        row("text for altNames", "altNames", u"a, b"_s, true);
        row("list for altNames", "altNames", QStringList {u"a"_s}, true);
        row("number for direction", "direction", -1, true);
        row("number for case", "case", 3, true);
        row("number for index", "index", 5, true);
    })
    {
        const InfoPtr info = VXGlyphInfo::init();
        fill(*info);
        const PlainRecord before = PlainRecord::of(*info);
        const quint64 index = info->index();
        QCOMPARE(info->setValueForKey(value, key), taken);
        QCOMPARE(PlainRecord::of(*info) != before || info->index() != index, taken);
    }

    /// Whatever the table says of a field is what records do with it.
    void doesWhatTheTableOfFieldsSays()
    {
        for (const FieldRow &row : kFieldTable) {
            if (!isStored(row.field) && row.kind != FieldKind::Choice)
                continue;
            const QString key = keyOfField(row.field);
            RecordingOwner owner;
            const InfoPtr info = owner.add();
            const InfoPtr other = VXGlyphInfo::init();
            info->setDesc(u"same"_s); // records without description never count as equal
            other->setDesc(u"same"_s);
            QVERIFY(info->isEqualToInfo(other));
            owner.heard.clear();
            const QVariant value = row.kind == FieldKind::Choice ? QVariant(2)
                : row.kind == FieldKind::List                    ? QVariant(QStringList {u"0041"_s})
                                                                 : QVariant(u"0041"_s);
            QVERIFY2(info->setValueForKey(value, key), qPrintable(key));
            const QString text = info->displayText(row.field);
            if (row.kind == FieldKind::Text)
                QVERIFY(info->setTextOf(row.field, value.toString()) && text == value.toString());
            else if (row.vocabulary)
                QVERIFY2(row.vocabulary().contains(text), qPrintable(text));
            QCOMPARE(owner.heard.contains(key), row.setter != FieldSetter::Silent);
            const QString line = info->lineXMLFormatVersion(2);
            const InfoPtr read = VXGlyphInfo::initWithLineXMLFileVersion(line.trimmed());
            QVariantMap archive;
            info->encodeWithCoder(archive);
            const auto keeps = [&](const InfoPtr &made) { return made->displayText(row.field) == text; };
            QVERIFY2(keeps(read) == (row.filePlace != 0), qPrintable(line));
            QVERIFY2(keeps(info->copy()) == row.isCopied, qPrintable(key));
            QVERIFY2(keeps(VXGlyphInfo::initWithCoder(archive)) == row.isArchived, qPrintable(key));
            QVERIFY2(info->isEqualToInfo(other) != row.isEquality, qPrintable(key));
        }
    }

    void reportsUnknownKeysOnce()
    {
        QSignalSpy presented(&ErrorPresenter::shared(), &ErrorPresenter::presented);
        const InfoPtr info = VXGlyphInfo::init();
        QVERIFY(info->setValueForKey(u"bar"_s, u"foo"_s));
        QTRY_COMPARE(presented.size(), 1);
        const auto error = presented.first().first().value<Error>();
        QCOMPARE(error.domain, u"User"_s);
        QCOMPARE(error.code, 1);
        QCOMPARE(error.failureReason, u"There is an unknown entry in the file: foo = bar"_s);

        info->setValueForKey(u"baz"_s, u"foo"_s);
        VXGlyphInfo::init()->setValueForUndefinedKey(u"baz"_s, u"foo"_s);
        VXGlyphInfo::initWithLineXMLFileVersion(u"<glyph foo=\"bar\"/>"_s);
        for (const QString &key : {u"description"_s, u"unicodeLegecy"_s, u"sortNameOld"_s})
            info->setValueForUndefinedKey(u"x"_s, key);
        QCOMPARE(info->desc(), u"x"_s);
        QCOMPARE(info->unicodeLegacy(), u"x"_s);
        QVERIFY(info->sortNameOld().isNull());
        QCoreApplication::processEvents();
        QCOMPARE(presented.size(), 1);

        VXGlyphInfo::initWithLineXMLFileVersion(u"<glyph zoo=\"x\" Foo=\"%1\"/>"_s);
        QTRY_COMPARE(presented.size(), 3);
        QCOMPARE(presented.last().first().value<Error>().failureReason,
                 u"There is an unknown entry in the file: Foo = %1"_s);
        QVERIFY(PlainRecord::of(*info).texts.keys()
                == QStringList({u"desc"_s, u"name"_s, u"unicodeLegacy"_s}));
    }

    TABLE(comparesEveryField, (bool equal, const Edit &edit), {
        const QStringList ignored {u"unicodeLegacy"_s, u"sortNameOld"_s, u"unicharString"_s};
        for (const QString &key : PlainRecord::textKeys()) {
            for (const QString &value : {u"new"_s, u""_s, QString()}) {
                row(key + (value.isNull() ? u" absent"_s : u" \"%1\""_s.arg(value)), ignored.contains(key),
                    Edit([=](VXGlyphInfo &info) { info.setValueForKey(value, key); }));
            }
        }
        row("same", true, [](auto &) {});
        row("same texts again", true, [](auto &i) { i.setName(u"old "_s + "name"_L1); });
        row("case", true, [](auto &i) { i.setCase(1); });
        row("index", true, [](auto &i) { i.setIndex(9); });
        row("direction", false, [](auto &i) { i.setDirection(0); });
        row("code points", false, [](auto &i) { i.setUnicodes({u"0042"_s, u"0041"_s}); });
        row("no code points", false, [](auto &i) { i.setUnicodes({}); });
        row("other names", false, [](auto &i) { i.setAltNames(u"c, b"_s); });
        row("other names as text", true, [](auto &i) { i.setAltNames(u"b, c"_s); });
    })
    {
        const InfoPtr one = VXGlyphInfo::init();
        const InfoPtr other = VXGlyphInfo::init();
        fill(*one);
        fill(*other);
        edit(*other);
        QCOMPARE(one->isEqualToInfo(other), equal);
        // Read from two files and compared as bytes it comes to the same.
        const auto reread = [](const InfoPtr &info) {
            return VXGlyphInfo::initWithLineXMLFileVersion(info->lineXMLFormatVersion(2).trimmed());
        };
        if (one->lineXMLFormatVersion(1) != other->lineXMLFormatVersion(1) || equal)
            QCOMPARE(reread(one)->isEqualToInfo(reread(other)), equal);
        QVERIFY(!one->isEqualToInfo(nullptr));
    }

    TABLE(comparesDescriptions, (const QString &mine, const QString &theirs, bool equal), {
        row("absent, absent", QString(), QString(), false);
        row("absent, present", QString(), "d", true);
        row("absent, empty", QString(), "", true);
        row("present, equal", "d", "d", true);
        row("present, different", "d", "e", false);
        row("present, absent", "d", QString(), false);
        row("empty, empty", "", "", true);
        row("empty, absent", "", QString(), false);
    })
    {
        const InfoPtr one = VXGlyphInfo::init();
        const InfoPtr other = VXGlyphInfo::init();
        one->setDesc(mine);
        other->setDesc(theirs);
        QCOMPARE(one->isEqualToInfo(other), equal);
    }

    void describesItself()
    {
        const InfoPtr info = VXGlyphInfo::init();
        const QString pointer = QString::asprintf("%p", static_cast<const void *>(info.get()));
        QCOMPARE(info->description(),
                 u"<GlyphInfo: <%1> N:unknown, U:-, Sc:(null), Cat:(null), SubCat:(null) prod:(null), "
                 "sort:(null)\nAnchors:(null),\nMarks:(null)\nComponents:(null)>"_s.arg(pointer));
        fill(*info);
        QCOMPARE(info->description(),
                 u"<GlyphInfo: <%1> N:old name, U:0041,0042, Sc:old script, Cat:old category, SubCat:old "
                 "subCategory prod:old production, sort:old sortName\nAnchors:old anchors,\nMarks:old marks\n"
                 "Components:old decompose>"_s.arg(pointer));
    }

    // line: absent: an error
    TABLE(printsTableLines, (const QString &keys, const QString &line), {
        row("code point", "unicode name", "0x0041\told name");
        row("lists", "unicodes altNames", "0041, 0042\tb, c");
        row("numbers", "direction case index", "1\t2\t7");
        row("one empty value", "document", "");
        row("accents", "name accents", QString());
    })
    {
        const InfoPtr info = VXGlyphInfo::init();
        fill(*info);
        Error error;
        const QString printed = info->lineTabbed(keys.split(u' '), &error);
        QCOMPARE(printed, line);
        QCOMPARE(printed.isNull(), line.isNull());
        QCOMPARE(error.domain.isEmpty(), !line.isNull());
        info->setUnicode(u"A"_s);
        QCOMPARE(info->lineTabbed({u"unicode"_s, u"desc"_s}), u"A\told desc"_s);
        info->setUnicode(u"41"_s);
        QCOMPARE(info->lineTabbed({u"unicode"_s}), u"0x41"_s);
        info->setUnicodes({});
        info->setScript({});
        QCOMPARE(info->lineTabbed({u"unicode"_s, u"script"_s, u"name"_s}), u"\t\told name"_s);
    }
};

RUNEBOOK_TEST_MAIN(GlyphInfoTest)
#include "GlyphInfoTest.moc"
