#include "editing/compare/CompareSheet.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/LongValues.h"
#include "editing/fields/PendingTexts.h"
#include "editing/fields/TextBox.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/fields/VocabularyComboBox.h"
#include "editing/fields/WholeValueDialog.h"
#include "editing/replace/FindReplace.h"
#include "editing/search/SearchFilter.h"
#include "editing/search/SearchMenu.h"
#include "editing/window/PreviewLabel.h"
#include "model/FieldTable.h"
#include "platform/ShownText.h"
#include "tests/editing/Windows.h"

using namespace runebook;

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

/// Fields of the pane and cells of the table in the document window, typed into.
class WindowFieldsTest : public WindowFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { openFive(); }
    void cleanup() { closeWindow(); }

    TABLE(typingInAFieldIsNeverLost, (const QString &how), {
        row("Return", "return");
        row("Tab", "tab");
        row("another record is chosen", "select");
        row("a script asks the document", "commit");
        row("the table is filtered", "filter");
    })
    {
        select({1});
        QLineEdit *field = lineOf(GlyphField::SortName);
        field->setFocus();
        QTest::keyClicks(field, u"b001"_s);
        QCOMPARE(info(1)->sortName(), QString());
        if (how == "return"_L1)
            QTest::keyClick(field, Qt::Key_Return);
        else if (how == "tab"_L1)
            QTest::keyClick(field, Qt::Key_Tab);
        else if (how == "select"_L1)
            select({0});
        else if (how == "commit"_L1)
            m_document->commitEditing();
        else
            m_window->filterInfos();
        QCOMPARE(info(1)->sortName(), u"b001"_s);
        QCOMPARE(info(0)->sortName(), QString());
        undo();
        QCOMPARE(info(1)->sortName(), QString());
        QVERIFY(!m_document->isDocumentEdited());
    }

    void escapeTakesTypingBack()
    {
        select({0});
        typeInto(GlyphField::Production, u"rubbish<Esc>"_s);
        QCOMPARE(lineOf(GlyphField::Production)->text(), QString());
        select({1});
        QVERIFY(!m_document->isDocumentEdited());
    }

    void refusedNameStaysWithAWord()
    {
        select({0});
        QLineEdit *field = lineOf(GlyphField::Name);
        typeInto(GlyphField::Name, u"<Ctrl+A>B<Tab>"_s);
        QCOMPARE(info(0)->name(), u"A"_s);
        QCOMPARE(field->text(), u"B"_s);
        QCOMPARE(qobject_cast<VXValidatingTextField *>(field)->errorHint(),
                 u"There is already an info with the same name: B"_s);
        QVERIFY(!m_document->isDocumentEdited());
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(field->text(), u"A"_s);
    }

    void whatMayStandInAFieldIsOneAnswer()
    {
        auto *altNames = m_window->altNameField();
        const auto repeating = [this] {
            m_document->flushChanges();
            m_window->problems().finish();
            return m_window->problems().count(ProblemKind::RepeatingAltName);
        };
        const InfoPtr info = this->info(2);
        info->setAltNames(QStringList {u"later"_s});
        select({2});
        QVERIFY(altNames->errorHint().isEmpty());
        // Another record gets that name.
        this->info(1)->setName(u"later"_s);
        QCOMPARE(repeating(), 1);
        QCOMPARE(altNames->errorHint(), u"Repeating name: later"_s);
        QVERIFY(altNames->isExtraButtonVisible());
        std::vector<Problem> found;
        m_window->problems().append(ProblemKind::RepeatingAltName, 0, 5, found);
        QCOMPARE(m_window->problems().explanation(found.front()), altNames->errorHint());
        // The mark goes with the record, be it that nothing is selected any more.
        search(u"no such"_s);
        QVERIFY(altNames->errorHint().isEmpty() && !altNames->isExtraButtonVisible());
        search(u""_s);
        select({3});
        QVERIFY(altNames->errorHint().isEmpty());
        m_document->removeObjectFromInfosAtIndex(1);
        select({1});
        QVERIFY(altNames->errorHint().isEmpty());
        QCOMPARE(repeating(), 0);
        // A record without a name stops nobody from emptying a field, which then is absent.
        this->info(0)->setName(u""_s);
        altNames->setFocus();
        altNames->clear();
        QTest::keyClick(altNames, Qt::Key_Return);
        QVERIFY(info->stored(GlyphField::AltNames).isAbsent());
    }

    void anEmptiedFieldBecomesAbsent()
    {
        const InfoPtr info = this->info(0);
        info->setUnicodeLegacy(u"F6C3"_s);
        info->setDesc(u"words"_s);
        info->setProduction(u"x"_s);
        info->setCase(VXGlyphInfo::upper);
        for (const GlyphField field : {GlyphField::Unicodes, GlyphField::Category, GlyphField::Production,
                                       GlyphField::UnicodeLegacy, GlyphField::Desc, GlyphField::Case}) {
            QVERIFY(setFieldFromText(*m_document, {info}, field, u""_s));
            QVERIFY(field == GlyphField::Case ? info->caseValue() == VXGlyphInfo::noCase
                                              : info->stored(field).isAbsent());
            undo();
            QVERIFY(!info->displayText(field).isEmpty());
        }
    }

    void codePointsInCellsAndTheLegacyFieldAreChecked()
    {
        select({1});
        typeKeys(editCell(1, GlyphField::Unicodes), u"<End>ßg 43<Return>"_s);
        QCOMPARE(info(1)->unicodes(), (QStringList {u"0042"_s, u"0043"_s}));
        typeInto(GlyphField::UnicodeLegacy, u"F6gC312<Return>"_s);
        QCOMPARE(info(1)->unicodeLegacy(), u"F6C31"_s);
    }

    void severalRecordsAreEditedAtOnce()
    {
        select({0, 1, 3});
        QCOMPARE(lineOf(GlyphField::SortName)->placeholderText(), QString());
        QVERIFY(!m_window->detailPane()->editorOf(GlyphField::Name)->isEnabled());
        typeInto(GlyphField::SortName, u"x<Return>"_s);
        QCOMPARE(info(3)->sortName(), u"x"_s);
        QCOMPARE(info(2)->sortName(), QString());
        QCOMPARE(stack().count(), 1);
        select({0, 2});
        QCOMPARE(lineOf(GlyphField::SortName)->placeholderText(), u"Multiple values"_s);
        QCOMPARE(lineOf(GlyphField::SortName)->text(), QString());
        select({});
        undo();
        QCOMPARE(info(0)->sortName(), QString());
        QCOMPARE(info(3)->sortName(), QString());
    }

    void largeSelectionsAreComparedToTheEnd()
    {
        InfoList infos;
        for (int i = 0; i < 9000; ++i)
            infos.push_back(infoNamed(u"g%1"_s.arg(i), {}, u"Letter"_s));
        infos.back()->setScript(u"latin"_s);
        fill(*m_document, infos);
        m_window->selectAll();
        auto *script =
            qobject_cast<VocabularyComboBox *>(m_window->detailPane()->editorOf(GlyphField::Script));
        auto *category =
            qobject_cast<VocabularyComboBox *>(m_window->detailPane()->editorOf(GlyphField::Category));
        QTRY_VERIFY2(script->isMixed(), "the last record alone differs");
        QCOMPARE(category->text(), u"Letter"_s);
        QVERIFY(!category->isMixed());
        QCOMPARE(list()->selectedCount(), 9000);
    }

    void fieldsFollowChangesFromElsewhere()
    {
        select({0});
        QCOMPARE(m_window->detailPane()->previewLabel()->text(), u"A"_s);
        info(0)->setUnicode(u"0042"_s);
        info(0)->setSortName(u"fresh"_s);
        QTRY_COMPARE(lineOf(GlyphField::SortName)->text(), u"fresh"_s);
        QCOMPARE(m_window->detailPane()->previewLabel()->text(), u"B"_s);
        select({0, 1});
        QCOMPARE(m_window->detailPane()->previewLabel()->text(), QString());
    }

    void cellsAreEditedInPlace()
    {
        table()->goToRow(1);
        table()->setCurrentIndex(cell(1, GlyphField::Category));
        QTest::keyClick(table(), Qt::Key_Return);
        QLineEdit *editor = table()->cellDelegate().editor();
        QVERIFY(editor);
        QCOMPARE(editor->text(), u"Letter"_s);
        typeKeys(editor, u"<Ctrl+A>Symbol<Return>"_s);
        QCOMPARE(info(1)->category(), u"Symbol"_s);
        // A text that the cell cuts goes through the editor whole and untouched.
        const QString longText(kMostInField, u'x');
        info(1)->setDecompose(longText);
        m_document->undoManager()->setClean();
        QVERIFY(editor = editCell(1, GlyphField::Decompose));
        QCOMPARE(editor->text().size(), longText.size());
        QTest::keyClick(editor, Qt::Key_Return);
        QCOMPARE(info(1)->decompose().size(), longText.size());
        QVERIFY(!m_document->isDocumentEdited());
    }

    void aBadNameLeavesTheFieldsWhereTheyAre()
    {
        const QLineEdit *name = lineOf(GlyphField::Name);
        select({0});
        const int usual = name->parentWidget()->minimumSizeHint().width();
        info(0)->setName(u"a b"_s);
        QCoreApplication::processEvents();
        QCOMPARE(name->text(), u"a b"_s);
        QVERIFY(name->textMargins().right() > 0); // what is wrong stands there
        QCOMPARE(name->parentWidget()->minimumSizeHint().width(), usual);
    }

    void everyFieldStandsWhereTheTableOfFieldsSays()
    {
        const CompareSheet sheet(nullptr);
        const auto *same = command(u"Select Records with the Same"_s)->menu();
        select({0});
        for (const FieldRow &row : kFieldTable) {
            const QString title = titleOfField(row.field);
            const int column = columnOfField(row.field);
            QVERIFY2((column >= 0) == (row.columnWidth != 0), qPrintable(title));
            if (column >= 0)
                QCOMPARE(table()->model()->headerData(column, Qt::Horizontal).toString(), title);
            const QWidget *editor = m_window->detailPane()->editorOf(row.field);
            QVERIFY2((editor != nullptr) == (row.editor != FieldEditor::None), qPrintable(title));
            QCOMPARE(editor ? editor->accessibleName() : title, title);
            if (row.editor == FieldEditor::Line || row.editor == FieldEditor::CheckedLine) {
                typeInto(row.field, u"<Ctrl+A>ABCD<Return>"_s);
                QCOMPARE(info(0)->displayText(row.field), u"ABCD"_s);
                undo();
            }
            const bool isCompared =
                sheet.findChild<QWidget *>(u"leftLable"_s + QLatin1StringView(row.caption));
            QVERIFY2(isCompared == (row.comparePlace != 0), qPrintable(title));
            QVERIFY2(offersOf(*same).contains(title) == (row.samePlace != 0), qPrintable(title));
            QVERIFY2(!row.replaceTag || FindReplace::titleForTag(row.replaceTag) == title, qPrintable(title));
            QVERIFY2(!row.searchTag || SearchMenu::items().at(row.searchTag - 1).tag == row.searchTag,
                     qPrintable(title));
        }
    }

    void everyFieldIsInSightAt800Pixels()
    {
        m_window->resize(1240, 752); // what is left of them between frame and panel
        select({0});
        QCoreApplication::processEvents();
        const QWidget *desc = m_window->detailPane()->editorOf(GlyphField::Desc);
        QCOMPARE(desc->visibleRegion().boundingRect().height(), desc->height());
        const auto *preview = m_window->previewLabel();
        QVERIFY(preview->height() >= 84);
        const QWidget *first = m_window->detailPane()->editorOf(GlyphField::Unicodes);
        QVERIFY(preview->mapTo(m_window.get(), preview->rect().bottomLeft()).y()
                < first->mapTo(m_window.get(), QPoint()).y());
        for (const GlyphField field :
             {GlyphField::SortName, GlyphField::SortNameKeep, GlyphField::SubCategory})
            QVERIFY(m_window->detailPane()->editorOf(field)
                    && m_window->detailPane()->editorOf(field)->isVisible());
    }

    void previewIsSeenWhole()
    {
        PreviewLabel *label = m_window->previewLabel();
        const auto show = [&](const QString &text) {
            label->setFormattedText(VXDocument::formatInfoStringFont(text, QFont(u"DejaVu Sans"_s, 100)));
        };
        show(u"\u0301"_s); // a mark alone stands on a dotted circle
        QCOMPARE(label->picture().pieces().front().text, u"\u25CC\u0301"_s);
        show(u"é = e + \u0301"_s);
        const auto &pieces = label->picture().pieces();
        QCOMPARE(pieces.size(), 5u);
        QCOMPARE(pieces.back().text, u"\u25CC\u0301"_s);
        for (const auto &[text, count] :
             {std::pair(u"é = e + \u0301"_s, 5), {u"J = \u0616j + ff\u030A + W"_s, 7}}) {
            show(text);
            QCOMPARE(int(label->picture().pieces().size()), count);
            for (std::size_t i = 1; i < label->picture().pieces().size(); ++i) {
                const QRectF &left = label->picture().pieces()[i - 1].ink;
                QVERIFY2(left.right() + 4 <= label->picture().pieces()[i].ink.left(), qPrintable(text));
            }
        }
        // Nothing is painted beyond the edge, whatever stands there.
        for (const QString &text : {u"Ǻ"_s, u"\uFDFA"_s, u"A\u0302\u0302\u0302\u0302\u0323\u0323\u0323"_s,
                                    u"\U00012031"_s, QString(40, u'W')}) {
            show(text);
            const QRectF bounds = label->picture().bounds();
            for (const PreviewPicture::Piece &piece : label->picture().pieces())
                QVERIFY2(bounds.adjusted(-0.01, -0.01, 0.01, 0.01).contains(piece.ink), qPrintable(text));
            const QImage image = label->grab().toImage();
            const QRgb ground = image.pixel(image.width() / 2, 4);
            for (int x = 10; x < image.width() - 10; ++x) {
                QCOMPARE(image.pixel(x, 4), ground);
                QCOMPARE(image.pixel(x, image.height() - 5), ground);
            }
        }
        show(u"\U000F1234"_s); // a private one
        QVERIFY(label->picture().isNothingThere());
        QCOMPARE(label->remark(), u"no installed font has U+F1234"_s);
        show(u"\u25A1"_s); // a real box
        QVERIFY(label->remark().isNull() && !label->picture().isNothingThere());
    }

    void legacyNameComesFromTheCodePoint()
    {
        info(1)->setUnicode(u"1E02"_s);
        select({4, 1});
        m_window->makeLegacyName();
        QCOMPARE(info(1)->production(), u"uni1E02"_s);
        QCOMPARE(info(4)->production(), QString());
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
            parts[at] = kind == 0 ? originals.at(qMin(at, originals.size() - 1))
                : kind == 1       ? whole
                : kind == 2       ? QString()
                                  : QString::number(i);
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

    void holdsNothingUp()
    {
        constexpr int kTimes = 3'000'000;
        QString value = u"0123456789"_s.repeated(kTimes);
        const InfoPtr info = VXGlyphInfo::init();
        info->setDesc(value);
        openWindow({VXGlyphInfo::init(), info});
        select({1});
        QCoreApplication::processEvents();
        int turns = 0;
        QTimer other;
        QSet<QString> told;
        connect(&other, &QTimer::timeout, this, [&] {
            ++turns;
            for (const QLabel *label : m_window->findChildren<QLabel *>()) {
                if (label->text().startsWith(u"Searching"_s))
                    told << label->text();
            }
        });
        other.start(0);

        // The search, while which the newest key wins; it tells how far it has come.
        UserDefaults::standard().setObjectForKey(int(SearchMode::Description), u"SearchState"_s);
        for (const QString &text : {u"9x"_s, u"90"_s}) {
            search(text);
            QVERIFY(m_window->isFiltering());
        }
        QTRY_VERIFY(!m_window->isFiltering());
        QVERIFY(turns > 0);
        QVERIFY2(told.size() > 1, QByteArray::number(told.size()));
        QCOMPARE(list()->arrangedObjects(), InfoList {info});
        search({});
        list()->sort(columnOfField(GlyphField::Desc));
        QCOMPARE(list()->arrangedObjects().front(), info);
        select({0});

        // Its sheet; what is typed there is kept by its edits alone.
        WholeValueDialog *sheet = m_window->detailPane()->editWhole(GlyphField::Desc);
        sheet->showPart(10'000);
        sheet->edit()->moveCursor(QTextCursor::Start);
        QTest::keyClicks(sheet->edit(), u"typed"_s);
        LongText edited(value);
        edited.setPart(10'000, {});
        value.insert(edited.edits().front().begin, u"typed"_s);
        const QJsonArray typed = m_document->pendingTexts();
        QVERIFY(QJsonDocument(typed).toJson().size() < 10'000);
        sheet->accept();
        QVERIFY(sheet->isVisible() && info->stored(GlyphField::Desc).length(nullptr) == value.size() - 5);
        turns = 0;
        QTRY_COMPARE(info->stored(GlyphField::Desc).length(nullptr), value.size());
        QVERIFY(turns > 0 && info->desc() == value);
        undo();
        QCOMPARE(takePendingTexts(*m_document, typed), QStringList());
        QVERIFY(info->desc() == value);
        undo();
        info->setDesc(u"other"_s);
        QCOMPARE(takePendingTexts(*m_document, typed).size(), 1);
        m_document->updateChangeCount(Document::ChangeCleared);
    }

    /// What an autosave keeps of a code point that is being typed.
    void aHalfTypedCodePointIsPending()
    {
        select({0});
        QVERIFY(m_document->pendingTexts().isEmpty());
        QWidget *tokens = m_window->detailPane()->editorOf(GlyphField::Unicodes);
        tokens->setFocus();
        typeKeys(tokens, u"7"_s);
        QCOMPARE(m_document->pendingTexts().size(), 1);
        const QByteArray kept = QJsonDocument(m_document->pendingTexts()).toJson(QJsonDocument::Compact);
        QVERIFY2(kept.contains("\"text\":\"00417\""), kept.constData());
        typeKeys(tokens, u"<Esc>"_s);
    }

    TABLE(isShownAndEditedInParts, (const QString &key, const QString &value), {
        row("500 code points", "unicode", codePoints(500));
        row("5,000 code points", "unicode", codePoints(5'000));
        row("100,000 code points", "unicode", codePoints(100'000));
        row("1,000,000 code points", "unicode", codePoints(1'000'000));
        row("600 kB without a blank", "description", u"abcdefghij"_s.repeated(60'000));
        row("marks in the description", "description", marks(100'000));
        row("marks in the name", "name", marks(100'000));
        row("marks in the marks", "marks", marks(100'000));
        row("300,000 alternative names", "altNames", entries(u"other"_s, 300'000));
        row("100,000 components", "decompose", entries(u"part"_s, 100'000));
        row("category", "category", u"abcdefghij"_s.repeated(60'000));
        row("production name", "production", u"uni"_s + u"0041"_s.repeated(100'000));
    })
    {
        const QString name = key == "name"_L1 ? QString() : u"name=\"long\""_s;
        openWindow(recordsOf(u"name=\"A\" unicode=\"0041\"\n%1 %2=\"%3\""_s.arg(name, key, value)));
        m_window->resize(1200, 900);
        const GlyphField field = *fieldForKey(key == "unicode"_L1           ? u"unicodes"_s
                                                  : key == "description"_L1 ? u"desc"_s
                                                                            : key);
        const InfoPtr info = this->info(1);
        QCOMPARE(info->displayText(field), value);
        const bool isLong = value.size() > kMostInField;

        // Every place that shows it.
        select({1});
        m_window->setProblemsShown(true);
        QTRY_COMPARE(m_window->detailPane()->shownInfos(), InfoList {info});
        for (int column = 0; column < list()->columnCount(); ++column) {
            const QModelIndex index = list()->index(1, column);
            QVERIFY(index.data().toString().size() <= kMostInCell);
            QVERIFY(index.data(Qt::AccessibleTextRole).toString().size() <= 2 * kMostInCell);
            table()->scrollTo(index);
            table()->viewport()->repaint();
        }
        for (const PreviewPicture::Piece &piece : m_window->previewLabel()->picture().pieces())
            QVERIFY(piece.text.size() <= kMostInPreview + 2);
        QVERIFY2(longestShown(*m_window) <= 2 * kMostInField, QByteArray::number(longestShown(*m_window)));
        QWidget *const editor = m_window->detailPane()->editorOf(field);
        auto *whole = m_window->findChild<QPushButton *>(editor->objectName() + u"Whole"_s);
        QCOMPARE(whole && whole->isVisibleTo(m_window.get()), isLong);

        // Another field of the record; what is cut stays whole.
        auto *sortName = qobject_cast<QLineEdit *>(m_window->detailPane()->editorOf(GlyphField::SortName));
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
        auto *sheet = m_window->findChild<WholeValueDialog *>();
        QVERIFY(sheet);
        delete sheet;
        QVERIFY(!editCell(1, field));
        QTRY_VERIFY(sheet = m_window->findChild<WholeValueDialog *>());
        QVERIFY(sheet->partCount() >= value.size() / kMostInField);
        QVERIFY(longestShown(*m_window) <= 2 * kMostInField);
        const QString before = info->displayText(field);
        QCOMPARE(before, value);
        const auto tells = [sheet](const QString &words) {
            const auto labels = sheet->findChildren<QLabel *>();
            return std::any_of(labels.begin(), labels.end(),
                               [&](const QLabel *each) { return each->text() == words; });
        };
        QVERIFY(tells(u"of "_s + QLocale().toString(qlonglong(sheet->partCount()))));
        QVERIFY(!button(sheet, u"Previous"_s)->isEnabled());
        QTest::mouseClick(button(sheet, u"Next"_s), Qt::LeftButton);
        QVERIFY(button(sheet, u"Previous"_s)->isEnabled());
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
        QTRY_COMPARE(info->displayText(field).size(),
                     wanted.size()); // a very long one is put together elsewhere
        QVERIFY(info->displayText(field) == wanted);
        QVERIFY(m_document->autosave());
        undo();
        QVERIFY(info->displayText(field) == before);
        QCOMPARE(info->sortName(), u"zz"_s);
        QVERIFY(longestShown(*m_window) <= 2 * kMostInField);

        // Searching and sorting take all of it.
        for (int column = 0; column < list()->columnCount(); ++column)
            list()->sort(column);
        UserDefaults::standard().setObjectForKey(int(SearchMode::All), u"SearchState"_s);
        search(u"long"_s);
        QTRY_COMPARE(list()->countOfArrangedObjects(), 1);
        search({});
        m_window->showMessage(value);
        QVERIFY(longestShown(*m_window) <= 2 * kMostInField);
        m_document->updateChangeCount(Document::ChangeCleared);
    }

    void aLongPasteGoesToTheSheet()
    {
        select({0});
        QTRY_COMPARE(m_window->detailPane()->shownInfos().size(), 1u);
        auto *box = qobject_cast<TextBox *>(m_window->detailPane()->editorOf(GlyphField::Desc));
        box->setFocus();
        QTest::keyClicks(box, u"ab"_s);
        box->moveCursor(QTextCursor::Left);
        const QString pasted = u"0123456789"_s.repeated(60'000);
        QApplication::clipboard()->setText(pasted);
        box->paste();
        QCOMPARE(box->exactText(), u"ab"_s);
        auto *sheet = m_window->findChild<WholeValueDialog *>();
        QVERIFY(sheet);
        QVERIFY(sheet->edit()->toPlainText().size() <= kMostInField);
        sheet->edit()->moveCursor(QTextCursor::End);
        QVERIFY(m_document->autosave());
        const QScopedValueRollback delay(AutosaveTimes::shared().delay, 0.001);
        const auto kept = [this] {
            return QFileInfo(m_document->autosavedContentsURL().replace(u".xml"_s, u".typed"_s)).size();
        };
        const qint64 once = kept();
        sheet->edit()->paste(); // once more, in the middle of the text
        QVERIFY(sheet->edit()->toPlainText().size() <= kMostInField);
        QTRY_VERIFY(kept() > once + pasted.size() / 2); // without another key
        sheet->accept();
        QCOMPARE(info(0)->desc().size(), 2 * pasted.size() + 2);
        QVERIFY(info(0)->desc().startsWith(u"a0123"_s));
        m_document->updateChangeCount(Document::ChangeCleared);
    }
};

RUNEBOOK_TEST_MAIN(WindowFieldsTest)
#include "WindowFieldsTest.moc"
