#pragma once

#include <functional>

class QMenu;
class QWidget;

namespace runebook {

class Document;
class UndoManager;

/// The menus that every window with documents has alike. Their commands first have the window take what is
/// being typed in it, as MainMenu::addCommand() does.
namespace CommonMenus {

/// Adds the commands that make and open documents, and the menu of recently opened files.
void addNewAndOpen(QMenu &fileMenu, QWidget &window);
/// Adds the menu of recently opened files.
void addRecentFiles(QMenu &fileMenu, QWidget &window);
/// Fills \a menu with the steps of a history, the state that holds marked; choosing one goes there.
void fillHistory(QMenu &menu, QWidget &window, UndoManager &undo);
/// Adds the choice between light and dark.
void addAppearance(QMenu &viewMenu, QWidget &window);
/// Lists the open documents at the end of \a windowMenu, marking those that \a isShown holds for.
void listDocuments(QMenu &windowMenu, QWidget &window, std::function<bool(const Document &)> isShown);

} // namespace CommonMenus

} // namespace runebook
