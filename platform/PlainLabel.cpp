#include "platform/PlainLabel.h"

#include "platform/PlainText.h"

#include <QLabel>
#include <QMessageBox>

namespace runebook {

using namespace Qt::StringLiterals;

QLabel *plainLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    return label;
}

void setPlainTexts(QMessageBox &box, const QString &text, const QString &informativeText)
{
    box.setTextFormat(Qt::PlainText);
    box.setText(messageText(text));
    // The informative text guesses for itself what it is given.
    box.setInformativeText(messageText(informativeText).toHtmlEscaped().replace(u'\n', u"<br>"_s));
}

} // namespace runebook
