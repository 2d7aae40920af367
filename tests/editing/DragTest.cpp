#include "tests/ScreenMain.h"
#include "tests/editing/Windows.h"

using namespace runebook;

namespace {

/// One document with a record for each letter, and its shown window.
struct Window {
    explicit Window(const QString &names, QPoint place)
    {
        fill(document, named(names));
        controller = std::make_unique<VXWindowController>(document);
        document.setWindowController(controller.get());
        controller->resize(760, 420);
        controller->move(place);
        controller->show();
        [this] { QVERIFY(QTest::qWaitForWindowExposed(controller.get())); }();
    }
    GlyphTableView *table() const { return controller->tableView(); }
    /// A place over a row: its middle, or with \a part in its upper (0.4) or lower (0.6) half or below it.
    QPoint at(int row, double part = 0.5) const
    {
        const int y = table()->rowViewportPosition(row) + static_cast<int>(table()->rowHeight(row) * part);
        return table()->viewport()->mapTo(controller.get(), QPoint(120, y));
    }
    /// Names in list order, the selected ones in brackets.
    QString picture() const
    {
        QStringList names;
        const InfoList selected = controller->selectedInfos();
        for (const InfoPtr &info : document.infos()) {
            const bool isSelected = std::find(selected.begin(), selected.end(), info) != selected.end();
            names << (isSelected ? u'[' + info->name() + u']' : info->name());
        }
        return names.join(u' ');
    }

    VXDocument document;
    std::unique_ptr<VXWindowController> controller;
};

} // namespace

/// Rows dragged with the mouse in windows on a screen, through the window system's own drag and drop.
class DragTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY2(QGuiApplication::platformName() == "xcb"_L1, "Xvfb does not start"); }

    TABLE(rowsAreMovedAndCopied,
          (const QList<int> &rows, int target, double part, bool copies, const QString &expected), {
              row("[b] before d", {1}, 3, 0.4, false, "a c [b] d e");
              row("[b] [d] to the front", {1, 3}, 0, 0.1, false, "[b] [d] a c e");
              row("[e] copied behind a", {4}, 0, 0.6, true, "a [e] b c d e");
              row("[a] below all rows", {0}, 4, 1.5, false, "b c d e [a]");
          })
    {
        Window window(u"a b c d e"_s, {10, 10});
        window.controller->infolistController()->setSelectionIndexes(IndexSet(rows.begin(), rows.end()));
        drag(window, rows.last(), window, window.at(target, part),
             copies ? Qt::ControlModifier : Qt::NoModifier);
        QCOMPARE(window.picture(), expected);
        const QString name = copies ? u"Duplicate"_s : u"Move"_s;
        QCOMPARE(window.document.undoManager()->stack()->undoText(),
                 name + u' ' + QChar(u'a' + rows.first()) + (rows.size() == 1 ? u""_s : u" and 1 Other"_s));
        window.document.undoManager()->undo();
        QCOMPARE(window.picture().remove(u'[').remove(u']'), u"a b c d e"_s);
        QVERIFY(!window.document.isDocumentEdited());
    }

    void dropLineSpansTheRow()
    {
        Window window(u"a b c d e"_s, {10, 10});
        window.controller->infolistController()->setSelectionIndexes({1});
        const QWidget *viewport = window.table()->viewport();
        const int y = window.table()->rowViewportPosition(3);
        const auto isLineShown = [&] {
            const QImage image = window.table()->viewport()->grab().toImage();
            const QRgb line = viewport->palette().color(QPalette::Highlight).rgb();
            int painted = 0;
            for (int x = 0; x < image.width(); ++x)
                painted += image.pixel(x, y) == line;
            return painted == image.width();
        };
        QVERIFY(!isLineShown());
        bool wasShown = false;
        const auto look = [&] { return wasShown = wasShown || isLineShown(); };
        drag(window, 1, window, window.at(3, 0.1), Qt::NoModifier, look);
        QVERIFY(wasShown);
        QCOMPARE(window.picture(), u"a c [b] d e"_s);
        QVERIFY(!isLineShown());
    }

    /// Of a display whose clipboard nobody owns, which only a real one is.
    void nothingIsPastedFromNobody()
    {
        QGuiApplication::clipboard()->clear();
        const Window window(u"a b"_s, {10, 10});
        auto *description = window.controller->detailPane()->findChild<QPlainTextEdit *>();
        description->setFocus();
        typeKeys(description, u"x<Ctrl+V>"_s);
        QCOMPARE(description->toPlainText(), u"x"_s);
    }

    void rowsOfAnotherWindowAreRefused()
    {
        const Window source(u"a b c"_s, {10, 10});
        const Window target(u"x y z"_s, {10, 500});
        drag(source, 0, target, target.at(2, 0.1), Qt::NoModifier);
        QCOMPARE(source.picture(), u"[a] b c"_s);
        QCOMPARE(target.picture(), u"[x] y z"_s);
        QVERIFY(!source.document.isDocumentEdited() && !target.document.isDocumentEdited());
    }

    TABLE(rowsThatCannotBeMovedSayWhy, (bool isSorted), {
        row("sorted", true);
        row("filtered", false);
    })
    {
        const Window window(u"a1 a2 a3 a4 b5"_s, {10, 10});
        if (isSorted) {
            window.table()->sortByColumn(columnOfField(GlyphField::Name), Qt::AscendingOrder);
        } else {
            window.controller->searchField()->setStringValue(u"a"_s);
            window.controller->filterInfos();
        }
        auto *bar = window.controller->findChild<MessageBar *>();
        QVERIFY(bar->isHidden());
        drag(window, 0, window, window.at(3), Qt::NoModifier);
        QVERIFY(!bar->isHidden());
        QVERIFY(bar->findChild<QLabel *>()->text().startsWith(u"Rows can be moved"_s));
        QCOMPARE(window.picture(), u"[a1] a2 a3 a4 b5"_s);
        QVERIFY(!window.document.isDocumentEdited());
    }

    /// Other programs are offered cells; the program's own fields do not take them.
    void rowsAreOfferedAsATable()
    {
        const Window window(u"a b c"_s, {10, 10});
        window.controller->resize(900, 420);
        window.controller->infolistController()->setSelectionIndexes({0, 2});
        QStringList offered;
        const auto look = [&] {
            if (const auto *drag = window.table()->findChild<QDrag *>(); drag && offered.isEmpty())
                offered =
                    QStringList {drag->mimeData()->text().section(u'\t', 0, 0),
                                 QString::fromUtf8(drag->mimeData()->data(u"text/csv"_s)).section(u'\n', 1)};
            return !offered.isEmpty();
        };
        QWidget *field = window.controller->searchField();
        drag(window, 0, window, field->mapTo(window.controller.get(), field->rect().center()), Qt::NoModifier,
             look);
        QCOMPARE(offered.value(0), u"name"_s);
        QVERIFY2(offered.value(1).startsWith(u"a,"_s) && offered.value(1).contains(u"\nc,"_s),
                 qPrintable(offered.value(1)));
        QCOMPARE(window.controller->searchField()->stringValue(), QString());
        QVERIFY(!window.document.isDocumentEdited());
    }

private:
    /// Presses the button on a row of \a source, moves to \a place in \a target and lets go there, as soon as
    /// \a isReady or after some seconds.
    void drag(
        const Window &source, int row, const Window &target, QPoint place, Qt::KeyboardModifiers keys,
        const std::function<bool()> &isReady = [] { return true; })
    {
        QWindow *from = source.controller->windowHandle();
        QWindow *to = target.controller->windowHandle();
        const QPoint begin = source.at(row);
        QTest::mousePress(from, Qt::LeftButton, {}, begin);
        // A drag turns the event loop by itself, so what follows comes from timers, each its own: one that is
        // still at work is not called again. Where no drag begins they come all the same.
        constexpr int kSteps = 12;
        constexpr int kLastStep = 300;
        constexpr int kPauseMs = 15;
        const QPoint end = from->mapFromGlobal(to->mapToGlobal(place));
        bool isDone = false;
        std::function<void(int)> goOn = [&](int step) {
            if (step > kSteps && (isReady() || step > kLastStep)) {
                QTest::mouseRelease(from, Qt::LeftButton, keys, end);
                isDone = true;
                return;
            }
            QTimer::singleShot(kPauseMs, this, [&goOn, step] { goOn(step + 1); });
            moveMouse(from, begin + (end - begin) * qMin(step, kSteps) / kSteps, keys);
        };
        goOn(1);
        QTRY_VERIFY(isDone);
        QCoreApplication::processEvents();
    }

    static void moveMouse(QWindow *window, QPoint place, Qt::KeyboardModifiers keys)
    {
        QMouseEvent move(QEvent::MouseMove, place, window->mapToGlobal(place), Qt::NoButton, Qt::LeftButton,
                         keys);
        QCoreApplication::sendEvent(window, &move);
    }
};

RUNEBOOK_SCREEN_TEST_MAIN(DragTest)
#include "DragTest.moc"
