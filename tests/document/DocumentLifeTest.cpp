// A document from opening to closing: its name, its unsaved changes, its autosave file, and files that are
// none.
#include "platform/StandardFolders.h"
#include "platform/documents/AutosaveFolder.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/document/DocumentFiles.h"

#include <QJsonArray>
#include <QPointer>
#include <QRandomGenerator>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

QStringList autosaveFiles()
{
    return QDir(AutosaveFolder::own()).entryList({u"*.xml"_s}, QDir::Files);
}

} // namespace

class DocumentLifeTest : public DocumentFiles
{
    Q_OBJECT
private Q_SLOTS:
    void opensAndSaves()
    {
        write(path(u"a.xml"_s), contentOf(QStringLiteral(RUNEBOOK_TEST_DATA "/glyphdata/version2.xml")));
        VXDocument *document = openDocument(u"file://"_s + path(u"a.xml"_s));
        QVERIFY(document);
        QCOMPARE(document->countOfInfos(), 4);
        QCOMPARE(document->fileURL(), path(u"a.xml"_s));
        QCOMPARE(document->fileType(), u"public.xml"_s);
        QVERIFY(!document->isDocumentEdited());
        document->objectInInfosAtIndex(2)->setName(u"z"_s);
        QSignalSpy committing(document, &Document::commitEditingRequested);
        Error error;
        QVERIFY2(document->saveDocument(&error), qPrintable(error.text()));
        QCOMPARE(committing.size(), 1);
        QVERIFY(!document->isDocumentEdited());
        QByteArray expected = contentOf(QStringLiteral(RUNEBOOK_TEST_DATA "/glyphdata/version2.xml"));
        QCOMPARE(contentOf(path(u"a.xml"_s)), expected.replace("name=\"a\"", "name=\"z\""));
        QVERIFY(document->saveToURLOfType(path(u"b.xml"_s), u"public.xml"_s));
        QCOMPARE(document->fileURL(), path(u"b.xml"_s));
        QCOMPARE(contentOf(path(u"b.xml"_s)), expected);
        VXDocument fresh;
        QVERIFY(!fresh.saveDocument(&error));
    }

    void opensAFileOnce()
    {
        write(path(u"a.xml"_s), "<glyph name=\"a\"/>");
        VXDocument *document = openDocument(path(u"a.xml"_s));
        newDocument();
        QVERIFY(QFile::link(path(u"a.xml"_s), path(u"link.xml"_s)));
        QCOMPARE(openDocument(path(u"a.xml"_s)), document);
        QCOMPARE(
            openDocument(m_folder->path() + u"/../"_s + QFileInfo(m_folder->path()).fileName() + u"/a.xml"_s),
            document);
        QCOMPARE(openDocument(path(u"link.xml"_s)), document);
        QCOMPARE(controller().documentList().size(), 2);
        QCOMPARE(controller().currentDocument(), document);
    }

    TABLE(refusesToOpen, (const QString &name), {
        row("missing", "none.xml");
        row("folder", "folder.xml");
        row("other kind", "a.jpeg");
        row("no name", "");
    })
    {
        QVERIFY(QDir(m_folder->path()).mkdir(u"folder.xml"_s));
        write(path(u"a.jpeg"_s), "x");
        Error error;
        QVERIFY(!openDocument(name.isEmpty() ? name : path(name), &error));
        QVERIFY(!error.description.isEmpty() && !error.recoverySuggestion.isEmpty());
        QCOMPARE(error.recoverySuggestion.contains(u"Glyph data (.xml), Table (.txt)"_s), error.code == 3);
        QVERIFY(controller().documentList().isEmpty());
        QVERIFY(!controller().recentFiles().contains(path(name)));
    }

    TABLE(opensEmptyWhatItCannotRead, (const QString &name), {
        row("not UTF-8", "binary.xml");
        row("table without keys", "table.txt");
        row("pipe", "pipe.xml");
        row("endless device", "zero.xml");
    })
    {
        write(path(u"binary.xml"_s), "<glyph name=\"\xFF\"/>");
        write(path(u"table.txt"_s), "name\nA\n");
        QCOMPARE(::mkfifo(QFile::encodeName(path(u"pipe.xml"_s)).constData(), 0600), 0);
        QVERIFY(QFile::link(u"/dev/zero"_s, path(u"zero.xml"_s)));
        VXDocument *document = openDocument(path(name));
        QVERIFY(document);
        QCOMPARE(document->countOfInfos(), 0);
        QVERIFY(!document->readError().domain.isEmpty());
        QVERIFY(!document->readError().text().isEmpty());
        QVERIFY(!document->isDocumentEdited());
    }

    void readsAFileByItsExtension()
    {
        write(path(u"a.xml"_s), "<glyph name=\"a\"/>");
        write(path(u"a.txt"_s), "name\tunicode\nA\t41\nB\t42\n");
        write(path(u"a.dat"_s), "<glyph name=\"a\"/>");
        VXDocument document;
        QCOMPARE(document.readFromURL(path(u"a.xml"_s))->size(), 1u);
        QCOMPARE(document.readFromURL(path(u"a.txt"_s))->size(), 2u);
        QVERIFY(!document.readFromURL(path(u"a.dat"_s)));
        Error error;
        QVERIFY(!document.readFromURL(path(u"none.xml"_s), &error));
        QVERIFY(!error.domain.isEmpty());
        QCOMPARE(document.countOfInfos(), 0);
    }

    void tellsWhenItIsEdited()
    {
        VXDocument document;
        QSignalSpy edited(&document, &Document::editedChanged);
        document.addInfo(VXGlyphInfo::init());
        QVERIFY(document.isDocumentEdited());
        document.undoManager()->undo();
        QVERIFY(!document.isDocumentEdited());
        document.updateChangeCount(Document::ChangeDone);
        QVERIFY(document.isDocumentEdited());
        document.updateChangeCount(Document::ChangeCleared);
        QVERIFY(!document.isDocumentEdited());
        QList<bool> states;
        for (const QList<QVariant> &arguments : edited)
            states << arguments.first().toBool();
        QCOMPARE(states, QList<bool>({true, false, true, false}));
        // Reading is no edit.
        QVERIFY(document.readFromURLOfType(QStringLiteral(RUNEBOOK_TEST_DATA "/glyphdata/version1.xml"),
                                           u"public.xml"_s));
        QCOMPARE(document.fileVersion(), 1);
        QVERIFY(!document.isDocumentEdited());
    }

    void aFailedSaveStaysEdited()
    {
        write(path(u"a.xml"_s), "<glyph name=\"a\"/>");
        VXDocument *document = openDocument(path(u"a.xml"_s));
        document->addInfo(VXGlyphInfo::init());
        QVERIFY(document->autosave());
        QVERIFY(m_folder->remove());
        Error error;
        QVERIFY(!document->saveDocument(&error));
        QVERIFY(!error.text().isEmpty());
        QVERIFY(document->isDocumentEdited());
        QVERIFY(QFile::exists(document->autosavedContentsURL()));
        Error noReason;
        QVERIFY(!document->saveToURLOfType(QDir::tempPath() + u"/x.jpeg"_s, u"public.jpeg"_s, &noReason));
        QVERIFY(!noReason.description.isEmpty());
        QCOMPARE(document->fileType(), u"public.xml"_s);
    }

    void numbersNewDocuments()
    {
        VXDocument *first = newDocument();
        VXDocument *second = newDocument();
        QCOMPARE(first->displayName(), u"Untitled"_s);
        QCOMPARE(second->displayName(), u"Untitled 2"_s);
        first->close();
        QCOMPARE(newDocument()->displayName(), u"Untitled"_s);
        QCOMPARE(second->displayName(), u"Untitled 2"_s);
        QCOMPARE(second->fileVersion(), 2);
    }

    // name: of a/x/data.xml beside them
    // title: which tells it from all of them
    TABLE(isCalledByItsPath, (const QString &others, const QString &name, const QString &title), {
        row("alone", "", "data.xml", "data.xml");
        row("beside new ones", "-", "data.xml", "data.xml");
        row("same name, other folder", "a/y/data.xml", "x/data.xml", "x/data.xml");
        row("same name and folder", "b/x/data.xml", "a/x/data.xml", "a/x/data.xml");
        row("shortest wins", "b/x/data.xml a/y/data.xml", "x/data.xml", "a/x/data.xml");
        row("another name", "a/x/other.xml", "data.xml", "data.xml");
        row("same names and another", "b/x/data.xml a/x/other.xml", "data.xml", "a/x/data.xml");
        row("deeper", "a/x/a/x/data.xml", "%1/a/x/data.xml", "%1/a/x/data.xml");
    })
    {
        write(path(u"a/x/data.xml"_s), "");
        VXDocument *document = openDocument(path(u"a/x/data.xml"_s));
        QSignalSpy changed(&controller(), &DocumentController::documentsChanged);
        for (const QString &other : others.split(u' ', Qt::SkipEmptyParts)) {
            changed.clear();
            if (other == u"-") {
                newDocument();
            } else {
                write(path(other), "");
                QVERIFY(openDocument(path(other)));
            }
            QVERIFY(!changed.isEmpty());
        }
        const auto inFolder = [this](QString text) {
            return text.replace(u"%1"_s, QFileInfo(m_folder->path()).fileName());
        };
        QCOMPARE(document->displayName(), inFolder(name));
        QCOMPARE(document->windowTitle(), inFolder(title));
    }

    void reloadsAsOneStep()
    {
        QRandomGenerator random(14);
        const auto pick = [&random](int bound) { return static_cast<std::size_t>(random.bounded(bound)); };
        const QString file = path(u"a.xml"_s);
        using Lines = QStringList; // what two documents with the same fields print alike
        const auto linesOf = [](const VXDocument &document) {
            Lines lines;
            for (const InfoPtr &info : document.infos())
                lines << info->lineXMLFormatVersion(2);
            return lines;
        };
        const auto change = [&](VXDocument &document) {
            for (int i = 0; i < 6; ++i) {
                const int count = static_cast<int>(document.countOfInfos());
                if (const auto what = pick(4); what == 0 || count < 4) {
                    const InfoPtr info = VXGlyphInfo::init();
                    info->setName(u"n%1"_s.arg(pick(9))); // names repeat
                    document.insertObjectInInfosAtIndex(info, qsizetype(pick(count + 1)));
                } else if (what == 1) {
                    document.removeObjectFromInfosAtIndex(qsizetype(pick(count)));
                } else {
                    const InfoPtr info = document.infos()[pick(count)];
                    what == 2 ? info->setName(u"n%1"_s.arg(pick(9)))
                              : info->setUnicodes({u"00%1"_s.arg(10 + pick(9))});
                    info->setCase(static_cast<int>(pick(5)));
                    info->setAltNames(pick(2) ? QStringList {u"x"_s, u"y"_s} : QStringList());
                }
            }
        };
        VXDocument outside;
        change(outside);
        QVERIFY(outside.writeToURLOfType(file, u"public.xml"_s));
        VXDocument *document = openDocument(file);
        std::vector<Lines> states {linesOf(*document)};
        for (int round = 0; round < 40; ++round) {
            if (round % 3 == 2) {
                document->infos()[pick(int(document->countOfInfos()))]->setDesc(QString::number(round));
                QCoreApplication::processEvents();
                states.push_back(linesOf(*document));
            }
            const InfoList before = document->infos();
            change(outside);
            QVERIFY(outside.writeToURLOfType(file, u"public.xml"_s));
            QVERIFY(document->reload(Document::Reload::IfSound));
            QCOMPARE(linesOf(*document), linesOf(outside));
            QVERIFY(!document->isDocumentEdited());
            QCOMPARE(document->undoManager()->stack()->count(), int(states.size()));
            states.push_back(linesOf(*document));
            for (const InfoPtr &info : document->infos()) {
                QCOMPARE(info->listings(), 1);
                QCOMPARE(info->documentObject(), document);
            }
            // What has one name before and after is the same record.
            const auto onlyNamed = [](const InfoList &list, const QString &name) {
                const auto hasName = [&name](const InfoPtr &info) { return info->name() == name; };
                return std::count_if(list.begin(), list.end(), hasName) == 1
                    ? *std::find_if(list.begin(), list.end(), hasName)
                    : nullptr;
            };
            for (int name = 0; name < 9 && round % 3 != 2; ++name) {
                const InfoPtr old = onlyNamed(before, u"n%1"_s.arg(name));
                if (const InfoPtr now = onlyNamed(document->infos(), u"n%1"_s.arg(name)); old && now)
                    QCOMPARE(now.get(), old.get());
            }
        }
        for (std::size_t i = states.size() - 1; i-- > 0;) {
            document->undoManager()->undo();
            QCOMPARE(linesOf(*document), states[i]);
            QVERIFY(document->isDocumentEdited());
        }
        for (const Lines &state : states) {
            QCOMPARE(linesOf(*document), state);
            document->undoManager()->redo();
        }
        QVERIFY(!document->isDocumentEdited());
    }

    TABLE(reloadsOnlyWhatReadsWell, (const QByteArray &content, bool isReloaded), {
        const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<glyphData>\n";
        const QByteArray line = "\t<glyph name=\"a\" category=\"Letter\" />\n";
        row("whole", head + line + "</glyphData>\n", true);
        row("cut off", head + line, false);
        row("with a comment", head + line + "<!-- new -->\n</glyphData>\n", false);
        row("no UTF-8", head + "\t<glyph name=\"\xff\" />\n</glyphData>\n", false);
        row("something else", "<html></html>\n", false);
    })
    {
        VXDocument first;
        first.addInfo(VXGlyphInfo::init());
        QVERIFY(first.writeToURLOfType(path(u"a.xml"_s), u"public.xml"_s));
        QByteArray usual = contentOf(path(u"a.xml"_s));
        VXDocument *document = openDocument(path(u"a.xml"_s));
        const qsizetype glyph = usual.indexOf("\t<glyph");
        write(path(u"a.xml"_s),
              QByteArray(content).replace(0, qMax<qsizetype>(0, content.indexOf("\t<glyph")),
                                          usual.left(glyph)));
        Error error;
        QCOMPARE(document->reload(Document::Reload::IfSound, &error), isReloaded);
        QCOMPARE(error.domain.isEmpty(), isReloaded);
        QCOMPARE(document->infos().front()->name(), isReloaded ? u"a"_s : u"unknown"_s);
        QCOMPARE(document->undoManager()->canUndo(), isReloaded);
    }

    void autosavesAfterAWhile()
    {
        VXDocument *document = newDocument();
        QCOMPARE(controller().autosavingDelay(), 6.0);
        controller().setAutosavingDelay(0.05);
        document->addInfo(VXGlyphInfo::init());
        QVERIFY(document->autosavedContentsURL().isEmpty());
        QTRY_VERIFY(!document->autosavedContentsURL().isEmpty());
        const QString file = document->autosavedContentsURL();
        QTRY_VERIFY(
            contentOf(file).contains("\t<glyph name=\"unknown\" direction=\"LTR\" />\n</glyphData>\n"));
        QVERIFY(document->isDocumentEdited());
        // Further changes go into the same file; another program can read it as it stands.
        document->objectInInfosAtIndex(0)->setName(u"later"_s);
        QTRY_VERIFY(contentOf(file).contains("name=\"later\""));
        QCOMPARE(document->autosavedContentsURL(), file);
        VXDocument recovered;
        QVERIFY(recovered.readFromURLOfType(file, document->autosavingFileType()));
        QCOMPARE(recovered.objectInInfosAtIndex(0)->name(), u"later"_s);
        QCOMPARE(autosaveFiles().size(), 1);
    }

    // isTyping: into an editor that never hands it over
    TABLE(autosavesDuringSteadyWork, (bool isTyping), {
        row("edits", false);
        row("text in an editor", true);
    })
    {
        write(path(u"a.xml"_s), "<glyphData>\n\t<glyph name=\"a\" />\n</glyphData>\n");
        VXDocument *document = openDocument(path(u"a.xml"_s));
        constexpr double kNever = 60;
        constexpr double kUsualBound = 10;
        QCOMPARE(controller().autosavingBound(), kUsualBound);
        controller().setAutosavingDelay(kNever);
        controller().setAutosavingBound(0.2);
        QString typed;
        const auto owner = std::make_unique<QObject>();
        document->addPendingTexts(owner.get(),
                                  [&typed] { return typed.isEmpty() ? QJsonArray() : QJsonArray {typed}; });
        /// The number of the last word that an autosave holds.
        const auto lastKept = [&] {
            const QString content = document->autosavedContentsURL();
            const QByteArray kept =
                contentOf(isTyping && !content.isEmpty()
                              ? AutosaveFolder::besideContent(content, AutosaveFolder::kTypedSuffix)
                              : content);
            const qsizetype place = kept.lastIndexOf("\"w");
            return place < 0 ? 0 : kept.mid(place + 2, kept.indexOf('"', place + 1) - place - 2).toInt();
        };
        // Never a pause: each autosave comes while the work goes on, and holds what was done since the last
        // one.
        constexpr int kTooMany = 20'000;
        int done = 0;
        for (int autosave = 0; autosave < 3; ++autosave) {
            const int wanted = done + 1;
            do {
                const QString word = u"w%1"_s.arg(++done);
                if (isTyping) {
                    typed = word;
                    document->pendingTextChanged();
                } else {
                    document->objectInInfosAtIndex(0)->setSortName(word);
                }
                QTest::qWait(2);
            } while (lastKept() < wanted && done < kTooMany);
            QVERIFY(done < kTooMany);
        }
        QCOMPARE(document->isDocumentEdited(), !isTyping);
        // What is taken back leaves nothing behind.
        typed.clear();
        document->undoManager()->undo();
        while (document->isDocumentEdited())
            document->undoManager()->undo();
        document->pendingTextChanged();
        QTRY_VERIFY(document->autosavedContentsURL().isEmpty());
        QVERIFY(QDir(AutosaveFolder::own()).entryList({u"*.xml"_s, u"*.typed"_s}, QDir::Files).isEmpty());
        controller().setAutosavingBound(kUsualBound);
    }

    void autosavesEveryType()
    {
        write(path(u"a.txt"_s), "name\tunicode\nA\t41\n");
        VXDocument *document = openDocument(path(u"a.txt"_s));
        QVERIFY(document->autosave());
        QVERIFY(document->autosavedContentsURL().isEmpty()); // nothing to save
        document->objectInInfosAtIndex(0)->setName(u"B"_s);
        Error error;
        QVERIFY2(document->autosave(&error), qPrintable(error.text()));
        QVERIFY(contentOf(document->autosavedContentsURL()).contains("unicode=\"0041\" name=\"B\""));
        QCOMPARE(contentOf(path(u"a.txt"_s)), QByteArray("name\tunicode\nA\t41\n"));
    }

    void leavesNoAutosaveBehind()
    {
        const auto begin = [this] {
            VXDocument *document = newDocument();
            document->addInfo(VXGlyphInfo::init());
            [&] { QVERIFY(document->autosave()); }();
            return document;
        };
        VXDocument *saved = begin();
        VXDocument *undone = begin();
        VXDocument *closed = begin();
        QCOMPARE(autosaveFiles().size(), 3);
        QVERIFY(saved->saveToURLOfType(path(u"a.xml"_s), u"public.xml"_s));
        QCOMPARE(autosaveFiles().size(), 2);
        undone->undoManager()->undo();
        QCOMPARE(autosaveFiles().size(), 1);
        closed->close();
        QVERIFY(autosaveFiles().isEmpty());
    }

    void forgetsWhatAnotherFileLost()
    {
        const QString folder = QStringLiteral(RUNEBOOK_TEST_DATA "/");
        VXDocument document;
        for (const QString &other : {u"tables/usual.txt"_s, u"glyphdata/version2.xml"_s, u"none.xml"_s}) {
            QVERIFY(document.readFromURLOfType(folder + u"glyphdata/comments.xml"_s, u"public.xml"_s));
            QVERIFY(!document.readNotes().isEmpty());
            QVERIFY(document.readFromURLOfType(
                folder + other, other.endsWith(u".txt"_s) ? u"public.plain-text"_s : u"public.xml"_s));
            QVERIFY(document.readNotes().isEmpty());
        }
    }

    void keepsRecentFiles()
    {
        controller().clearRecentFiles();
        for (int i = 0; i < 15; ++i)
            controller().noteRecentFile(u"/f%1.xml"_s.arg(i));
        controller().noteRecentFile(u"/f10.xml"_s);
        QStringList files = controller().recentFiles();
        QCOMPARE(files.size(), 12);
        QCOMPARE(files.mid(0, 3), QStringList({u"/f10.xml"_s, u"/f14.xml"_s, u"/f13.xml"_s}));
        write(path(u"a.xml"_s), "");
        openDocument(path(u"a.xml"_s));
        QCOMPARE(controller().recentFiles().first(), path(u"a.xml"_s));
        controller().clearRecentFiles();
        QVERIFY(controller().recentFiles().isEmpty());
    }

    void closes()
    {
        const QPointer<VXDocument> document = newDocument();
        const InfoPtr info = VXGlyphInfo::init();
        document->addInfo(info);
        QSignalSpy closing(document, &Document::aboutToClose);
        document->close();
        QCOMPARE(closing.size(), 1);
        QVERIFY(controller().documentList().isEmpty());
        info->setName(u"still there"_s);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(document.isNull());
        QVERIFY(!info->document());
        info->setName(u"later"_s);
        QCOMPARE(info->name(), u"later"_s);
    }
};

RUNEBOOK_TEST_MAIN(DocumentLifeTest)
#include "DocumentLifeTest.moc"
