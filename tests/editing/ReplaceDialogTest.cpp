// The find-and-replace dialog and the sort-name sheet, driven with keys.
#include "editing/records/SortNameDialog.h"
#include "editing/records/SortNumbering.h"
#include "editing/replace/ReplacePreviewModel.h"
#include "editing/replace/VXFindReplaceWindowController.h"
#include "tests/ShownTexts.h"
#include "tests/editing/Windows.h"

#include <QAbstractItemModelTester>
#include <limits>

using namespace runebook;

namespace {

QLineEdit *fieldOf(QWidget &dialog, const QString &name)
{
    return dialog.findChild<QLineEdit *>(name);
}

void enter(QWidget &dialog, const QString &find, const QString &replacement)
{
    fieldOf(dialog, u"findField"_s)->setText(find);
    fieldOf(dialog, u"replaceField"_s)->setText(replacement);
}

} // namespace

class ReplaceDialogTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        forget({"FindAndReplaceSearch", "FindAndReplaceReplace", "FindAndReplaceField", "sortNamePrefix",
                "sortNameStart", "sortNameStep", "sortNameDigits"});
    }

    void replacesWhatWasTyped()
    {
        VXDocument document;
        document.setInfos(named(u"a.sc cab a"_s));
        VXFindReplaceWindowController dialog;
        dialog.setSelectedInfos({document.infos()[0], document.infos()[1]});
        QSignalSpy replaced(&dialog, &VXFindReplaceWindowController::replaced);
        QSignalSpy ended(&dialog, &VXFindReplaceWindowController::ended);
        QString namesWhileOpen;
        QTimer::singleShot(0, &dialog, [&] {
            typeKeys(&dialog, u"a<Tab>b<Return>"_s);
            namesWhileOpen = namesOf(document.infos());
        });
        QCOMPARE(dialog.runDialogModalForWindow(nullptr, nullptr), 0);
        QCOMPARE(namesWhileOpen, u"a.sc cab a"_s);
        QVERIFY(!dialog.isVisible());
        QVERIFY(ended.wait());
        QCOMPARE(namesOf(document.infos()), u"b.sc cbb a"_s);
        QCOMPARE(replaced.size(), 1);
        const auto summary = replaced.first().first().value<ReplaceSummary>();
        QCOMPARE(summary.records, 2);
        QCOMPARE(summary.occurrences, 2);
        QCOMPARE(document.undoManager()->stack()->undoText(), u"Replace in 2 Records"_s);
        document.undoManager()->undo();
        QCOMPARE(namesOf(document.infos()), u"a.sc cab a"_s);
        QVERIFY(!document.undoManager()->canUndo());
    }

    void escapeChangesNothing()
    {
        VXDocument document;
        document.setInfos(named(u"a"_s));
        QWidget window;
        window.show();
        auto *dialog = new VXFindReplaceWindowController;
        dialog->setSelectedInfos(document.infos());
        connect(dialog, &VXFindReplaceWindowController::ended, dialog, &QObject::deleteLater);
        QPointer<QObject> life(dialog);
        QTimer::singleShot(0, dialog, [dialog] { typeKeys(dialog, u"a<Esc>"_s); });
        QCOMPARE(dialog->runDialogModalForWindow(&window, &window), 0);
        QCOMPARE(dialog->parentWidget(), &window);
        QTRY_VERIFY(!life);
        QTest::qWait(20);
        QCOMPARE(namesOf(document.infos()), u"a"_s);
        // What was typed is there for the next time.
        QCOMPARE(UserDefaults::standard().stringForKey(u"FindAndReplaceSearch"_s), u"a"_s);
    }

    void keepsTheTexts()
    {
        {
            VXFindReplaceWindowController dialog;
            dialog.selectItemWithTag(FindReplace::Desc);
            enter(dialog, u"find"_s, u"put"_s);
            QSignalSpy replaced(&dialog, &VXFindReplaceWindowController::replaced);
            dialog.doReplace();
            QVERIFY(replaced.wait()); // though nothing is selected
            QCOMPARE(replaced.first().first().value<ReplaceSummary>().records, 0);
        }
        VXFindReplaceWindowController next;
        QCOMPARE(fieldOf(next, u"findField"_s)->text(), u"find"_s);
        QCOMPARE(fieldOf(next, u"replaceField"_s)->text(), u"put"_s);
        QCOMPARE(next.selectedTag(), int(FindReplace::Desc));
    }

    void showsChangesWhileTyping()
    {
        VXFindReplaceWindowController dialog;
        dialog.setSelectedInfos(named(u"a.sc b cab"_s));
        auto *table = dialog.findChild<QTableView *>(u"changesTable"_s);
        const auto *count = dialog.findChild<QLabel *>(u"countLabel"_s);
        QPushButton *replace = nullptr;
        for (QPushButton *button : dialog.findChildren<QPushButton *>())
            replace = button->isDefault() || button->autoDefault() ? (replace ? replace : button) : replace;
        const QAbstractItemModelTester tester(table->model());
        QCOMPARE(table->model()->rowCount(), 0);
        QCOMPARE(count->text(), u"Selected records: 3"_s);
        QVERIFY(!replace->isEnabled());

        QTest::keyClicks(fieldOf(dialog, u"findField"_s), u"a"_s);
        QTest::keyClicks(fieldOf(dialog, u"replaceField"_s), u"xy"_s);
        QCOMPARE(count->text(), u"Records that change: 2 of 3. Occurrences: 2."_s);
        QVERIFY(replace->isEnabled());
        const auto row = [&](int at) {
            QStringList cells;
            for (int column = 0; column < table->model()->columnCount(); ++column)
                cells << table->model()->index(at, column).data().toString();
            return cells.join(u'|');
        };
        QCOMPARE(table->model()->rowCount(), 2);
        QCOMPARE(row(1), u"cab|cab|cxyb"_s);

        QTest::keyClicks(fieldOf(dialog, u"findField"_s), u"q"_s);
        QCOMPARE(count->text(), u"Nothing to replace. Selected records: 3"_s);
        QVERIFY(!replace->isEnabled());
        dialog.setSelectedInfos({});
        QCOMPARE(count->text(), u"No records are selected."_s);
    }

    void warnsOfNames()
    {
        VXDocument document;
        document.setInfos(named(u"a one b"_s));
        VXFindReplaceWindowController dialog;
        dialog.setSelectedInfos({document.infos()[0], document.infos()[1]});
        const auto *warning = dialog.findChild<QLabel *>(u"problemsLabel"_s);
        enter(dialog, u"a"_s, u"b"_s);
        QTRY_COMPARE(warning->text(), u"Names that more than one record will have: 1."_s);
        fieldOf(dialog, u"replaceField"_s)->setText(u"<!--"_s);
        QTRY_COMPARE(warning->text(),
                     u"Records left out: 1. Name holds “<!--”, which begins a comment in a file and would "
                     "hide other records."_s);
        QVERIFY(!dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->isEnabled());
        enter(dialog, u"one"_s, u"1"_s);
        QTRY_COMPARE(warning->text(), u"Names that become invalid: 1."_s);
        COMPARE_TEXTS(u"replace"_s, dialog);

        QSignalSpy replaced(&dialog, &VXFindReplaceWindowController::replaced);
        dialog.doReplace();
        QVERIFY(replaced.wait());
        QCOMPARE(document.infos()[1]->name(), u"1"_s);
        QCOMPARE(replaced.first().first().value<ReplaceSummary>().problems, (NameProblems {1, 0}));
    }

    void optionsAreOfThisUse()
    {
        VXDocument document;
        document.setInfos(named(u"Aacute aacute"_s));
        {
            VXFindReplaceWindowController dialog;
            dialog.setShownInfos(document.infos());
            const auto *count = dialog.findChild<QLabel *>(u"countLabel"_s);
            fieldOf(dialog, u"findField"_s)->setText(u"^(a)"_s);
            QCOMPARE(count->text(), u"Nothing to replace. Shown records: 2"_s);
            dialog.findChild<QCheckBox *>(u"isPattern"_s)->click();
            fieldOf(dialog, u"replaceField"_s)->setText(u"x\\1"_s);
            QCOMPARE(count->text(), u"Records that change: 1 of 2. Occurrences: 1."_s);
            dialog.findChild<QCheckBox *>(u"matchCase"_s)->click();
            QCOMPARE(count->text(), u"Records that change: 2 of 2. Occurrences: 2."_s);
            fieldOf(dialog, u"findField"_s)->setText(u"("_s);
            QVERIFY(count->text().contains(u"not valid"_s));
            fieldOf(dialog, u"findField"_s)->setText(u"^(a)"_s);
            QSignalSpy ended(&dialog, &VXFindReplaceWindowController::ended);
            dialog.doReplace();
            QVERIFY(ended.wait());
        }
        QCOMPARE(namesOf(document.infos()), u"xAacute xaacute"_s);
        VXFindReplaceWindowController next; // exactly as typed again
        QVERIFY(next.findChild<QCheckBox *>(u"matchCase"_s)->isChecked());
        QVERIFY(!next.findChild<QCheckBox *>(u"isPattern"_s)->isChecked());
    }

    void manyAreReplacedWithProgress()
    {
        constexpr int kMany = 400'000;
        VXDocument document;
        const InfoList infos = numbered(kMany, u"alpha"_s);
        fill(document, infos);
        for (const bool isStopped : {true, false}) {
            VXFindReplaceWindowController dialog;
            dialog.setShownInfos(infos);
            dialog.findChild<QCheckBox *>(u"isPattern"_s)->setChecked(true);
            enter(dialog, u"^(\\w)(\\w)"_s, u"\\2\\1"_s);
            QSignalSpy ended(&dialog, &VXFindReplaceWindowController::ended);
            // Esc as soon as the progress is there and some names are others already.
            QTimer watch;
            watch.callOnTimeout([&] {
                auto *progress = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
                if (isStopped && progress && infos.front()->name().startsWith(u"la"_s))
                    QTest::keyClick(progress, Qt::Key_Escape);
            });
            watch.start(0);
            dialog.doReplace();
            QVERIFY(ended.wait(60'000));
            const QString first = isStopped ? u"alpha0"_s : u"lapha0"_s;
            QCOMPARE(infos.front()->name(), first);
            QCOMPARE(infos.back()->name(), QString(first).replace(u"0"_s, QString::number(kMany - 1)));
            QCOMPARE(document.isDocumentEdited(), !isStopped);
            QCOMPARE(document.undoManager()->stack()->count(), isStopped ? 0 : 1);
        }
    }

    void isReachedByKeyboard()
    {
        VXFindReplaceWindowController dialog;
        dialog.setSelectedInfos(named(u"a"_s));
        fieldOf(dialog, u"findField"_s)->setText(u"a"_s);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QStringList visited;
        for (int step = 0; step < 9; ++step) {
            const QWidget *focus = dialog.focusWidget();
            const auto *button = qobject_cast<const QPushButton *>(focus);
            const bool speaksForItself = button || qobject_cast<const QCheckBox *>(focus);
            visited << (button ? button->text().remove(u'&') : focus->objectName());
            if (!speaksForItself)
                QVERIFY2(!focus->accessibleName().isEmpty(), qPrintable(focus->objectName()));
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        }
        visited.sort();
        QCOMPARE(
            visited.join(u' '),
            u"Cancel Replace changesTable fieldPopup findField isPattern matchCase replaceField wholeValue"_s);
        for (const QLabel *label : dialog.findChildren<QLabel *>()) {
            if (label->text().contains(u'&'))
                QVERIFY2(label->buddy(), qPrintable(label->text()));
        }
    }

    void longTextsStartNearTheChange()
    {
        const InfoPtr info = VXGlyphInfo::init();
        info->setDesc(QString(5000, u'-') + u"x\ny"_s + QString(5000, u'+'));
        ReplacePreviewModel model;
        model.setPreviews(FindReplace(u"x"_s, u"zz"_s, FindReplace::Desc).preview({info}, 1).first);
        const QString after = model.index(0, ReplacePreviewModel::AfterColumn).data().toString();
        QVERIFY2(after.startsWith(u"…--"_s) && after.indexOf(u"zz↵y++"_s) == 21, qPrintable(after));
        QVERIFY(after.size() < 400);
    }

    void goesWhileAFieldHasTheFocus()
    {
        auto dialog = std::make_unique<VXFindReplaceWindowController>();
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
        QTest::keyClicks(dialog->focusWidget(), u"half"_s);
        dialog.reset();
        QVERIFY(!UserDefaults::standard().isSet(u"FindAndReplaceSearch"_s));
    }

    void sortSheetEditsDefaults()
    {
        SortNameDialog dialog(3);
        QCOMPARE(dialog.example(), u"a001, a002, a003"_s);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QSignalSpy finished(&dialog, &QDialog::finished);
        COMPARE_TEXTS(u"sort-names"_s, dialog);
        typeKeys(&dialog, u"x<Tab>10<Tab>-5<Tab>2"_s);
        QCOMPARE(dialog.example(), u"x10, x05, x00"_s);
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
        QCOMPARE(finished.first().first().toInt(), 1);
        const SortNumbering kept = SortNumbering::fromDefaults();
        QCOMPARE(kept.nameForNumber(kept.numberAt(3)), u"x-5"_s);

        SortNameDialog again(3);
        again.show();
        QSignalSpy cancelled(&again, &QDialog::finished);
        typeKeys(&again, u"<Ctrl+A><Del>"_s);
        QCOMPARE(again.example(), u"10, 05, 00"_s); // no prefix is one, too
        QTest::keyClick(&again, Qt::Key_Escape);
        QCOMPARE(cancelled.first().first().toInt(), 0);
    }

    TABLE(sortSheetShowsExample, (int records, const QString &example), {
        row("none", 0, "");
        row("one", 1, "a001");
        row("four", 4, "a001, a002, a003, a004");
        row("many", 1200, "a001, a002, a003, …, a1200");
    })
    {
        QCOMPARE(SortNameDialog(records).example(), example);
    }

    TABLE(sortNamesAreNumbered, (const SortNumbering &numbering, const QStringList &names), {
        constexpr qint32 kLargest = std::numeric_limits<qint32>::max();
        row("plain", {u"a"_s, 1, 1, 3}, {u"a001"_s, u"a002"_s, u"a003"_s});
        row("in fives", {u"x"_s, 10, 5, 2}, {u"x10"_s, u"x15"_s, u"x20"_s});
        row("grows wider", {u"a"_s, 998, 1, 3}, {u"a998"_s, u"a999"_s, u"a1000"_s});
        row("down below zero", {u"a"_s, 1, -1, 3}, {u"a001"_s, u"a000"_s, u"a-01"_s});
        row("no step", {u"a"_s, 7, 0, 1}, {u"a7"_s, u"a7"_s});
        row("no digits", {u"a"_s, 9, 1, 0}, {u"a9"_s, u"a10"_s});
        row("negative digits", {u"a"_s, 9, 1, -3}, {u"a9  "_s, u"a10 "_s});
        row("wraps at 32 bits", {u""_s, kLargest, 1, 1}, {u"2147483647"_s, u"-2147483648"_s});
        row("wraps downwards", {u""_s, -kLargest - 1, -1, 1}, {u"-2147483648"_s, u"2147483647"_s});
        row("prefix is no format", {u"%d%@%1"_s, 1, 1, 2}, {u"%d%@%101"_s});
        row("no prefix", {QString(), 1, 1, 2}, {u"01"_s});
    })
    {
        InfoList infos;
        for (qsizetype i = 0; i < names.size(); ++i)
            infos.push_back(VXGlyphInfo::init());
        numbering.apply(infos);
        QStringList given;
        for (const InfoPtr &info : infos)
            given << info->sortName();
        QCOMPARE(given, names);
    }
};

RUNEBOOK_TEST_MAIN(ReplaceDialogTest)
#include "ReplaceDialogTest.moc"
