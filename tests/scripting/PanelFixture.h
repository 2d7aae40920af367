#pragma once

#include "codeeditor/JSTTextView.h"
#include "platform/StandardFolders.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/ConsoleView.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "tabbar/VXTabBarControl.h"
#include "tests/editing/Records.h"
#include "ui_VXMacroWindow_11.h"

#include <QTest>

namespace runebook {

using namespace Qt::StringLiterals;

inline UserDefaults &defaults()
{
    return UserDefaults::standard();
}

inline QVariantMap record(const QString &title, const QString &code)
{
    return {{u"title"_s, title}, {u"code"_s, code}};
}

/// A shown panel with the keyboard.
struct Panel {
    VXMacroWindowController controller;

    Panel()
    {
        controller.showPanel();
        (void)QTest::qWaitForWindowActive(controller.window());
        editor().setFocus();
    }
    VXTabBarControl &bar() { return *controller.tabBarControl(); }
    JSTTextView &editor() { return *controller.activeMacroController()->macroText(); }
    ConsoleView &console() { return *controller.window()->parts().consoleText; }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &editor(), Qt::Key(key),
                        modifiers);
    }
    /// Replaces the tab's code as a user does.
    void type(const QString &code)
    {
        press(Qt::Key_A);
        press(Qt::Key_Delete, Qt::NoModifier);
        for (const QString &line : code.split(u'\n')) {
            if (!editor().string().isEmpty())
                press(Qt::Key_Return, Qt::NoModifier);
            QTest::keyClicks(&editor(), line);
            press(Qt::Key_Escape, Qt::NoModifier); // the completions, should they be there
        }
    }
    /// "title: code" of each tab, the selected one in brackets.
    QString tabs()
    {
        QStringList texts;
        for (QObject *item : bar().tabItems()) {
            const auto *tab = qobject_cast<VXMacroViewController *>(item);
            const QString text = tab->title() + ": "_L1 + tab->code();
            texts << (item == bar().selectedTabItem() ? u'[' + text + u']' : text);
        }
        return texts.join(" | "_L1);
    }
};

inline void startPanels()
{
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    VXScriptingHandler::sharedHandler();
}

inline void forgetPanels()
{
    for (const char *key : {"VXMacroViews", "VXSelectedMacroView", "macroCode", "MacroCodeFontSize",
                            "showMacroPanel", "VXMacroPanelGeometry", "VXMacroPanelSplitter"})
        defaults().removeObjectForKey(QString::fromLatin1(key));
}

/// An open document of two glyphs.
inline VXDocument *makeDocument()
{
    auto *document = new VXDocument;
    DocumentController::shared().addDocument(document);
    document->addInfos(named(u"A B"_s));
    QCoreApplication::processEvents();
    return document;
}

} // namespace runebook
