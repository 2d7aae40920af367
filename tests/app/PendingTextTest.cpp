// What is being typed in a document window is never lost, whatever command comes: every command of every
// menu of the whole program, scripts and recent files included, with a text in a cell, in the pane and in a
// code point, one that is taken and one that is refused.
#include "editing/fields/ErrorBubble.h"
#include "editing/fields/UnicodesTokenField.h"
#include "platform/MainMenu.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/ScriptRun.h"
#include "tests/app/AppMain.h"

using namespace runebook;

namespace {

const QByteArray kLines = "\t<glyph unicode=\"0041\" name=\"A\" category=\"Letter\" />\n"
                          "\t<glyph unicode=\"0042\" name=\"B\" category=\"Letter\" />\n"
                          "\t<glyph name=\"C\" altNames=\"A.old\" category=\"Letter\" />\n";

QString plainText(const QAction &action)
{
    return plain(action.text());
}

/// The windows of the program that are seen.
qsizetype countOfWindows()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::count_if(windows.begin(), windows.end(), [](const QWidget *window) {
        return window->isVisible()
            && (window->windowType() == Qt::Window || window->windowType() == Qt::Dialog);
    });
}

/// The commands of a menu as "Edit > Undo"; menus that fill themselves are shown first. Submenus come last:
/// the history takes what is being typed, and the commands have other words after it.
void collect(QMenu &menu, const QString &path, QStringList &paths)
{
    Q_EMIT menu.aboutToShow();
    for (const QAction *action : menu.actions()) {
        if (!action->menu() && !action->isSeparator() && action->isVisible())
            paths << path + " > "_L1 + plainText(*action);
    }
    for (const QAction *action : menu.actions()) {
        if (action->menu())
            collect(*action->menu(), path + " > "_L1 + plainText(*action), paths);
    }
}

QAction *find(const QList<QAction *> &actions, const QStringList &path)
{
    for (QAction *action : actions) {
        if (plainText(*action) != path.first())
            continue;
        if (path.size() == 1)
            return action;
        Q_EMIT action->menu()->aboutToShow();
        return find(action->menu()->actions(), path.sliced(1));
    }
    return nullptr;
}

/// The commands that act on the text itself, whatever words they wear at the moment.
bool actsOnText(const QString &path)
{
    if (path == "Edit > Copy as Table"_L1)
        return false; // of records
    for (const auto word :
         {"Undo"_L1, "Redo"_L1, "Cut"_L1, "Copy"_L1, "Paste"_L1, "Delete"_L1, "Select All"_L1}) {
        if (path.startsWith("Edit > "_L1 + word))
            return true;
    }
    return false;
}

} // namespace

class PendingTextTest : public QObject
{
    Q_OBJECT
public:
    explicit PendingTextTest(VXAppDelegate &delegate) : m_delegate(delegate) { }

private Q_SLOTS:
    void initTestCase()
    {
        const QString scripts = VXScriptingHandler::applicationSupportFolder() + "/Scripts"_L1;
        QVERIFY(QDir().mkpath(scripts));
        QVERIFY(
            writeFile(scripts + "/note.py"_L1, "# MenuTitle: Set Script\nDoc.infos[0].script = 'latin'\n"));
        UserDefaults::standard().setObjectForKey(u"no.such.application"_s, u"VXUnicodeCheckerApplication"_s);
        UserDefaults::standard().setObjectForKey(false, u"ProblemsPaneShown"_s);
        // In the program's own form, so that no save has anything to ask.
        QVERIFY(writeFile(path(), kLines));
        VXDocument plain;
        QVERIFY(plain.readFromURLOfType(path(), u"public.xml"_s));
        QVERIFY(plain.writeToURLOfType(path(), u"public.xml"_s));
        m_bytes = contentOf(path());
        QVERIFY(writeFile(otherPath(), m_bytes));
        m_delegate.applicationDidFinishLaunching();
    }

    void init()
    {
        UserDefaults::standard().setObjectForKey(QStringList {otherPath()}, u"RecentFiles"_s);
        UserDefaults::standard().setObjectForKey(u"/Set Script"_s, u"runAgainScriptName"_s);
        UserDefaults::standard().removeObjectForKey(u"TableHeaderState"_s);
        QVERIFY(writeFile(path(), m_bytes));
        QApplication::clipboard()->setText(u"ff"_s);
        m_document =
            qobject_cast<VXDocument *>(controller().openDocumentWithContentsOfURLDisplay(path(), true));
        m_window = qobject_cast<VXWindowController *>(m_document->windowController());
        m_window->setSidebarShown(true);
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        m_window->tableView()->sortByColumn(columnOfField(GlyphField::Name), Qt::AscendingOrder);
        m_window->infolistController()->setSelectionIndexes({1});
        m_info = m_document->objectInInfosAtIndex(1);
        // Find and Replace and questions of scripts wait in loops of their own.
        m_dismissal.callOnTimeout(m_window, [] {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
                dialog->reject();
        });
        m_dismissal.start(0);
    }

    void cleanup()
    {
        m_dismissal.stop();
        for (Document *document : QList<Document *>(controller().documentList()))
            document->close();
        m_info.reset();
        sendDeferredDeletes();
        for (QWidget *window : QApplication::topLevelWidgets())
            window->hide();
        // A loop that was told to quit does not begin again by itself.
        QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
        QCoreApplication::exec();
    }

    void cleanupTestCase()
    {
        finishScripts(); // as the program ends; they may hold records
    }

    TABLE(noCommandLosesText, (const QString &where, const QString &path), {
        addRows(row, {u"cell"_s, u"pane"_s, u"token"_s}, false);
    })
    {
        const QString before = stored(where);
        const QPointer<QLineEdit> editor = type(where, false);
        const QString typed = editor->text();
        QCOMPARE(stored(where), before);
        QAction *action = command(path);
        QVERIFY(action);
        if (!action->isEnabled()) {
            action->trigger();
            QCOMPARE(editor->text(), typed);
            return;
        }
        action->trigger();
        if (actsOnText(path)) {
            // The text is still being typed; the record knows nothing of it.
            QVERIFY(editor);
            QCOMPARE(stored(where), before);
            QCOMPARE(stack().count(), 0);
            QVERIFY(editor->text() == typed || path.contains("Typing"_L1) || path.contains("Text"_L1));
            return;
        }
        const QString after = where == "cell"_L1 ? u"LetterTyped"_s
            : where == "token"_L1                ? u"0042, 0043"_s
                                                 : u"Typed"_s;
        if (!m_document) // closed
            return;
        const int own = stack().count() - 1;
        QVERIFY2(own == 0 || own == 1, qPrintable(QString::number(own)));
        m_document->undoManager()->goToStep(1);
        QCOMPARE(stored(where), after);
        m_document->undoManager()->undo();
        QCOMPARE(stored(where), before);
    }

    TABLE(refusedTextStopsEveryCommand, (const QString &where, const QString &path), {
        addRows(row, {u"cell"_s, u"pane"_s}, true);
    })
    {
        QLineEdit *editor = type(where, true);
        const bool showsProblems = m_window->isProblemsShown();
        const bool showsSidebar = m_window->isSidebarShown();
        QAction *action = command(path);
        QVERIFY(action);
        if (!action->isEnabled())
            return;
        const qsizetype windows = countOfWindows();
        action->trigger();
        QCOMPARE(editor->text(), u"A"_s);
        QVERIFY(editor->isVisible() && editor->hasFocus());
        QCOMPARE(bubble(), u"There is already an info with the same name: A"_s);
        QCOMPARE(m_info->name(), u"B"_s);
        QCOMPARE(stack().count(), 0);
        // Nothing was opened, closed, hidden or sorted.
        QCOMPARE(controller().documentList().size(), 1);
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(m_window->findChildren<QDialog *>().isEmpty());
        QCOMPARE(countOfWindows(), windows);
        QCOMPARE(m_window->isProblemsShown(), showsProblems);
        QCOMPARE(m_window->isSidebarShown(), showsSidebar);
        QCOMPARE(m_window->infolistController()->selectionIndexes(), IndexSet {1});
    }

    TABLE(otherWaysOutTakeTheText, (const QString &where, const QString &way), {
        for (const QString &where : {u"cell"_s, u"pane"_s, u"token"_s}) {
            for (const QString &way :
                 {u"save"_s, u"close"_s, u"click on another row"_s, u"sort"_s, u"search"_s, u"run"_s})
                row(where + u": "_s + way, where, way);
        }
    })
    {
        const QString before = stored(where);
        type(where, false);
        GlyphTableView *table = m_window->tableView();
        if (way == "save"_L1) {
            QTest::keyClick(m_window->focusWidget(), Qt::Key_S, Qt::ControlModifier);
            QTRY_VERIFY(!m_document->isDocumentEdited());
            const QByteArray content = contentOf(this->path());
            QVERIFY2(content.contains("Typed") || content.contains("0043"), content.constData());
        } else if (way == "close"_L1) {
            m_window->close();
            auto *sheet = m_window->findChild<QMessageBox *>();
            QVERIFY2(sheet, "asked about what was typed");
            sheet->reject();
        } else if (way == "run"_L1) {
            QVERIFY(controller().commitEditing());
        } else if (way == "sort"_L1) {
            QHeaderView *header = table->horizontalHeader();
            QTest::mouseClick(
                header->viewport(), Qt::LeftButton, {},
                QPoint(header->sectionViewportPosition(columnOfField(GlyphField::Name)) + 20, 8));
            QCOMPARE(m_window->infolistController()->sortDirection(), Qt::DescendingOrder);
        } else if (way == "search"_L1) {
            QTest::keyClick(m_window->focusWidget(), Qt::Key_F, Qt::ControlModifier);
            QTest::keyClicks(m_window->searchField(), u"C"_s);
        } else {
            QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                              QPoint(80, table->rowViewportPosition(2) + 5));
            QCOMPARE(m_window->infolistController()->selectionIndexes(), IndexSet {2});
        }
        QVERIFY(stored(where) != before);
        QCOMPARE(stack().count(), 1);
    }

    void refusedTextIsNotLeft()
    {
        GlyphTableView *table = m_window->tableView();
        for (const QString &where : {u"cell"_s, u"pane"_s}) {
            QLineEdit *editor = type(where, true);
            QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                              QPoint(80, table->rowViewportPosition(2) + 5));
            QCOMPARE(m_window->infolistController()->selectionIndexes(), IndexSet {1});
            QCOMPARE(editor->text(), u"A"_s);
            QVERIFY(editor->hasFocus());
            QVERIFY(!bubble().isEmpty());
            Error error;
            QVERIFY(!m_document->saveDocument(&error));
            QVERIFY(error.text().contains("same name"_L1));
            m_window->close();
            QVERIFY(m_document && m_window->isVisible() && !QApplication::activeModalWidget());
            QTest::keyClick(editor, Qt::Key_Escape);
            QVERIFY(m_document->commitEditing());
            QCOMPARE(m_info->name(), u"B"_s);
        }
    }

    void undoKeyActsOnWhatHasTheFocus()
    {
        const auto press = [this](Qt::Key key, Qt::KeyboardModifiers modifiers) {
            QTest::keyClick(m_window->focusWidget(), key, modifiers);
        };
        const auto undoText = [this] {
            const QAction *undo = m_window->menuBar()->actions().at(1)->menu()->actions().at(0);
            MainMenu::validate(*undo);
            return plainText(*undo);
        };
        QLineEdit *name = lineOf(GlyphField::Name);
        for (const Qt::Key end : {Qt::Key_Return, Qt::Key_Tab}) {
            name->setFocus();
            name->end(false);
            QTest::keyClicks(name, u"x"_s);
            QCOMPARE(undoText(), u"Undo Typing"_s);
            QTest::keyClick(name, end);
            QCOMPARE(m_info->name(), u"Bx"_s);
            QCOMPARE(undoText(), u"Undo Change Name of B"_s);
            press(Qt::Key_Z, Qt::ControlModifier);
            QCOMPARE(m_info->name(), u"B"_s);
            QCOMPARE(name->text(), u"B"_s);
            press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
            QCOMPARE(m_info->name(), u"Bx"_s);
            press(Qt::Key_Z, Qt::ControlModifier);
        }
        // Typing goes first, then the document's steps, in every kind of field.
        for (const GlyphField field : {GlyphField::Unicodes, GlyphField::Category, GlyphField::SortName}) {
            m_info->setProduction(u"step"_s);
            m_document->flushChanges();
            QCoreApplication::processEvents();
            QWidget *editor = m_window->detailPane()->editorOf(field);
            editor->setFocus();
            typeKeys(editor, u"<End> 4f"_s);
            QVERIFY(m_window->detailPane()->hasPendingText(editor));
            for (int i = 0; i < 5 && m_window->detailPane()->hasPendingText(editor); ++i) {
                QCOMPARE(undoText(), u"Undo Typing"_s);
                press(Qt::Key_Z, Qt::ControlModifier);
            }
            QVERIFY(!m_window->detailPane()->hasPendingText(editor));
            QCOMPARE(m_info->production(), u"step"_s);
            press(Qt::Key_Z, Qt::ControlModifier);
            QCOMPARE(m_info->production(), QString());
        }
    }

    void deleteWithTheCaretInAFieldLeavesRecords()
    {
        QLineEdit *name = lineOf(GlyphField::Name);
        name->setFocus();
        name->selectAll();
        QAction *remove = command(u"Edit > Delete Text"_s);
        QVERIFY(remove && remove->isEnabled());
        remove->trigger();
        QCOMPARE(name->text(), QString());
        QCOMPARE(m_document->countOfInfos(), 3);
        MainMenu::validate(*remove);
        QVERIFY(!remove->isEnabled());
        QTest::keyClick(name, Qt::Key_Escape);
        m_window->tableView()->setFocus();
        MainMenu::validate(*remove);
        QCOMPARE(plainText(*remove), u"Delete"_s);
        remove->trigger();
        QCOMPARE(m_document->countOfInfos(), 2);
    }

    /// The same once by the key and once by the menu gives the same records, texts and clipboard.
    TABLE(keysAndMenuAgree, (const QString &focus, const QString &command, int key), {
        const std::pair<const char *, Qt::Key> commands[] {
            {"Cut", Qt::Key_X}, {"Copy", Qt::Key_C}, {"Paste", Qt::Key_V}, {"Select All", Qt::Key_A}};
        for (const QString &focus : {u"table"_s, u"name"_s, u"category"_s, u"desc"_s, u"search"_s}) {
            for (const auto &[command, key] : commands)
                row(focus + u": "_s + QLatin1StringView(command), focus, QLatin1StringView(command),
                    int(key));
        }
    })
    {
        const auto outcome = [&](bool byKey) {
            QApplication::clipboard()->setText(focus == "table"_L1 ? u"<glyph name=\"pasted\"/>"_s
                                                                   : u"xyz"_s);
            QWidget *widget = focus == "table"_L1 ? static_cast<QWidget *>(m_window->tableView())
                : focus == "search"_L1            ? m_window->searchField()
                                                  : m_window->detailPane()->editorOf(*fieldForKey(focus));
            widget->setFocus();
            if (focus != "table"_L1) {
                typeKeys(widget, u"ab<Shift+Home>"_s);
            }
            if (byKey) {
                QTest::keyClick(m_window->focusWidget(), Qt::Key(key), Qt::ControlModifier);
            } else {
                const QString words = focus == "table"_L1 ? command : command + u" Text"_s;
                QAction *action = this->command(u"Edit > "_s + words);
                Q_ASSERT(action);
                action->trigger();
            }
            QStringList all {QApplication::clipboard()->text(),
                             QString::number(m_window->infolistController()->selectedCount()),
                             m_window->searchField()->text(), lineOf(GlyphField::Name)->text()};
            for (const InfoPtr &info : m_document->infos())
                all << info->name();
            for (QLineEdit *line : m_window->findChildren<QLineEdit *>())
                all << line->text() + line->selectedText();
            return all.join(u'|');
        };
        const QString byKey = outcome(true);
        cleanup();
        init();
        QCOMPARE(outcome(false), byKey);
    }

private:
    /// Begins to type; returns the editor. \a where: "cell", "pane", "token".
    QLineEdit *type(const QString &where, bool isRefused)
    {
        QLineEdit *editor = nullptr;
        if (where == "cell"_L1) {
            GlyphTableView *table = m_window->tableView();
            table->setFocus();
            const GlyphField field = isRefused ? GlyphField::Name : GlyphField::Category;
            table->setCurrentIndex(m_window->infolistController()->index(1, columnOfField(field)));
            QTest::keyClick(table, Qt::Key_F2);
            editor = table->cellDelegate().editor();
        } else {
            const bool isToken = where == "token"_L1;
            editor = lineOf(isRefused     ? GlyphField::Name
                                : isToken ? GlyphField::Unicodes
                                          : GlyphField::SortName);
            editor->setFocus();
        }
        if (isRefused)
            editor->selectAll();
        else
            editor->end(false);
        QTest::keyClicks(editor, isRefused ? u"A"_s : where == "token"_L1 ? u" 43"_s : u"Typed"_s);
        return editor;
    }
    /// What stands in the records where that was typed.
    QString stored(const QString &where) const
    {
        return m_info->displayText(where == "cell"_L1        ? GlyphField::Category
                                       : where == "token"_L1 ? GlyphField::Unicodes
                                                             : GlyphField::SortName);
    }
    /// The commands that the menus show while such a text is being typed.
    QStringList commandsWhile(const QString &where, bool isRefused)
    {
        QStringList paths;
        type(where, isRefused);
        for (const QAction *menu : m_window->menuBar()->actions())
            collect(*menu->menu(), plainText(*menu), paths);
        return paths;
    }
    void addRows(const auto &row, const QStringList &places, bool isRefused)
    {
        for (const QString &place : places) {
            init();
            const QStringList paths = commandsWhile(place, isRefused);
            m_window->detailPane()->revert(m_window->focusWidget());
            cleanup();
            QVERIFY(paths.size() > 70);
            for (const QString &each : paths) {
                if (!isRefused || !actsOnText(each))
                    row(place + u": "_s + each, place, each);
            }
        }
    }
    QAction *command(const QString &path) const
    {
        return find(m_window->menuBar()->actions(), path.split(u" > "_s));
    }
    QString bubble() const
    {
        const auto *shown = m_window->findChild<ErrorBubble *>();
        return shown ? shown->text() : QString();
    }
    QLineEdit *lineOf(GlyphField field) const
    {
        return qobject_cast<QLineEdit *>(m_window->detailPane()->editorOf(field));
    }
    QUndoStack &stack() const { return *m_document->undoManager()->stack(); }
    QString path() const { return m_folder.filePath(u"a.xml"_s); }
    QString otherPath() const { return m_folder.filePath(u"b.xml"_s); }

    VXAppDelegate &m_delegate;
    const QTemporaryDir m_folder; // one for all rows: the list of recent files names it
    const UrlTaker m_urlTaker {{u"file"_s, u"https"_s}};
    QTimer m_dismissal;
    QByteArray m_bytes;
    QPointer<VXDocument> m_document;
    QPointer<VXWindowController> m_window;
    InfoPtr m_info;
};

RUNEBOOK_APP_TEST_MAIN(PendingTextTest)
#include "PendingTextTest.moc"
