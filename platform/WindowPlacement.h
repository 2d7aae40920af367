#pragma once

#include <QList>

class QWidget;

namespace runebook {

/// Where a window that is about to be shown stands: beside the others of its kind, never larger than its
/// screen.
namespace WindowPlacement {

/// Gives \a window the size of the first of \a others and a place of its own, one title bar down and right.
void cascade(QWidget &window, const QList<QWidget *> &others);
/// Puts \a window exactly where \a former stands, maximised or not.
void takePlaceOf(QWidget &window, const QWidget &former);
/// Makes \a window, its frame included, small enough for its screen, and moves it into it.
void fitIntoScreen(QWidget &window);

} // namespace WindowPlacement

} // namespace runebook
