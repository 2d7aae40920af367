#pragma once

#include "editing/fields/GlyphColumns.h"
#include "editing/problems/ProblemsPane.h"
#include "editing/records/GlyphCellDelegate.h"
#include "editing/records/GlyphTableView.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/DetailPane.h"
#include "editing/window/VXWindowController.h"
#include "platform/Curtain.h"
#include "platform/MainMenu.h"
#include "platform/MessageBar.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "tests/ShownTexts.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QSignalSpy>
#include <QtWidgets>

// What tests of windows share: documents with windows, keys, buttons, questions.

namespace runebook {

using namespace Qt::StringLiterals;

inline QString plain(QString text)
{
    return text.remove(u'&');
}

/// Types into \a widget, into what has the focus in it, or into what has popped up; words in brackets are
/// keys: "ab<Return><Ctrl+Z>".
inline void typeKeys(QWidget *widget, const QString &keys)
{
    const QPointer<QWidget> field(widget);
    for (qsizetype at = 0; at < keys.size(); ++at) {
        QWidget *into = QApplication::activePopupWidget() ? QApplication::activePopupWidget() : field.data();
        if (!into)
            return;
        if (into->isWindow() && into->focusWidget())
            into = into->focusWidget();
        const qsizetype end = keys.at(at) == u'<' ? keys.indexOf(u'>', at) : -1;
        if (end < 0) {
            QTest::keyClicks(into, QString(keys.at(at)));
            continue;
        }
        const QKeyCombination key = QKeySequence(keys.sliced(at + 1, end - at - 1))[0];
        QTest::keyClick(into, key.key(), key.keyboardModifiers());
        at = end;
    }
}

/// The button below \a parent that has these words or this name, mnemonics left out, unless it was hidden.
template <class Button = QAbstractButton> Button *button(const QWidget *parent, const QString &words)
{
    for (Button *each : parent->findChildren<Button *>()) {
        const bool wasHidden = each->isHidden() && each->testAttribute(Qt::WA_WState_ExplicitShowHide);
        if (!wasHidden && (plain(each->text()) == words || each->accessibleName() == words))
            return each;
    }
    return nullptr;
}

/// The first window of a kind that is seen.
template <class Window> Window *shownWindow(const QString &name = {})
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *window = qobject_cast<Window *>(widget);
        if (window && window->isVisible() && (name.isEmpty() || window->objectName() == name))
            return window;
    }
    return nullptr;
}

/// Presses the button with these words in the message box that comes.
inline void answer(const QString &words)
{
    QTRY_VERIFY(shownWindow<QMessageBox>());
    auto *box = shownWindow<QMessageBox>();
    QVERIFY2(button(box, words), qPrintable(words));
    QVERIFY(!box->parentWidget() || box->windowModality() == Qt::WindowModal); // other windows go on
    QVERIFY(isSaidAmongTexts(QStringLiteral("questions"), *box));
    button(box, words)->click();
}

inline DocumentController &controller()
{
    return DocumentController::shared();
}

inline VXWindowController *windowOf(const Document *document)
{
    return qobject_cast<VXWindowController *>(document->windowController());
}

/// Lets the document controller make documents and windows as the program does.
inline void makeDocumentsWithWindows()
{
    controller().setDocumentFactory([] { return new VXDocument; });
    controller().setWindowMaker([](Document &document) -> QWidget * {
        auto *window = new VXWindowController(static_cast<VXDocument &>(document));
        window->show();
        return window;
    });
    Curtain::hang();
}

/// What a menu offers, disabled ones in parentheses.
inline QStringList offersOf(const QWidget &menu)
{
    QStringList texts;
    for (const QAction *action : menu.actions()) {
        MainMenu::validate(*action);
        texts << (action->isEnabled() ? plain(action->text()) : u'(' + plain(action->text()) + u')');
    }
    return texts;
}

inline void sendDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

inline void forget(std::initializer_list<const char *> settings)
{
    for (const char *key : settings)
        UserDefaults::standard().removeObjectForKey(QString::fromLatin1(key));
}

/// A test of one document in its window, which is shown and has the focus.
class WindowFixture : public QObject
{
protected:
    void openWindow(const InfoList &infos)
    {
        closeWindow();
        m_document = documentOf(infos);
        reopenWindow();
    }
    /// A, B, a.sc, one, gravecomb, with settings as they are at first.
    void openFive()
    {
        forget({"SearchState", "SearchStateRegex", "SearchStateMatchCase", "TableHeaderState"});
        openWindow({infoNamed(u"A"_s, {u"0041"_s}, u"Letter"_s), infoNamed(u"B"_s, {u"0042"_s}, u"Letter"_s),
                    infoNamed(u"a.sc"_s, {}, u"Letter"_s), infoNamed(u"one"_s, {u"0031"_s}, u"Number"_s),
                    infoNamed(u"gravecomb"_s, {u"0300"_s}, u"Mark"_s)});
    }
    void reopenWindow()
    {
        m_window.reset();
        m_window = std::make_unique<VXWindowController>(*m_document);
        m_document->setWindowController(m_window.get());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void closeWindow()
    {
        m_window.reset();
        m_document.reset();
    }

    RSRTVArrayController *list() const { return m_window->infolistController(); }
    GlyphTableView *table() const { return m_window->tableView(); }
    InfoList shown() const { return list()->arrangedObjects(); }
    QString selected() const { return namesOf(list()->selectedObjects()); }
    QString allNames() const { return namesOf(m_document->infos()); }
    InfoPtr info(qsizetype place) const { return m_document->objectInInfosAtIndex(place); }
    void undo() { m_document->undoManager()->undo(); }
    QUndoStack &stack() const { return *m_document->undoManager()->stack(); }
    void select(const IndexSet &rows) { list()->setSelectionIndexes(rows); }
    void search(const QString &text)
    {
        m_window->searchField()->setStringValue(text);
        m_window->filterInfos();
    }
    QModelIndex cell(int row, GlyphField field) const { return list()->index(row, columnOfField(field)); }
    QLineEdit *lineOf(GlyphField field) const
    {
        return qobject_cast<QLineEdit *>(m_window->detailPane()->editorOf(field));
    }
    /// Types into the editor of \a field in the pane.
    void typeInto(GlyphField field, const QString &keys)
    {
        lineOf(field)->setFocus();
        typeKeys(lineOf(field), keys);
    }
    /// The editor of a cell, opened by a key.
    QLineEdit *editCell(int row, GlyphField field)
    {
        table()->setFocus();
        table()->setCurrentIndex(cell(row, field));
        QTest::keyClick(table(), Qt::Key_F2);
        return table()->cellDelegate().editor();
    }
    /// The command of a menu by its text, wherever it stands, as somebody finds it who opens the menu.
    QAction *command(const QString &text) const
    {
        QEvent asked(MainMenu::validationEvent());
        QCoreApplication::sendEvent(m_window.get(), &asked);
        const auto actions = m_window->findChildren<QAction *>();
        const auto it = std::find_if(actions.begin(), actions.end(),
                                     [&text](const QAction *each) { return plain(each->text()) == text; });
        return it == actions.end() ? nullptr : *it;
    }
    QString barText() const
    {
        const auto *bar = m_window->findChild<MessageBar *>();
        return bar->isVisible() ? bar->text() : QString();
    }

    std::unique_ptr<VXDocument> m_document;
    std::unique_ptr<VXWindowController> m_window;
};

/// A test of documents in files, each in a window, in a folder of its own; "a.xml" is there.
class FilesFixture : public QObject
{
protected:
    static inline const QByteArray kLines =
        "\t<glyph name=\"a\" category=\"Letter\" />\n\t<glyph name=\"b\" category=\"Letter\" />\n";

    void makeFolder()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
        makeDocumentsWithWindows();
        if (controller().types().isEmpty()) {
            controller().addType({u"public.xml"_s, {u"xml"_s}, u"Glyph data"_s});
            controller().addType({u"public.plain-text"_s, {u"txt"_s}, u"Tables"_s});
        }
        UserDefaults::standard().setObjectForKey(false, u"VXReloadChangedFiles"_s);
        makeOwnFile(u"a.xml"_s);
    }
    void closeAll()
    {
        for (Document *document : QList<Document *>(controller().documentList()))
            document->close();
        sendDeferredDeletes();
    }
    QString path(const QString &name = u"a.xml"_s) const { return m_folder->filePath(name); }
    QByteArray content(const QString &name = u"a.xml"_s) const { return contentOf(path(name)); }
    void write(const QByteArray &bytes, const QString &name = u"a.xml"_s) const
    {
        QVERIFY(writeFile(path(name), bytes));
    }
    VXDocument *open(const QString &name = u"a.xml"_s)
    {
        return qobject_cast<VXDocument *>(
            controller().openDocumentWithContentsOfURLDisplay(path(name), true));
    }
    /// A file in the program's own form, so that no save has anything to ask.
    void makeOwnFile(const QString &name)
    {
        VXDocument document;
        write(kLines, name);
        QVERIFY(document.readFromURLOfType(path(name), u"public.xml"_s));
        QVERIFY(document.writeToURLOfType(path(name), u"public.xml"_s));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

} // namespace runebook
