#include "platform/PlainText.h"

#include "platform/ShownText.h"

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

QString messageText(const QString &text)
{
    constexpr int kMostLines = 20;
    qsizetype end = -1;
    for (int line = 0; line < kMostLines; ++line) {
        end = text.indexOf(u'\n', end + 1);
        if (end < 0)
            return shownText(text, kMostInMessage);
    }
    return shownText(text.first(end) + u"\n…"_s, kMostInMessage);
}

void setPlainTexts(QMessageBox &box, const QString &text, const QString &informativeText)
{
    box.setTextFormat(Qt::PlainText);
    box.setText(messageText(text));
    // The informative text guesses for itself what it is given.
    box.setInformativeText(messageText(informativeText).toHtmlEscaped().replace(u'\n', u"<br>"_s));
}

QString escapedToolTip(const QString &text)
{
    return text.isEmpty() ? QString()
                          : "<qt>"_L1 + shownText(text, kMostInMessage).toHtmlEscaped() + "</qt>"_L1;
}

QString terminalText(const QString &text)
{
    QString shown;
    for (const QChar c : text) {
        const bool isSteering = c.category() == QChar::Other_Control || c.category() == QChar::Other_Format
            || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
        if (isSteering)
            shown += QStringLiteral("\\u{%1}").arg(c.unicode(), 4, 16, QChar(u'0'));
        else
            shown += c;
    }
    return shown;
}

} // namespace runebook
