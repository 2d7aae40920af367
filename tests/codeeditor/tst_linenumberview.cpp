#include "EditorFixture.h"
#include "codeeditor/VXLineNumberView.h"
#include "tests/TestMain.h"

#include <QPaintEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// An editor with its ruler.
struct RulerFixture : EditorFixture {
    VXLineNumberView *ruler;

    RulerFixture()
    {
        view.setupLineNumberview();
        ruler = view.lineNumberView();
    }
    qreal middleOfLine(int line) const
    {
        QTextCursor cursor(view.document());
        cursor.setPosition(ruler->lineIndices()[line - 1]);
        return view.cursorRect(cursor).center().y();
    }
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

class TestLineNumberView : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void thicknessFollowsTheNumberOfLines_data();
    void thicknessFollowsTheNumberOfLines();
    void thicknessIsNeverSmall();
    void findsLinesByLocation();
    void aWrappedLineHasOneNumber();
    void clicksAndDragsSelectLines();
    void followsEditsAndZoom();
    void drawsTheNumbersOfAppendedLines_data();
    void drawsTheNumbersOfAppendedLines();
    void canBeSwitchedOff();
    void archives();
    void withoutATextThereIsNothing();
};

void TestLineNumberView::thicknessFollowsTheNumberOfLines_data()
{
    QTest::addColumn<int>("lines");
    QTest::addColumn<int>("digits");
    QTest::newRow("1") << 1 << 2;
    QTest::newRow("99") << 99 << 2;
    QTest::newRow("100") << 100 << 3;
    QTest::newRow("1,000") << 1000 << 4;
}

void TestLineNumberView::thicknessFollowsTheNumberOfLines()
{
    QFETCH(int, lines);
    QFETCH(int, digits);
    RulerFixture editor;
    editor.view.setString(QString(lines - 1, u'\n'));
    QCOMPARE(editor.ruler->lineIndices().size(), lines);
    QCOMPARE(editor.ruler->ruleThickness(), editor.thicknessFor(digits));
    QCOMPARE(editor.ruler->width(), int(editor.thicknessFor(digits)));
    QCOMPARE(editor.view.viewport()->x(), editor.ruler->geometry().right() + 1);
}

void TestLineNumberView::thicknessIsNeverSmall()
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
    QVERIFY(ruler.drawsDivider());
    QCOMPARE(ruler.lineIndices(), QList<int> {0});
}

void TestLineNumberView::findsLinesByLocation()
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

void TestLineNumberView::aWrappedLineHasOneNumber()
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

void TestLineNumberView::clicksAndDragsSelectLines()
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

void TestLineNumberView::followsEditsAndZoom()
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

void TestLineNumberView::drawsTheNumbersOfAppendedLines_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("appended");
    QTest::newRow("a return") << u"a"_s << u"\n"_s;
    QTest::newRow("a return that indents") << u"if a:"_s << u"\n    "_s;
    QTest::newRow("three lines at once") << u"a"_s << u"\nb\nc\nd"_s;
}

void TestLineNumberView::drawsTheNumbersOfAppendedLines()
{
    QFETCH(QString, before);
    QFETCH(QString, appended);
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

void TestLineNumberView::canBeSwitchedOff()
{
    RulerFixture editor;
    editor.view.disableLineNumbers();
    QVERIFY(!editor.ruler->isVisible());
    const int left = editor.view.viewport()->x();
    editor.view.setupLineNumberview();
    QVERIFY(editor.view.lineNumberView()->isVisible());
    QVERIFY(editor.view.viewport()->x() > left);
}

void TestLineNumberView::archives()
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

void TestLineNumberView::withoutATextThereIsNothing()
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

RUNEBOOK_TEST_MAIN(TestLineNumberView)
#include "tst_linenumberview.moc"
