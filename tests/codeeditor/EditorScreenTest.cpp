#include "codeeditor/CompletionPopup.h"
#include "codeeditor/VXLineNumberView.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/codeeditor/EditorFixture.h"
#include "tests/codeeditor/FreshRendering.h"

#include <QPaintEvent>
#include <QPainter>
#include <QRandomGenerator>
#include <QScrollArea>
#include <QScrollBar>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace runebook;

// What the screen shows of an editor while it is used, compared with an editor made anew.

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

#define COMPARE_SCREEN(editor)                                                                               \
    do {                                                                                                     \
        const QString wrong = FreshRendering((editor).view).difference();                                    \
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));                                                        \
    } while (false)

/// An editor with its ruler.
struct RulerFixture : EditorFixture {
    VXLineNumberView *ruler;

    RulerFixture()
    {
        view.setupLineNumberview();
        ruler = view.lineNumberView();
    }
    QRectF rowOfLine(int line) const
    {
        QTextCursor cursor(view.document());
        cursor.setPosition(ruler->lineIndices()[line - 1]);
        return view.cursorRect(cursor);
    }
    qreal middleOfLine(int line) const { return rowOfLine(line).center().y(); }
    QPoint pointAtLine(int line) const { return QPoint(5, int(middleOfLine(line))); }
    qreal thicknessFor(int digits) const
    {
        const qreal width = QFontMetricsF(ruler->font()).horizontalAdvance(QString(digits, u'8'));
        return std::ceil(std::max(12 + width + 5, 22.0));
    }
};

/// What of a widget is drawn anew while this lives.
class PaintedArea : public QObject
{
public:
    explicit PaintedArea(QWidget &widget) { widget.installEventFilter(this); }
    QRegion area() const { return m_area; }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_area += static_cast<QPaintEvent *>(event)->region();
        return false;
    }

private:
    QRegion m_area;
};

/// Whether anything is drawn at the height of a row.
bool hasLabelAt(const QImage &image, int top, int bottom)
{
    for (int y = std::max(top, 0); y < std::min(bottom, image.height()); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != image.pixelColor(0, 0))
                return true;
        }
    }
    return false;
}

} // namespace

/// What the screen shows of the editor and of the ruler beside it.
class EditorScreenTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Whatever other colours it brings.
    void aKeyPaintsItsLine()
    {
        ScreenFixture editor;
        editor.view.setString(u"first = 1\ni\nthird = 'x'\nfourth"_s);
        editor.select(11);
        letPaint();
        for (const char typed : {'f', ' ', '1', '0', '.', 'x', '\b', '\b', '#', 'y', '\b', '\b'}) {
            const PaintedArea painted(*editor.view.viewport());
            if (typed == '\b')
                editor.press(Qt::Key_Backspace);
            else
                editor.view.insertText(QChar::fromLatin1(typed));
            letPaint();
            const QRect row = editor.view.cursorRect();
            QVERIFY(painted.area().intersects(row));
            QCOMPARE(painted.area().boundingRect() & row.adjusted(-600, -4, 600, 4),
                     painted.area().boundingRect());
        }
        COMPARE_SCREEN(editor);
    }

    void pureRemovalsAreDrawn()
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

    /// Another tab was in front while text and letters grew, so that the bar at the side comes with the first
    /// layout.
    void showsWhatChangedUnseen()
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

    void completionsAreSeen()
    {
        ScreenFixture editor;
        for (int turn = 0; turn < 3; ++turn) {
            QTest::keyClicks(&editor.view, u"fo"_s);
            auto *popup = editor.view.findChild<CompletionPopup *>();
            QVERIFY(popup && popup->isVisible() && QTest::qWaitForWindowExposed(popup));
            letPaint();
            const QImage wanted = popup->grab().toImage().convertToFormat(QImage::Format_RGB32);
            const auto differing = [&] {
                const QImage shown = popup->screen()->grabWindow(0).toImage().copy(popup->geometry());
                return differenceOf(shown.convertToFormat(QImage::Format_RGB32), wanted);
            };
            QTRY_COMPARE(differing(), QRect());
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

    void randomEdits()
    {
        QRandomGenerator random(15);
        ScreenFixture editor;
        editor.view.setString(u"if first:\n\tsecond = 'third' # fourth\n"_s.repeated(15));
        const QStringList keys = u"Backspace Del Return Tab Shift+Backtab Ctrl+Z Ctrl+Shift+Z Ctrl+Backspace "
                                 u"PgDown PgUp Ctrl+X Ctrl+V "
                                 "Shift+Home Shift+Down"_s.split(u' ');
        for (int step = 0; step < rounds(120); ++step) {
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
                if (random.bounded(3) == 0) // makes the row taller
                    editor.view.insertText(u"漢ก\u0F40\u2E3B"_s.at(random.bounded(4)));
                break;
            case 3:
                editor.view.insertText(u"a long line of words "_s.repeated(random.bounded(8)));
                break;
            default:
                const QKeyCombination key = QKeySequence(keys[random.bounded(keys.size())])[0];
                editor.press(key.key(), key.keyboardModifiers());
            }
            QTest::keyClick(&editor.view, Qt::Key_Escape);
            COMPARE_SCREEN(editor);
        }
    }

    TABLE(thicknessFollowsTheNumberOfLines, (int lines, int digits), {
        row("1", 1, 2);
        row("99", 99, 2);
        row("100", 100, 3);
        row("1,000", 1000, 4);
    })
    {
        RulerFixture editor;
        editor.view.setString(QString(lines - 1, u'\n'));
        QCOMPARE(editor.ruler->lineIndices().size(), lines);
        QCOMPARE(editor.ruler->ruleThickness(), editor.thicknessFor(digits));
        QCOMPARE(editor.ruler->width(), int(editor.thicknessFor(digits)));
        QCOMPARE(editor.view.viewport()->x(), editor.ruler->geometry().right() + 1);
    }

    void thicknessIsNeverSmall()
    {
        QPlainTextEdit view;
        VXLineNumberView ruler(&view);
        QFont tiny;
        tiny.setPixelSize(3);
        ruler.setFont(tiny);
        QCOMPARE(ruler.requiredThickness(), 22.0);
        QCOMPARE(ruler.leftMargin(), 5);
        QCOMPARE(ruler.rightMargin(), 5);
        QCOMPARE(ruler.alignment(), Qt::AlignRight);
        QVERIFY(ruler.drawsDivider() && ruler.accessibleName() == u"Line numbers"_s);
        QCOMPARE(ruler.lineIndices(), QList<int> {0});
    }

    void findsLinesByLocation()
    {
        RulerFixture editor;
        editor.view.setString(u"line\n"_s.repeated(500));
        QCOMPARE(editor.ruler->lineNumberForLocation(editor.middleOfLine(3)), 3);
        editor.view.verticalScrollBar()->setValue(100);
        QCOMPARE(editor.ruler->lineNumberForLocation(editor.middleOfLine(103)), 103);
        QCOMPARE(editor.ruler->lineNumberForCharacterIndexInText(7), 1);
        editor.view.setString(u"a"_s);
        QVERIFY(!editor.ruler->lineNumberForLocation(300));
    }

    /// Its own number, at the right, on the row of its line.
    void drawsTheNumbers()
    {
        RulerFixture editor;
        editor.view.setString(u"line\n"_s.repeated(200));
        editor.view.verticalScrollBar()->setValue(90);
        const QImage drawn = editor.ruler->grab().toImage();
        for (const int line : {93, 99, 100, 101}) {
            const qreal height = QFontMetricsF(editor.ruler->font()).height();
            QImage expected(drawn.size(), drawn.format());
            expected.fill(drawn.pixelColor(0, 0));
            QPainter painter(&expected);
            painter.setFont(editor.ruler->font());
            painter.setPen(editor.ruler->textColor());
            const int low = std::abs(height - 19.0) < 0.1 ? 2 : 0; // as labels of this height have it
            const QRectF row(0, editor.rowOfLine(line).bottom() - height + low, drawn.width() - 5, height);
            painter.drawText(row, Qt::AlignRight | Qt::AlignVCenter, QString::number(line));
            painter.end();
            QCOMPARE(drawn.copy(row.toAlignedRect()), expected.copy(row.toAlignedRect()));
        }
    }

    void aWrappedLineHasOneNumber()
    {
        RulerFixture editor;
        editor.view.setString(u"word "_s.repeated(60) + u"\nshort"_s);
        const int first = int(editor.middleOfLine(1));
        const int second = int(editor.middleOfLine(2));
        const int row = editor.view.cursorRect().height();
        QVERIFY(second - first > 2 * row);
        const QImage image = editor.ruler->grab().toImage();
        QVERIFY(hasLabelAt(image, first - row / 2, first + row / 2));
        QVERIFY(hasLabelAt(image, second - row / 2, second + row / 2));
        QVERIFY(!hasLabelAt(image, first + row, second - row / 2 - 2));
        QVERIFY(!editor.ruler->lineNumberForLocation(first + row));
    }

    void clicksAndDragsSelectLines()
    {
        RulerFixture editor;
        editor.view.setString(u"ab\ncd\nef\ngh"_s);
        QTest::mouseClick(editor.ruler, Qt::LeftButton, {}, editor.pointAtLine(2));
        QCOMPARE(editor.view.selectedRange(), (TextRange {3, 3}));
        QTest::mousePress(editor.ruler, Qt::LeftButton, {}, editor.pointAtLine(2));
        QMouseEvent move(QEvent::MouseMove, editor.pointAtLine(3),
                         editor.ruler->mapToGlobal(editor.pointAtLine(3)), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(editor.ruler, &move);
        QTest::mouseRelease(editor.ruler, Qt::LeftButton, {}, editor.pointAtLine(3));
        QCOMPARE(editor.view.selectedRange(), (TextRange {3, 6}));
        QTest::mouseClick(editor.ruler, Qt::LeftButton, Qt::ShiftModifier, editor.pointAtLine(1));
        QCOMPARE(editor.view.selectedRange(), (TextRange {0, 6}));
        QTest::mouseClick(editor.ruler, Qt::LeftButton, {}, editor.pointAtLine(4));
        QCOMPARE(editor.view.selectedRange(), (TextRange {9, 2}));
    }

    void followsEditsAndZoom()
    {
        RulerFixture editor;
        editor.view.setString(QString(98, u'\n'));
        const qreal narrow = editor.ruler->ruleThickness();
        editor.view.insertText(u"\n"_s);
        QVERIFY(editor.ruler->ruleThickness() > narrow);
        editor.view.undo();
        QCOMPARE(editor.ruler->ruleThickness(), narrow);
        editor.document.setFontSize(30);
        QCOMPARE(editor.ruler->font().pointSize(), 30);
        QVERIFY(editor.ruler->ruleThickness() > narrow);
        QCOMPARE(editor.ruler->lineNumberForLocation(editor.middleOfLine(2)), 2);
    }

    TABLE(drawsTheNumbersOfAppendedLines, (const QString &before, const QString &appended), {
        row("a return", "a", "\n");
        row("a return that indents", "if a:", "\n    ");
        row("three lines at once", "a", "\nb\nc\nd");
    })
    {
        RulerFixture editor;
        editor.view.setString(before);
        editor.view.setSelectedRange({int(before.size()), 0});
        QVERIFY(QTest::qWaitForWindowExposed(&editor.view));
        QCoreApplication::processEvents();

        PaintedArea painted(*editor.ruler);
        editor.view.insertText(appended);
        QCoreApplication::processEvents();
        const int lines = int(editor.ruler->lineIndices().size());
        QVERIFY(painted.area().contains(editor.pointAtLine(lines)));
    }

    void canBeSwitchedOff()
    {
        RulerFixture editor;
        editor.view.disableLineNumbers();
        QVERIFY(!editor.ruler->isVisible());
        const int left = editor.view.viewport()->x();
        editor.view.setupLineNumberview();
        QVERIFY(editor.view.lineNumberView()->isVisible());
        QVERIFY(editor.view.viewport()->x() > left);
    }

    void archives()
    {
        QPlainTextEdit view;
        VXLineNumberView ruler(&view);
        ruler.setFont(QFont(u"monospace"_s, 9));
        ruler.setTextColor(QColor(Qt::red));
        ruler.setBackgroundColor(QColor(Qt::blue));
        ruler.setDrawsDivider(false);
        const QVariantMap keyed = ruler.encodeWithCoder();
        QCOMPARE(QStringList(keyed.keys()),
                 (QStringList {u"alternateTextColor"_s, u"backgroundColor"_s, u"drawsDivider"_s, u"font"_s,
                               u"textColor"_s}));
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        ruler.encodeWithCoder(out);

        const auto isSame = [&](const VXLineNumberView &copy) {
            return copy.font() == ruler.font() && copy.textColor() == QColor(Qt::red)
                && copy.backgroundColor() == QColor(Qt::blue) && !copy.drawsDivider()
                && copy.alternateTextColor() == copy.defaultAlternateTextColor();
        };
        VXLineNumberView fromKeys(&view);
        fromKeys.initWithCoder(keyed);
        QVERIFY(isSame(fromKeys));
        VXLineNumberView fromStream(&view);
        QDataStream in(bytes);
        fromStream.initWithCoder(in);
        QVERIFY(isSame(fromStream));
        QDataStream cut(bytes.first(10));
        fromStream.initWithCoder(cut); // an archive that ends early changes nothing
        QVERIFY(isSame(fromStream));
    }

    void withoutATextThereIsNothing()
    {
        QScrollArea area;
        VXLineNumberView ruler(&area);
        QVERIFY(!ruler.clientView());
        QCOMPARE(ruler.lineIndices(), QList<int>());
        QVERIFY(!ruler.lineNumberForLocation(10));
        QCOMPARE(ruler.lineNumberForCharacterIndexInText(10), 0);
        QVERIFY(!ruler.grab().isNull());
        QPlainTextEdit text(u"a\nb"_s);
        ruler.setClientView(&text);
        QCOMPARE(ruler.lineIndices(), (QList<int> {0, 2}));
        ruler.setClientView(&area);
        QVERIFY(!ruler.clientView());
    }
};

RUNEBOOK_SCREEN_TEST_MAIN(EditorScreenTest)
#include "EditorScreenTest.moc"
