#pragma once

#include "codeeditor/JSTTextView.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QObject>

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
    /// The part of a window that has that name in its interface file, or null.
    Q_INVOKABLE QObject *outlet(QWidget *window, const QString &name) const;
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

/// What scripts ask a code text view beside its own operations.
class CodeViewOperations : public QObject
{
    Q_OBJECT
public:
    /// The completions for the partial word at \a range; \a index gets the place of the one to offer first.
    Q_INVOKABLE QStringList completionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                              runebook::TextRange range,
                                                                              int *index) const;
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
