#pragma once

#include <QObject>

class QComboBox;
class QWidget;

namespace runebook {

class ListedKeys;

/// The chooser that tells for each field in how many records it differs, and lists only these.
class FieldFilter : public QObject
{
    Q_OBJECT
public:
    /// \a row holds the chooser and is hidden while there is nothing to choose.
    FieldFilter(ListedKeys &keys, QComboBox &chooser, QWidget &row);

    /// Lists only records that differ in a field, named by its key; in any for another text.
    void choose(const QString &key);

private:
    void show();
    void listChosen();

    ListedKeys &m_keys;
    QComboBox &m_chooser;
    QWidget &m_row;
};

} // namespace runebook
