#include "editing/compare/CompareField.h"
#include "editing/fields/FieldEditing.h"
#include "editing/merge/MergeDialog.h"
#include "merge/MergedText.h"
#include "tests/PaintedTexts.h"
#include "tests/editing/Windows.h"

using namespace runebook;

namespace {

using Row = std::map<GlyphField, QString>;
using Table = std::map<QString, Row>; // by name, in the order of names

const std::vector<GlyphField> kFields {GlyphField::Category, GlyphField::Script, GlyphField::Desc};

QByteArray textOfTable(const Table &table)
{
    VXDocument document;
    InfoList infos;
    for (const auto &[name, row] : table) {
        infos.push_back(infoNamed(name));
        for (const auto &[field, value] : row)
            setFieldFromText(document, {infos.back()}, field, value);
    }
    document.setInfos(infos);
    return textOfDocument(document);
}

} // namespace

class MergeWindowTest : public FilesFixture
{
    Q_OBJECT
    QPointer<MergeWindow> m_window;
    QRandomGenerator m_random {1};

    int upTo(int count) { return int(m_random.bounded(count)); }
    QString anyValue()
    {
        return QStringList {u""_s, u"Letter"_s, u"Mark"_s, u"Number"_s, u"été"_s}.at(upTo(5));
    }
    /// Random edits of one side.
    Table edited(Table table)
    {
        for (auto each = table.begin(); each != table.end();) {
            const int what = upTo(8);
            for (int edit = 0; edit < what - 4; ++edit)
                each->second[kFields[std::size_t(upTo(3))]] = anyValue();
            each = what == 0 ? table.erase(each) : std::next(each);
        }
        table[u"new%1"_s.arg(upTo(4))][kFields[0]] = anyValue();
        return table;
    }
    std::array<QByteArray, 3> sides(int records)
    {
        Table base;
        for (int i = 0; i < records; ++i) {
            for (const GlyphField field : kFields)
                base[u"g%1"_s.arg(i, 3, 10, QChar(u'0'))][field] = anyValue();
        }
        const Table ours = edited(base);
        const Table theirs = edited(base);
        return {textOfTable(base), textOfTable(ours), textOfTable(theirs)};
    }
    static QByteArray merged(const std::array<QByteArray, 3> &sides, MergeSide prefer)
    {
        MergeOptions options;
        options.prefer = prefer;
        return textOf(*ThreeWayMerge::of(sides[0], sides[1], sides[2], options));
    }
    void show(const std::array<QByteArray, 3> &sides)
    {
        m_window = showMerge(PreparedMerge::of(sides, CompareKey::Name), {u"base"_s, u"ours"_s, u"theirs"_s},
                             u"merged"_s);
        QVERIFY(m_window);
        QVERIFY(QTest::qWaitForWindowActive(m_window));
    }
    VXDocument *document() { return m_window->resolution().document(); }
    QByteArray text() { return textOfDocument(*document()); }
    qsizetype openCount() { return m_window->resolution().openCount(); }
    QMenu *menu(const QString &title)
    {
        for (QMenu *each : m_window->findChildren<QMenu *>()) {
            if (plain(each->title()) == title)
                return each;
        }
        return nullptr;
    }
    void press(const QString &keys) { typeKeys(m_window, keys); }
    std::size_t shownNumber()
    {
        return recordsOfMode(m_window->resolution().merge(),
                             MergeMode::Conflicts)[std::size_t(m_window->list()->currentIndex().row())];
    }

private Q_SLOTS:
    void init()
    {
        makeFolder();
        m_random.seed(19);
    }
    void cleanup()
    {
        if (m_window)
            document()->close();
        closeAll();
    }

    /// Whatever is decided, by whichever means, the document holds it, and undo goes back to the letter.
    void resolves_data()
    {
        QTest::addColumn<int>("seed");
        for (int seed = 0; seed < rounds(4); ++seed)
            QTest::addRow("%d", seed) << seed;
    }
    void resolves()
    {
        QFETCH(int, seed);
        constexpr int kRecords = 120;
        m_random.seed(quint32(seed));
        const auto texts = sides(kRecords);
        show(texts);
        const MergeResolution &resolution = m_window->resolution();
        const qsizetype all = resolution.conflictCount();
        QVERIFY(all > 1);
        const QByteArray ours = merged(texts, MergeSide::Ours);
        QCOMPARE(text(), ours);
        press(u"<Ctrl+Shift+R>"_s);
        QCOMPARE(openCount(), 0);
        QCOMPARE(text(), merged(texts, MergeSide::Theirs));
        press(u"<Ctrl+Z>"_s);
        QCOMPARE(openCount(), all);
        press(u"<Ctrl+Shift+L>"_s);
        QCOMPARE(openCount(), 0);
        QCOMPARE(text(), ours);
        press(u"<Ctrl+Z>"_s);
        QCOMPARE(openCount(), all);

        std::vector<std::pair<QByteArray, qsizetype>> states {{text(), openCount()}};
        for (int step = 0; openCount() > 0 && step < 200; ++step) {
            if (resolution.isResolved(shownNumber()))
                press(u"<F8>"_s);
            const std::size_t number = shownNumber();
            QVERIFY(!resolution.isResolved(number));
            const std::optional<GlyphField> field = m_window->sheet()->currentField();
            const RecordSides sides = resolution.merge().sidesOf(resolution.record(number));
            const bool takesOurs = upTo(2);
            const InfoPtr source = takesOurs ? sides.ours : sides.theirs;
            switch (field ? upTo(4) : 0) {
            case 0:
                press(takesOurs ? u"<Alt+Left>"_s : u"<Alt+Right>"_s);
                QVERIFY(resolution.isResolved(number));
                QCOMPARE(bool(resolution.resultOf(number)), bool(source));
                break;
            case 1:
                press(takesOurs ? u"<Alt+,>"_s : u"<Alt+.>"_s);
                QCOMPARE(resolution.resultOf(number)->displayText(*field), source->displayText(*field));
                break;
            case 2: {
                auto *take = button(
                    m_window->sheet(),
                    (takesOurs ? u"Take %1 from ours"_s : u"Take %1 from theirs"_s).arg(fieldTitle(*field)));
                QVERIFY(take && take->isVisible());
                QTest::mouseClick(take, Qt::LeftButton);
                QCOMPARE(resolution.resultOf(number)->displayText(*field), source->displayText(*field));
                break;
            }
            default:
                QLineEdit *editor = m_window->sheet()->editor(*field);
                editor->setFocus();
                typeKeys(editor, u"<Ctrl+A>typed%1<Return>"_s.arg(step));
                QCOMPARE(resolution.resultOf(number)->displayText(*field), u"typed%1"_s.arg(step));
            }
            if (field && !resolution.isResolved(number))
                QVERIFY(resolution.isChosen(number, *field));
            QVERIFY(isSaidAmongTexts(u"merge-window"_s, *m_window));
            states.emplace_back(text(), openCount());
        }
        QCOMPARE(openCount(), 0);
        QCOMPARE(document()->openConflicts(), 0);
        for (const int way : {-1, 1}) {
            for (std::size_t i = 1; i < states.size(); ++i) {
                press(way < 0 ? u"<Ctrl+Z>"_s : u"<Ctrl+Shift+Z>"_s);
                const auto &[was, count] = states[way < 0 ? states.size() - 1 - i : i];
                QCOMPARE(text(), was);
                QCOMPARE(openCount(), count);
            }
        }
    }

    void leavesWhatIsDecided()
    {
        const auto side = [](const QByteArray &word) {
            return "<glyphData format=\"2\">\n<glyph name=\"a\" category=\"" + word + "\" script=\"" + word
                + "\" />\n</glyphData>\n";
        };
        show({side("base"), side("ours"), side("theirs")});
        COMPARE_TEXTS(u"merge-fields"_s, *m_window);
        const auto spoken = [this] {
            return m_window->list()->model()->index(0, 0).data(Qt::AccessibleTextRole).toString();
        };
        QCOMPARE(spoken(), u"a, conflict"_s);
        press(u"<F8>"_s); // there is no other one
        QVERIFY(textsOf(*m_window).join(u'/').contains(u"Again from the first one."_s));
        press(u"<Alt+,><Ctrl+Shift+R>"_s); // the category from ours, then all that is open from theirs
        QCOMPARE(openCount(), 0);
        QCOMPARE(spoken(), u"a, resolved"_s);
        const InfoPtr info = document()->infos().at(0);
        QCOMPARE(info->category() + info->script(), u"ourstheirs"_s);
        // In a field where nothing was typed the keys of Undo are the window's.
        QLineEdit *editor = m_window->sheet()->editor(GlyphField::Script);
        editor->setFocus();
        typeKeys(editor, u"<Ctrl+Z>"_s);
        QCOMPARE(openCount(), 1);
        typeKeys(editor, u"<Ctrl+Shift+Z>"_s);
        QCOMPARE(openCount(), 0);
        // Steps are told by their names, and can be chosen.
        QCOMPARE(plain(m_window->action(MergeMenus::Undo)->text()), u"Undo Take One Conflict from Theirs"_s);
        QMenu *history = menu(u"History"_s);
        Q_EMIT history->aboutToShow();
        QCOMPARE(offersOf(*history).size(), 3);
        history->actions().constLast()->trigger();
        QCOMPARE(openCount(), 1);
        QTRY_COMPARE(plain(m_window->action(MergeMenus::Redo)->text()),
                     u"Redo Take Category of “a” from Ours"_s);
        QCOMPARE(offersOf(*menu(u"File"_s)).first(3), (QStringList {u"New"_s, u"Open…"_s, u"Open Recent"_s}));
        // Where something was typed they are the field's. What it refuses stays, and no command acts behind
        // it.
        m_window->action(MergeMenus::Redo)->trigger();
        const auto next = [this] { return m_window->action(MergeMenus::Redo)->text(); };
        const QString before = next();
        editor->setFocus();
        typeKeys(editor, u"<Ctrl+A>x<Ctrl+Z>"_s);
        QCOMPARE(next(), before);
        QTest::keyClicks(editor, u"x <!-- y"_s);
        const QString refused = editor->text();
        QVERIFY(m_window->action(MergeMenus::Undo)->isEnabled());
        m_window->action(MergeMenus::Undo)->trigger();
        QCOMPARE(editor->text(), refused);
        QCOMPARE(next(), before);
    }

    /// Of each side what differs from the base; of what has no base, from the other side.
    void marksWhatEachSideChanged()
    {
        const auto side = [](const QByteArray &word) {
            return "<glyphData format=\"2\">\n<glyph name=\"a\" category=\"" + word + "\" />\n</glyphData>\n";
        };
        const auto marks = [this](const QString &words) {
            QStringList parts;
            for (const CompareField *field : m_window->findChildren<CompareField *>()) {
                if (field->accessibleName().startsWith("Category, "_L1 + words))
                    for (const TextPart &part : field->markedParts())
                        parts << field->toPlainText().mid(part.begin, part.length);
            }
            return parts.join(u'|');
        };
        show({side("abc"), side("abXc"), side("Yabc")});
        QCOMPARE(marks(u"ours"_s) + u' ' + marks(u"base"_s) + u' ' + marks(u"theirs"_s), u"X  Y"_s);
    }

    /// The header, and lines with more than fields: the line that was chosen is the one that a save writes.
    void decidesWholeLines()
    {
        const auto side = [](const QByteArray &word) {
            return "<!-- " + word + " -->\n<glyphData format=\"2\">\n<glyph name=\"a\" category=\"" + word
                + "\" other=\"" + word + "\" /> <!-- " + word + " -->\n</glyphData>\n";
        };
        const QByteArray line = "<glyph name=\"a\" category=\"theirs\" other=\"theirs\" /> <!-- theirs -->\n";
        show({side("base"), side("ours"), side("theirs")});
        QCOMPARE(openCount(), 2);
        COMPARE_TEXTS(u"merge-lines"_s, *m_window);
        const auto shown = [this] {
            return m_window->findChild<QWidget *>(u"wholeLinesTheirs"_s)->property("plainText").toString();
        };
        QVERIFY(shown().startsWith(u"<!-- theirs"_s));
        press(u"<Alt+Left>"_s);
        QCOMPARE(openCount(), 1);
        QCOMPARE(shown(), QString::fromUtf8(line).trimmed());
        QVERIFY(!m_window->action(MergeMenus::TakeFieldOurs)->isEnabled());
        const QByteArray before = text();
        press(u"<Alt+Right>"_s);
        QCOMPARE(openCount(), 0);
        QVERIFY(text().contains('\n' + line));
        QCOMPARE(document()->infos().at(0)->category(), u"theirs"_s);
        press(u"<Ctrl+Z>"_s);
        QCOMPARE(text(), before);
        QCOMPARE(openCount(), 1);
        QVERIFY(m_window->resolution().resultOf(0));
        press(u"<Ctrl+Shift+Z>"_s);
        QVERIFY(text().contains('\n' + line));
        document()->infos().at(0)->setScript(u"latin"_s); // what is edited is printed anew
        QVERIFY(text().contains("\t<glyph name=\"a\" category=\"theirs\" script=\"latin\" />\n"));
    }

    void takesRenamesAsOneRecord_data()
    {
        QTest::addColumn<bool>("byUs");
        QTest::addColumn<bool>("inConflict");
        for (const bool byUs : {false, true}) {
            for (const bool inConflict : {false, true})
                QTest::addRow("by %s, %s", byUs ? "us" : "them",
                              inConflict ? "one field by both" : "two fields")
                    << byUs << inConflict;
        }
    }
    void takesRenamesAsOneRecord()
    {
        QFETCH(bool, byUs);
        QFETCH(bool, inConflict);
        const auto side = [](const QByteArray &name, const QByteArray &category, const QByteArray &script) {
            return "<glyphData format=\"2\">\n<glyph unicode=\"0041\" name=\"" + name + "\" category=\""
                + category + "\" script=\"" + script + "\" />\n<glyph name=\"b\" />\n</glyphData>\n";
        };
        const QByteArray edited = side("a", "edited", "base");
        const QByteArray renamed = side("a.alt", inConflict ? "renamed" : "base", "renamed");
        show({side("a", "base", "base"), byUs ? renamed : edited, byUs ? edited : renamed});
        QCOMPARE(openCount(), 1);
        const QByteArray before = text();
        auto *take = button(m_window, u"Take as Renamed"_s);
        QVERIFY(take && take->isVisible());
        QTest::mouseClick(take, Qt::LeftButton);
        QVERIFY(!take->isVisible());
        QCOMPARE(namesOf(document()->infos()), u"a.alt b"_s);
        const auto values = [this] {
            const InfoPtr info = document()->infos().at(0);
            return info->category() + u' ' + info->script();
        };
        QCOMPARE(values(), inConflict && byUs ? u"renamed renamed"_s : u"edited renamed"_s);
        QCOMPARE(openCount(), inConflict ? 1 : 0);
        if (inConflict) {
            QCOMPARE(m_window->sheet()->currentField(), GlyphField::Category);
            press(u"<Alt+.>"_s);
            QCOMPARE(values(), byUs ? u"edited renamed"_s : u"renamed renamed"_s);
            QCOMPARE(openCount(), 0);
            press(u"<Ctrl+Z>"_s);
        }
        press(u"<Ctrl+Z>"_s);
        QCOMPARE(text(), before);
        QCOMPARE(openCount(), 1);
        press(u"<Ctrl+R>"_s);
        QCOMPARE(namesOf(document()->infos()), u"a.alt b"_s);
    }

    void asksBeforeSavingAndClosing()
    {
        show({"<glyphData format=\"2\">\n<glyph name=\"a\" category=\"Letter\" />\n</glyphData>\n",
              "<glyphData format=\"2\">\n<glyph name=\"a\" category=\"Mark\" />\n</glyphData>\n",
              "<glyphData format=\"2\">\n<glyph name=\"a\" category=\"Number\" />\n</glyphData>\n"});
        QVERIFY(document()->savingWillChange().value(0).contains(u"One conflict"_s));
        m_window->close();
        answer(u"Cancel"_s);
        QVERIFY(m_window && m_window->isVisible());
        QLineEdit *editor = m_window->sheet()->editor(GlyphField::Category);
        editor->setFocus();
        typeKeys(editor, u"<Ctrl+A>a\"b"_s);
        const QString refused = editor->text();
        typeKeys(editor, u"<Return>"_s);
        QCOMPARE(
            openCount(),
            objectionToText(*document(), document()->infos(), GlyphField::Category, refused).domain.isEmpty()
                ? 0
                : 1);
        typeKeys(editor, u"<Ctrl+A>Symbol<Return>"_s);
        QCOMPARE(openCount(), 0);
        QVERIFY(!document()->savingWillChange().join(u' ').contains(u"conflict"_s));
        const QPointer<VXDocument> kept = document();
        QSignalSpy closed(m_window, &MergeWindow::closed);
        m_window->close();
        QCOMPARE(closed.size(), 1);
        sendDeferredDeletes();
        QVERIFY(!m_window);
        QCOMPARE(kept->infos().front()->category(), u"Symbol"_s);
    }

    void mergesWhatTheDialogNames()
    {
        const auto texts = sides(20);
        write(texts[0], u"base.xml"_s);
        write(texts[1], u"ours.xml"_s);
        write(texts[2], u"theirs.xml"_s);
        write("no table", u"other.xml"_s);
        write(texts[2], u"closed.xml"_s);
        open(u"ours.xml"_s);
        VXDocument *toBeClosed = open(u"closed.xml"_s);
        open(u"base.xml"_s); // in front, and not what is chosen
        MergeDialog *dialog = MergeDialog::open(nullptr);
        COMPARE_TEXTS(u"merge-dialog"_s, *dialog);
        QPushButton *go = button<QPushButton>(dialog, u"Merge"_s);
        QVERIFY(!go->isEnabled());
        dialog->setFile(MergeSide::Base, path(u"base.xml"_s));
        dialog->chooser(MergeSide::Ours)->setCurrentText(u"ours.xml"_s);
        dialog->chooser(MergeSide::Theirs)->setCurrentText(u"closed.xml"_s);
        toBeClosed->close();
        QTest::mouseClick(go, Qt::LeftButton);
        QCOMPARE(dialog->errorText(), u"“closed.xml” is not open any more."_s);
        dialog->setFile(MergeSide::Theirs, path(u"other.xml"_s));
        QCOMPARE(dialog->errorText(), QString());
        QTest::mouseClick(go, Qt::LeftButton);
        QTRY_VERIFY(!dialog->errorText().isEmpty());
        dialog->setFile(MergeSide::Theirs, path(u"theirs.xml"_s));
        QSignalSpy merged(dialog, &MergeDialog::merged);
        QTest::mouseClick(go, Qt::LeftButton);
        QTRY_COMPARE(merged.size(), 1);
        m_window = merged.first().first().value<MergeWindow *>();
        QCOMPARE(text(), MergeWindowTest::merged(texts, MergeSide::Ours));
        QVERIFY(windowOf(document()));
        // Which side is which stands above them, to be read.
        for (const QString &side : {u"Base: base.xml"_s, u"Ours: ours.xml"_s, u"Theirs: theirs.xml"_s}) {
            const QList<QLabel *> labels = m_window->findChildren<QLabel *>();
            const auto heading = std::ranges::find_if(
                labels, [&side](const QLabel *each) { return each->accessibleName() == side; });
            QVERIFY(heading != labels.end());
            QCOMPARE(painted(**heading, side).color, m_window->palette().color(QPalette::WindowText));
        }
    }

    /// Closed with open conflicts, the window alone goes: the document has another one.
    void leavesTheDocumentOpen()
    {
        const auto texts = sides(20);
        write(textOf(*ThreeWayMerge::of(texts[0], texts[1], texts[2], {})), u"both.xml"_s);
        VXDocument *opened = open(u"both.xml"_s);
        QTest::mouseClick(button<QPushButton>(windowOf(opened), u"Resolve…"_s), Qt::LeftButton);
        m_window = shownWindow<MergeWindow>();
        QVERIFY(m_window && openCount() > 0);
        m_window->close();
        answer(u"Close"_s);
        sendDeferredDeletes();
        QVERIFY(!m_window && controller().documentList().contains(opened));
    }

    void resolvesTheConflictsOfAFile()
    {
        const auto texts = sides(20);
        write(textOf(*ThreeWayMerge::of(texts[0], texts[1], texts[2], {})), u"both.xml"_s);
        VXDocument *opened = open(u"both.xml"_s);
        const QByteArray before = textOfDocument(*opened);
        // What is said in passing does not take the button away.
        windowOf(opened)->findChild<MessageBar *>()->showMessage(u"In passing"_s,
                                                                 MessageBar::Stay::ShortTime);
        QPushButton *resolve = button<QPushButton>(windowOf(opened), u"Resolve…"_s);
        QVERIFY(resolve);
        QTest::mouseClick(resolve, Qt::LeftButton);
        m_window = shownWindow<MergeWindow>();
        QVERIFY(m_window);
        QCOMPARE(document(), opened);
        QVERIFY(openCount() > 0);
        QCOMPARE(text(), merged(texts, MergeSide::Ours));
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        press(u"<Ctrl+Shift+R>"_s);
        QVERIFY(opened->savingWillChange().isEmpty());
        press(u"<Ctrl+S>"_s);
        QTRY_VERIFY(!opened->isDocumentEdited());
        QCOMPARE(content(u"both.xml"_s), merged(texts, MergeSide::Theirs));
        while (opened->undoManager()->canUndo())
            opened->undoManager()->undo();
        QCOMPARE(textOfDocument(*opened), before);
        QCOMPARE(opened->openConflicts(), 0);
        // The window has nothing to resolve then, and says so, until the conflicts come back.
        const auto isUsable = [this] { return m_window->action(MergeMenus::TakeOurs)->isEnabled(); };
        QTRY_VERIFY(!isUsable());
        press(u"<Ctrl+Shift+Z>"_s);
        QVERIFY(isUsable());
        const qsizetype open = openCount();
        QCOMPARE(opened->openConflicts(), open);
        press(u"<Ctrl+Shift+Z>"_s);
        QCOMPARE(opened->openConflicts(), 0);
        m_window->close();
        sendDeferredDeletes();
        QVERIFY(!m_window && !shownWindow<QMessageBox>());
        // Also without the window a step takes what it resolved along.
        opened->undoManager()->undo();
        QCOMPARE(opened->openConflicts(), open);
        opened->undoManager()->redo();
        QCOMPARE(opened->openConflicts(), 0);
    }
};

RUNEBOOK_TEST_MAIN(MergeWindowTest)
#include "MergeWindowTest.moc"
