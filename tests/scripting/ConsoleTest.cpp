#include "platform/defaults/UserDefaults.h"
#include "scripting/panel/ConsoleText.h"
#include "scripting/panel/ConsoleView.h"
#include "tests/Files.h"
#include "tests/Fingerprint.h"
#include "tests/PaintedTexts.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/Interpreters.h"

#include <QSignalSpy>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using namespace runebook;

using Kind = ConsoleView::Kind;

/// The text with what is marked in it: *bold*, [linked](path:line).
static QString picture(const QString &output)
{
    const ConsoleText console = ConsoleText::fromOutput(output);
    QMap<qsizetype, QString> marks;
    for (const UnitRange &range : console.emphasised) {
        marks[range.location].append(u'*');
        marks[range.location + range.length].prepend(u'*');
    }
    for (const FileLink &link : console.links) {
        marks[link.range.location].append(u'[');
        marks[link.range.location + link.range.length].prepend(u"](%1:%2)"_s.arg(link.path, link.line));
    }
    QString text = console.text;
    for (auto mark = marks.constEnd(); mark != marks.constBegin();) {
        --mark;
        text.insert(mark.key(), mark.value());
    }
    return text;
}

/// The console: its text, its links, its view.
class ConsoleTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        UserDefaults::standard().removeObjectForKey(u"VXConsoleLineLimit"_s);
        m_console = std::make_unique<ConsoleView>();
        m_console->resize(500, 200);
        m_console->setEmphasisFont(bold());
        m_console->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_console.get()));
    }

    TABLE(givesTextBackAsWritten, (const QString &text), {
        row("lines", "a\n\nb\n");
        row("no end", "a");
        row("separators", "a\u2028b\u2029c\u00A0d\u0085e\tf");
        row("zero", QString(u"a\0b"_s));
        row("two kinds of line ends", "a\r\nb\n\r\n");
        row("one line of a megabyte", QString(1'000'000, u'x') + u"\nend"_s);
        row("a long line of pairs", QString::fromUtf8("a") + QString(u"\U0001F600"_s).repeated(9000));
    })
    {
        m_console->append(u">"_s, Kind::Output);
        m_console->append(text, Kind::Output);
        m_console->append(u"<"_s, Kind::Output);
        const QString all = u'>' + text + u'<';
        QCOMPARE(m_console->string(), all);
        QCOMPARE(m_console->length(), all.size());
        m_console->selectAll();
        m_console->copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), all);
        m_console->setSelectedRange({1, static_cast<int>(text.size())});
        m_console->copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), text);
        QCOMPARE(m_console->selectedRange(), (TextRange {1, static_cast<int>(text.size())}));
        for (QTextBlock block = m_console->document()->begin(); block.isValid(); block = block.next())
            QVERIFY(block.length() <= 4200); // or its layout would take seconds
        m_console->clearText();
        QCOMPARE(m_console->string(), QString());
    }

    TABLE(showsAsATerminal, (const QString &written, const QString &shown), {
        row("progress", "10%\r20%\r100%\nend", "100%\nend");
        row("a return alone keeps the line", "one\n10%\r", "one\n10%");
        row("returns before a line end", "done\r\r\nnext", "done\r\nnext");
        row("a long line begun anew", QString(10'000, u'x') + u"\rend\n"_s, "end\n");
        row("colours", u"\x1b[1;31mred\x1b[0m \x1b[38;5;12mblue\x1b[m"_s, "red blue");
        row("movements", u"a\x1b[2K\x1b[1Ab\x1b(Bc"_s, "abc");
        row("title of the window", u"\x1b]0;title\aa\x1b]8;;http://x\x1b\\b"_s, "ab");
        row("cut sequence", u"a\x1b[12\nb"_s, "a\nb");
    })
    {
        m_console->append(written, Kind::Output);
        QCOMPARE(m_console->string(), shown);
        m_console->clearText();
        const qsizetype step = written.size() > 1000 ? 999 : 1;
        for (qsizetype i = 0; i < written.size(); i += step) {
            m_console->append(written.mid(i, step), Kind::Output);
            m_console->showPending();
        }
        if (!written.contains("\r\n"_L1)) // which are one only together
            QCOMPARE(m_console->string(), shown);
    }

    void foldsLongLines()
    {
        const QString line(50'000, u'x');
        m_console->append(line + u"\nend\n"_s, Kind::Output);
        m_console->append(u"y"_s + line.left(5000), Kind::Output);
        showAll();
        const auto shown = [this] {
            qsizetype units = 0;
            for (QTextBlock block = m_console->document()->begin(); block.isValid(); block = block.next())
                units += block.isVisible() ? block.length() - 1 : 0;
            return units;
        };
        QCOMPARE(shown(), 2 * 4096 + 3);
        for (QTextBlock block = m_console->document()->begin(); block.isValid(); block = block.next())
            QVERIFY(block.isVisible() || block.lineCount() == 0); // or the scroll bar counts what nobody sees
        QCOMPARE(m_console->string().size(), 50'000 + 5 + 5001);
        m_console->verticalScrollBar()->setValue(0);
        m_console->moveCursor(QTextCursor::Start);
        // Both stand at the right of the folded line's last row.
        const QTextBlock head = m_console->document()->begin();
        const int rows = head.layout()->lineCount();
        const int height = qRound(head.layout()->boundingRect().height());
        QVERIFY(rows > 1 && height < 4000);
        m_console->resize(500, height + 100);
        m_console->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_console.get()));
        QWidget *view = m_console->viewport();
        const int bottom =
            qRound(m_console->document()->documentMargin() + head.layout()->boundingRect().height());
        const int letter = m_console->fontMetrics().horizontalAdvance(u'm');
        // In words how much is hidden, and as a link what can be done; where each is painted it can be
        // clicked.
        const PaintedText note = painted(*view, u"… 45,904 more characters"_s);
        QCOMPARE(note.color, view->palette().color(QPalette::Text));
        const auto wordAt = [&](const QString &word) {
            const PaintedText link = painted(*view, word);
            return link.color == view->palette().color(QPalette::Link) ? link.place.toPoint() : QPoint();
        };
        const auto cursorAt = [view](QPoint place) {
            QTest::mouseMove(view, place);
            return view->cursor().shape();
        };
        const QPoint copy = wordAt(u"Copy"_s) + QPoint(letter, -2),
                     show = wordAt(u"Show"_s) + QPoint(letter, -2);
        QVERIFY(copy.y() <= bottom && show.x() < copy.x() && note.place.x() < show.x());
        QCOMPARE(cursorAt(copy), Qt::PointingHandCursor);
        QCOMPARE(cursorAt(note.place.toPoint()), Qt::IBeamCursor);
        QCOMPARE(cursorAt(show), Qt::PointingHandCursor);
        QGuiApplication::clipboard()->clear();
        QTest::mouseClick(view, Qt::LeftButton, {}, note.place.toPoint());
        QCOMPARE(QGuiApplication::clipboard()->text(), QString());
        QTest::mouseClick(view, Qt::LeftButton, {}, copy);
        QCOMPARE(QGuiApplication::clipboard()->text(), line);
        QTest::mouseClick(view, Qt::LeftButton, {}, show);
        QCOMPARE(shown(), 50'000 + 3 + 4096);
        QTRY_VERIFY(m_console->verticalScrollBar()->maximum() > 50'000 / 4096 * rows - 50);
        m_console->append(line, Kind::Output); // of the second line, which stays folded
        showAll();
        QCOMPARE(shown(), 50'000 + 3 + 4096);
    }

    void marksClassesOfErrors()
    {
        for (const auto piece :
             {"Traceback (most recent call last):\n"_L1, "  File \"x\", line 1\n"_L1, "    go()\n"_L1,
              "my.tools.Trouble"_L1, ": "_L1, "why\n"_L1, "Trouble: not one\n"_L1})
            m_console->append(piece, Kind::Error);
        const QString text = m_console->string();
        const auto isMarked = [&](qsizetype at) {
            return m_console->attributesAtIndex(static_cast<int>(at), nullptr)
                .value(u"NSFont"_s)
                .value<QFont>()
                .bold();
        };
        const qsizetype name = text.indexOf("Trouble"_L1);
        QVERIFY(isMarked(name) && isMarked(name + 6));
        QVERIFY(!isMarked(name - 1) && !isMarked(name + 7) && !isMarked(text.lastIndexOf("Trouble"_L1)));
        // Each that is known, in a text with no other word; nothing that a cleared console began.
        for (const QString &known : errorNames()) {
            m_console->clearText();
            m_console->append(known + u'\n', Kind::Output);
            QVERIFY2(m_console->string().size() > 0 && isMarked(0), qPrintable(known));
        }
        m_console->append(u"Traceback (most recent call last):\n"_s, Kind::Error);
        m_console->string();
        m_console->clearText();
        m_console->append(u"my.tools.Trouble: why\n"_s, Kind::Error);
        QVERIFY(!m_console->string().isEmpty() && !isMarked(m_console->string().indexOf("Trouble"_L1)));
    }

    void asksForZoom()
    {
        QSignalSpy zoomed(m_console.get(), &ConsoleView::zoomRequested);
        const QFont before = m_console->font();
        for (const int delta : {60, 60, -240}) {
            QWheelEvent wheel({10, 10}, {10, 10}, {}, {0, delta}, Qt::NoButton, Qt::ControlModifier,
                              Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(m_console->viewport(), &wheel);
        }
        QCOMPARE(zoomed, (QList<QVariantList> {{1}, {-2}}));
        QCOMPARE(m_console->font(), before);
    }

    void readsItsLimitFromTheDefaults()
    {
        QString lines;
        for (int i = 0; i < 100'010; ++i)
            lines += QString::number(i) + u'\n';
        m_console->append(lines, Kind::Output);
        QCOMPARE(m_console->string().count(u'\n'), 100'000);
        UserDefaults::standard().setObjectForKey(5, u"VXConsoleLineLimit"_s);
        QCOMPARE(m_console->string(), u"100005\n100006\n100007\n100008\n100009\n"_s);
        UserDefaults::standard().setObjectForKey(u"nonsense"_s, u"VXConsoleLineLimit"_s);
        m_console->append(lines, Kind::Output);
        QCOMPARE(m_console->string().count(u'\n'), 100'000);
    }

    void agreesWithASimpleModel()
    {
        QRandomGenerator random(7);
        m_console->setLineLimit(50);
        QString model;
        qsizetype dropped = 0;
        const int top = m_console->viewport()->y();
        const QStringList pieces {
            u"\n"_s,   u"word "_s,      u"\r\n"_s,           u"KeyError"_s,
            u"\n\n"_s, u"\U0001F600"_s, QString(5000, u'y'), u"File \"<string>\", line 3\n"_s};
        const QString large = (QString(800, u'z') + u'\n').repeated(45); // handled in slices
        for (int i = 0; i < 2000; ++i) {
            const QString piece = random.bounded(40) ? pieces[random.bounded(pieces.size())] : large;
            m_console->append(piece, Kind::Output);
            model += QString(piece).replace("<string>"_L1, "<macro>"_L1);
            if (random.bounded(4) == 0)
                m_console->showPending();
            if (random.bounded(400) == 0) {
                m_console->clearText();
                model.clear();
                dropped = 0;
            }
            if (random.bounded(10) > 0)
                continue;
            const QString text = m_console->string();
            QVERIFY(model.endsWith(text));
            QVERIFY(text.size() == model.size() || text.count(u'\n') == 50);
            dropped += model.count(u'\n') - text.count(u'\n');
            const auto *note = m_console->findChild<QLabel *>();
            QCOMPARE(note->isHidden(), dropped == 0);
            QCOMPARE(m_console->viewport()->y() == top, dropped == 0); // it has room of its own
            QVERIFY(dropped == 0
                    || (note->height() >= note->fontMetrics().height()
                        && note->geometry().bottom() <= m_console->viewport()->y()));
            QVERIFY2(dropped == 0
                         || note->text().contains(u' ' + m_console->locale().toString(dropped) + u' '),
                     qPrintable(note->text()));
            model = text;
        }
    }

    void marksOncePerWrite()
    {
        const auto marked = [this] {
            QStringList words;
            const QString text = m_console->string();
            for (int i = 0; i < text.size();) {
                TextRange range {i, 1};
                if (m_console->attributesAtIndex(i, &range).value(u"NSFont"_s).value<QFont>().bold())
                    words << text.mid(range.location, range.length);
                i = std::max(range.end(), i + 1);
            }
            return words;
        };
        m_console->append(u"KeyError: KeyError ValueError\n"_s, Kind::Error);
        QCOMPARE(marked(), (QStringList {u"KeyError"_s, u"ValueError"_s}));
        m_console->append(u"KeyError\n"_s, Kind::Output);
        QCOMPARE(marked().size(), 3);
        m_console->clearText();
        // Large writes are marked in slices, and are one write all the same.
        m_console->append(u"KeyError\n"_s.repeated(20'000)
                              + u"TypeError Traceback (most recent call last):\n"_s,
                          Kind::Output);
        QCOMPARE(marked(), (QStringList {u"KeyError"_s, u"TypeError"_s, u"Traceback"_s}));
        // So are those that come in pieces, whether the first one is in the view by then or not.
        for (const bool atOnce : {true, false}) {
            m_console->clearText();
            m_console->append(u"KeyError\n"_s.repeated(20'000), Kind::Output);
            if (!atOnce)
                m_console->string();
            m_console->continueWrite(u"KeyError TypeError\n"_s.repeated(2'000));
            m_console->continueWrite(u"TypeError\n"_s);
            QCOMPARE(marked(), (QStringList {u"KeyError"_s, u"TypeError"_s}));
            m_console->append(u"TypeError\n"_s, Kind::Output);
            QCOMPARE(marked().size(), 3);
        }
    }

    void tellsAttributes()
    {
        m_console->append(u"so KeyError\n  File \"<string>\", line 4, in <module>\n"_s, Kind::Error);
        QCOMPARE(m_console->string(), u"so KeyError\n  File \"<macro>\", line 4\n"_s);
        TextRange range;
        const QVariantMap plain = m_console->textStorage()->attributesAtIndexEffectiveRange(1, &range);
        QCOMPARE(range, (TextRange {0, 3}));
        QCOMPARE(plain.value(u"NSFont"_s).value<QFont>(), m_console->consoleFont());
        QCOMPARE(plain.value(u"NSColor"_s).value<QColor>(), m_console->palette().color(QPalette::Text));
        const QVariantMap error = m_console->textStorage()->attributesAtIndexEffectiveRange(5, &range);
        QVERIFY(error.value(u"NSFont"_s).value<QFont>().bold());
        QVERIFY(error.value(u"NSColor"_s).value<QColor>().red() > 200);
        QCOMPARE(links(), QStringList {u"File \"<macro>\", line 4 -> <string>:4"_s});
        for (const int none : {-1, m_console->length(), 1000})
            QVERIFY(m_console->textStorage()->attributesAtIndexEffectiveRange(none, &range).isEmpty());
    }

    void marksNothingWithoutABoldFont()
    {
        m_console->setEmphasisFont(std::nullopt);
        m_console->append(u"KeyError File \"<string>\", line 4\n"_s, Kind::Error);
        QVERIFY(!m_console->attributesAtIndex(0, nullptr).value(u"NSFont"_s).value<QFont>().bold());
        QCOMPARE(links().size(), 1);
    }

    void staysWhereOneReads()
    {
        QScrollBar *bar = m_console->verticalScrollBar();
        const auto write = [this](int count) {
            static int number = 0;
            for (int i = 0; i < count; ++i)
                m_console->append(u"line %1 %2\n"_s.arg(number++).arg(QString(80, u'w')), Kind::Output);
            m_console->showPending();
            QTest::qWait(1);
        };
        m_console->setLineLimit(300);
        write(200);
        QCOMPARE(bar->value(), bar->maximum());
        write(20);
        QCOMPARE(bar->value(), bar->maximum());
        bar->setValue(150);
        QVERIFY(bar->value() < bar->maximum());
        const auto firstLine = [this] { return m_console->cursorForPosition(QPoint(20, 10)).block().text(); };
        const QString read = firstLine();
        write(50);
        QCOMPARE(firstLine(), read);
        write(80); // lines above go
        QVERIFY(!m_console->string().contains(u"line 0 "_s));
        QCOMPARE(firstLine(), read);
        bar->setValue(bar->maximum());
        write(10);
        QCOMPARE(bar->value(), bar->maximum());
    }

    void keepsASelection()
    {
        m_console->append(u"chosen"_s, Kind::Output);
        showAll();
        m_console->selectAll();
        m_console->append(u" more\n"_s, Kind::Output);
        showAll();
        QCOMPARE(m_console->textCursor().selectedText(), u"chosen"_s);
    }

    void opensLinksByMouse()
    {
        QSignalSpy opened(m_console.get(), &ConsoleView::linkActivated);
        m_console->append(u"ab File \"<string>\", line 12\nnext\n"_s, Kind::Error);
        showAll();
        QTextCursor cursor(m_console->document());
        const auto pointAt = [&](int position) {
            cursor.setPosition(position);
            return m_console->cursorRect(cursor).center();
        };
        const int end = static_cast<int>(u"ab File \"<macro>\", line 12"_s.size());
        struct Click {
            QPoint place;
            bool opens;
        };
        for (const Click &click :
             {Click {pointAt(1), false}, Click {pointAt(3) + QPoint(2, 0), true},
              Click {pointAt(end) - QPoint(3, 0), true}, Click {pointAt(end) + QPoint(6, 0), false},
              Click {pointAt(end) + QPoint(60, 0), false}, Click {pointAt(end + 2), false}}) {
            opened.clear();
            QTest::mouseMove(m_console->viewport(), click.place);
            QTest::mouseClick(m_console->viewport(), Qt::LeftButton, {}, click.place);
            QCOMPARE(opened.size(), click.opens ? 1 : 0);
            QCOMPARE(m_console->viewport()->cursor().shape(),
                     click.opens ? Qt::PointingHandCursor : Qt::IBeamCursor);
        }
        // Nor in front of one that begins a line.
        m_console->append(u"File \"<string>\", line 3\n"_s, Kind::Error);
        showAll();
        const QPoint first = pointAt(end + 6 + 1);
        opened.clear();
        QTest::mouseClick(m_console->viewport(), Qt::LeftButton, {}, {1, first.y()});
        QCOMPARE(opened.size(), 0);
        QTest::mouseClick(m_console->viewport(), Qt::LeftButton, {}, first);
        QCOMPARE(opened.size(), 1);
        QTest::mouseClick(m_console->viewport(), Qt::LeftButton, {}, pointAt(5));
        QCOMPARE(opened.last(), (QVariantList {u"<string>"_s, u"12"_s}));
        for (const int position : {5, 1}) { // told where it leads, and no longer beside it
            const QPoint place = pointAt(position) + QPoint(2, 0);
            QHelpEvent help(QEvent::ToolTip, place, m_console->viewport()->mapToGlobal(place));
            QApplication::sendEvent(m_console->viewport(), &help);
            QTRY_COMPARE(QToolTip::isVisible(), position == 5);
            QVERIFY(position == 1 || QToolTip::text().contains(u"&lt;string&gt;"_s));
        }
        // Dragged over, let go elsewhere, with another button: no click.
        opened.clear();
        QTest::mousePress(m_console->viewport(), Qt::LeftButton, {}, pointAt(5));
        QTest::mouseMove(m_console->viewport(), pointAt(9));
        QTest::mouseRelease(m_console->viewport(), Qt::LeftButton, {}, pointAt(9));
        QTest::mousePress(m_console->viewport(), Qt::LeftButton, {}, pointAt(5));
        QTest::mouseRelease(m_console->viewport(), Qt::LeftButton, {}, pointAt(end + 2));
        QTest::mouseClick(m_console->viewport(), Qt::MiddleButton, {}, pointAt(5));
        QCOMPARE(opened.size(), 0);
    }

    /// What the menu at a place offers, and what it does.
    void offersAMenu()
    {
        m_console->append(u"ab File \"<string>\", line 12\nnext\n"_s, Kind::Error);
        showAll();
        QSignalSpy opened(m_console.get(), &ConsoleView::linkActivated);
        const auto choose = [&](int position, const QString &choice) {
            QString offered;
            QTimer looking;
            connect(&looking, &QTimer::timeout, this, [&] {
                auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                if (!menu)
                    return;
                looking.stop();
                for (QAction *action : menu->actions()) {
                    offered += action->isSeparator()
                        ? u"|"_s
                        : action->text() + (action->isEnabled() ? u"; "_s : u" (off); "_s);
                    if (action->text() == choice)
                        action->trigger();
                }
                menu->close();
            });
            looking.start(1);
            QTextCursor cursor(m_console->document());
            cursor.setPosition(position);
            const QPoint place = m_console->cursorRect(cursor).center() + QPoint(2, 0);
            QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                                    m_console->viewport()->mapToGlobal(place));
            QApplication::sendEvent(m_console->viewport(), &event);
            return offered;
        };
        QCOMPARE(choose(0, u"Select All"_s), u"Copy (off); Select All; |Clear Console; "_s);
        QCOMPARE(choose(5, u"Open Link"_s), u"Open Link; |Copy; Select All; |Clear Console; "_s);
        QCOMPARE(opened.value(0), (QVariantList {u"<string>"_s, u"12"_s}));
        choose(0, u"Copy"_s);
        QCOMPARE(QGuiApplication::clipboard()->text(), m_console->string());
        choose(0, u"Clear Console"_s);
        QCOMPARE(m_console->string(), QString());
    }

    void opensLinksByKeyboard()
    {
        QSignalSpy opened(m_console.get(), &ConsoleView::linkActivated);
        m_console->append(u"File \"<string>\", line 1\nfiller\nFile \"<string>\", line 2\n"_s, Kind::Error);
        showAll();
        m_console->moveCursor(QTextCursor::Start);
        const QList<std::pair<Qt::Key, QString>> steps {
            {Qt::Key_Tab, u"1"_s}, {Qt::Key_Tab, u"2"_s}, {Qt::Key_Backtab, u"1"_s}};
        for (const auto &[key, line] : steps) {
            QTest::keyClick(m_console.get(), key);
            QTest::keyClick(m_console.get(), Qt::Key_Return);
            QCOMPARE(opened.last()[1].toString(), line);
        }
    }

    TABLE(linksWhatInterpretersPrint, (const QString &minor, const QString &script, QStringList expected), {
        for (const char *minor : {"3.9", "3.10", "3.11"}) {
            const auto add = [&](const char *what, const char *script, const QStringList &expected) {
                row(QString::asprintf("%s, %s", minor, what), QString::fromLatin1(minor),
                    QString::fromLatin1(script), expected);
            };
            add("saved file", "x = 1\nx.y\n", {u"File \"script.py\", line 2 -> SCRIPT:2"_s});
            add("module beside it", "import beside\nbeside.fail()\n",
                {u"File \"script.py\", line 2 -> SCRIPT:2"_s, u"File \"beside.py\", line 2 -> BESIDE:2"_s});
            add("syntax error", "x = 1\ny = )\n", {u"File \"script.py\", line 2 -> SCRIPT:2"_s});
            add("chained", "try:\n    1 / 0\nexcept Exception as e:\n    raise KeyError from e\n",
                {u"File \"script.py\", line 2 -> SCRIPT:2"_s, u"File \"script.py\", line 4 -> SCRIPT:4"_s});
            add("panel code", "exec(compile('\\n\\nmissing', 'macro panel', 'exec'))\n",
                {u"File \"script.py\", line 1 -> SCRIPT:1"_s, u"File \"<macro>\", line 3 -> <string>:3"_s});
        }
    })
    {
        const QString python = Interpreters::programs(minor).value(0);
        if (python.isEmpty())
            SKIP_WITHOUT_PYTHON(minor);
        const auto write = [this](const QString &name, const QString &text) {
            return runebook::write(m_folder.filePath(name), text.toUtf8());
        };
        const QString path = write(u"script.py"_s, script);
        const QString beside = write(u"beside.py"_s, u"def fail():\n    raise ValueError('no')\n"_s);
        QProcess process;
        process.start(python, {path});
        QVERIFY(process.waitForFinished());
        // Line by line, as the interpreter writes.
        for (const QString &line : QString::fromUtf8(process.readAllStandardError()).split(u'\n'))
            m_console->append(line + u'\n', Kind::Error);
        expected.replaceInStrings("SCRIPT"_L1, path).replaceInStrings("BESIDE"_L1, beside);
        QCOMPARE(links(), expected);
        QVERIFY(!m_console->string().contains(u"<module>"_s));
    }

    TABLE(marksErrors, (const QString &output, const QString &marked), {
        row("an error", "KeyError: 'a'", "*KeyError*: 'a'");
        row("the second one not", "KeyError KeyError", "*KeyError* KeyError");
        row("only the word", "Traceback (most recent call last):\n",
            "*Traceback* (most recent call last):\n");
        row("no heading", "Traceback of a tour", "Traceback of a tour");
        row("macro", "File \"<string>\", line 4", "[File \"<macro>\", line 4](<string>:4)");
        row("macro panel", "  File \"macro panel\", line 12\nNameError: x",
            "  [File \"<macro>\", line 12](<string>:12)\n*NameError*: x");
        row("with a colon", "File: \"<string>\", line 4", "[File: \"<macro>\", line 4](<string>:4)");
        row("without a number", "File \"<string>\", line x", "[File \"<macro>\", line ](<string>:)x");
        row("no such file", "File \"/no/such.py\", line 4", "File \"/no/such.py\", line 4");
        row("two", "File \"<string>\", line 1\nFile \"<string>\", line 2\nTypeError",
            "[File \"<macro>\", line 1](<string>:1)\n[File \"<macro>\", line "
            "2](<string>:2)\n*TypeError*");
    })
    {
        QCOMPARE(picture(output), marked);
    }

    void linksFiles()
    {
        const QTemporaryDir folder;
        const QString path = runebook::write(folder.filePath(u"OSError file.py"_s), {});
        QCOMPARE(
            picture(u"Traceback (most recent call last):\n  File \"%1\", line 7\nKeyError: 1"_s.arg(path)),
            u"*Traceback* (most recent call last):\n  [File \"OSError file.py\", line 7](%1:7)\n*KeyError*: 1"_s
                .arg(path));
    }

    void namesAllErrorsInOrder()
    {
        QCOMPARE(fingerprintOf(errorNames()), QByteArray("c2196438355cf07197940af1ad5bdccc"));
    }

private:
    QFont bold() const
    {
        QFont font = m_console->consoleFont();
        font.setBold(true);
        return font;
    }

    /// The links in order, as "text -> path:line".
    QStringList links()
    {
        QStringList found;
        const QString text = m_console->string();
        for (int i = 0; i < text.size();) {
            TextRange range {i, 1};
            const QVariantMap attributes = m_console->attributesAtIndex(i, &range);
            const QStringList link = attributes.value(u"NSLink"_s).toStringList();
            if (link.size() == 2)
                found << text.mid(range.location, range.length) + " -> "_L1 + link.join(u':');
            i = std::max(range.end(), i + 1);
        }
        return found;
    }

    /// However many slices that takes.
    void showAll()
    {
        while (m_console->hasPending())
            m_console->showPending();
    }

    std::unique_ptr<ConsoleView> m_console;
    QTemporaryDir m_folder;
};

RUNEBOOK_TEST_MAIN(ConsoleTest)
#include "ConsoleTest.moc"
