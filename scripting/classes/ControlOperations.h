#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QObject>
#include <QPlainTextEdit>
#include <QSpinBox>

namespace runebook {

/// What scripts ask the application, where the program put an object of its own in the place of the bridge's.
class ApplicationOperations : public QObject
{
    Q_OBJECT
public:
    /// The menu bar of the window that is in front; null when there is no window.
    Q_INVOKABLE QObject *mainMenu(QCoreApplication *) const;
};

/// What scripts ask any window or control.
class ControlOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString title(QWidget *window) const;
    Q_INVOKABLE QObject *window(QWidget *control) const;
    Q_INVOKABLE bool isVisible(QWidget *control) const;
    Q_INVOKABLE bool isEnabled(QWidget *control) const;
    /// The menu bar of its window, or null.
    Q_INVOKABLE QObject *menuBar(QWidget *control) const;
    /// The part of a window that has that name in its interface file, or null. Where an object has no
    /// operation of the name, "window.name()" answers its part as well.
    Q_INVOKABLE QObject *outlet(QWidget *window, const QString &name) const;
    /// The names of its parts.
    Q_INVOKABLE QStringList outletNames(QWidget *window) const;
    /// The part of its window that keys go to, or null.
    Q_INVOKABLE QObject *firstResponder(QWidget *window) const;
    /// Gives the keys to \a part; false when it takes none.
    Q_INVOKABLE bool makeFirstResponder(QWidget *window, QObject *part) const;
    /// The dialog that lies over a window and waits for an answer, or null.
    Q_INVOKABLE QObject *attachedSheet(QWidget *window) const;
    /// The button in a window that has that title, or null.
    Q_INVOKABLE QObject *buttonWithTitle(QWidget *window, const QString &title) const;
};

/// What scripts ask a text field.
class TextFieldOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString stringValue(QLineEdit *field) const;
    /// As if \a text had been typed: whoever follows the field is told.
    Q_INVOKABLE void setStringValue(QLineEdit *field, const QString &text) const;
};

/// What scripts ask a label.
class LabelOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString stringValue(QLabel *label) const;
    Q_INVOKABLE void setStringValue(QLabel *label, const QString &text) const;
    Q_INVOKABLE QColor textColor(QLabel *label) const;
};

/// What scripts ask a button.
class ButtonOperations : public QObject
{
    Q_OBJECT
public:
    /// Without the mark of its mnemonic.
    Q_INVOKABLE QString title(QAbstractButton *button) const;
    Q_INVOKABLE void performClick(QAbstractButton *button) const;
    /// 1: on, 0: off.
    Q_INVOKABLE int state(QAbstractButton *button) const;
    /// As a click would: whoever follows the button is told.
    Q_INVOKABLE void setState(QAbstractButton *button, int state) const;
};

/// What scripts ask a field for a number.
class NumberFieldOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE int integerValue(QSpinBox *field) const;
    Q_INVOKABLE void setIntegerValue(QSpinBox *field, int value) const;
};

/// What scripts ask a field of several lines.
class TextBoxOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString stringValue(QPlainTextEdit *box) const;
    Q_INVOKABLE void setStringValue(QPlainTextEdit *box, const QString &text) const;
};

/// An item of a popup. Its tag is the number it stands for; where it stands for none, its index from 0.
struct PopupItem {
    Q_GADGET
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(int tag MEMBER tag)
public:
    QString title;
    int tag = 0;
};

/// What scripts ask a popup.
class PopupOperations : public QObject
{
    Q_OBJECT
public:
    /// As if the item had been chosen; false when there is none with that tag.
    Q_INVOKABLE bool selectItemWithTag(QComboBox *popup, int tag) const;
    Q_INVOKABLE bool selectItemWithTitle(QComboBox *popup, const QString &title) const;
    Q_INVOKABLE int selectedTag(QComboBox *popup) const;
    Q_INVOKABLE QString titleOfSelectedItem(QComboBox *popup) const;
    Q_INVOKABLE QStringList itemTitles(QComboBox *popup) const;
    /// Of PopupItem.
    Q_INVOKABLE QVariantList itemArray(QComboBox *popup) const;
    Q_INVOKABLE int numberOfItems(QComboBox *popup) const;
    /// -1 for none.
    Q_INVOKABLE int indexOfSelectedItem(QComboBox *popup) const;
    Q_INVOKABLE bool selectItemAtIndex(QComboBox *popup, int index) const;
    /// The text that stands in a popup; one that can be typed into takes any.
    Q_INVOKABLE QString stringValue(QComboBox *popup) const;
    Q_INVOKABLE bool setStringValue(QComboBox *popup, const QString &text) const;
};

/// Makes them known to the bridge.
void registerControlOperations();

} // namespace runebook
