// What a file cannot hold: told before it is lost, kept by autosaving. What makes a document edited, and what
// is told of files in another form.
#include "document/AutosaveForm.h"
#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/VXDocument.h"
#include "model/FileText.h"
#include "platform/documents/Originals.h"
#include "tests/Files.h"
#include "tests/RandomValues.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QString kXML = u"public.xml"_s;
QByteArray fileWith(const QByteArray &lines)
{
    return QByteArray::fromStdString(GlyphDataWriter::header(2)) + lines + "</glyphData>\n";
}

const QByteArray kLines =
    "\t<glyph name=\"a\" />\n\t<glyph unicode=\"0041\" name=\"b\" category=\"Letter\" />\n"
    "\t<glyph name=\"c\" description=\"x\" />\n";

} // namespace

using Operation = std::function<void(VXDocument &document)>;
Q_DECLARE_METATYPE(Operation)

class UnkeptValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
        write(path(u"a.xml"_s), fileWith(kLines));
    }

    /// Whatever is set, after a save it is in the file, or it was listed, or nothing was written.
    void keepsRefusesOrLists()
    {
        Dice dice(20);
        int outcomes[3] = {};
        for (int round = 0; round < rounds(600); ++round) {
            write(path(u"a.xml"_s), fileWith(kLines));
            const std::unique_ptr<VXDocument> document = opened();
            document->setFileVersion(round % 4 ? 2 : 1);
            const QByteArray before = contentOf(path(u"a.xml"_s));
            dice.change(*document->objectInInfosAtIndex(1));
            if (round % 3 == 0)
                dice.change(*document->objectInInfosAtIndex(0));
            const SavingLosses losses = document->savingLosses(kXML);
            Error error;
            const bool isSaved = document->saveDocument(&error);
            QCOMPARE(isSaved, losses.isEmpty());
            QList<qsizetype> listed;
            if (!isSaved) {
                QCOMPARE(error.domain, u"SavingLossesError"_s);
                QCOMPARE(error.code, losses.takingOthers > 0 ? 2 : 1);
                QCOMPARE(contentOf(path(u"a.xml"_s)), before);
                for (const SavingLoss &loss : losses.listed) {
                    QVERIFY(!loss.field.isEmpty() && !loss.sentence.isEmpty());
                    listed << loss.place;
                }
                QDir(Originals::folder()).removeRecursively(); // of earlier rounds
                document->acceptSavingLosses();
                const bool isSavedNow = document->saveDocument(&error);
                QCOMPARE(isSavedNow, losses.takingOthers == 0);
                QCOMPARE(originals(), isSavedNow ? 1 : 0);
            }
            ++outcomes[isSaved ? 0 : error.code];
            if (losses.takingOthers > 0) {
                QCOMPARE(contentOf(path(u"a.xml"_s)), before);
                continue;
            }
            const InfoList again = GlyphDataReader().read(contentOf(path(u"a.xml"_s)));
            if (isSaved)
                QCOMPARE(std::ssize(again), document->countOfInfos());
            // The records that were not listed are all there, in their order.
            auto next = again.begin();
            for (qsizetype place = 0; place < document->countOfInfos(); ++place) {
                if (listed.contains(place))
                    continue;
                const QVariantList values = valuesOf(*document->objectInInfosAtIndex(place));
                next = std::find_if(next, again.end(),
                                    [&values](const InfoPtr &info) { return valuesOf(*info) == values; });
                QVERIFY2(next != again.end(), qPrintable(QString::number(round)));
                ++next;
            }
        }
        for (const int count : outcomes)
            QVERIFY2(count >= 50,
                     qPrintable(u"%1 %2 %3"_s.arg(outcomes[0]).arg(outcomes[1]).arg(outcomes[2])));
    }

    void asksOnceForEachLoss()
    {
        const std::unique_ptr<VXDocument> document = opened();
        document->objectInInfosAtIndex(0)->setDesc(u"the \"A\""_s);
        document->acceptSavingLosses();
        QVERIFY(document->saveDocument());
        document->objectInInfosAtIndex(1)->setName(u"edited"_s);
        QVERIFY(document->saveDocument()); // it was told
        document->objectInInfosAtIndex(0)->setScript(u"a\nb"_s);
        QVERIFY(!document->saveDocument()); // that is another one
        QCOMPARE(originals(), 1);
    }

    void fixesWhatItCan()
    {
        const std::unique_ptr<VXDocument> document = opened();
        const InfoList infos = document->infos();
        infos[0]->setSortName(u"q <!-- c --> d"_s);
        infos[0]->setDesc(u"the \"A\"\nand more"_s);
        infos[1]->setUnicodeLegacy(u"41"_s);
        infos[2]->setAltNames(QStringList {u"x,  y "_s});
        document->undoManager()->beginUndoGrouping();
        document->undoManager()->endUndoGrouping();
        QCOMPARE(document->savingLosses(kXML).takingOthers, 1);
        QCOMPARE(document->fixSavingLosses(), 3);
        QCOMPARE(infos[0]->sortName(), u"q <! -- c -- > d"_s);
        QCOMPARE(infos[0]->desc(), u"the A and more"_s);
        QCOMPARE(infos[1]->unicodeLegacy(), u"0041"_s);
        QCOMPARE(infos[2]->altNames(), QStringList({u"x"_s, u"y"_s}));
        QVERIFY(document->savingLosses(kXML).isEmpty());
        document->undoManager()->undo(); // one step
        QCOMPARE(infos[0]->sortName(), u"q <!-- c --> d"_s);
        QCOMPARE(infos[1]->unicodeLegacy(), u"41"_s);
        document->undoManager()->redo();
        QVERIFY(document->saveDocument());
        QVERIFY(contentOf(path(u"a.xml"_s)).contains("sortName=\"q <! -- c -- > d\""));
    }

    void endsOfCommentsInAFileHarmNobody()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        Dice dice(seed);
        const QStringList parts {u"-->"_s, u"a"_s, u"-"_s, u"->"_s, u"<"_s, u"!--"_s, u" "_s};
        const auto value = [&] {
            QString made = u"x"_s;
            for (int i = dice.below(5); i > 0; --i)
                made += parts.at(dice.below(int(parts.size())));
            return made.contains(u"<!--") ? u"x"_s : made;
        };
        for (int round = 0; round < 50; ++round) {
            QByteArray text = "<glyphData format=\"2\">\n";
            for (int i = 0; i < 20; ++i)
                text += u"\t<glyph name=\"%1\" sortName=\"%2\" altNames=\"%3\" description=\"%4\" />\n"_s
                            .arg(value(), value(), value(), value())
                            .toUtf8();
            write(path(u"a.xml"_s), text + "</glyphData>\n");
            const std::unique_ptr<VXDocument> document = opened();
            for (const InfoPtr &info : document->infos()) {
                if (dice.below(2))
                    info->setProduction(u"edited"_s); // printed anew, the others are copied
            }
            document->flushChanges();
            QVERIFY2(document->saveDocument(), qPrintable(QString::number(seed)));
            const std::unique_ptr<VXDocument> again = opened();
            QCOMPARE(again->countOfInfos(), 20);
            for (int i = 0; i < 20; ++i)
                QVERIFY2(valuesOf(*again->objectInInfosAtIndex(i))
                             == valuesOf(*document->objectInInfosAtIndex(i)),
                         qPrintable(QString::number(seed)));
        }
    }

    TABLE(judgesTexts, (const QString &text, int objection, const QString &kept), {
        const auto add = [&](const QString &text, FileTextObjection objection, const QString &kept) {
            row(text, text, int(objection), kept);
        };
        using O = FileTextObjection;
        add(u"x &amp; <y> - ->"_s, O::None, u"x &amp; <y> - ->"_s);
        add(u"<!-- a"_s, O::Comment, u"<! -- a"_s);
        add(u"<!-\"- a"_s, O::QuoteOrBreak, u"<! -- a"_s);
        add(u"<!-->"_s, O::Comment, u"<! -- >"_s);
        add(u"\"a\"\r\nb\nc"_s, O::QuoteOrBreak, u"a b c"_s);
        add(u"a"_s + QChar(0xD800) + u"b"_s, O::HalfCharacter, u"ab"_s);
        add(u"𝔸"_s, O::None, u"𝔸"_s);
        add(u"  a "_s, O::LeadingBlank, u"a "_s);
    })
    {
        QCOMPARE(int(objectionToFileText(text)), objection);
        QCOMPARE(fileText(text), kept);
        QCOMPARE(objectionToFileText(fileText(text)), FileTextObjection::None);
        QCOMPARE(sentenceOfObjection(text, u"Sort Name"_s).isEmpty(), objection == 0);
        QCOMPARE(offerFor(text).isEmpty(), objection == 0);
    }

    /// An autosaved content gives back every value; a damaged one says so.
    void autosavesEveryValue()
    {
        Dice dice(3);
        for (int round = 0; round < rounds(200); ++round) {
            const std::unique_ptr<VXDocument> document = opened();
            document->setFileVersion(round % 5);
            for (const InfoPtr &info : document->infos())
                dice.change(*info);
            Error error;
            QVERIFY2(document->autosave(&error), qPrintable(error.text()));
            const QString file = document->autosavedContentsURL();
            bool isWhole = false;
            VXDocument recovered;
            QVERIFY(recovered.readAutosavedContents(file, &isWhole, &error));
            QVERIFY(isWhole);
            QVERIFY2(recovered.readNotes().isEmpty(), contentOf(file).constData());
            QCOMPARE(recovered.fileVersion(), document->fileVersion());
            QCOMPARE(recovered.countOfInfos(), document->countOfInfos());
            for (qsizetype i = 0; i < recovered.countOfInfos(); ++i)
                QCOMPARE(valuesOf(*recovered.objectInInfosAtIndex(i)),
                         valuesOf(*document->objectInInfosAtIndex(i)));
            // Some of it is gone: with the comment nothing tells any more, with a part of the rest it does.
            QByteArray content = contentOf(file);
            const qsizetype end = content.lastIndexOf("<!-- runebook autosave");
            content.remove(dice.below(int(end) - 1), 1);
            write(path(u"damaged"_s), content);
            const bool isRead = recovered.readAutosavedContents(path(u"damaged"_s), &isWhole, &error);
            QVERIFY(!isRead || !isWhole);
            write(path(u"damaged"_s), contentOf(file).chopped(1 + dice.below(3)));
            QVERIFY(recovered.readAutosavedContents(path(u"damaged"_s), &isWhole, &error) && !isWhole);
        }
    }

    /// Very long values are left to another thread: what the main thread prints does not grow with them.
    void autosavesLongValuesApart()
    {
        constexpr int kTimes = 700'000;
        const QString half = u"ab"_s.repeated(kTimes) + QChar(0xD800);
        InfoList infos;
        for (const QString &text :
             {u"ab"_s.repeated(kTimes), u"a\"\n<!-- é😀"_s.repeated(kTimes / 4), half, u"x"_s}) {
            infos.push_back(VXGlyphInfo::init());
            infos.back()->setName(u"g"_s);
            infos.back()->setDesc(text);
            infos.back()->setAltNames({text, u"b"_s});
            infos.push_back(VXGlyphInfo::initWithLineXMLFileVersion(
                u"<glyph name=\"p\" description=\"%1\"/>"_s.arg(
                    QString(text).remove(u'"').remove(u"<!--"_s).remove(u'\n')),
                nullptr));
            infos.back()->setScript(u"latin"_s);
        }
        AutosaveSlices slices(infos, 2, [] { return true; });
        std::string printed;
        while (slices.printMore(printed, std::chrono::hours(1)) == SlicedContent::Progress::Unfinished)
            continue;
        QVERIFY2(printed.size() < 4'000, QByteArray::number(qsizetype(printed.size())));
        const ContentProducer rest = slices.takeRest();
        QVERIFY(rest && !slices.takeRest());
        infos[0]->setDesc(u"another"_s); // what another thread prints was taken before
        std::size_t longest = 0;
        QVERIFY(rest(
            [&](std::string_view block) {
                longest = qMax(longest, block.size());
                printed += block;
                return true;
            },
            nullptr));
        QVERIFY2(longest < 1'000'000, QByteArray::number(qsizetype(longest)));
        infos[0]->setDesc(u"ab"_s.repeated(kTimes));
        const AutosavedContent content = readAutosavedContent(QByteArray::fromStdString(printed));
        QVERIFY(content.isWhole && content.infos.size() == infos.size());
        for (std::size_t i = 0; i < infos.size(); ++i)
            QVERIFY2(valuesOf(*content.infos[i]) == valuesOf(*infos[i]), QByteArray::number(int(i)));
    }

    TABLE(countsAsEdited, (bool isEdited, int steps, const Operation &operation), {
        row("nothing", false, 0, [](VXDocument &) {});
        row("name", true, 1, [](VXDocument &d) { d.objectInInfosAtIndex(0)->setName(u"x"_s); });
        row("legacy code point", true, 0,
            [](VXDocument &d) { d.objectInInfosAtIndex(0)->setUnicodeLegacy(u"E000"_s); });
        row("the same legacy code point", false, 0,
            [](VXDocument &d) { d.objectInInfosAtIndex(0)->setUnicodeLegacy(QString()); });
        row("index, which no file holds", false, 0,
            [](VXDocument &d) { d.objectInInfosAtIndex(0)->setIndex(7); });
        row("list", true, 0, [](VXDocument &d) { d.setInfos({VXGlyphInfo::init()}); });
        row("replaced", true, 0,
            [](VXDocument &d) { d.replaceObjectInInfosAtIndexWithObject(0, VXGlyphInfo::init()); });
        row("replaced where nothing is", false, 0,
            [](VXDocument &d) { d.replaceObjectInInfosAtIndexWithObject(9, VXGlyphInfo::init()); });
        row("version", true, 0, [](VXDocument &d) { d.setFileVersion(1); });
        row("the same version", false, 0, [](VXDocument &d) { d.setFileVersion(2); });
        row("history forgotten", true, 0, [](VXDocument &d) {
            d.objectInInfosAtIndex(0)->setName(u"x"_s);
            d.undoManager()->removeAllActions();
        });
        row("another file read", true, 0, [](VXDocument &d) {
            (void)d.readFromURLOfType(QStringLiteral(RUNEBOOK_TEST_DATA "/glyphdata/version1.xml"), kXML);
        });
    })
    {
        const std::unique_ptr<VXDocument> document = opened();
        QVERIFY(!document->isDocumentEdited());
        operation(*document);
        QCoreApplication::processEvents();
        QCOMPARE(document->isDocumentEdited(), isEdited);
        QCOMPARE(document->undoManager()->stack()->count(), steps);
        // What is edited is what a save writes differently.
        const QByteArray before = contentOf(path(u"a.xml"_s));
        document->acceptSavingLosses();
        QVERIFY(document->saveDocument());
        QCOMPARE(contentOf(path(u"a.xml"_s)) != before, isEdited);
    }

    void tellsOtherDocumentsOfTheirRecords()
    {
        const std::unique_ptr<VXDocument> source = opened();
        const InfoPtr shared = source->objectInInfosAtIndex(0);
        const InfoPtr own = source->objectInInfosAtIndex(1);
        {
            VXDocument taker;
            taker.addInfo(shared);
            QVERIFY(!source->isDocumentEdited());
            shared->setIndex(3);
            taker.objectInInfosAtIndex(0)->setName(u"x"_s);
            QVERIFY(source->isDocumentEdited() && taker.isDocumentEdited());
            source->updateChangeCount(Document::ChangeCleared);
            taker.undoManager()->undo();
            QVERIFY(source->isDocumentEdited());
            source->updateChangeCount(Document::ChangeCleared);
            shared->setUnicodeLegacy(u"E000"_s);
            QVERIFY(source->isDocumentEdited());
            source->updateChangeCount(Document::ChangeCleared);
            taker.addInfo(own);
            taker.removeObjectFromInfosAtIndex(1); // has no document now, and stands in the source
            own->setName(u"y"_s);
            QVERIFY(source->isDocumentEdited());
            source->updateChangeCount(Document::ChangeCleared);
            taker.addInfo(VXGlyphInfo::init());
            taker.objectInInfosAtIndex(1)->setName(u"its own"_s);
            QVERIFY(!source->isDocumentEdited());
            taker.setInfos({});
        }
        shared->setName(u"z"_s); // its document is gone
        QVERIFY(source->isDocumentEdited());
    }

    // notes: "anew": printed anew with the same meaning
    TABLE(notesOtherMeanings, (const QByteArray &line, const QString &notes), {
        row("\t<glyph name=\"q\" />", "");
        row("\t<glyph name=\"q\" script=\"latin\" direction=\"RTL\" altNames=\"a, b\" />", "");
        row("  <glyph name=\"q\" script=\"latin\"/>", "anew");
        row("\t<glyph script=\"latin\"  name=\"q\" />", "anew");
        row("\t<glyph name = \"q\" />", "anew");
        row("\t<glyph name=\"q\" desc=\"x &amp; &lt;y\" />", "anew");
        row("\t<glyph name=\"q\" unicode=\"e000\" />", "anew");
        row("\t<glyph unicodes=\"0041,e000\" name=\"q\" />", "anew");
        row("\t<glyph name=\"q\" legacy=\"afii1\" />", "anew");
        row("\t<glyph name='q' unicode=\"0041\" />", "meaning");
        row("\t<glyph name='q' />", "meaning");
        row("\t<glyph name=\"q\" script='latin' />", "meaning");
        row("\t<glyph name=\"q\">text</glyph>", "meaning");
        row("\t<glyph name=\"q\"></glyph>", "anew");
        row("\t<glyph name=\"q\" unicodeLegacy=\"41\" />", "meaning");
        row("\t<glyph name=\"q\" case=\"Upper\" />", "meaning");
        row("\t<glyph name=\"q\" case=\"other\" />", "meaning");
        row("\t<glyph name=\"q\" direction=\"sideways\" />", "meaning");
        row("\t<glyph name=\"q\" script=\"latin />", "meaning");
        row("\t<glyph name=\"q\" unicharString=\"x\" />", "meaning");
        row("\t<glyph script=\"latin\" />", "meaning");
        row("\t<glyph name=\"q\" weight=\"1\" />", "attribute");
        row("\t<glyph name=\"q\" weight='1' script=\"latin\" />", "meaning attribute");
        row("\t<glyph name=\"q\" <!DOCTYPE a [<!ENTITY b \"c\">]> description=\"&b;\" />", "meaning");
    })
    {
        write(path(u"a.xml"_s), fileWith(kLines + line + '\n'));
        const std::unique_ptr<VXDocument> document = opened();
        const ReadNotes &read = document->readNotes();
        QStringList found;
        if (read.otherForms[1] > 0)
            found << u"anew"_s;
        if (read.count(ReadNotes::OtherMeaning) > 0 || read.count(ReadNotes::DroppedAttribute) > 0
            || read.count(ReadNotes::UnreadRest) > 0)
            found << u"meaning"_s;
        if (read.count(ReadNotes::UnknownAttribute) > 0 && notes.contains("attribute"_L1))
            found << u"attribute"_s;
        QCOMPARE(found.join(u' '), notes);
        for (const ReadNotes::Note &note : read.notes)
            QVERIFY(contentOf(path(u"a.xml"_s)).mid(note.offset).startsWith(line.trimmed())
                    || contentOf(path(u"a.xml"_s)).mid(note.offset).startsWith(line));
        // Told, and copied first.
        document->objectInInfosAtIndex(0)->setName(u"edited"_s);
        QCOMPARE(document->savingWillChange().isEmpty(), notes.isEmpty());
        QVERIFY(document->saveDocument());
        QCOMPARE(originals(), notes.isEmpty() ? 0 : 1);
    }

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    /// A document of the file "a.xml", unedited.
    std::unique_ptr<VXDocument> opened()
    {
        auto document = std::make_unique<VXDocument>();
        const bool isRead = document->readFromURLOfType(path(u"a.xml"_s), kXML);
        document->setFileType(kXML);
        document->setFileURL(path(u"a.xml"_s));
        return isRead ? std::move(document) : nullptr;
    }

    qsizetype originals() const { return QDir(Originals::folder()).entryList(QDir::Files).size(); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

RUNEBOOK_TEST_MAIN(UnkeptValuesTest)
#include "UnkeptValuesTest.moc"
