#include "app/AboutBox.h"

#include "platform/PlainLabel.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/PythonFunctions.h"

#include <QIcon>
#include <QMessageBox>
#include <QPointer>

namespace runebook::AboutBox {

using namespace Qt::StringLiterals;

QString pythonVersion()
{
    if (!VXScriptingHandler::isPythonRunning() || !vxPy_GetVersion)
        return QMessageBox::tr("none");
    return QString::fromUtf8(vxPy_GetVersion()).section(u' ', 0, 0);
}

void show(QWidget *window)
{
    static QPointer<QMessageBox> shown;
    delete shown;
    auto *box = new QMessageBox(window);
    shown = box;
    box->setObjectName(u"aboutBox"_s);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::NonModal);
    box->setWindowTitle(QMessageBox::tr("About Runebook"));
    box->setIconPixmap(QIcon(u":/icons/runebook.svg"_s).pixmap(96));
    setPlainTexts(
        *box, QMessageBox::tr("Runebook %1").arg(QStringLiteral(RUNEBOOK_VERSION)),
        QMessageBox::tr("An editor for glyph data files.\n\nQt %1\nPython %2\n\nFree software under "
                        "the MIT licence.")
            .arg(QString::fromLatin1(qVersion()), pythonVersion()));
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->show();
}

} // namespace runebook::AboutBox
