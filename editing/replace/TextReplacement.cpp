#include "editing/replace/TextReplacement.h"

#include "model/FieldValue.h"

#include <iterator>

namespace runebook {

using namespace Qt::StringLiterals;

TextReplacement::TextReplacement(const QString &find, const QString &replacement,
                                 const ReplaceOptions &options)
    : m_find(find),
      m_replacement(replacement),
      m_changesAnything(!find.isEmpty() && (find != replacement || !options.isUsual())),
      m_isUsual(options.isUsual())
{
    if (!m_isUsual)
        compile(options);
    // Half a surrogate pair has no UTF-8 and so occurs in none.
    if (find.isValidUtf16())
        m_findUtf8 = find.toStdString();
    m_replacementUtf8 = replacement.toStdString();
}

void TextReplacement::compile(const ReplaceOptions &options)
{
    m_pieces = {{m_replacement, -1}};
    if (options.isPattern)
        parseReplacement();
    QString pattern = options.isPattern ? m_find : QRegularExpression::escape(m_find);
    m_pattern.setPattern(pattern); // first alone: what is put around it could make it valid
    if (!m_pattern.isValid()) {
        m_problem = m_pattern.errorString();
        m_changesAnything = false;
        return;
    }
    if (options.wholeValue)
        m_pattern.setPattern(u"\\A(?:"_s + pattern + u")\\z"_s);
    QRegularExpression::PatternOptions flags = QRegularExpression::UseUnicodePropertiesOption;
    flags.setFlag(QRegularExpression::CaseInsensitiveOption, !options.matchCase);
    m_pattern.setPatternOptions(flags);
}

/// Takes "\1", "$1" and their like apart; "\\" and "$$" are the signs themselves.
void TextReplacement::parseReplacement()
{
    m_pieces = {{}};
    for (qsizetype i = 0; i < m_replacement.size(); ++i) {
        const QChar sign = m_replacement.at(i);
        const QChar next = i + 1 < m_replacement.size() ? m_replacement.at(i + 1) : QChar();
        const bool isSpecial = sign == u'\\' || sign == u'$';
        if (isSpecial && next >= u'0' && next <= u'9') {
            m_pieces.push_back({{}, next.unicode() - u'0'});
            m_pieces.push_back({});
            ++i;
        } else {
            m_pieces.back().text += sign;
            i += isSpecial && next == sign ? 1 : 0;
        }
    }
}

std::vector<TextReplacement::Match> TextReplacement::matchesIn(const QString &text) const
{
    std::vector<Match> matches;
    if (!m_changesAnything || m_hasGivenUp)
        return matches;
    qsizetype end = 0;
    for (QRegularExpressionMatchIterator found = m_pattern.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        end = match.capturedEnd();
        QString inserted;
        for (const Piece &piece : m_pieces)
            inserted += piece.group < 0 ? piece.text : match.captured(piece.group);
        if (match.capturedView() != inserted)
            matches.push_back({match.capturedStart(), match.capturedLength(), inserted});
    }
    // The end of the matches and the end of the patience look alike to an iterator.
    m_hasGivenUp = !m_pattern.match(text, end).isValid();
    if (m_hasGivenUp)
        matches.clear();
    return matches;
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
    if (!m_isUsual)
        return std::ssize(matchesIn(text.toString()));
    qsizetype count = 0;
    for (qsizetype at = nextIn(text, 0); at >= 0; at = nextIn(text, at + m_find.size()))
        ++count;
    return count;
}

qsizetype TextReplacement::countIn(std::string_view utf8) const
{
    if (!m_isUsual)
        return std::ssize(matchesIn(FieldValue::textOfUtf8(utf8)));
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
    if (!m_isUsual)
        return m_changesAnything;
    return !m_findUtf8.empty() && utf8.find(m_findUtf8) != utf8.npos;
}

QString TextReplacement::replacedIn(const QString &text) const
{
    if (!m_isUsual) {
        QString result;
        qsizetype end = 0;
        for (const Match &match : matchesIn(text)) {
            result += QStringView(text).sliced(end, match.location - end);
            result += match.inserted;
            end = match.location + match.length;
        }
        return result += QStringView(text).sliced(end);
    }
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
    if (!m_isUsual) {
        out = replacedIn(FieldValue::textOfUtf8(utf8)).toStdString();
        return;
    }
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
    if (!m_isUsual) {
        for (const Match &match : matchesIn(text.toString())) {
            places.found.push_back({match.location, match.length});
            places.inserted.push_back({match.location + growth, match.inserted.size()});
            growth += match.inserted.size() - match.length;
        }
        return places;
    }
    for (qsizetype at = nextIn(text, 0); at >= 0; at = nextIn(text, at + m_find.size())) {
        places.found.push_back({at, m_find.size()});
        places.inserted.push_back({at + growth, m_replacement.size()});
        growth += m_replacement.size() - m_find.size();
    }
    return places;
}

} // namespace runebook
