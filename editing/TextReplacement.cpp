#include "editing/TextReplacement.h"

namespace runebook {

TextReplacement::TextReplacement(const QString &find, const QString &replacement)
    : m_find(find), m_replacement(replacement), m_changesAnything(!find.isEmpty() && find != replacement)
{
    // Half a surrogate pair has no UTF-8 and so occurs in none.
    if (find.isValidUtf16())
        m_findUtf8 = find.toStdString();
    m_replacementUtf8 = replacement.toStdString();
}

qsizetype TextReplacement::nextIn(QStringView text, qsizetype from) const
{
    if (m_find.isEmpty())
        return -1;
    qsizetype at = text.indexOf(m_find, from);
    const auto tearsPair = [&](qsizetype boundary) {
        return boundary > 0 && boundary < text.size() && text.at(boundary - 1).isHighSurrogate()
            && text.at(boundary).isLowSurrogate();
    };
    while (at >= 0 && (tearsPair(at) || tearsPair(at + m_find.size())))
        at = text.indexOf(m_find, at + 1);
    return at;
}

qsizetype TextReplacement::countIn(QStringView text) const
{
    qsizetype count = 0;
    for (qsizetype at = nextIn(text, 0); at >= 0; at = nextIn(text, at + m_find.size()))
        ++count;
    return count;
}

qsizetype TextReplacement::countIn(std::string_view utf8) const
{
    qsizetype count = 0;
    if (m_findUtf8.empty())
        return count;
    for (std::size_t at = utf8.find(m_findUtf8); at != utf8.npos;
         at = utf8.find(m_findUtf8, at + m_findUtf8.size()))
        ++count;
    return count;
}

bool TextReplacement::occursIn(std::string_view utf8) const
{
    return !m_findUtf8.empty() && utf8.find(m_findUtf8) != utf8.npos;
}

QString TextReplacement::replacedIn(const QString &text) const
{
    qsizetype at = nextIn(text, 0);
    if (at < 0)
        return text;
    QString result;
    result.reserve(text.size() + m_replacement.size() - m_find.size());
    qsizetype done = 0;
    for (; at >= 0; at = nextIn(text, done)) {
        result += QStringView(text).mid(done, at - done);
        result += m_replacement;
        done = at + m_find.size();
    }
    result += QStringView(text).mid(done);
    return result;
}

void TextReplacement::replaceIn(std::string_view utf8, std::string &out) const
{
    out.clear();
    std::size_t done = 0;
    if (!m_findUtf8.empty()) {
        for (std::size_t at = utf8.find(m_findUtf8); at != utf8.npos; at = utf8.find(m_findUtf8, done)) {
            out.append(utf8, done, at - done).append(m_replacementUtf8);
            done = at + m_findUtf8.size();
        }
    }
    out.append(utf8, done);
}

TextReplacement::Places TextReplacement::placesIn(QStringView text) const
{
    Places places;
    qsizetype growth = 0;
    for (qsizetype at = nextIn(text, 0); at >= 0; at = nextIn(text, at + m_find.size())) {
        places.found.push_back({at, m_find.size()});
        places.inserted.push_back({at + growth, m_replacement.size()});
        growth += m_replacement.size() - m_find.size();
    }
    return places;
}

} // namespace runebook
