// What the panel says of a run that is over, and whether its changes stay when it failed.
#include "platform/MessageBar.h"
#include "scripting/panel/RunQuestion.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/PanelFixture.h"

#include <QtWidgets>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kAfterFailedRun = "VXAfterFailedRun"_L1;

/// As the windows of documents are made: a column with a bar.
QObject *makeWindow(Document &)
{
    auto *window = new QMainWindow;
    window->setCentralWidget(new QWidget);
    auto *column = new QVBoxLayout(window->centralWidget());
    column->addWidget(new MessageBar);
    window->show();
    return window;
}

/// The question that \a window asks now; empty when it asks none.
QString questionIn(const QWidget &window)
{
    for (const MessageBar *bar : window.findChildren<MessageBar *>()) {
        if (!bar->isHidden() && !bar->findChildren<QPushButton *>().isEmpty())
            return bar->text();
    }
    return {};
}

} // namespace

class RunResultsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        startPanels();
        QVERIFY(VXScriptingHandler::isPythonRunning());
        DocumentController::shared().setDocumentFactory([] { return new VXDocument; });
        DocumentController::shared().setWindowMaker(makeWindow);
    }

    void init()
    {
        UserDefaults::standard().removeObjectForKey(kAfterFailedRun);
        m_panel = std::make_unique<VXMacroWindowController>();
        m_panel->showPanel();
        QVERIFY(QTest::qWaitForWindowActive(m_panel->window()));
        m_documents = {addDocument(), addDocument()}; // the last one is the frontmost
    }

    void cleanup()
    {
        DocumentController::shared().releaseAll();
        m_panel.reset();
    }

    // line: with the time left out
    TABLE(saysWhatARunChanged, (const QString &code, const QString &line), {
        row("for i in Doc: i.name += 'x'", "Renamed 3 glyphs, one undo step");
        row("Doc[0].name = 'x'; Doc[0].name = 'y'", "Renamed 1 glyph, one undo step");
        row("Doc[0].name = 'x'; Doc[1].category = 'y'; Doc.addInfo_(newInfo('n'))",
            "Changed 2 glyphs, added 1 glyph, one undo step");
        row("Doc.removeObjectFromInfosAtIndex_(0)", "Removed 1 glyph, one undo step");
        row("print(len(Doc))", "Changed nothing");
        row("for d in documents(): d[0].name = 'x'",
            "Renamed 2 glyphs, one undo step in each of 2 documents");
        row("a = documents()[1]; newDocument(); a.addInfo_(newInfo('n'))", "Added 1 glyph, one undo step");
        row("d = newDocument(); d.addInfos_([newInfo('n'), newInfo('o')])", "Added 2 glyphs, one undo step");
        row("Doc.setInfos_(list(Doc.infos)[:2])", "Rearranged the glyphs, one undo step");
        row("Doc[0].name = 'x'\n1/0", "Ended by an error. Renamed 1 glyph, one undo step");
    })
    {
        run(code);
        static const QRegularExpression time(u" \\(\\d+\\.\\d s\\)"_s);
        QString shown = m_panel->window()->statusBar()->currentMessage();
        QVERIFY2(time.match(shown).hasMatch(), qPrintable(shown));
        QCOMPARE(shown.remove(time), line);
    }

    /// Taken back with the keyboard, all documents are as before: nothing to redo, nothing to save.
    TABLE(asksAfterAFailure, (const QString &code, const QString &question), {
        row("an error", "for i in Doc: i.name += 'x'\n1/0", "3 glyphs were changed before the error.");
        row("each glyph once", "Doc[0].name = 'x'; Doc[0].category = 'y'\n1/0",
            "1 glyph was changed before the error.");
        row("added, changed, removed",
            "i = newInfo('n')\nDoc.addInfo_(i)\ni.name = 'm'\nDoc.removeObjectFromInfosAtIndex_(0)\n1/0",
            "2 glyphs were changed before the error.");
        row("two documents", "for d in documents(): d[1].name = 'x'\n1/0",
            "2 glyphs were changed before the error.");
        row("with groups of its own", "with undoGroup('g'): Doc[0].name = 'x'\nDoc[1].name = 'y'\n1/0",
            "2 glyphs were changed before the error.");
        row("several steps",
            "Doc[0].name = 'x'\nDoc.undoManager().undo()\nDoc.undoManager().redo()\nDoc[1].name = 'y'\n1/0",
            "2 glyphs were changed before the error.");
        row("Stop", "Doc[0].name = 'x'\nwhile True: pass",
            "1 glyph was changed before the script was stopped.");
        row("nothing changed", "1/0", "");
        row("taken back by the script", "Doc[0].name = 'x'\nDoc.undoManager().undo()\n1/0", "");
        row("no error", "Doc[0].name = 'x'", "");
        row("an end of its own", "Doc[0].name = 'x'\nimport sys\nsys.exit(3)", "");
    })
    {
        const QString before = state();
        const auto stop = connect(&RunPump::shared(), &RunPump::pumped, this, [&code] {
            if (code.contains("while True"_L1))
                RunPump::shared().stop();
        });
        run(code);
        disconnect(stop);
        const QString after = state();
        QCOMPARE(questionIn(*m_panel->window()), question);
        if (question.isEmpty())
            return;
        QVERIFY(after != before);
        QTest::keyClick(m_panel->window(), Qt::Key_T, Qt::AltModifier);
        QTRY_COMPARE(questionIn(*m_panel->window()), QString());
        QCOMPARE(state(), before);
        QVERIFY(m_panel->window()->statusBar()->currentMessage().startsWith("Taken back"_L1));
    }

    void asksUntilTheNextEdit()
    {
        QWidget &window = *m_panel->window();
        const QString code = u"Doc[0].name = 'x'\n1/0"_s;
        const QString question = u"1 glyph was changed before the error."_s;
        run(code);
        run(u"print(Doc[0].name)\n1/0"_s); // a look at what there is
        QCOMPARE(questionIn(window), question);
        QTest::keyClick(&window, Qt::Key_K, Qt::AltModifier);
        QTRY_COMPARE(questionIn(window), QString());
        QVERIFY(state().contains("x b c edited"_L1));

        const std::function<void()> edits[] = {
            [this] { m_documents.last()->infos()[1]->setName(u"y"_s); },
            [this] { m_documents.last()->undoManager()->undo(); },
            [this] { run(u"documents()[1][2].name = 'z'"_s); },
            [this] { DocumentController::shared().removeDocument(m_documents.takeLast()); },
        };
        for (const auto &edit : edits) {
            run(code);
            QCOMPARE(questionIn(window), question);
            edit();
            QTRY_COMPARE(questionIn(window), QString());
        }
    }

    TABLE(doesWhatIsPreferred, (int answer, const QString &left, const QString &line), {
        row("keep", int(RunQuestion::Keep), "a b c clean|x b c edited", "Ended by an error");
        row("take back", int(RunQuestion::TakeBack), "a b c clean|a b c clean", "Taken back");
    })
    {
        UserDefaults::standard().setObjectForKey(answer, kAfterFailedRun);
        run(u"Doc[0].name = 'x'\n1/0"_s);
        QCOMPARE(questionIn(*m_panel->window()), QString());
        QCOMPARE(state(), left);
        QVERIFY(m_panel->window()->statusBar()->currentMessage().startsWith(line));
    }

    /// In the panel when it had the keyboard, else in the frontmost window of a document that changed.
    void asksWhereTheRunWasStarted()
    {
        const QString code = u"documents()[1][0].name = 'x'\n1/0"_s;
        auto *window = qobject_cast<QWidget *>(DocumentController::shared().makeWindow(*m_documents.first()));
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        run(code);
        QVERIFY(!questionIn(*window).isEmpty());
        QCOMPARE(questionIn(*m_panel->window()), QString());
        m_panel->window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_panel->window()));
        run(code.chopped(4) + u"\n1/0"_s);
        QCOMPARE(questionIn(*window), QString());
        QVERIFY(!questionIn(*m_panel->window()).isEmpty());
        // Nobody looks at a window that is minimized; where nothing else is seen, nobody is asked.
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        window->showMinimized();
        run(code);
        QVERIFY(!questionIn(*m_panel->window()).isEmpty());
        window->showNormal();
        m_panel->hidePanel();
        run(code);
        QVERIFY(!questionIn(*window).isEmpty());
        // It asks below the window's own bar, and always in the one place.
        const auto *column = qobject_cast<QMainWindow *>(window)->centralWidget()->layout();
        run(code);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(column->count(), 2);
        QVERIFY(column->itemAt(0)->widget()->isHidden() && !column->itemAt(1)->widget()->isHidden());
    }

private:
    VXDocument *addDocument()
    {
        VXDocument *document = documentOf(named(u"a b c"_s)).release();
        DocumentController::shared().addDocument(document);
        return document;
    }

    void run(const QString &code)
    {
        runPanelCode(code);
        for (int turn = 0; turn < 3; ++turn) // undo steps are closed behind the run
            QCoreApplication::processEvents();
    }

    /// "names of a document, edited?, redo?", for each.
    QString state() const
    {
        QStringList texts;
        for (VXDocument *document : m_documents) {
            const UndoManager &history = *document->undoManager();
            texts << namesOf(document->infos()) + u' ' + (history.isClean() ? "clean"_L1 : "edited"_L1)
                    + (history.canRedo() ? " redo"_L1 : ""_L1);
        }
        return texts.join(u'|');
    }

    std::unique_ptr<VXMacroWindowController> m_panel;
    QList<VXDocument *> m_documents;
};

RUNEBOOK_TEST_MAIN(RunResultsTest)
#include "RunResultsTest.moc"
