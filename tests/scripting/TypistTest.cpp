// Somebody types, clicks and runs at random in a real panel. After every step the text is what a plain model
// says, at random moments the screen shows what an editor made anew would. RUNEBOOK_TYPIST_SECONDS=600 for a
// long walk, RUNEBOOK_TYPIST_SEED for another one.
#include "codeeditor/CompletionSession.h"
#include "codeeditor/FindIndicator.h"
#include "codeeditor/LineEditing.h"
#include "scripting/python/ScriptRun.h"
#include "tests/codeeditor/FreshRendering.h"
#include "tests/scripting/PanelFixture.h"

#include <QtWidgets>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kMostTabs = 5;
constexpr int kLongestText = 4000;
constexpr auto kControl = Qt::ControlModifier;

/// Walks longer than the test framework's patience tell it so before it starts.
const int secondsToWalk = [] {
    const int seconds = qEnvironmentVariableIntValue("RUNEBOOK_TYPIST_SECONDS");
    if (seconds > 0)
        qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number((seconds + 60) * 1000));
    return seconds;
}();

/// What a tab holds as the model sees it, and all it ever held.
struct Sheet {
    QString text;
    QSet<QString> past;
};

/// \a text with the selection \a at replaced by \a put.
QString replaced(QString text, TextRange at, const QString &put)
{
    return text.replace(at.location, at.length, put);
}

class Typist
{
public:
    explicit Typist(quint32 seed) : m_random(seed)
    {
        m_panel.showPanel();
        (void)QTest::qWaitForWindowActive(m_panel.window());
        editor().setFocus();
    }

    /// One step; what went wrong, or nothing.
    QString step()
    {
        editor().setCursorWidth(0);
        if (!m_sheets.contains(tab()))
            m_sheets.insert(tab(), {editor().string(), {editor().string()}});
        const TextRange selected = editor().selectedRange();
        const QStringList allowed = act();
        const QString now = editor().string();
        m_history = QStringList(m_history.mid(std::max<qsizetype>(0, m_history.size() - 19)))
            << u"%1 at %2, %3 of %4"_s.arg(m_what)
                   .arg(selected.location)
                   .arg(selected.length)
                   .arg(m_before.size());
        const bool isRight = m_undoes ? m_sheets[tab()].past.contains(now) : allowed.contains(now);
        if (!isRight)
            return u"after\n%1 of\n%2\nexpected one of\n%3\nfound\n%4"_s.arg(m_history.join(u'\n'), m_before,
                                                                             allowed.join(u"\n---\n"_s), now);
        m_sheets[tab()].text = now;
        m_sheets[tab()].past.insert(now);
        for (auto sheet = m_sheets.cbegin(); sheet != m_sheets.cend(); ++sheet) {
            if (sheet.key()->code() != sheet->text)
                return u"another tab changed after \"%1\""_s.arg(m_what);
        }
        return {};
    }

    /// Compares the screen with an editor made anew.
    QString look()
    {
        editor().findChild<CompletionSession *>()->end();
        if (!QTest::qWaitFor([this] { return !editor().viewport()->findChild<FindIndicator *>(); }))
            return u"the plate stays"_s;
        const QString wrong = FreshRendering(editor()).difference();
        if (wrong.isEmpty())
            return {};
        const TextRange selected = editor().selectedRange();
        return u"%1\nafter\n%2\nwith %3, %4 selected in\n%5"_s.arg(wrong, m_history.join(u'\n'))
            .arg(selected.location)
            .arg(selected.length)
            .arg(editor().string());
    }

private:
    JSTTextView &editor() { return *tab()->macroText(); }
    VXMacroViewController *tab() { return m_panel.activeMacroController(); }
    VXTabBarControl &bar() { return *m_panel.tabBarControl(); }

    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QWidget *target = QApplication::focusWidget();
        QTest::keyClick(target && target != &bar() ? target : &editor(), Qt::Key(key), modifiers);
    }

    QStringList act()
    {
        m_undoes = false;
        m_before = editor().string();
        switch (m_random.bounded(20)) {
        case 0:
            return click();
        case 1:
            return undo();
        case 2:
            return command();
        case 3:
            return m_random.bounded(3) == 0 ? changeTab() : move();
        case 4:
            return m_random.bounded(4) == 0 ? run() : move();
        case 5:
        case 6:
            return move();
        case 7:
            return copyAndPaste();
        case 8:
        case 9:
            return endLine();
        case 10:
            return erase();
        case 11:
            return takeCompletion();
        default:
            return type();
        }
    }

    QStringList type()
    {
        static const QString typed = u"prinfo imdsel  ..()[]{}'\"=,:#x1"_s;
        const QChar c = typed[m_random.bounded(typed.size())];
        m_what = u"typing "_s + c;
        const TextRange at = editor().selectedRange();
        const QString plain = replaced(m_before, at, c);
        press(0, {}, c);
        QStringList allowed {plain};
        const QString closer =
            QMap<QChar, QChar> {{u'(', u')'}, {u'[', u']'}, {u'{', u'}'}, {u'\'', u'\''}, {u'"', u'"'}}.value(
                c);
        if (at.length == 0 && !closer.isEmpty() && closer != QChar())
            allowed << replaced(m_before, at, c + closer);
        if (at.length == 0 && u")]}'\""_s.contains(c) && m_before.mid(at.location, 1) == c)
            allowed << m_before; // typed over
        return allowed;
    }
    void press(int, Qt::KeyboardModifiers, QChar c)
    {
        QKeyEvent down(QEvent::KeyPress, c.toUpper().unicode(), Qt::NoModifier, c);
        QCoreApplication::sendEvent(&editor(), &down);
    }

    QStringList endLine()
    {
        m_what = u"Return"_s;
        const TextRange at = editor().selectedRange();
        const auto *session = editor().findChild<CompletionSession *>();
        if (session->isOpen() && session->isChosen())
            return takeCompletion();
        press(Qt::Key_Return);
        const qsizetype start = at.location == 0 ? 0 : m_before.lastIndexOf(u'\n', at.location - 1) + 1;
        return {replaced(m_before, at,
                         u'\n' + indentationAfter(QStringView(m_before).sliced(start, at.location - start)))};
    }

    QStringList erase()
    {
        m_what = u"Backspace"_s;
        const TextRange at = editor().selectedRange();
        press(Qt::Key_Backspace);
        if (at.length > 0)
            return {replaced(m_before, at, {})};
        if (at.location == 0)
            return {m_before};
        QStringList allowed {replaced(m_before, {at.location - 1, 1}, {}),
                             replaced(m_before, {at.location - 1, 2}, {})};
        for (int count = 2; count <= std::min(8, at.location); ++count) {
            if (QStringView(m_before).sliced(at.location - count, count).count(u' ') == count)
                allowed << replaced(m_before, {at.location - count, count}, {});
        }
        return allowed;
    }

    QStringList takeCompletion()
    {
        const auto *session = editor().findChild<CompletionSession *>();
        if (m_random.bounded(2) == 0 && !session->isOpen())
            press(Qt::Key_Space, kControl);
        if (!session->isOpen())
            return {m_before};
        if (m_random.bounded(2) == 0)
            press(m_random.bounded(2) == 0 ? Qt::Key_Down : Qt::Key_Up);
        const QString word = session->current().text;
        m_what = u"taking "_s + word;
        const TextRange range = editor().rangeForUserCompletion();
        press(Qt::Key_Tab);
        return {replaced(m_before, range, word)};
    }

    QStringList move()
    {
        const int keys[] = {Qt::Key_Left, Qt::Key_Right,  Qt::Key_Up,       Qt::Key_Down,  Qt::Key_Home,
                            Qt::Key_End,  Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Escape};
        const int key = keys[m_random.bounded(int(std::size(keys)))];
        m_what = u"moving"_s;
        const Qt::KeyboardModifiers modifiers[] = {
            {}, Qt::ShiftModifier, kControl, kControl | Qt::ShiftModifier};
        const bool isPage =
            key == Qt::Key_PageUp || key == Qt::Key_PageDown; // with Control they change the tab
        press(key,
              key == Qt::Key_Escape || isPage ? Qt::KeyboardModifiers() : modifiers[m_random.bounded(4)]);
        return {m_before};
    }

    QStringList click()
    {
        m_what = u"a click"_s;
        QWidget *view = editor().viewport();
        const QPoint place(m_random.bounded(view->width()), m_random.bounded(view->height()));
        if (m_random.bounded(4) == 0)
            QTest::mouseDClick(view, Qt::LeftButton, {}, place);
        else
            QTest::mouseClick(view, Qt::LeftButton, {}, place);
        QTest::mouseRelease(view, Qt::LeftButton, {}, place);
        return {m_before};
    }

    QStringList undo()
    {
        m_what = u"undo or redo"_s;
        m_undoes = true;
        for (int count = m_random.bounded(3); count >= 0; --count)
            press(Qt::Key_Z, m_random.bounded(3) == 0 ? kControl | Qt::ShiftModifier : kControl);
        return {};
    }

    QStringList command()
    {
        struct Command {
            int key;
            Qt::KeyboardModifiers modifiers;
            LineEdit (*rule)(QStringView, TextRange);
        };
        static const Command commands[] = {{Qt::Key_Slash, kControl, toggleComment},
                                           {Qt::Key_BracketRight, kControl, shiftRight},
                                           {Qt::Key_BracketLeft, kControl, shiftLeft},
                                           {Qt::Key_D, kControl | Qt::ShiftModifier, duplicateLines},
                                           {Qt::Key_Up, Qt::AltModifier, moveLinesUp},
                                           {Qt::Key_Down, Qt::AltModifier, moveLinesDown},
                                           {Qt::Key_J, kControl, joinLines},
                                           {Qt::Key_Backtab, Qt::ShiftModifier, shiftLeft}};
        const Command &command = commands[m_random.bounded(int(std::size(commands)))];
        m_what = QKeySequence(command.key | int(command.modifiers)).toString();
        const TextRange at = editor().selectedRange();
        if (m_before.size() > kLongestText) {
            press(Qt::Key_A, kControl);
            press(Qt::Key_Delete);
            return {QString()};
        }
        press(command.key, command.modifiers);
        return {command.rule(m_before, at).appliedTo(m_before)};
    }

    QStringList copyAndPaste()
    {
        const TextRange at = editor().selectedRange();
        const QString selected = m_before.mid(at.location, at.length);
        switch (m_random.bounded(3)) {
        case 0:
            m_what = u"copy"_s;
            press(Qt::Key_C, kControl);
            return {m_before};
        case 1:
            m_what = u"cut"_s;
            press(Qt::Key_X, kControl);
            return {replaced(m_before, at, {})};
        default:
            m_what = u"paste"_s;
            const QString pasted = QGuiApplication::clipboard()->text();
            press(Qt::Key_V, kControl);
            return {pasted.isEmpty() ? m_before : replaced(m_before, at, pasted)};
        }
    }

    QStringList changeTab()
    {
        m_what = u"another tab or size"_s;
        switch (m_random.bounded(4)) {
        case 0:
            if (bar().countOfTabItems() < kMostTabs)
                press(Qt::Key_T, kControl);
            break;
        case 1: {
            const auto cells = bar().cells();
            const QPointF place = cells[m_random.bounded(cells.size())]->frame().center();
            if (bar().isVisible())
                QTest::mouseClick(&bar(), Qt::LeftButton, {}, place.toPoint());
            editor().setFocus();
            break;
        }
        case 2:
            press(m_random.bounded(2) == 0 ? Qt::Key_PageUp : Qt::Key_PageDown, kControl);
            break;
        default:
            press(m_random.bounded(2) == 0 ? Qt::Key_Plus : Qt::Key_Minus, kControl);
        }
        editor().setCursorWidth(0);
        if (!m_sheets.contains(tab()))
            m_sheets.insert(tab(), {editor().string(), {editor().string()}});
        return {m_sheets[tab()].text};
    }

    QStringList run()
    {
        m_what = u"a run"_s;
        press(Qt::Key_Return, m_random.bounded(2) == 0 ? kControl : Qt::KeyboardModifiers(Qt::ShiftModifier));
        (void)QTest::qWaitFor([] { return !ScriptRun::isRunning(); });
        return {m_before};
    }

    QRandomGenerator m_random;
    VXMacroWindowController m_panel;
    QHash<VXMacroViewController *, Sheet> m_sheets;
    QString m_before;
    QString m_what;
    QStringList m_history; ///< of the last steps, for the failure
    bool m_undoes = false;
};

} // namespace

class TypistTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { startPanels(); }

    void typesAtRandom()
    {
        const quint32 seed = quint32(qEnvironmentVariableIntValue("RUNEBOOK_TYPIST_SEED"));
        constexpr int kSteps = 500; // where no time is given
        constexpr int kStepsBetweenLooks = 12;
        QRandomGenerator looks(seed);
        Typist typist(seed);
        QElapsedTimer clock;
        clock.start();
        int step = 0;
        int looked = 0;
        for (; secondsToWalk > 0 ? clock.elapsed() < secondsToWalk * 1000LL : step < kSteps; ++step) {
            const QString wrong = typist.step();
            QVERIFY2(wrong.isEmpty(), qPrintable(u"step %1: %2"_s.arg(step).arg(wrong)));
            if (looks.bounded(kStepsBetweenLooks) > 0)
                continue;
            ++looked;
            const QString shown = typist.look();
            QVERIFY2(shown.isEmpty(), qPrintable(u"step %1: %2"_s.arg(step).arg(shown)));
        }
        qInfo("%d steps, %d looks", step, looked);
        QVERIFY(looked > 0);
    }
};

RUNEBOOK_SCREEN_TEST_MAIN(TypistTest)
#include "TypistTest.moc"
