#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QObject>

namespace runebook {

/// What scripts ask any window or control.
class ControlOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString title(QWidget *window) const;
    Q_INVOKABLE QObject *window(QWidget *control) const;
    Q_INVOKABLE bool isVisible(QWidget *control) const;
    Q_INVOKABLE bool isEnabled(QWidget *control) const;
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

/// What scripts ask a popup. The tag of an item is the number it stands for; where it stands for none, its
/// index from 0.
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
};

/// Makes them known to the bridge.
void registerControlOperations();

} // namespace runebook
