#include "scripting/panel/LineDialog.h"

#include "codeeditor/JSTTextView.h"
#include "scripting/panel/VXMacroViewController.h"

#include <QCoreApplication>
#include <QInputDialog>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(LineDialog)
};

} // namespace

void askForLine(VXMacroViewController &tab, QWidget *window)
{
    JSTTextView *editor = tab.macroText();
    auto *dialog = new QInputDialog(window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setWindowTitle(Texts::tr("Go to Line"));
    dialog->setLabelText(Texts::tr("Line:"));
    dialog->setMinimumWidth(dialog->fontMetrics().averageCharWidth() * 50); // or the title is cut
    dialog->setInputMode(QInputDialog::IntInput);
    dialog->setIntRange(1, std::max(1, editor->blockCount()));
    dialog->setIntValue(editor->textCursor().blockNumber() + 1);
    QObject::connect(dialog, &QInputDialog::intValueSelected, &tab, [&tab](int line) {
        tab.macroText()->setSelectedRange({tab.rangeForLine(line).location, 0});
        tab.macroText()->centerCursor();
    });
    dialog->open();
}

} // namespace runebook
