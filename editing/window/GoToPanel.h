#pragma once

#include "document/VXDocument.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace runebook {

/// A small sheet that takes a name, a code point or a character and goes to its record.
class GoToPanel : public QDialog
{
    Q_OBJECT
public:
    GoToPanel(const VXDocument &document, QWidget *parent);

Q_SIGNALS:
    void chosen(const InfoPtr &info);

private:
    void showFound();
    void go();

    const VXDocument &m_document;
    QLineEdit *m_field;
    QLabel *m_found;
    QPushButton *m_goButton;
};

} // namespace runebook
