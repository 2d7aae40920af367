#include "platform/ShownText.h"

namespace runebook {

QStringView beginningOf(QStringView text, qsizetype most)
{
    if (text.size() <= most)
        return text;
    return text.first(most > 0 && text.at(most - 1).isHighSurrogate() ? most - 1 : most);
}

QString shownText(const QString &text, qsizetype most)
{
    return text.size() <= most ? text : beginningOf(text, most).toString() + QChar(0x2026);
}

} // namespace runebook
