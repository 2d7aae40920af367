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
    box.setText(text);
    // The informative text guesses for itself what it is given.
    box.setInformativeText(informativeText.toHtmlEscaped().replace(u'\n', u"<br>"_s));
}

QString escapedToolTip(const QString &text)
{
    return text.isEmpty() ? QString() : "<qt>"_L1 + text.toHtmlEscaped() + "</qt>"_L1;
}

} // namespace runebook
