#pragma once

#include "platform/defaults/Setting.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QSpinBox;

/// The sheet that asks how sort names are numbered. Its fields edit the defaults of runebook::SortNumbering
/// while it is open; the records are numbered by whoever opened it when it ends with 1 ("OK"). 0: "Cancel".
class SortNameDialog : public QDialog
{
    Q_OBJECT
public:
    /// \a recordCount: how many records will be numbered, for the example.
    explicit SortNameDialog(qsizetype recordCount, QWidget *parent = nullptr);
    /// The first names that the settings give, such as "a001, a002, a003".
    Q_INVOKABLE QString example() const;

private:
    QSpinBox *numberField(const runebook::Setting<int> &setting, int minimum, int maximum);
    void updateExample();

    qsizetype m_recordCount;
    QLineEdit *m_prefix;
    QLabel *m_example;
};
