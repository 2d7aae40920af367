#include "merge/ThreeWayMerge.h"
#include "document/ConflictMarkers.h"
#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/VXDocument.h"
#include "merge/ConflictBlocks.h"
#include "merge/LineMerge.h"
#include "merge/MergeProgress.h"
#include "merge/MergeReport.h"
#include "merge/MergedText.h"
#include "merge/PossibleRenames.h"
#include "merge/TextConversion.h"
#include "tests/KeptTexts.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QRegularExpression>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// A file in a word for each line: "A=Letter,top+bottom" is a record with category and anchors, "#note" a
/// comment.
QByteArray fileOf(const QString &words, const char *lineEnd = "\n", quint8 version = 2)
{
    QString body;
    for (const QString &word : words.split(u' ', Qt::SkipEmptyParts)) {
        if (word.startsWith(u'#')) {
            body += u"\t<!-- %1 -->\n"_s.arg(word.sliced(1));
            continue;
        }
        VXGlyphInfo info;
        info.setDirection(VXGlyphInfo::DirectionNotSet);
        info.setName(word.section(u'=', 0, 0));
        const QString values = word.section(u'=', 1);
        info.setCategory(values.section(u',', 0, 0));
        info.setAnchors(values.section(u',', 1, 1).replace(u'+', ", "_L1));
        info.setMarks(values.section(u',', 2, 2));
        info.setUnicodes(values.section(u',', 3).split(u'+'));
        body += info.lineXMLFormatVersion(version);
    }
    QByteArray file = QByteArray::fromStdString(GlyphDataWriter::header(version)) + body.toUtf8()
        + QByteArray("</glyphData>\n");
    return file.replace("\n", lineEnd);
}

/// The words of a text; a conflict is "<ours|base|theirs>".
QString wordsOf(QByteArray text)
{
    QString words;
    QRegularExpression comment(u"<!-- (.*) -->"_s);
    for (const QByteArray &line : text.replace("\r", "").split('\n')) {
        const QString trimmed = QString::fromUtf8(line).trimmed();
        const ConflictMarker marker = conflictMarker({line.constData(), std::size_t(line.size())});
        if (marker == ConflictMarker::Ours)
            words += u" <"_s;
        else if (marker == ConflictMarker::Base || marker == ConflictMarker::Theirs)
            words += u" |"_s;
        else if (marker == ConflictMarker::End)
            words += u" >"_s;
        else if (trimmed.startsWith("<!--"_L1))
            words += " #"_L1 + comment.match(trimmed).captured(1);
        else if (const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(trimmed)) {
            QString values = QStringList {info->category(), info->anchors().replace(", "_L1, "+"_L1),
                                          info->marks(), info->unicodes().join(u'+')}
                                 .join(u',');
            while (values.endsWith(u','))
                values.chop(1);
            words += u' ' + info->name() + (values.isEmpty() ? QString() : u'=' + values);
        }
    }
    return words.replace("< "_L1, "<"_L1)
        .replace(" |"_L1, "|"_L1)
        .replace("| "_L1, "|"_L1)
        .replace(" >"_L1, ">"_L1)
        .trimmed();
}

QByteArray merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs,
                  const MergeOptions &options = {})
{
    Error error;
    const auto merge = ThreeWayMerge::of(base, ours, theirs, options, &error);
    return merge ? textOf(*merge) : ("refused: " + error.failureReason.toUtf8());
}

/// A table that random edits work on: values by record and field.
struct Model {
    using Record = QMap<QString, QString>;
    QStringList order;
    QMap<QString, Record> records;

    /// The same as another program writes it: blanks and the order of attributes differ, lines end otherwise,
    /// and the last one does not.
    QByteArray otherForm(QRandomGenerator &random, int header) const
    {
        QByteArray text = file().replace("\n</glyphData>\n", "\n</glyphData>");
        text.replace(text.indexOf('\n'), 1, "\n<!-- header " + QByteArray::number(header) + " -->\n");
        QList<QByteArray> lines = text.split('\n');
        for (QByteArray &line : lines) {
            const qsizetype name = line.indexOf(" name=\"");
            if (name < 0 || random.bounded(3) == 0)
                continue;
            const qsizetype end = line.indexOf('"', name + 7) + 1;
            const QByteArray attribute = line.mid(name, end - name);
            line.remove(name, attribute.size());
            line.insert(random.bounded(2) ? line.indexOf("<glyph") + 6 : line.lastIndexOf('/') - 1,
                        QByteArray(random.bounded(2), ' ') + attribute);
        }
        return lines.join(random.bounded(2) ? "\n" : "\r\n");
    }
    QByteArray file() const
    {
        QString body;
        for (const QString &name : order) {
            VXGlyphInfo info;
            info.setName(name);
            for (auto value = records[name].cbegin(); value != records[name].cend(); ++value) {
                const bool isList = value.key() == "altNames"_L1 || value.key() == "unicodes"_L1;
                if (value.key() == "case"_L1)
                    info.setCase(value->toInt());
                else
                    info.setValueForKey(isList ? QVariant(value->split(kListSeparator)) : QVariant(*value),
                                        value.key());
            }
            body += info.lineXMLFormatVersion(2);
        }
        return QByteArray::fromStdString(GlyphDataWriter::header(2)) + body.toUtf8() + "</glyphData>\n";
    }
};

const QStringList kTexts {u"category"_s, u"script"_s, u"desc"_s, u"case"_s};
const QStringList kLists {u"anchors"_s, u"altNames"_s, u"marks"_s, u"decompose"_s, u"unicodes"_s};

class Editor
{
public:
    explicit Editor(quint32 seed) : m_random(seed) { }
    Model make()
    {
        Model model;
        for (int i = below(8); i >= 0; --i)
            add(model);
        return model;
    }
    Model edited(Model model)
    {
        for (int i = below(6); i > 0; --i) {
            if (below(5) == 0 || model.order.isEmpty()) {
                add(model);
                continue;
            }
            const QString name = model.order.at(below(int(model.order.size())));
            if (below(8) == 0) {
                model.order.removeOne(name);
                model.records.remove(name);
            } else if (below(8) == 0) {
                model.order.removeOne(name);
                model.order.insert(below(int(model.order.size()) + 1), name);
            } else {
                change(model.records[name]);
            }
        }
        return model;
    }

private:
    int below(int end) { return m_random.bounded(end); }
    void add(Model &model)
    {
        const QString name = QChar(u'A' + below(14));
        if (model.records.contains(name))
            return;
        model.order.insert(below(int(model.order.size()) + 1), name);
        model.records.insert(name, {});
        for (int i = below(3); i > 0; --i)
            change(model.records[name]);
    }
    void change(Model::Record &record)
    {
        if (below(2)) {
            const QString &key = kTexts.at(below(int(kTexts.size())));
            if (const int value = below(4))
                record[key] = QString::number(value);
            else
                record.remove(key);
            return;
        }
        const QString &key = kLists.at(below(int(kLists.size())));
        QStringList entries = record.value(key).split(kListSeparator, Qt::SkipEmptyParts);
        const QString entry = QString::number(0xA0 + below(6), 16).toUpper();
        if (!entries.removeOne(entry) && (key != "unicodes"_L1 || entries.size() < 2))
            entries.insert(below(int(entries.size()) + 1), entry);
        if (entries.isEmpty())
            record.remove(key);
        else
            record[key] = entries.join(kListSeparator);
    }

    QRandomGenerator m_random;
};

/// The records of a text by name and field.
Model readBack(const QByteArray &text)
{
    Model model;
    for (const InfoPtr &info : GlyphDataReader().read(text)) {
        model.order << info->name();
        Model::Record &record = model.records[info->name()];
        for (const QString &key : kTexts + kLists) {
            const QVariant value = info->valueForKey(key);
            const QString shown = value.typeId() == QMetaType::QStringList
                ? value.toStringList().join(kListSeparator)
                : value.toString();
            if (!shown.isEmpty() && (key != "case"_L1 || shown != "0"_L1))
                record[key] = shown;
        }
    }
    return model;
}

/// The conflicts of a merge as "name.field" or "name", in order.
QStringList conflictsOf(const ThreeWayMerge &merge)
{
    QStringList conflicts;
    for (const RecordMerge &record : merge.records()) {
        if (record.conflict == ConflictKind::RemovedByThem || record.conflict == ConflictKind::RemovedByUs)
            conflicts << merge.keyOf(record);
        for (const FieldMerge &field : record.fields) {
            if (field.state == MergeState::Conflict)
                conflicts << merge.keyOf(record) + u'.' + keyOfField(field.field);
        }
    }
    conflicts.sort();
    return conflicts;
}

QSet<QString> entriesOf(const Model::Record &record, const QString &key)
{
    const QStringList entries = record.value(key).split(kListSeparator, Qt::SkipEmptyParts);
    return {entries.begin(), entries.end()};
}

/// Says what is wrong with the merge of three models; null when nothing is.
QString objection(const Model &base, const Model &ours, const Model &theirs)
{
    auto merge = ThreeWayMerge::of(base.file(), ours.file(), theirs.file(), {});
    MergeOptions preferring;
    preferring.prefer = MergeSide::Ours;
    const QByteArray text = merged(base.file(), ours.file(), theirs.file(), preferring);
    const QByteArray marked = textOf(*merge);
    const auto sides = sidesOfConflicts(marked);
    if (sides[1] != text)
        return u"our sides are not what is preferred"_s;
    if (merged(sides[0], sides[1], sides[2]) != marked)
        return u"the sides of the conflicts do not give them again"_s;
    const Model result = readBack(text);
    const QStringList conflicts = conflictsOf(*merge);
    QStringList expected;
    QSet<QString> names;
    for (const Model *model : {&base, &ours, &theirs})
        names.unite({model->order.begin(), model->order.end()});
    for (const QString &name : names) {
        const bool inBase = base.records.contains(name);
        const bool inOurs = ours.records.contains(name);
        const bool inTheirs = theirs.records.contains(name);
        const Model::Record b = base.records.value(name), o = ours.records.value(name),
                            t = theirs.records.value(name), r = result.records.value(name);
        if (inBase && inOurs != inTheirs && (inOurs ? o : t) != b)
            expected << name;
        const bool isThere = inOurs && inTheirs ? true
            : !inBase                           ? inOurs || inTheirs
            : inOurs                            ? o != b
                                                : false; // removed by us, which is preferred
        if (result.records.contains(name) != isThere)
            return name + u": is there or not"_s;
        if (!isThere || inOurs != inTheirs) {
            if (isThere && r != (inOurs ? o : t))
                return name + u": is not as its side has it"_s;
            continue;
        }
        for (const QString &key : kTexts) {
            const QString wanted = t.value(key) == b.value(key) ? o.value(key)
                : o.value(key) == b.value(key)                  ? t.value(key)
                                                                : o.value(key);
            if (r.value(key) != wanted)
                return name + u'.' + key + u": "_s + r.value(key);
            if (wanted != t.value(key) && o.value(key) != b.value(key) && t.value(key) != b.value(key))
                expected << name + u'.' + key;
        }
        for (const QString &key : kLists) {
            const QString field = name + u'.' + key;
            const bool isConflict = conflicts.contains(field);
            const bool bothChanged =
                o.value(key) != b.value(key) && t.value(key) != b.value(key) && o.value(key) != t.value(key);
            if (isConflict)
                expected << field;
            if (isConflict && !bothChanged)
                return field + u": conflicts, though not both changed it"_s;
            if (isConflict || !bothChanged) {
                const QString wanted =
                    isConflict || t.value(key) == b.value(key) ? o.value(key) : t.value(key);
                if (r.value(key) != wanted)
                    return field + u": "_s + r.value(key);
                continue;
            }
            const auto bs = entriesOf(b, key), os = entriesOf(o, key), ts = entriesOf(t, key);
            if (entriesOf(r, key) != (os & ts) + (os - bs) + (ts - bs))
                return field + u": "_s + r.value(key);
        }
    }
    for (std::size_t i = 0; i < merge->records().size(); ++i) {
        if (merge->records()[i].result == RecordMerge::Result::Conflict)
            merge->resolve(i, MergeSide::Ours);
    }
    if (textOf(*merge) != text)
        return u"what is resolved is not what is preferred"_s;
    for (const RecordMerge &record : merge->records()) {
        const InfoPtr info = merge->resultOf(record);
        if (info && !text.contains(info->lineXMLFormatVersion(2).toUtf8()))
            return merge->keyOf(record) + u": is another record than the one that is written"_s;
    }
    expected.sort();
    return conflicts == expected ? QString() : u"conflicts: "_s + conflicts.join(u' ');
}

} // namespace

class ThreeWayMergeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    TABLE(tablesMerge,
          (const QString &base, const QString &ours, const QString &theirs, const QString &result), {
              row("each edits a neighbour", "A B", "A=x B", "A B=y", "A=x B=y");
              row("each edits a field", "A=x,top", "A=y,top", "A=x,top+low", "A=y,top+low");
              row("one change twice", "A=x", "A=y", "A=y", "A=y");
              row("one field differently", "A=x", "A=y,top", "A=z", "<A=y,top|A=x,top|A=z,top>");
              row("removed against edited", "A B=x C", "A C", "A B=y C", "A <|B=x|B=y> C");
              row("edited against removed", "A B=x C", "A B=y C", "A C", "A <B=y|B=x|> C");
              row("removed twice", "A B", "A", "A", "A");
              row("additions of both", "A B", "A X B", "A Y B", "A Y X B");
              row("an addition follows its neighbour", "A B C", "A B C N", "A M B C", "A M B C N");
              row("additions in a row", "A B", "B", "A M N B", "M N B");
              row("an addition before all", "A B", "A B", "M A B", "M A B");
              row("one key added twice", "A", "A N=x", "A N=x,top", "A N=x,top");
              row("one key added differently", "A", "A N=x", "A N=y", "A <N=x||N=y>");
              row("their move", "A B C D", "A=x B C D", "B C D A", "B C D A=x");
              row("our move stays", "A B C", "C A B", "A B C=x", "C=x A B");
              row("both moved", "A B C D", "D A B C", "A C D B", "D B A C");
              row("anchors by entry", "A=,top+low", "A=,top+low+x", "A=,low+y", "A=,low+x+y");
              row("an anchor replaced twice", "A=,top", "A=,x", "A=,y", "<A=,x|A=,top|A=,y>");
              row("anchors in another order", "A=,a+b", "A=,b+a", "A=,a+b+c", "<A=,b+a|A=,a+b|A=,a+b+c>");
              row("a third code point", "A=,,,41", "A=,,,41+42", "A=,,,41+43",
                  "<A=,,,41+42|A=,,,41|A=,,,41+43>");
              row("comments of ours stay", "A B", "#one A #two B", "A=x B=y", "#one A=x #two B=y");
              row("comments of theirs come", "A B", "A=x B", "A #two B", "A=x #two B");
              row("comments of both", "A B", "#one A B", "#two A B", "#one #two A B");
              row("a comment before a removed record", "A #b B C", "A=x #b B C", "A #b C", "A=x #b C");
              row("an addition behind a comment", "A #b B", "A #b B=x", "A #b N B", "A #b N B=x");
              row("a repeated key, left alone", "A A=x B", "A A=x B=y", "A A=x B C", "A A=x B=y C");
              row("a repeated key, one side", "A=1 A=2", "A=1 A=3", "A=1 A=2 B", "A=1 A=3 B");
              row("a repeated key, other records", "A=1 A=2", "A=3 A=2", "A=1 A=4", "A=3 A=4");
              row("a repeated key, one record", "A=1 A=2", "A=3 A=2", "A=4 A=2",
                  "refused: Both sides changed records of the key “A”, which several records have.");
              row("nothing at all", "", "", "", "");
              row("all removed, one edited", "A B=x", "", "A B=y", "<|B=x|B=y>");
          })
    {
        const QByteArray text = merged(fileOf(base), fileOf(ours), fileOf(theirs));
        QCOMPARE(text.startsWith("refused") ? QString::fromUtf8(text) : wordsOf(text), result);
        if (text.startsWith("refused"))
            return;
        // However lines end on their side, the result has our ends.
        QCOMPARE(merged(fileOf(base), fileOf(ours), fileOf(theirs, "\r\n")), text);
        const QByteArray asOurs = merged(fileOf(base), fileOf(ours, "\r\n"), fileOf(theirs));
        QCOMPARE(wordsOf(asOurs), result);
        QCOMPARE(asOurs.count("\r\n"), asOurs.count('\n'));
    }

    TABLE(entriesMerge,
          (const QString &base, const QString &ours, const QString &theirs, const QString &free,
           const QString &ordered),
          {
              row("both add at the end", "a", "a b", "a c", "a b c", "-");
              row("both add at different places", "m", "a m", "m z", "a m z", "a m z");
              row("add and remove", "a b", "a", "a b c", "a c", "a c");
              row("both remove", "a b c", "b c", "a b", "b", "b");
              row("both replace", "a", "b", "c", "-", "-");
              row("replace and remove", "a b", "x b", "b", "-", "-");
              row("the same addition at two places", "m", "a m", "m a", "-", "-");
              row("an entry twice", "a", "a a", "a b", "-", "-");
              row("the same additions in another order", "m", "a b m", "b a m", "-", "-");
          })
    {
        const auto listOf = [](const QString &words) { return words.split(u' ', Qt::SkipEmptyParts); };
        const auto result = [&](EntryOrder order) {
            const auto entries = mergeEntries(listOf(base), listOf(ours), listOf(theirs), order);
            return entries ? entries->join(u' ') : u"-"_s;
        };
        QCOMPARE(result(EntryOrder::Free), free);
        QCOMPARE(result(EntryOrder::Meant), ordered);
    }

    TABLE(whatCannotBeMergedIsRefused, (const QByteArray &theirs, const QString &reason), {
        row("<svg/>\n", "It is no glyph data file.");
        row("<glyphData>\n<!-- open\n<glyph name=\"A\" />\n", "Line 4: A comment is not closed.");
        row("<glyphData>\n<glyph name=\"A\" /> <!--\n-->\n",
            "Line 2: A comment begins behind a glyph and goes on below.");
        row("<glyphData>\n<glyph name=\"A\"\n />\n", "Line 2: A glyph goes on below its line.");
        row("<glyphData>\n<glyph name=\"A\" /><glyph name=\"B\" />\n",
            "Line 2: A glyph does not stand on a line of its own.");
        row("<glyphData><glyph name=\"A\" />\n", "Line 1: A glyph does not stand on a line of its own.");
        row("<glyphData>\n<<<<<<< ours\n<glyph name=\"A\" />\n",
            "Line 2: It has conflicts that are not resolved.");
    })
    {
        QCOMPARE(QString::fromUtf8(merged(fileOf(u"A"_s), fileOf(u"A=x"_s), theirs)),
                 "refused: "_L1 + reason);
    }

    /// notes: the lines that readers tell of, and what they take them for
    TABLE(readersTellOfConflicts, (const QString &lines, const QString &records, const QString &notes), {
        row("none", "A|B", "A B", "");
        row("one", "A|<<<<<<< ours: x|B|||||||| base: x|B|=======|B|>>>>>>> theirs: x|C", "A B B B C",
            "conflict 1");
        row("at the beginning", "<<<<<<< ours|A|=======|>>>>>>> theirs|B", "A B", "conflict 0");
        row("without records", "<<<<<<< ours|=======|>>>>>>> theirs", "", "conflict 0");
        row("two", "<<<<<<<|A|=======|B|>>>>>>>|C|<<<<<<<|=======|D|>>>>>>>", "A B C D",
            "conflict 0, conflict 3");
        row("long markers", "<<<<<<<<<|A|=======|=========|B|>>>>>>>>>", "A B", "conflict 0");
        row("without an end", "A|<<<<<<< ours|B|=======|C", "A B C", "conflict 1, line 2");
        row("without a beginning", "A|=======|B|>>>>>>> theirs", "A B", "line 1, line 2");
        row("in a comment", "A|<!--|<<<<<<< ours|B|=======|>>>>>>> theirs|-->|C", "A C", "line 1");
    })
    {
        QByteArray text = "<glyphData format=\"2\">\n";
        QString all = lines;
        all.replace("||||||||"_L1, "|BASE"_L1);
        for (const QString &line : all.split(u'|')) {
            const bool isRecord = line.size() == 1;
            text += isRecord ? "\t<glyph name=\"" + line.toUtf8() + "\" />\n"
                             : line.toUtf8().replace("BASE", "|||||||") + '\n';
        }
        GlyphDataReader reader;
        QStringList names;
        for (const InfoPtr &info : reader.read(text + "</glyphData>\n"))
            names << info->name();
        QCOMPARE(names.join(u' '), records);
        QStringList told;
        for (const ReadNotes::Note &note : reader.notes().notes) {
            told << (note.kind == ReadNotes::Conflict ? u"conflict %1"_s : u"line %1"_s).arg(note.record);
            QVERIFY(text.mid(note.offset).startsWith(note.text.toUtf8()));
        }
        QCOMPARE(told.join(", "_L1), notes);
        QCOMPARE(reader.notes().count(ReadNotes::Conflict), told.filter(u"conflict"_s).size());
        // Whoever is asked before a save hears of it first.
        VXDocument document;
        QVERIFY(document.readFromData(text + "</glyphData>\n", u"public.xml"_s));
        QCOMPARE(document.savingWillChange().value(0).contains("conflict"_L1), notes.contains("conflict"_L1));
    }

    void linesThatHoldMoreAreNeverTakenApart()
    {
        const auto file = [](const char *attributes) {
            return "<glyphData format=\"2\">\n<glyph name=\"A\" " + QByteArray(attributes)
                + "/>\n</glyphData>\n";
        };
        const QByteArray text =
            merged(file("mine=\"1\" "), file("mine=\"1\" category=\"x\" "), file("mine=\"2\" "));
        QCOMPARE(text.count("mine="), 3);
        QCOMPARE(std::ssize(conflictsIn(text.toStdString())), 1);
        // Untouched lines keep their bytes whatever their form.
        const QByteArray odd = "<glyphData>\n  <glyph  name='A' category=\"x\"></glyph>\t\n</glyphData>";
        QCOMPARE(merged(odd, odd, odd + "\n"), odd + "\n");
    }

    void versionsMerge()
    {
        const QByteArray text = merged(fileOf(u"A=,,m B"_s, "\n", 1), fileOf(u"A=,,m B=x,,n"_s, "\n", 1),
                                       fileOf(u"A=,,m B C"_s, "\n", 2));
        QCOMPARE(text, fileOf(u"A=,,m B=x,,n C"_s)); // what only we have changed as well
        QCOMPARE(merged(fileOf(u"A=,,m B"_s), fileOf(u"A=,,m B=x"_s), fileOf(u"A=,,m B"_s, "\n", 1)),
                 fileOf(u"A=,,m B=x"_s));
    }

    void keysOfOtherKinds()
    {
        MergeOptions options;
        options.key = CompareKey::Unicode;
        QCOMPARE(wordsOf(merged(fileOf(u"A=x,,,0041 B"_s), fileOf(u"A=y,,,0041 B"_s),
                                fileOf(u"Alpha=x,,,0041 B=z"_s), options)),
                 u"Alpha=y,,,0041 B=z"_s);
        const auto merge = ThreeWayMerge::of(fileOf(u"A=x,,,0041"_s), fileOf(u"A=y,,,0041"_s),
                                             fileOf(u"Alpha=x,,,0041"_s), {});
        const auto renames = possibleRenames(*merge);
        QCOMPARE(renames.size(), std::size_t(1));
        const PossibleRename &rename = renames.front();
        QCOMPARE(merge->keyOf(merge->records()[rename.from]) + merge->keyOf(merge->records()[rename.to]),
                 u"AAlpha"_s);
        QVERIFY(rename.isInConflict);
        // As one record it has the edits of both sides.
        const RecordMerge whole = mergeRecord(merge->tables(), placesOfRename(*merge, rename));
        const InfoPtr renamed = mergedRecord(merge->tables(), whole, MergeSide::Ours);
        QCOMPARE(renamed->name() + renamed->category(), u"Alphay"_s);
        QVERIFY(possibleRenames(*merge, 1).empty()); // of too many
    }

    /// Every kind of conflict, several renames, and what each side did: in words and for programs.
    void reportsAllThatHappened()
    {
        const auto side = [](const QByteArray &comment, const QByteArray &records) {
            QByteArray lines = records;
            lines.replace("{", "\t<glyph name=\"").replace("}", " />\n").replace("'", "\"");
            return "<!-- " + comment + " -->\n<glyphData format=\"2\">\n" + lines + "</glyphData>\n";
        };
        const QByteArray base = side("base",
                                     "{A' category='x'}{B' category='x'}{C' category='x'}{D'}{F' "
                                     "unicode='0046'}{E' unicode='0045'}{G'}{H'}{I'}{L' mine='1'}");
        const QByteArray ours = side("ours",
                                     "{A' category='y'}{B' category='y'}{D' category='s'}{F' "
                                     "unicode='0046'}{E' unicode='0045'}{G' script='o'}{H'}{I' "
                                     "script='o'}{L' mine='2'}{N' category='o'}");
        const QByteArray theirs = side("theirs",
                                       "{A' category='z'}{C' category='z'}{D' category='s'}{F.alt' "
                                       "unicode='0046'}{E.alt' unicode='0045'}{G'}{H' "
                                       "script='t'}{I' category='t'}{L' mine='3'}{N' "
                                       "category='t'}");
        const auto merge = ThreeWayMerge::of(base, ours, theirs, {});
        QVERIFY(merge);
        QString report;
        QTextStream out(&report);
        writeMergeReport(*merge, u"a.xml"_s, out);
        writeMergeJson(*merge, u"a.xml"_s, out);
        COMPARE_LINES(u"merge-report"_s, report.replace("},{"_L1, "},\n{"_L1).trimmed().split(u'\n'));
    }

    void tellsHowFarItIsAndEnds()
    {
        QByteArray text = "<glyphData format=\"2\">\n";
        for (int record = 0; record < 40'000; ++record)
            text += "\t<glyph name=\"g" + QByteArray::number(record) + "\" category=\"Letter\" />\n";
        MergeProgress progress;
        MergeOptions options;
        options.progress = &progress;
        QVERIFY(ThreeWayMerge::of(text, text, text, options));
        QVERIFY(progress.percent() > 50 && progress.percent() <= 100);
        progress.cancel();
        Error error;
        QVERIFY(!ThreeWayMerge::of(text, text, text, options, &error));
        QCOMPARE(error.domain, u"MergeError"_s);
    }

    void everyLawHoldsForRandomTables()
    {
        for (quint32 seed = 1; seed <= quint32(rounds(1500)); ++seed) {
            Editor editor(seed);
            const Model base = editor.make();
            const Model ours = editor.edited(base);
            const Model theirs = editor.edited(base);
            const QByteArray b = base.file(), o = ours.file(), t = theirs.file();
            const auto picture = [&](const QString &text) {
                return (text + u" (seed %1)\n"_s.arg(seed)).toUtf8() + b + o + t + merged(b, o, t);
            };
            QVERIFY2(merged(b, o, b) == o, picture(u"base with ours is ours"_s).constData());
            QVERIFY2(merged(b, b, t) == t, picture(u"base with theirs is theirs"_s).constData());
            QVERIFY2(merged(b, o, o) == o, picture(u"the same twice is once"_s).constData());
            for (const QString &wrong : {objection(base, ours, theirs), objection(base, theirs, ours)})
                QVERIFY2(wrong.isNull(), picture(wrong).constData());
            const auto one = ThreeWayMerge::of(b, o, t, {}), other = ThreeWayMerge::of(b, t, o, {});
            QCOMPARE(conflictsOf(*one), conflictsOf(*other));
        }
    }

    void otherFormsMergeAsOurOwn()
    {
        const auto records = [](const QByteArray &text) { return readBack(text).records; };
        for (quint32 seed = 1; seed <= quint32(rounds(300)); ++seed) {
            Editor editor(seed);
            QRandomGenerator random(seed);
            const Model models[] {editor.make(), editor.edited(models[0]), editor.edited(models[0])};
            int headers[3];
            QByteArray forms[3];
            for (int side = 0; side < 3; ++side)
                forms[side] = models[side].otherForm(random, headers[side] = random.bounded(3));
            for (const MergeSide side : {MergeSide::Ours, MergeSide::Theirs}) {
                MergeOptions options;
                options.prefer = side;
                options.key = random.bounded(2) ? CompareKey::Name : CompareKey::Unicode;
                const QByteArray text = merged(forms[0], forms[1], forms[2], options);
                const QByteArray plain =
                    merged(models[0].file(), models[1].file(), models[2].file(), options);
                if (text.startsWith(
                        "refused")) { // of several records with one code point, any form is another
                    QVERIFY(options.key == CompareKey::Unicode && text.contains("several records"));
                    continue;
                }
                QCOMPARE(records(text), records(plain));
                const bool isOurs =
                    headers[2] == headers[0] || (side == MergeSide::Ours && headers[1] != headers[0]);
                QVERIFY2(text.contains("header " + QByteArray::number(headers[isOurs ? 1 : 2])), text);
            }
        }
    }

    /// Whatever stands between the records, and however a file ends.
    void linesOfTheirsStandAlone()
    {
        const QByteArray head = "<glyphData format=\"2\">\n", end = "</glyphData>";
        const QByteArray ours = head + "<!-- o -->\n" + end + "\n<!-- ours -->";
        const QByteArray theirs = head + "<!-- t -->\n" + end + "\n<!-- theirs -->";
        const QByteArray text = merged(head + end, ours, theirs);
        for (const char *line :
             {"<!-- o -->", "<!-- t -->", "</glyphData>", "<!-- ours -->", "<!-- theirs -->"})
            QVERIFY2(text.split('\n').count(line) == 1, text);
    }

    /// Without version control at hand.
    void linesMergeByThoseInCommon()
    {
        const std::array<QString, 3> labels {u"b"_s, u"o"_s, u"t"_s};
        const auto merged = [&labels](const QByteArray &base, const QByteArray &ours,
                                      const QByteArray &theirs) {
            return mergeByCommonLines({base, ours, theirs}, 7, labels);
        };
        QCOMPARE(merged("a\nb\nc\nd\ne", "A\nb\nc\nd\ne", "a\nb\nc\nD\nx\ne").text, "A\nb\nc\nD\nx\ne");
        QCOMPARE(merged("a\nb\nc", "a\nB\nc", "a\nbb\nc").text,
                 "a\n<<<<<<< o\nB\n||||||| b\nb\n=======\nbb\n>>>>>>> t\nc");
        for (quint32 seed = 1; seed <= 500; ++seed) {
            QRandomGenerator random(seed);
            const auto text = [&random] {
                QByteArray lines;
                for (int i = random.bounded(8); i > 0; --i)
                    lines += "abcdef"[random.bounded(6)] + QByteArray(random.bounded(7) ? "\n" : "");
                return lines;
            };
            const QByteArray base = text(), ours = text(), theirs = text();
            QCOMPARE(merged(base, ours, base).text, ours);
            QCOMPARE(merged(base, base, theirs).text, theirs);
            QCOMPARE(merged(base, ours, ours).text, ours);
            const LineMerge merge = merged(base, ours, theirs);
            QCOMPARE(!conflictsIn(std::string_view(merge.text.constData(), std::size_t(merge.text.size())))
                          .empty(),
                     merge.hasConflicts);
            for (const QByteArray &side : {ours, theirs}) {
                for (const QByteArray &line : side.split('\n'))
                    QVERIFY2(base.split('\n').contains(line) || merge.text.split('\n').contains(line),
                             (base + "|" + ours + "|" + theirs + "|" + merge.text).constData());
            }
        }
    }

    void textsForLineTools()
    {
        QBuffer out;
        out.open(QIODevice::WriteOnly);
        QVERIFY(writeTextConversion(
            "<glyphData>\n\t<!-- <glyph name=\"no\" />\n-->\n\t<glyph unicode=\"0041\" name=\"A\" "
            "category=\"Letter\" mine=\"1\" />\n</glyphData>\n",
            out));
        QCOMPARE(
            out.data(),
            "<glyphData>\n<!-- <glyph name=\"no\" />\n-->\nA\n    unicodes: 0041\n    category: Letter\n"
            "    line: <glyph unicode=\"0041\" name=\"A\" category=\"Letter\" mine=\"1\" />\n</glyphData>\n");
    }
};

RUNEBOOK_TEST_MAIN(ThreeWayMergeTest)
#include "ThreeWayMergeTest.moc"
