#include "platform/PlainText.h"

#include "platform/ShownText.h"

namespace runebook {

using namespace Qt::StringLiterals;

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
