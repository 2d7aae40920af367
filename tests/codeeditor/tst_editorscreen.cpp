// What the screen shows of an editor while it is used, compared with an editor made anew.
#include "EditorFixture.h"
#include "FreshRendering.h"
#include "codeeditor/CompletionPopup.h"

#include <QPaintEvent>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

struct ScreenFixture : EditorFixture {
    ScreenFixture()
    {
        view.setCursorWidth(0);
        view.setHeadIndent(20);
        view.setupLineNumberview();
        letPaint();
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&view, Qt::Key(key), modifiers);
    }
};

/// What a widget paints while this lives.
class Painted : public QObject
{
public:
    explicit Painted(QWidget *widget) { widget->installEventFilter(this); }
    QRegion region;

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};

#define COMPARE_SCREEN(editor)                                                                               \
    do {                                                                                                     \
        const QString wrong = FreshRendering((editor).view).difference();                                    \
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));                                                        \
    } while (false)

} // namespace

class TestEditorScreen : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rowsMoveWhatStandsBelow_data();
    void rowsMoveWhatStandsBelow();
    void aKeyPaintsItsLine();
    void pureRemovalsAreDrawn();
    void showsWhatChangedUnseen();
    void completionsAreSeen();
    void randomEdits();
};

void TestEditorScreen::rowsMoveWhatStandsBelow_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("a row more") << u"wordy words "_s.repeated(5);
    QTest::newRow("a taller font") << u"x漢ก\u0F40\u2E3By"_s;
}

void TestEditorScreen::rowsMoveWhatStandsBelow()
{
    QFETCH(QString, typed);
    ScreenFixture editor;
    editor.view.setString(u"The first of some lines\nsecond\nthird\nfourth"_s);
    editor.select(23);
    COMPARE_SCREEN(editor);
    for (const QChar c : typed) {
        editor.view.insertText(c);
        COMPARE_SCREEN(editor);
    }
    for (qsizetype i = 0; i < typed.size(); ++i) {
        editor.press(Qt::Key_Backspace);
        COMPARE_SCREEN(editor);
    }
}

/// Whatever other colours it brings.
void TestEditorScreen::aKeyPaintsItsLine()
{
    ScreenFixture editor;
    editor.view.setString(u"first = 1\ni\nthird = 'x'\nfourth"_s);
    editor.select(11);
    letPaint();
    for (const char typed : {'f', ' ', '1', '0', '.', 'x', '\b', '\b', '#', 'y', '\b', '\b'}) {
        Painted painted(editor.view.viewport());
        if (typed == '\b')
            editor.press(Qt::Key_Backspace);
        else
            editor.view.insertText(QChar::fromLatin1(typed));
        letPaint();
        const QRect row = editor.view.cursorRect();
        QVERIFY(painted.region.intersects(row));
        QCOMPARE(painted.region.boundingRect() & row.adjusted(-600, -4, 600, 4), painted.region.boundingRect());
    }
    COMPARE_SCREEN(editor);
}

void TestEditorScreen::pureRemovalsAreDrawn()
{
    ScreenFixture editor;
    editor.view.setString(u"\tone\n\ttwo\n\tthree\nfour"_s);
    editor.select(0, 15);
    COMPARE_SCREEN(editor);
    editor.press(Qt::Key_Backtab, Qt::ShiftModifier);
    COMPARE_SCREEN(editor);
    QTextCursor cursor(editor.view.document());
    cursor.beginEditBlock(); // as much is put in at the front as is taken out at the end
    cursor.insertText(u"x"_s);
    cursor.movePosition(QTextCursor::End);
    cursor.movePosition(QTextCursor::StartOfBlock);
    cursor.deleteChar();
    cursor.endEditBlock();
    COMPARE_SCREEN(editor);
}

/// Another tab was in front while text and letters grew, so that the bar at the side comes with the first layout.
void TestEditorScreen::showsWhatChangedUnseen()
{
    QRandomGenerator random(15);
    ScreenFixture editor;
    for (int round = 0; round < 60; ++round) {
        editor.view.hide();
        QString text;
        for (int line = random.bounded(3, 16); line > 0; --line)
            text += u"wordy words "_s.repeated(random.bounded(12)) + u'\n';
        editor.view.setString(text);
        editor.document.setFontSize(random.bounded(8, 20));
        editor.view.show();
        COMPARE_SCREEN(editor);
        QVERIFY2(!editor.view.horizontalScrollBar()->isVisible(), qPrintable(QString::number(round)));
    }
}

void TestEditorScreen::completionsAreSeen()
{
    ScreenFixture editor;
    for (int turn = 0; turn < 3; ++turn) {
        QTest::keyClicks(&editor.view, u"fo"_s);
        auto *popup = editor.view.findChild<CompletionPopup *>();
        QVERIFY(popup && popup->isVisible());
        letPaint();
        const QImage shown = popup->screen()->grabWindow(0).toImage().copy(popup->geometry());
        const QImage wanted = popup->grab().toImage().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(differenceOf(shown.convertToFormat(QImage::Format_RGB32), wanted), QRect());
        // Another tab comes in front, and goes again.
        editor.view.hide();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!editor.view.findChild<CompletionPopup *>());
        letPaint();
        editor.view.show();
        editor.view.activateWindow();
        editor.view.setFocus();
        QVERIFY(QTest::qWaitForWindowActive(&editor.view));
        editor.press(Qt::Key_Return);
        QVERIFY(editor.view.string().endsWith(u"fo\n"_s));
    }
}

void TestEditorScreen::randomEdits()
{
    QRandomGenerator random(15);
    ScreenFixture editor;
    editor.view.setString(u"if first:\n\tsecond = 'third' # fourth\n"_s.repeated(15));
    const QList<QPair<int, Qt::KeyboardModifiers>> keys = {
        {Qt::Key_Backspace, {}},
        {Qt::Key_Delete, {}},
        {Qt::Key_Return, {}},
        {Qt::Key_Tab, {}},
        {Qt::Key_Backtab, Qt::ShiftModifier},
        {Qt::Key_Z, Qt::ControlModifier},
        {Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier},
        {Qt::Key_Backspace, Qt::ControlModifier},
        {Qt::Key_PageDown, {}},
        {Qt::Key_PageUp, {}},
        {Qt::Key_X, Qt::ControlModifier},
        {Qt::Key_V, Qt::ControlModifier},
        {Qt::Key_Home, Qt::ShiftModifier},
        {Qt::Key_Down, Qt::ShiftModifier}};
    for (int step = 0; step < 120; ++step) {
        const int length = editor.view.textStorage()->length();
        switch (random.bounded(6)) {
        case 0:
            editor.select(random.bounded(length + 1));
            break;
        case 1:
            editor.select(random.bounded(length + 1), random.bounded(60));
            break;
        case 2:
            QTest::keyClicks(&editor.view, u"word'# ("_s.sliced(random.bounded(8)));
            break;
        case 3:
            editor.view.insertText(u"a long line of words "_s.repeated(random.bounded(8)));
            break;
        default:
            const auto &[key, modifiers] = keys[random.bounded(keys.size())];
            editor.press(key, modifiers);
        }
        QTest::keyClick(&editor.view, Qt::Key_Escape);
        COMPARE_SCREEN(editor);
    }
}

RUNEBOOK_SCREEN_TEST_MAIN(TestEditorScreen)
#include "tst_editorscreen.moc"
