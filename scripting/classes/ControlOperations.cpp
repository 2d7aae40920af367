#include "scripting/classes/ControlOperations.h"

#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/ScriptApplication.h"

#include <QDialog>
#include <QMenuBar>
#include <QTextDocument>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

int tagAt(const QComboBox &popup, int index)
{
    bool isNumber = false;
    const int number = popup.itemData(index).toInt(&isNumber);
    return isNumber ? number : index;
}

bool choose(QComboBox &popup, int index)
{
    if (index < 0 || index >= popup.count())
        return false;
    popup.setCurrentIndex(index);
    Q_EMIT popup.activated(index);
    Q_EMIT popup.textActivated(popup.itemText(index));
    return true;
}

QString withoutMnemonic(QString text)
{
    return text.replace(u"&&"_s, u"\x01"_s).remove(u'&').replace(u'\x01', u'&');
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
    return name.isEmpty() ? nullptr : window->findChild<QObject *>(name);
}

QStringList ControlOperations::outletNames(QWidget *window) const
{
    QStringList names;
    for (const QObject *part : window->findChildren<QObject *>())
        names << part->objectName();
    names.removeAll(QString());
    names.removeIf([](const QString &name) { return name.startsWith("qt_"_L1); });
    names.removeDuplicates();
    return names;
}

QObject *ControlOperations::firstResponder(QWidget *window) const
{
    return window->window()->focusWidget();
}

bool ControlOperations::makeFirstResponder(QWidget *, QObject *part) const
{
    auto *control = qobject_cast<QWidget *>(part);
    if (!control || control->focusPolicy() == Qt::NoFocus)
        return false;
    control->setFocus();
    return true;
}

QObject *ControlOperations::attachedSheet(QWidget *window) const
{
    for (QDialog *dialog : window->findChildren<QDialog *>()) {
        if (dialog->isVisible() && dialog->isModal())
            return dialog;
    }
    return nullptr;
}

QObject *ControlOperations::buttonWithTitle(QWidget *window, const QString &title) const
{
    for (QAbstractButton *button : window->findChildren<QAbstractButton *>()) {
        if (withoutMnemonic(button->text()) == title)
            return button;
    }
    return nullptr;
}

QString LabelOperations::stringValue(QLabel *label) const
{
    return u""_s + label->text(); // never null
}

void LabelOperations::setStringValue(QLabel *label, const QString &text) const
{
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
}

QColor LabelOperations::textColor(QLabel *label) const
{
    return label->palette().color(label->foregroundRole());
}

QString ButtonOperations::title(QAbstractButton *button) const
{
    return withoutMnemonic(button->text());
}

void ButtonOperations::performClick(QAbstractButton *button) const
{
    button->click();
}

int ButtonOperations::state(QAbstractButton *button) const
{
    return button->isChecked() ? 1 : 0;
}

void ButtonOperations::setState(QAbstractButton *button, int state) const
{
    if (button->isCheckable() && button->isChecked() != (state != 0))
        button->click();
}

int NumberFieldOperations::integerValue(QSpinBox *field) const
{
    return field->value();
}

void NumberFieldOperations::setIntegerValue(QSpinBox *field, int value) const
{
    field->setValue(value);
}

QString TextBoxOperations::stringValue(QPlainTextEdit *box) const
{
    return box->document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

void TextBoxOperations::setStringValue(QPlainTextEdit *box, const QString &text) const
{
    box->setPlainText(text);
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

QVariantList PopupOperations::itemArray(QComboBox *popup) const
{
    QVariantList items;
    for (int index = 0; index < popup->count(); ++index)
        items << QVariant::fromValue(PopupItem {popup->itemText(index), tagAt(*popup, index)});
    return items;
}

int PopupOperations::numberOfItems(QComboBox *popup) const
{
    return popup->count();
}

int PopupOperations::indexOfSelectedItem(QComboBox *popup) const
{
    return popup->currentIndex();
}

bool PopupOperations::selectItemAtIndex(QComboBox *popup, int index) const
{
    return choose(*popup, index);
}

QString PopupOperations::stringValue(QComboBox *popup) const
{
    return popup->currentText();
}

bool PopupOperations::setStringValue(QComboBox *popup, const QString &text) const
{
    if (!popup->isEditable())
        return selectItemWithTitle(popup, text);
    popup->setEditText(text);
    Q_EMIT popup->textActivated(text);
    return true;
}

void registerControlOperations()
{
    static ApplicationOperations applications;
    static ControlOperations controls;
    static TextFieldOperations textFields;
    static PopupOperations popups;
    static LabelOperations labels;
    static ButtonOperations buttons;
    static NumberFieldOperations numberFields;
    static TextBoxOperations textBoxes;
    bridge::BridgedClass::registerClass(QWidget::staticMetaObject);
    bridge::BridgedClass::registerExtension(QLabel::staticMetaObject, &labels);
    bridge::BridgedClass::registerExtension(QAbstractButton::staticMetaObject, &buttons);
    bridge::BridgedClass::registerExtension(QSpinBox::staticMetaObject, &numberFields);
    bridge::BridgedClass::registerExtension(QPlainTextEdit::staticMetaObject, &textBoxes);
    bridge::BridgedClass::registerExtension(QCoreApplication::staticMetaObject, &applications);
    bridge::BridgedClass::registerExtension(QWidget::staticMetaObject, &controls);
    bridge::BridgedClass::registerExtension(QLineEdit::staticMetaObject, &textFields);
    bridge::BridgedClass::registerExtension(QComboBox::staticMetaObject, &popups);
}

} // namespace runebook
