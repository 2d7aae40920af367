#include "editing/LongValues.h"
#include "document/VXDocument.h"
#include "editing/DetailPane.h"
#include "editing/GlyphCellDelegate.h"
#include "editing/GlyphColumns.h"
#include "editing/GlyphTableView.h"
#include "editing/LongValues.h"
#include "editing/PendingTexts.h"
#include "editing/PreviewLabel.h"
#include "editing/SearchFilter.h"
#include "editing/TextBox.h"
#include "editing/VXSearchField.h"
#include "editing/VXValidatingTextField.h"
#include "editing/VXWindowController.h"
#include "editing/WholeValueDialog.h"
#include "platform/MessageBar.h"
#include "platform/ShownText.h"
#include "platform/UserDefaults.h"
#include "tests/Rounds.h"
#include "tests/TestMain.h"

#include <QClipboard>
#include <QComboBox>
#include <QJsonDocument>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTextLayout>
#include <QTimer>
#include <QToolTip>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// The longest text that any control of the window holds or says: what has to be laid out.
qsizetype longestShown(const QWidget &window)
{
    qsizetype longest = 0;
    const auto see = [&longest](const QString &text) { longest = qMax(longest, text.size()); };
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        see(widget->toolTip());
        see(widget->accessibleName());
        see(widget->accessibleDescription());
        if (const auto *line = qobject_cast<const QLineEdit *>(widget))
            see(line->text());
        else if (const auto *box = qobject_cast<const QPlainTextEdit *>(widget))
            see(box->toPlainText());
        else if (const auto *label = qobject_cast<const QLabel *>(widget))
            see(label->text());
        else if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
            see(button->text());
        else if (const auto *choice = qobject_cast<const QComboBox *>(widget))
            see(choice->currentText());
        for (const QAction *action : widget->actions())
            see(action->text() + action->toolTip());
    }
    return qMax(longest, window.windowTitle().size());
}

QString marks(qsizetype count)
{
    QString text = u"e"_s;
    for (qsizetype i = 0; i < count; ++i)
        text += QChar(static_cast<char16_t>(0x300 + i % 0x30));
    return text;
}

QString entries(const QString &word, qsizetype count)
{
    QStringList list;
    for (qsizetype i = 0; i < count; ++i)
        list << word + QString::number(i);
    return list.join(kListSeparator);
}

QString codePoints(qsizetype count)
{
    QStringList list;
    for (qsizetype i = 0; i < count; ++i)
        list << QString::number(0x4E00 + i % 0x5000, 16).toUpper();
    return list.join(u","_s);
}

} // namespace

/// Values that are too long to be laid out: what is shown of them is bounded wherever they are shown, and no edit
/// loses the rest.
class LongValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void beginningsAgreeWithTexts()
    {
        QRandomGenerator random(7);
        const QStringList letters {u"a"_s, u"é"_s, u"\u4E00"_s, u"😀"_s, u"\uFEFF"_s, u", "_s};
        for (int round = 0; round < rounds(400); ++round) {
            QString text;
            for (int length = random.bounded(30); length > 0; --length)
                text += letters.at(random.bounded(letters.size()));
            const QByteArray bytes = text.toUtf8();
            const FieldValue values[] {FieldValue::piece(bytes.constData(), 0, quint64(bytes.size())),
                                       FieldValue::text(text), FieldValue::list(text.split(kListSeparator))};
            for (const FieldValue &value : values) {
                QCOMPARE(value.length(bytes.constData()), text.size());
                for (const qsizetype most : {0, 1, 2, 7, 90}) {
                    const QString beginning = value.beginning(bytes.constData(), most);
                    QVERIFY(beginning == text.left(beginning.size()) && beginning.size() <= most);
                    QVERIFY(beginning.size() + 1 >= qMin(most, text.size()) && beginning.isValidUtf16());
                }
            }
        }
    }

    void partsMakeTheWhole()
    {
        QRandomGenerator random(3);
        QString whole;
        for (int i = 0; i < 40'000; ++i)
            whole += random.bounded(9) ? u"😀"_s : random.bounded(20) ? u"b "_s : u"\n"_s;
        LongText text(whole);
        QVERIFY(text.partCount() > 20);
        QStringList parts;
        for (qsizetype i = 0; i < text.partCount(); ++i) {
            parts << text.part(i);
            QVERIFY(parts.last().size() <= kMostInField && parts.last().isValidUtf16());
            text.setPart(i, parts.last());
        }
        QVERIFY(!text.isChanged());
        QCOMPARE(parts.join(QString()), whole);
        const QStringList originals = parts;
        for (int i = 0; i < 60; ++i) {
            qsizetype at = random.bounded(parts.size());
            const int kind = random.bounded(5);
            parts[at] = kind == 0 ? originals.at(qMin(at, originals.size() - 1)) : kind == 1 ? whole : kind == 2 ? QString() : QString::number(i);
            text.setPart(at, parts.at(at));
            const QString now = parts.join(QString());
            QVERIFY(text.text() == now);
            QVERIFY(text.part(at).size() <= kMostInField && parts.at(at).startsWith(text.part(at)));
            QString made = whole;
            const std::vector<TextEdit> edits = text.edits();
            for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit)
                made.replace(edit->begin, edit->length, edit->text);
            QVERIFY(made == now);
            parts.clear();
            for (qsizetype part = 0; part < text.partCount(); ++part)
                parts << text.part(part);
            QVERIFY(parts.join(QString()) == now);
        }
        QCOMPARE(LongText(QString()).partCount(), 1);
    }

    /// What is done with a value of any length leaves turns of the event loop to others.
    void holdsNothingUp()
    {
        constexpr int kTimes = 3'000'000;
        QString value = u"0123456789"_s.repeated(kTimes);
        VXDocument document;
        document.setInfos({VXGlyphInfo::init(), VXGlyphInfo::init()});
        const InfoPtr info = document.objectInInfosAtIndex(1);
        info->setDesc(value);
        VXWindowController window(document);
        document.setWindowController(&window);
        window.show();
        window.infolistController()->setSelectionIndexes({1});
        QCoreApplication::processEvents();
        int turns = 0;
        QTimer other;
        connect(&other, &QTimer::timeout, this, [&turns] { ++turns; });
        other.start(0);

        // The search, while which the newest key wins.
        UserDefaults::standard().setObjectForKey(int(SearchMode::Description), u"SearchState"_s);
        for (const QString &text : {u"9x"_s, u"90"_s}) {
            window.searchField()->setStringValue(text);
            window.filterInfos();
            QVERIFY(window.isFiltering());
        }
        QTRY_VERIFY(!window.isFiltering());
        QVERIFY(turns > 0);
        QCOMPARE(window.infolistController()->arrangedObjects(), InfoList {info});
        window.searchField()->setStringValue({});
        window.filterInfos();
        window.infolistController()->sort(columnOfField(GlyphField::Desc));
        QCOMPARE(window.infolistController()->arrangedObjects().front(), info);
        window.infolistController()->setSelectionIndexes({0});

        // Its sheet; what is typed there is kept by its edits alone.
        WholeValueDialog *sheet = window.detailPane()->editWhole(GlyphField::Desc);
        sheet->showPart(10'000);
        sheet->edit()->moveCursor(QTextCursor::Start);
        QTest::keyClicks(sheet->edit(), u"typed"_s);
        LongText edited(value);
        edited.setPart(10'000, {});
        value.insert(edited.edits().front().begin, u"typed"_s);
        const QJsonArray typed = document.pendingTexts();
        QVERIFY(QJsonDocument(typed).toJson().size() < 10'000);
        sheet->accept();
        QVERIFY(sheet->isVisible() && info->stored(GlyphField::Desc).length(nullptr) == value.size() - 5);
        turns = 0;
        QTRY_COMPARE(info->stored(GlyphField::Desc).length(nullptr), value.size());
        QVERIFY(turns > 0 && info->desc() == value);
        document.undoManager()->undo();
        QCOMPARE(takePendingTexts(document, typed), QStringList());
        QVERIFY(info->desc() == value);
        document.undoManager()->undo();
        info->setDesc(u"other"_s);
        QCOMPARE(takePendingTexts(document, typed).size(), 1);
        document.updateChangeCount(Document::ChangeCleared);
    }

    void isShownAndEditedInParts_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::newRow("500 code points") << u"unicode"_s << codePoints(500);
        QTest::newRow("5,000 code points") << u"unicode"_s << codePoints(5'000);
        QTest::newRow("100,000 code points") << u"unicode"_s << codePoints(100'000);
        QTest::newRow("1,000,000 code points") << u"unicode"_s << codePoints(1'000'000);
        QTest::newRow("600 kB without a blank") << u"description"_s << u"abcdefghij"_s.repeated(60'000);
        QTest::newRow("marks in the description") << u"description"_s << marks(100'000);
        QTest::newRow("marks in the name") << u"name"_s << marks(100'000);
        QTest::newRow("marks in the marks") << u"marks"_s << marks(100'000);
        QTest::newRow("300,000 alternative names") << u"altNames"_s << entries(u"other"_s, 300'000);
        QTest::newRow("100,000 components") << u"decompose"_s << entries(u"part"_s, 100'000);
        QTest::newRow("category") << u"category"_s << u"abcdefghij"_s.repeated(60'000);
        QTest::newRow("production name") << u"production"_s << u"uni"_s + u"0041"_s.repeated(100'000);
    }

    void isShownAndEditedInParts()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QTemporaryDir folder;
        const QString path = folder.filePath(u"long.xml"_s);
        const QString name = key == "name"_L1 ? QString() : u" name=\"long\""_s;
        write(path, u"<glyphData format=\"2\">\n<glyph name=\"A\" unicode=\"0041\"/>\n<glyph%1 %2=\"%3\"/>\n"
                    "</glyphData>\n"_s.arg(name, key, value));
        VXDocument document;
        QVERIFY(document.readFromURLOfType(path, u"public.xml"_s));
        VXWindowController window(document);
        document.setWindowController(&window);
        window.resize(1200, 900);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        RSRTVArrayController &list = *window.infolistController();
        GlyphTableView &table = *window.tableView();
        const GlyphField field = *fieldForKey(key == "unicode"_L1 ? u"unicodes"_s
                                                  : key == "description"_L1 ? u"desc"_s : key);
        const InfoPtr info = document.objectInInfosAtIndex(1);
        QCOMPARE(info->displayText(field), value);
        const bool isLong = value.size() > kMostInField;

        // Every place that shows it.
        list.setSelectionIndexes({1});
        window.setProblemsShown(true);
        QTRY_COMPARE(window.detailPane()->shownInfos(), InfoList {info});
        for (int column = 0; column < list.columnCount(); ++column) {
            const QModelIndex index = list.index(1, column);
            QVERIFY(index.data().toString().size() <= kMostInCell);
            QVERIFY(index.data(Qt::AccessibleTextRole).toString().size() <= 2 * kMostInCell);
            table.scrollTo(index);
            table.viewport()->repaint();
        }
        for (const PreviewPicture::Piece &piece : window.previewLabel()->picture().pieces())
            QVERIFY(piece.text.size() <= kMostInPreview + 2);
        QVERIFY2(longestShown(window) <= 2 * kMostInField, QByteArray::number(longestShown(window)));
        QWidget *const editor = window.detailPane()->editorOf(field);
        auto *whole = window.findChild<QPushButton *>(editor->objectName() + u"Whole"_s);
        QCOMPARE(whole && whole->isVisibleTo(&window), isLong);

        // Another field of the record; what is cut stays whole.
        auto *sortName = qobject_cast<QLineEdit *>(window.detailPane()->editorOf(GlyphField::SortName));
        sortName->setFocus();
        QTest::keyClicks(sortName, u"zz"_s);
        QTest::keyClick(sortName, Qt::Key_Tab);
        QCOMPARE(info->sortName(), u"zz"_s);
        QCoreApplication::processEvents(); // that was one step
        if (!isLong)
            return;

        // In its cell and in the pane a key opens all of it, in parts.
        editor->setFocus();
        QTest::keyClick(editor, Qt::Key_X);
        auto *sheet = window.findChild<WholeValueDialog *>();
        QVERIFY(sheet);
        delete sheet;
        table.setFocus();
        table.setCurrentIndex(list.index(1, columnOfField(field)));
        QTest::keyClick(&table, Qt::Key_F2);
        QTRY_VERIFY(sheet = window.findChild<WholeValueDialog *>());
        QVERIFY(!table.cellDelegate().editor());
        QVERIFY(sheet->partCount() >= value.size() / kMostInField);
        QVERIFY(longestShown(window) <= 2 * kMostInField);
        const QString before = info->displayText(field);
        QCOMPARE(before, value);
        sheet->showPart(1);
        sheet->edit()->moveCursor(QTextCursor::Start);
        const QString typed = field == GlyphField::Unicodes ? u"0041,"_s : u"41"_s;
        QTest::keyClicks(sheet->edit(), typed);
        sheet->accept();
        if (field == GlyphField::Name) { // which marks may not stand in: it stays in the sheet
            QVERIFY(sheet->isVisible() && info->name() == value);
            sheet->reject();
            return;
        }
        QString wanted = value;
        wanted.insert(LongText(value).part(0).size(), typed);
        if (field == GlyphField::Unicodes)
            wanted.replace(u","_s, kListSeparator);
        QTRY_COMPARE(info->displayText(field).size(), wanted.size()); // a very long one is put together elsewhere
        QVERIFY(info->displayText(field) == wanted);
        QVERIFY(document.autosave());
        document.undoManager()->undo();
        QVERIFY(info->displayText(field) == before);
        QCOMPARE(info->sortName(), u"zz"_s);
        QVERIFY(longestShown(window) <= 2 * kMostInField);

        // Searching and sorting take all of it.
        for (int column = 0; column < list.columnCount(); ++column)
            list.sort(column);
        UserDefaults::standard().setObjectForKey(int(SearchMode::All), u"SearchState"_s);
        window.searchField()->setStringValue(u"long"_s);
        window.filterInfos();
        QTRY_COMPARE(list.countOfArrangedObjects(), 1);
        window.searchField()->setStringValue({});
        window.filterInfos();
        window.showMessage(value);
        QVERIFY(longestShown(window) <= 2 * kMostInField);
        document.updateChangeCount(Document::ChangeCleared);
    }

    void aLongPasteGoesToTheSheet()
    {
        VXDocument document;
        document.addInfo(VXGlyphInfo::init());
        VXWindowController window(document);
        document.setWindowController(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        window.infolistController()->setSelectionIndexes({0});
        QTRY_COMPARE(window.detailPane()->shownInfos().size(), 1u);
        auto *box = qobject_cast<TextBox *>(window.detailPane()->editorOf(GlyphField::Desc));
        box->setFocus();
        QTest::keyClicks(box, u"ab"_s);
        box->moveCursor(QTextCursor::Left);
        const QString pasted = u"0123456789"_s.repeated(60'000);
        QApplication::clipboard()->setText(pasted);
        box->paste();
        QCOMPARE(box->exactText(), u"ab"_s);
        auto *sheet = window.findChild<WholeValueDialog *>();
        QVERIFY(sheet);
        QVERIFY(sheet->edit()->toPlainText().size() <= kMostInField);
        sheet->edit()->moveCursor(QTextCursor::End);
        sheet->edit()->paste(); // once more, in the middle of the text
        QVERIFY(sheet->edit()->toPlainText().size() <= kMostInField);
        sheet->accept();
        QCOMPARE(document.objectInInfosAtIndex(0)->desc().size(), 2 * pasted.size() + 2);
        QVERIFY(document.objectInInfosAtIndex(0)->desc().startsWith(u"a0123"_s));
        document.updateChangeCount(Document::ChangeCleared);
    }

private:
    static void write(const QString &path, const QString &text)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }
};

RUNEBOOK_TEST_MAIN(LongValuesTest)
#include "LongValuesTest.moc"
