#include "scripting/bridge/ControlOperations.h"

#include "scripting/bridge/BridgedClass.h"
#include "scripting/bridge/ScriptApplication.h"

#include <QMenuBar>

namespace runebook {

namespace {

int tagAt(const QComboBox &popup, int index)
{
    bool isNumber = false;
    const int number = popup.itemData(index).toInt(&isNumber);
    return isNumber ? number : index;
}

bool choose(QComboBox &popup, int index)
{
    if (index < 0)
        return false;
    popup.setCurrentIndex(index);
    Q_EMIT popup.activated(index);
    Q_EMIT popup.textActivated(popup.itemText(index));
    return true;
}

} // namespace

QObject *ApplicationOperations::mainMenu(QCoreApplication *) const
{
    return ScriptApplication::shared().mainMenu();
}

QString ControlOperations::title(QWidget *window) const
{
    return window->windowTitle();
}

QObject *ControlOperations::window(QWidget *control) const
{
    return control->window();
}

bool ControlOperations::isVisible(QWidget *control) const
{
    return control->isVisible();
}

bool ControlOperations::isEnabled(QWidget *control) const
{
    return control->isEnabled();
}

QObject *ControlOperations::menuBar(QWidget *control) const
{
    return control->window()->findChild<QMenuBar *>(QString(), Qt::FindDirectChildrenOnly);
}

QObject *ControlOperations::outlet(QWidget *window, const QString &name) const
{
    return window->findChild<QObject *>(name);
}

QString TextFieldOperations::stringValue(QLineEdit *field) const
{
    return field->text();
}

void TextFieldOperations::setStringValue(QLineEdit *field, const QString &text) const
{
    field->setText(text);
    Q_EMIT field->textEdited(text);
}

QStringList CodeViewOperations::completionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                                  TextRange range,
                                                                                  int *index) const
{
    return view->completionsForPartialWordRange(range, index);
}

bool PopupOperations::selectItemWithTag(QComboBox *popup, int tag) const
{
    for (int index = 0; index < popup->count(); ++index) {
        if (tagAt(*popup, index) == tag)
            return choose(*popup, index);
    }
    return false;
}

bool PopupOperations::selectItemWithTitle(QComboBox *popup, const QString &title) const
{
    return choose(*popup, popup->findText(title));
}

int PopupOperations::selectedTag(QComboBox *popup) const
{
    return popup->currentIndex() < 0 ? -1 : tagAt(*popup, popup->currentIndex());
}

QString PopupOperations::titleOfSelectedItem(QComboBox *popup) const
{
    return popup->currentText();
}

QStringList PopupOperations::itemTitles(QComboBox *popup) const
{
    QStringList titles;
    for (int index = 0; index < popup->count(); ++index)
        titles << popup->itemText(index);
    return titles;
}

void registerControlOperations()
{
    static ApplicationOperations applications;
    static ControlOperations controls;
    static TextFieldOperations textFields;
    static PopupOperations popups;
    static CodeViewOperations codeViews;
    bridge::BridgedClass::registerExtension(QCoreApplication::staticMetaObject, &applications);
    bridge::BridgedClass::registerExtension(QWidget::staticMetaObject, &controls);
    bridge::BridgedClass::registerExtension(QLineEdit::staticMetaObject, &textFields);
    bridge::BridgedClass::registerExtension(JSTTextView::staticMetaObject, &codeViews);
    bridge::BridgedClass::registerExtension(QComboBox::staticMetaObject, &popups);
}

} // namespace runebook
