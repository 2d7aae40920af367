#include "scripting/bridge/ControlOperations.h"

#include "scripting/bridge/BridgedClass.h"

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

QString TextFieldOperations::stringValue(QLineEdit *field) const
{
    return field->text();
}

void TextFieldOperations::setStringValue(QLineEdit *field, const QString &text) const
{
    field->setText(text);
    Q_EMIT field->textEdited(text);
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
    static ControlOperations controls;
    static TextFieldOperations textFields;
    static PopupOperations popups;
    bridge::BridgedClass::registerExtension(QWidget::staticMetaObject, &controls);
    bridge::BridgedClass::registerExtension(QLineEdit::staticMetaObject, &textFields);
    bridge::BridgedClass::registerExtension(QComboBox::staticMetaObject, &popups);
}

} // namespace runebook
