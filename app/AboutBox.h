#pragma once

#include <QString>

class QWidget;

namespace runebook::AboutBox {

/// Shows what the program is and with what it works; one for the program, in nobody's way.
void show(QWidget *window);

/// The version of the interpreter that is up, such as "3.11.2", or a word that there is none.
QString pythonVersion();

} // namespace runebook::AboutBox
