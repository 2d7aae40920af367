#include "editing/compare/CompareReport.h"
#include "editing/compare/CompareSheet.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/ErrorBubble.h"
#include "tests/editing/Windows.h"

#include <QAbstractItemModelTester>

using namespace runebook;

namespace {

// A: equal. B: another category. C: only left. D: only right.
const QString kLeft =
    u"unicode=\"0041\" name=\"A\" category=\"Letter\" description=\"a\"\n"
    "unicode=\"0042\" name=\"B\" category=\"Letter\" marks=\"acute, grave\" description=\"b\"\n"
    "unicode=\"0043\" name=\"C\" category=\"Letter\" case=\"upper\" description=\"c\""_s;
const QString kRight =
    u"unicode=\"0041\" name=\"A\" category=\"Letter\" description=\"a\"\n"
    "unicode=\"0042\" name=\"B\" category=\"Mark\" marks=\"acute, breve, grave\" description=\"b\"\n"
    "unicode=\"0044\" name=\"D\" category=\"Letter\" description=\"d\""_s;

QString letters(int count, const QString &attributes)
{
    QString lines;
    for (int i = 0; i < count; ++i)
        lines += u"name=\"g%1\" %2\n"_s.arg(i).arg(attributes);
    return lines;
}

} // namespace

class CompareWindowTest : public QObject
{
    Q_OBJECT
    std::unique_ptr<VXCompareDataWindow> m_window;
    QList<VXDocument *> m_documents;

    /// Opens documents so that they stand in the lists in this order.
    void open(const QStringList &contents)
    {
        for (qsizetype i = contents.size(); i-- > 0;) {
            VXDocument *document = documentOf(recordsOf(contents.at(i)),
                                              u"/tests/%1.xml"_s.arg(QChar(u'a' + static_cast<int>(i))))
                                       .release();
            controller().addDocument(document);
            m_documents.prepend(document);
        }
    }
    void setMode(int mode) { UserDefaults::standard().setObjectForKey(mode, u"FilterMode"_s); }
    void setKey(int key) { UserDefaults::standard().setObjectForKey(key, u"FilterKey"_s); }
    QStringList allKeys() { return m_window->filteredKeys()->arrangedObjects(); }
    QString keys() { return allKeys().join(u' '); }
    QString selected() { return m_window->filteredKeys()->selectedObjects().join(u' '); }
    /// Shows them, active, for shortcuts reach no other window.
    void show(const QStringList &contents, int mode = 0)
    {
        open(contents);
        setMode(mode);
        m_window->showWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    template <typename Widget> Widget *find(const char *name)
    {
        return m_window->findChild<Widget *>(QString::fromLatin1(name));
    }
    QColor colorOf(const QString &outlet)
    {
        QWidget *caption = m_window->outlet(outlet);
        if (auto *cells = qobject_cast<ChoiceCells *>(caption))
            return cells->titleColor();
        return caption ? caption->palette().color(QPalette::WindowText) : QColor();
    }
    /// The captions that are red, on both sides alike.
    QString redCaptions()
    {
        QStringList red;
        const QColor normal = m_window->palette().color(QPalette::WindowText);
        for (const ComparedField &field : comparedFields()) {
            const QString name = QString::fromLatin1(field.name);
            const QColor left = colorOf(u"leftLable"_s + name);
            if (left != colorOf(u"rightLable"_s + name))
                return u"sides differ in "_s + name;
            if (left != normal)
                red << name;
        }
        return red.join(u' ');
    }
    QAction *menuItem(const QString &menu, const QString &start)
    {
        for (const QAction *title : m_window->menuBar()->actions()) {
            for (QAction *item : title->menu()->actions()) {
                MainMenu::validate(*item);
                if (plain(title->text()) == menu && plain(item->text()).startsWith(start))
                    return item;
            }
        }
        return nullptr;
    }
    static QString linesOf(const VXDocument &document)
    {
        QString lines;
        for (const InfoPtr &info : document.infos())
            lines += info->lineXMLFormatVersion(2);
        return lines;
    }
    QString valueOf(CompareSheet::Side side, const QString &title)
    {
        const QString name = side == CompareSheet::Left ? u", left"_s : u", right"_s;
        for (const CompareField *field : m_window->findChildren<CompareField *>()) {
            if (field->accessibleName().startsWith(title + name))
                return field->toPlainText();
        }
        return u"no field"_s;
    }

private Q_SLOTS:
    void init()
    {
        setMode(0);
        setKey(0);
        forget({"CompareOnlyDifferences", "CompareIgnoreCase", "CompareIgnoreSpaces", "CompareIgnoreFields",
                "CompareReportJson"});
        m_window = std::make_unique<VXCompareDataWindow>();
    }

    void cleanup()
    {
        m_window.reset();
        for (VXDocument *document : std::as_const(m_documents))
            controller().removeDocument(document);
        m_documents.clear();
        sendDeferredDeletes();
        QCOMPARE(controller().documentList().size(), 0);
    }

    void modesAndKeys()
    {
        show({kLeft, kRight});
        const QAbstractItemModelTester documents(m_window->leftDocList()),
            shownKeys(m_window->filteredKeys());
        QCOMPARE(m_window->leftDocList()->selectionIndex(), 0);
        QCOMPARE(m_window->rightDocList()->selectionIndex(), 1);
        QCOMPARE(keys(), u"D"_s);
        setMode(1);
        QCOMPARE(keys(), u"C"_s);
        setMode(2);
        QCOMPARE(keys(), u"B"_s);
        setKey(1);
        QCOMPARE(m_window->filterKey(), u"unicode"_s);
        QCOMPARE(keys(), u"0042"_s);
        setKey(2);
        QCOMPARE(keys(), QString());
        setKey(9);
        QCOMPARE(m_window->filterKey(), u"name"_s);
        QCOMPARE(keys(), u"B"_s);
    }

    void counts()
    {
        open({kLeft, kRight + u"\nname=\"E\"\nname=\"F\""_s});
        QCOMPARE(m_window->countOfKeysInMode(0), -1);
        m_window->showWindow();
        QTRY_COMPARE(m_window->countOfKeysInMode(0), 3);
        QCOMPARE(m_window->countOfKeysInMode(1), 1);
        QCOMPARE(m_window->countOfKeysInMode(2), 1);
        QCOMPARE(find<QLabel>("onlyRightCount")->text(), u"3"_s);
        QCOMPARE(find<QRadioButton>("onlyLeftButton")->accessibleName(), u"Only on the left: 1"_s);
    }

    void choosers()
    {
        show({kLeft, kRight});
        QTest::mouseClick(find<QRadioButton>("differentButton"), Qt::LeftButton);
        QCOMPARE(UserDefaults::standard().integerForKey(u"FilterMode"_s), 2);
        QCOMPARE(keys(), u"B"_s);
        auto *chooser = find<QComboBox>("keyChooser");
        chooser->setFocus();
        QTest::keyClick(chooser, Qt::Key_Down);
        QCOMPARE(UserDefaults::standard().integerForKey(u"FilterKey"_s), 1);
        QCOMPARE(keys(), u"0042"_s);
        setMode(0);
        QVERIFY(find<QRadioButton>("onlyRightButton")->isChecked());
        auto *right = find<QComboBox>("rightDocuments");
        QTest::keyClick(right, Qt::Key_Up);
        QCOMPARE(m_window->rightDocList()->selectionIndex(), 0);
        QCOMPARE(keys(), QString());
    }

    void documentLists()
    {
        show({kLeft});
        QCOMPARE(m_window->leftDocList()->selectionIndex(), 0);
        QCOMPARE(m_window->rightDocList()->selectionIndex(), 0);
        QCOMPARE(keys(), QString());
        QVERIFY(find<QLabel>("emptyLabel")->text().startsWith(u"Only one document"_s));

        // Not seen before the window is shown again.
        VXDocument *second = documentOf(recordsOf(kRight), u"/tests/z.xml"_s).release();
        controller().addDocument(second);
        m_documents << second;
        QCOMPARE(m_window->leftDocList()->arrangedObjects().size(), 1);
        m_window->showWindow();
        // Both keep their document, which is the second now; the step past the end leaves the right where it
        // is.
        QCOMPARE(m_window->leftDocList()->selectionIndex(), 1);
        QCOMPARE(m_window->rightDocList()->selectionIndex(), 1);
        m_window->leftDocList()->setSelectionIndex(0);
        QCOMPARE(keys(), u"C"_s);
        m_window->leftDocList()->setSelectionIndex(7);
        QCOMPARE(m_window->leftDocList()->selectionIndex(), 0);
    }

    void noDocuments()
    {
        m_window->showWindow();
        QCOMPARE(m_window->leftDocList()->selectionIndex(), -1);
        QCOMPARE(keys(), QString());
        QVERIFY(find<QLabel>("emptyLabel")->isVisible());
        m_window->copyLeft();
        m_window->copyAllRight();
        m_window->selectNextDifference();
    }

    void closedDocument()
    {
        show({kLeft, kRight});
        QCOMPARE(keys(), u"D"_s);
        controller().removeDocument(m_documents.takeLast());
        sendDeferredDeletes();
        QCOMPARE(keys(), QString());
        QVERIFY(find<QLabel>("emptyLabel")->text().startsWith(u"A document was closed"_s));
        QCOMPARE(m_window->rightInfoList()->arrangedObjects().size(), std::size_t(0));
    }

    void emptyTexts()
    {
        show({kLeft, kLeft, kLeft + u"\nname=\"Z\""_s});
        auto *text = find<QLabel>("emptyLabel");
        QCOMPARE(text->text(), u"Every glyph on the right is also on the left."_s);
        setMode(2);
        QCOMPARE(text->text(), u"No glyph that both documents have differs."_s);
        m_window->rightDocList()->setSelectionIndex(2);
        QTRY_VERIFY(text->text().contains(u"differences of another kind"_s));
        m_window->rightDocList()->setSelectionIndex(0);
        QVERIFY(text->text().startsWith(u"Both sides show the same document"_s));
    }

    void panes()
    {
        show({kLeft, kRight}, 2);
        QCOMPARE(selected(), u"B"_s);
        QCOMPARE(namesOf(m_window->leftInfoList()->selectedObjects()), u"B"_s);
        QCOMPARE(valueOf(CompareSheet::Left, u"Category"_s), u"Letter"_s);
        QCOMPARE(valueOf(CompareSheet::Right, u"Category"_s), u"Mark"_s);
        QCOMPARE(redCaptions(), u"Category Accents"_s);
        COMPARE_TEXTS(u"compare"_s, *m_window);
        for (const CompareField *field : m_window->findChildren<CompareField *>()) {
            if (field->accessibleName().startsWith(u"Accents, right, different"_s)) {
                QCOMPARE(field->markedParts(), (std::vector<TextPart> {{7, 7}}));
                QCOMPARE(field->extraSelections().size(), 1);
                QCOMPARE(field->extraSelections().first().cursor.selectedText(), u"breve, "_s);
                return;
            }
        }
        QFAIL("the field of the accents is not called different");
    }

    void oneSideOnly()
    {
        show({kLeft, kRight}, 1);
        QCOMPARE(selected(), u"C"_s);
        QCOMPARE(namesOf(m_window->leftInfoList()->arrangedObjects()), u"C"_s);
        QVERIFY(m_window->rightInfoList()->arrangedObjects().empty());
        // Code points are never coloured, whatever has no value is not either.
        QCOMPARE(redCaptions(), u"Name Category Description Case Direction"_s);
        QCOMPARE(qobject_cast<ChoiceCells *>(m_window->outlet(u"leftLableCase"_s))->chosen(),
                 QSet<int> {VXGlyphInfo::upper});
        QCOMPARE(qobject_cast<ChoiceCells *>(m_window->outlet(u"rightLableCase"_s))->chosen(), QSet<int>());
    }

    void severalKeys()
    {
        open({kLeft, kRight + u"\nname=\"C\" category=\"Letter\" case=\"lower\" description=\"c\""_s});
        setMode(2);
        m_documents.at(0)->infos().at(2)->setDesc(u"other"_s);
        m_window->showWindow();
        QCOMPARE(keys(), u"B C"_s);
        typeKeys(find<QListView>("keyView"), u"<Ctrl+A>"_s);
        QCOMPARE(selected(), u"B C"_s);
        QCOMPARE(namesOf(m_window->leftInfoList()->arrangedObjects()), u"B C"_s);
        QCOMPARE(namesOf(m_window->rightInfoList()->arrangedObjects()), u"B C"_s);
        QCOMPARE(valueOf(CompareSheet::Left, u"Description"_s), u"b\nother"_s);
        QCOMPARE(valueOf(CompareSheet::Right, u"Category"_s), u"Mark\nLetter"_s);
        QCOMPARE(redCaptions(), u"Category Accents Description Case"_s);
    }

    /// Very many records are found another way; the panes shall not show it.
    void veryManyKeys()
    {
        show({letters(3000, u"category=\"x\""_s), letters(3000, u"category=\"y\""_s) + u"name=\"g7\""_s}, 2);
        find<QListView>("keyView")->selectAll();
        QCOMPARE(m_window->filteredKeys()->selectedObjects().size(), 3000);
        QCOMPARE(m_window->leftInfoList()->arrangedObjects(), m_documents.at(0)->infos());
        QCOMPARE(m_window->rightInfoList()->arrangedObjects(), m_documents.at(1)->infos());
        QCOMPARE(valueOf(CompareSheet::Left, u"Name"_s), u"g0\ng1\ng2\ng3\ng4\n… and more"_s);
        QCOMPARE(valueOf(CompareSheet::Right, u"Category"_s), u"y"_s);
        QCOMPARE(redCaptions(), u"Category"_s);
    }

    void followsTheAppearance()
    {
        show({kLeft, kRight}, 2);
        QPalette dark = m_window->palette();
        dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
        dark.setColor(QPalette::Base, QColor(0x18, 0x18, 0x18));
        dark.setColor(QPalette::WindowText, Qt::white);
        dark.setColor(QPalette::Text, Qt::white);
        const QColor before = colorOf(u"leftLableCategory"_s);
        m_window->setPalette(dark);
        QTRY_VERIFY(colorOf(u"leftLableCategory"_s) != before);
        QCOMPARE(colorOf(u"leftLableName"_s), QColor(Qt::white));
        QCOMPARE(redCaptions(), u"Category Accents"_s);
    }

    void copies()
    {
        show({kLeft, kRight});
        QCOMPARE(selected(), u"D"_s);
        VXDocument *left = m_documents.at(0);
        typeKeys(find<QListView>("keyView"), u"<Ctrl+Shift+D>"_s);
        QCOMPARE(namesOf(left->infos()), u"A B C D"_s);
        QVERIFY(left->infos().back() != m_documents.at(1)->infos().back());
        QCOMPARE(left->infos().back()->desc(), QString());
        // The list stays until it is asked for anew; the pane shows the copy.
        QCOMPARE(keys(), u"D"_s);
        QTRY_COMPARE(namesOf(m_window->leftInfoList()->arrangedObjects()), u"D"_s);
        QTRY_VERIFY(find<QWidget>("staleBar")->isVisible());
        QTest::mouseClick(find<QPushButton>("refreshButton"), Qt::LeftButton);
        QCOMPARE(keys(), QString());
        QVERIFY(!find<QWidget>("staleBar")->isVisible());
        left->undoManager()->undo();
        QCOMPARE(left->countOfInfos(), 3);
        QVERIFY(!left->isDocumentEdited());
        QVERIFY(!m_documents.at(1)->isDocumentEdited());
    }

    /// What no save would write is not copied either, and empty fields become absent.
    void copiesWhatMayBeWritten()
    {
        show({u"name=\"A\""_s, u"name=\"B\" category=\"\"\nname=\"C\""_s});
        VXDocument *left = m_documents.at(0);
        m_documents.at(1)->infos()[1]->setSortName(u"x <!-- y"_s);
        m_window->filteredKeys()->setSelectionIndexes({0, 1});
        m_window->copyAllLeft();
        QCOMPARE(namesOf(left->infos()), u"A B"_s);
        QVERIFY(left->infos()[1]->category().isNull());
        const auto *bubble = m_window->findChild<ErrorBubble *>();
        QVERIFY(bubble && bubble->text().startsWith(u"Records left out: 1. Sort Name holds “<!--”"_s));
        delete bubble;
        m_window->filteredKeys()->setSelectionIndexes({1});
        m_window->copyLeft();
        QVERIFY(m_window->findChild<ErrorBubble *>());
        QCOMPARE(left->countOfInfos(), 2);
        QCOMPARE(left->undoManager()->stack()->count(), 1);
    }

    /// The copy is appended beside a record of the same name.
    void copyDoesNotReplace()
    {
        show({kLeft, kRight}, 2);
        QTest::keyClick(m_window.get(), Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(namesOf(m_documents.at(1)->infos()), u"A B D B"_s);
        QCOMPARE(m_documents.at(1)->infos().back()->category(), u"Letter"_s);
    }

    void copyAll()
    {
        show({u"name=\"A\""_s, letters(5, u"category=\"x\""_s)});
        typeKeys(find<QListView>("keyView"), u"<Ctrl+A><Ctrl+Shift+D>"_s);
        VXDocument *left = m_documents.at(0);
        QCOMPARE(left->countOfInfos(), 6);
        QCOMPARE(left->undoManager()->stack()->undoText(), u"Copy 5 Records"_s);
        left->undoManager()->undo();
        QCOMPARE(left->countOfInfos(), 1);
        left->undoManager()->redo();
        QCOMPARE(left->countOfInfos(), 6);
        // The plain command takes the first only.
        QCoreApplication::processEvents();
        left->undoManager()->undo();
        m_window->copyLeft();
        QCOMPARE(namesOf(left->infos()), u"A g0"_s);
    }

    /// Field by field with keys and arrows, then back again, by the window's own menus.
    void takesFields()
    {
        show({kLeft, kRight}, 2);
        const VXDocument *right = m_documents.at(1);
        const QString before = linesOf(*right);
        typeKeys(m_window.get(), u"<Alt+.>"_s); // the first field that differs
        QCOMPARE(right->infos().at(1)->category(), u"Letter"_s);
        QCOMPARE(selected(), u"B"_s);
        QCOMPARE(redCaptions(), u"Accents"_s);
        QCOMPARE(plain(menuItem(u"Edit"_s, u"Undo"_s)->text()), u"Undo Take Category in b.xml"_s);
        auto *arrow = button<QToolButton>(m_window.get(), u"Take Accents from the left"_s);
        QVERIFY(arrow && arrow->isVisible());
        QVERIFY(!button<QToolButton>(m_window.get(), u"Take Name from the left"_s));
        QTest::mouseClick(arrow, Qt::LeftButton);
        QCOMPARE(right->infos().at(1)->marks(), u"acute, grave"_s);
        QCOMPARE(keys(), QString());
        typeKeys(m_window.get(), u"<Ctrl+Z>"_s);
        QCOMPARE(selected(), u"B"_s);
        QCOMPARE(redCaptions(), u"Accents"_s);
        typeKeys(m_window.get(), u"<Ctrl+Z>"_s);
        QCOMPARE(linesOf(*right), before);
        QVERIFY(!right->isDocumentEdited());
        // By keyboard alone: the focus goes from arrow to arrow, and to the list at the end.
        QWidget *first = button<QToolButton>(m_window.get(), u"Take Category from the left"_s);
        first->setFocus();
        typeKeys(first, u"<Space>"_s);
        QCOMPARE(m_window->focusWidget()->accessibleName(), u"Take Accents from the left"_s);
        typeKeys(m_window->focusWidget(), u"<Space>"_s);
        QCOMPARE(m_window->focusWidget(), find<QListView>("keyView"));
        QCOMPARE(keys(), QString());
        typeKeys(m_window.get(), u"<Ctrl+Z><Ctrl+Z><Ctrl+Shift+Z><Ctrl+Shift+Z>"_s);
        QCOMPARE(keys(), QString());
        QVERIFY(!m_documents.at(0)->isDocumentEdited());
    }

    /// What one side lacks comes behind its neighbour, or goes; the step taken last is undone first, in
    /// whichever document it was.
    void takesRecords()
    {
        show({kLeft, kRight});
        VXDocument *left = m_documents.at(0);
        VXDocument *right = m_documents.at(1);
        typeKeys(m_window.get(), u"<Alt+Left>"_s);
        QCOMPARE(namesOf(left->infos()), u"A B D C"_s);
        QCOMPARE(left->infos().at(2)->desc(), u"d"_s);
        typeKeys(m_window.get(), u"<Ctrl+2>"_s);
        QCOMPARE(selected(), u"C"_s);
        QTest::mouseClick(find<QToolButton>("takeRightButton"), Qt::LeftButton, {}, QPoint(6, 6));
        QCOMPARE(namesOf(right->infos()), u"A B D C"_s);
        typeKeys(m_window.get(), u"<Ctrl+3>"_s);
        m_window->takeAllLeft();
        QCOMPARE(left->infos().at(1)->category(), u"Mark"_s);
        for (const int mode : {0, 1, 2})
            QCOMPARE(m_window->countOfKeysInMode(mode), 0);
        typeKeys(m_window.get(), u"<Ctrl+Z>"_s);
        QCOMPARE(left->infos().at(1)->category(), u"Letter"_s);
        typeKeys(m_window.get(), u"<Ctrl+Z>"_s);
        QCOMPARE(namesOf(right->infos()), u"A B D"_s);
        QCOMPARE(namesOf(left->infos()), u"A B D C"_s);
        typeKeys(m_window.get(), u"<Ctrl+Z>"_s);
        QCOMPARE(namesOf(left->infos()), u"A B C"_s);
        QVERIFY(!menuItem(u"Edit"_s, u"Undo"_s)->isEnabled());
        typeKeys(m_window.get(), u"<Ctrl+Shift+Z><Ctrl+Shift+Z>"_s);
        QCOMPARE(namesOf(left->infos()) + u'|' + namesOf(right->infos()), u"A B D C|A B D C"_s);
        typeKeys(m_window.get(), u"<Ctrl+Z>"_s);
        QCOMPARE(plain(menuItem(u"Edit"_s, u"Redo"_s)->text()), u"Redo Take “C” in b.xml"_s);
        typeKeys(m_window.get(), u"<Ctrl+Z>"_s);
        // A new step in one document is the end of what was undone in the other too.
        typeKeys(m_window.get(), u"<Ctrl+1><Ctrl+Backspace>"_s);
        QVERIFY(left->undoManager()->canRedo());
        QVERIFY(!menuItem(u"Edit"_s, u"Redo"_s)->isEnabled());
        QCOMPARE(namesOf(right->infos()), u"A B"_s);
        QCOMPARE(right->undoManager()->stack()->undoText(), u"Remove “D”"_s);
    }

    /// The list goes on behind what was taken, and from the top behind the last one.
    void goesOnInList()
    {
        show({letters(5, u"category=\"x\" description=\"d\""_s),
              letters(5, u"category=\"y\" description=\"d\""_s)},
             2);
        m_window->filteredKeys()->setSelectionIndexes({1, 2});
        typeKeys(m_window.get(), u"<Alt+Right>"_s);
        QCOMPARE(keys(), u"g0 g3 g4"_s);
        QCOMPARE(selected(), u"g3"_s);
        QCOMPARE(m_documents.at(1)->undoManager()->stack()->undoText(), u"Take 2 Records"_s);
        typeKeys(m_window.get(), u"<F8><Alt+Right>"_s);
        QCOMPARE(selected(), u"g0"_s);
        QCOMPARE(find<QLabel>("positionLabel")->text(), u"1 of 2, from the top again"_s);
        typeKeys(m_window.get(), u"<Ctrl+Z><Ctrl+Z>"_s);
        QCOMPARE(selected(), u"g1 g2"_s);
    }

    void menus()
    {
        show({kLeft, kRight}, 2);
        QStringList titles;
        QStringList keys, words;
        for (const QAction *menu : m_window->menuBar()->actions()) {
            titles << plain(menu->text());
            if (titles.last() == u"Compare"_s)
                appendTexts(*menu->menu(), {}, words);
            for (const QAction *item : menu->menu()->actions()) {
                for (const QKeySequence &key : item->shortcuts())
                    keys << key.toString();
                const bool isCommand = !item->isSeparator() && !item->menu();
                QVERIFY2(titles.last() != u"Compare"_s || !isCommand || !item->shortcuts().isEmpty(),
                         qPrintable(item->text()));
            }
        }
        QCOMPARE(titles.join(u' '), u"File Edit View Compare Window Help"_s);
        COMPARE_LINES(u"compare-menu"_s, words);
        QVERIFY(keys.contains(u"Alt+Right"_s) && !keys.contains(u"Alt+Shift+Right"_s));
        QCOMPARE(keys.removeDuplicates(), 0);
        // The history of either side leads anywhere.
        m_window->takeRight();
        QCOMPARE(this->keys(), QString());
        QMenu *history = menuItem(u"Edit"_s, u"History of the Right"_s)->menu();
        Q_EMIT history->aboutToShow();
        QCOMPARE(offersOf(*history).join(u'|'), u"Take “B”|As Opened"_s);
        history->actions().last()->trigger();
        QTRY_COMPARE(this->keys(), u"B"_s);
        QVERIFY(!m_documents.at(1)->isDocumentEdited());
    }

    /// What was opened for the comparison alone is only read.
    void readOnlySide()
    {
        open({kLeft, kRight});
        setOnlyToCompare(*m_documents.at(1));
        setMode(2);
        m_window->showWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QCOMPARE(find<QComboBox>("rightDocuments")->currentText(), u"b.xml, read-only"_s);
        QVERIFY(!button<QToolButton>(m_window.get(), u"Take Category from the left"_s)->isEnabled());
        QVERIFY(button<QToolButton>(m_window.get(), u"Take Category from the right"_s)->isEnabled());
        typeKeys(m_window.get(), u"<Alt+.><Alt+Right><Ctrl+Shift+R><Ctrl+D>"_s);
        m_window->copyRight();
        QVERIFY(m_window->findChild<ErrorBubble *>()->text().startsWith(u"“b.xml” is read-only"_s));
        m_window->takeAllRight();
        m_window->takeFieldRight(u"category"_s);
        QVERIFY(!m_documents.at(1)->isDocumentEdited());
        m_window->takeFieldLeft(u"category"_s);
        QCOMPARE(m_documents.at(0)->infos().at(1)->category(), u"Mark"_s);
    }

    void onlyWhatDiffers()
    {
        show({kLeft, kRight}, 2);
        QVERIFY(m_window->outlet(u"leftLableName"_s)->isVisible());
        typeKeys(m_window.get(), u"<Ctrl+Shift+O>"_s);
        QVERIFY(find<QCheckBox>("onlyDifferencesBox")->isChecked());
        QStringList seen;
        for (const ComparedField &field : comparedFields()) {
            const QString name = QString::fromLatin1(field.name);
            if (m_window->outlet(u"rightLable"_s + name)->isVisible())
                seen << name;
        }
        QCOMPARE(seen.join(u' '), u"Category Accents"_s);
        QTest::mouseClick(find<QCheckBox>("onlyDifferencesBox"), Qt::LeftButton, {}, QPoint(8, 8));
        QVERIFY(m_window->outlet(u"leftLableName"_s)->isVisible());
    }

    /// What is overlooked is not listed, not marked, and not taken; it is remembered, and the window says so.
    void overlooks()
    {
        show({u"name=\"A\" category=\"Letter\" description=\"d\"\n"
              "name=\"B\" category=\"x\" description=\"a b\"\nname=\"C\" script=\"s\" description=\"c\""_s,
              u"name=\"A\" category=\"letter\" description=\"d\"\n"
              "name=\"B\" category=\"X\" description=\"ab\"\nname=\"C\" script=\"t\" description=\"C\""_s},
             2);
        QCOMPARE(keys(), u"A B C"_s);
        typeKeys(m_window.get(), u"<Ctrl+I>"_s);
        QCOMPARE(keys(), u"B C"_s);
        QCOMPARE(redCaptions(), u"Description"_s);
        typeKeys(m_window.get(), u"<Ctrl+Shift+I>"_s);
        QCOMPARE(keys(), u"C"_s);
        QMenu *fields = menuItem(u"View"_s, u"Ignore Fields"_s)->menu();
        for (QAction *field : fields->actions()) {
            if (field->text() == u"Script"_s)
                field->trigger();
        }
        QCOMPARE(keys(), QString());
        QCOMPARE(find<QLabel>("overlookedLabel")->text(), u"Overlooked: case, spaces, Script"_s);
        QVERIFY(menuItem(u"View"_s, u"Ignore Case"_s)->isChecked());
        const VXCompareDataWindow later;
        QVERIFY(later.options() == m_window->options());
        m_window->setFieldIgnored(u"script"_s, false);
        m_window->takeRight();
        QCOMPARE(m_documents.at(1)->infos().at(2)->script() + m_documents.at(1)->infos().at(2)->desc(),
                 u"sC"_s);
    }

    /// How many records differ in each field, and only these.
    void countsFields()
    {
        show({letters(4, u"category=\"x\" script=\"s\" description=\"d\""_s),
              letters(3, u"category=\"y\" script=\"s\" description=\"d\""_s)
                  + u"name=\"g3\" category=\"y\" script=\"t\" description=\"d\""_s},
             2);
        auto *filter = find<QComboBox>("fieldFilter");
        const auto offers = [filter] {
            QStringList texts;
            for (int i = 0; i < filter->count(); ++i)
                texts << filter->itemText(i);
            return texts.join(u'|');
        };
        QCOMPARE(offers(), u"Any Field|Category  4|Script  1"_s);
        filter->setFocus();
        typeKeys(filter, u"<Down><Down>"_s);
        QCOMPARE(keys(), u"g3"_s);
        typeKeys(m_window.get(), u"<Alt+,>"_s);
        QCOMPARE(m_documents.at(0)->infos().at(3)->category(), u"y"_s);
        QCOMPARE(keys(), u"g3"_s);
        typeKeys(m_window.get(), u"<Ctrl+Shift+L>"_s);
        QCOMPARE(offers(), u"Any Field|Category  3"_s);
        QCOMPARE(keys(), u"g0 g1 g2"_s);
        setMode(0);
        QVERIFY(!find<QWidget>("fieldFilterRow")->isVisible());
    }

    /// Reports are what the command line prints.
    void reports()
    {
        const QTemporaryDir folder;
        open({kLeft, kRight});
        for (VXDocument *document : std::as_const(m_documents)) {
            const QString path = folder.filePath(document->displayName());
            QVERIFY(document->saveToURLOfType(path, u"public.xml"_s));
        }
        setMode(2);
        m_window->showWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        for (const QString &format : {u"text"_s, u"json"_s}) {
            QString printed;
            QTextStream out(&printed);
            compareFiles(m_documents.at(0)->fileURL(), m_documents.at(1)->fileURL(), CompareKey::Name,
                         format == u"json"_s ? ReportFormat::Json : ReportFormat::Text, out);
            QVERIFY(printed.contains(u"breve"_s));
            QCOMPARE(m_window->reportOfFormat(u"all"_s, format), printed);
            typeKeys(m_window.get(), u"<Ctrl+Shift+T>"_s);
            QCOMPARE(QApplication::clipboard()->text(), printed);
            typeKeys(m_window.get(), u"<Ctrl+T>"_s);
            QVERIFY(!QApplication::clipboard()->text().contains(QRegularExpression(u"Only|missing"_s)));
            QVERIFY(QApplication::clipboard()->text().contains(u"breve"_s));
            const QString path = folder.filePath(format);
            QVERIFY(m_window->saveReportOfFormat(path, u"all"_s, format));
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(QString::fromUtf8(file.readAll()), printed);
            typeKeys(m_window.get(), u"<Ctrl+J>"_s);
        }
        QVERIFY(!m_window->saveReportOfFormat(folder.filePath(u"none/report"_s), u"all"_s, u"text"_s));
        answer(u"OK"_s);
    }

    /// A report of very much shows how far it is; Esc leaves the clipboard as it was.
    void longReport()
    {
        show({letters(100'000, u"category=\"x\" description=\"d\""_s),
              letters(100'000, u"category=\"y\" description=\"d\""_s)},
             2);
        m_window->filteredKeys();
        typeKeys(m_window.get(), u"<Ctrl+J>"_s);
        for (const bool isStopped : {true, false}) {
            QApplication::clipboard()->setText(u"before"_s);
            QTimer watch;
            watch.callOnTimeout([isStopped] {
                auto *progress = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
                if (isStopped && progress)
                    QTest::keyClick(progress, Qt::Key_Escape);
            });
            watch.start(0);
            menuItem(u"Edit"_s, u"Copy Report"_s)->trigger();
            const QString copied = QApplication::clipboard()->text();
            QCOMPARE(copied == u"before"_s, isStopped);
            QCOMPARE(copied.count(u'\n'), isStopped ? 0 : 100'002);
        }
    }

    /// It opens on differences of a kind that there is; what is chosen later stays, empty or not.
    void opensWhereSomethingIs()
    {
        show({kLeft, kLeft + u"\nname=\"Z\""_s}, 2);
        QCOMPARE(UserDefaults::standard().integerForKey(u"FilterMode"_s), 0);
        QCOMPARE(keys(), u"Z"_s);
        setMode(1);
        QCOMPARE(keys(), QString());
    }

    void stepping()
    {
        show({u"name=\"A\""_s, letters(4, {})});
        QCOMPARE(selected(), u"g0"_s);
        QTest::keyClick(m_window.get(), Qt::Key_F8);
        QCOMPARE(selected(), u"g1"_s);
        QTest::keyClick(m_window.get(), Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(selected(), u"g2"_s);
        QCOMPARE(find<QLabel>("positionLabel")->text(), u"3 of 4"_s);
        QTest::keyClick(m_window.get(), Qt::Key_F8, Qt::ShiftModifier);
        QTest::keyClick(m_window.get(), Qt::Key_Up, Qt::AltModifier);
        QCOMPARE(selected(), u"g0"_s);
        QTest::keyClick(m_window.get(), Qt::Key_F8, Qt::ShiftModifier);
        QCOMPARE(selected(), u"g3"_s);
        QCOMPARE(find<QLabel>("positionLabel")->text(), u"4 of 4, from the end again"_s);
        QTest::keyClick(m_window.get(), Qt::Key_F8);
        QCOMPARE(selected(), u"g0"_s);
        QCOMPARE(find<QLabel>("positionLabel")->text(), u"1 of 4, from the top again"_s);
        QVERIFY(m_window->filteredKeys()->setSelectionIndexes({1, 2}));
        QTest::mouseClick(find<QToolButton>("nextButton"), Qt::LeftButton);
        QCOMPARE(selected(), u"g3"_s);
        QVERIFY(!m_window->filteredKeys()->setSelectionIndexes({4}));
        QCOMPARE(selected(), u"g3"_s);
        QCOMPARE(namesOf(m_window->rightInfoList()->arrangedObjects()), u"g3"_s);
    }

    /// The selection stays on its key when the list is made anew.
    void selectionIsKept()
    {
        show({u"name=\"A\""_s, letters(6, {})});
        m_window->filteredKeys()->setSelectionIndexes({3});
        m_documents.at(1)->removeInfo(m_documents.at(1)->infos().front());
        QTest::keyClick(m_window.get(), Qt::Key_F5);
        QCOMPARE(allKeys().size(), 5);
        QCOMPARE(selected(), u"g3"_s);
        QCOMPARE(m_window->filteredKeys()->selectionIndexes(), IndexSet {2});
    }

    /// Without a description records are listed though nothing differs; the window says why.
    void noteOnDescriptions()
    {
        show({u"name=\"A\""_s, u"name=\"A\""_s}, 2);
        QCOMPARE(keys(), u"A"_s);
        QCOMPARE(redCaptions(), QString());
        QVERIFY(find<QLabel>("noteLabel")->isVisible());
        QVERIFY(find<QLabel>("noteLabel")->text().contains(u"without a description"_s));
    }

    void edits()
    {
        show({kLeft, kRight}, 2);
        m_documents.at(0)->infos().at(1)->setCategory(u"Mark"_s);
        QTRY_COMPARE(redCaptions(), u"Accents"_s);
        QVERIFY(find<QWidget>("staleBar")->isVisible());
    }

    /// What data contain is text, never markup.
    void plainTexts()
    {
        show({u"name=\"A\""_s, u"name=\"<b>x</b>\" description=\"<img src='/dev/zero'>\""_s});
        QCOMPARE(valueOf(CompareSheet::Right, u"Name"_s), u"<b>x</b>"_s);
        for (const QLabel *label : m_window->findChildren<QLabel *>())
            QVERIFY2(label->textFormat() == Qt::PlainText || label->text().isEmpty()
                         || !label->text().contains(u'<'),
                     qPrintable(label->objectName()));
    }

    /// Blanks that only look alike are shown as what they are.
    void keepsBlanksApart()
    {
        CompareField field;
        for (const QString &text : {u"a\u00A0b"_s, u"a b"_s, u"a\u2028b"_s, u"a\u00A0b"_s}) {
            field.setValue(text, {});
            QCOMPARE(field.document()->toRawText(), text);
        }
        QSignalSpy changed(&field, &QPlainTextEdit::textChanged);
        field.setValue(u"a\u00A0b"_s, {});
        QCOMPARE(changed.size(), 0);
    }

    void longTexts()
    {
        const QString filler = QString(200'000, u'x').replace(u"xxxxxxxx"_s, u"xxxxxxx "_s);
        show({u"name=\"A\" description=\"%1left end\""_s.arg(filler),
              u"name=\"A\" description=\"%1right end\""_s.arg(filler)},
             2);
        const QString shown = valueOf(CompareSheet::Right, u"Description"_s);
        QVERIFY(shown.size() < 10'000);
        QVERIFY(shown.startsWith(u'…'));
        QVERIFY(shown.endsWith(u"right end"_s));
        for (const CompareField *field : m_window->findChildren<CompareField *>()) {
            if (field->accessibleName().startsWith(u"Description, right"_s)) {
                QVERIFY(!field->extraSelections().isEmpty());
                QVERIFY(u"right"_s.contains(field->extraSelections().first().cursor.selectedText()));
            }
        }
    }

    /// Both panes lie in one scrolled sheet, a field beside its like; no window is too narrow for both.
    void panesScrollTogether()
    {
        show({kLeft, kRight}, 2);
        const auto top = [&](const QString &outlet) {
            QWidget *caption = m_window->outlet(outlet);
            return caption->mapTo(m_window.get(), QPoint(0, 0)).y();
        };
        auto *area = find<QScrollArea>("detailArea");
        for (const int width : {1240, 900, 600, 1240}) {
            m_window->resize(width, 400);
            QTRY_COMPARE(m_window->width(), width);
            QTRY_COMPARE(area->horizontalScrollBar()->maximum(), 0);
            for (const int value : {0, 120}) {
                area->verticalScrollBar()->setValue(value);
                QCOMPARE(area->verticalScrollBar()->value(), value);
                for (const ComparedField &field : comparedFields()) {
                    const QString name = QString::fromLatin1(field.name);
                    QCOMPARE(top(u"leftLable"_s + name), top(u"rightLable"_s + name));
                }
            }
        }
    }

    /// A long comparison shows how far it is, can be cancelled, and is finished by who asks for its keys.
    void longComparison()
    {
        open({letters(30'000, u"description=\"d\""_s), letters(30'000, u"description=\"e\""_s)});
        m_window->setPatience(std::chrono::milliseconds(0));
        m_window->showWindow();
        setMode(2);
        auto *progress = find<QWidget>("progressRow");
        QVERIFY(progress->isVisible());
        QVERIFY(find<QLabel>("emptyLabel")->text().startsWith(u"Comparing"_s));
        QTest::mouseClick(find<QPushButton>("cancelButton"), Qt::LeftButton);
        QVERIFY(!progress->isVisible());
        QCOMPARE(keys(), QString());
        QVERIFY(find<QLabel>("emptyLabel")->text().contains(u"cancelled"_s));

        m_window->updateFilters();
        QCOMPARE(allKeys().size(), 30'000);
        QTRY_COMPARE_WITH_TIMEOUT(m_window->countOfKeysInMode(0), 0, 30'000);
        m_window->updateFilters();
        // A change in the midst of it begins it anew.
        m_documents.at(0)->removeInfo(m_documents.at(0)->infos().front());
        QTRY_COMPARE_WITH_TIMEOUT(m_window->countOfKeysInMode(0), 1, 30'000);
        QCOMPARE(allKeys().size(), 29'999);
    }

    void tabOrder()
    {
        show({kLeft, kRight});
        find<QComboBox>("leftDocuments")->setFocus();
        QStringList order;
        for (int i = 0; i < 5; ++i) {
            order << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(order,
                 QStringList({u"leftDocuments"_s, u"rightDocuments"_s, u"onlyRightButton"_s, u"keyChooser"_s,
                              u"keyView"_s}));
    }
};

RUNEBOOK_TEST_MAIN(CompareWindowTest)
#include "CompareWindowTest.moc"
