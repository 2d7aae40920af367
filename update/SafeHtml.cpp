#include "update/SafeHtml.h"

#include <QList>
#include <QSet>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMaxInput = 256 * 1024;
constexpr int kMaxElements = 6'000;
constexpr qsizetype kMaxNesting = 12;
// A line that cannot be broken is laid out anew for each of its characters.
constexpr qsizetype kLongestWord = 1'000;

const QSet<QString> &keptElements()
{
    static const QSet<QString> names {
        u"p"_s,  u"h1"_s,  u"h2"_s,         u"h3"_s, u"h4"_s,     u"h5"_s, u"h6"_s,     u"ul"_s,  u"ol"_s,
        u"li"_s, u"b"_s,   u"i"_s,          u"em"_s, u"strong"_s, u"u"_s,  u"s"_s,      u"tt"_s,  u"code"_s,
        u"dl"_s, u"pre"_s, u"blockquote"_s, u"dt"_s, u"dd"_s,     u"a"_s,  u"center"_s, u"sub"_s, u"sup"_s};
    return names;
}

/// Elements that go with everything in them.
const QSet<QString> &droppedElements()
{
    static const QSet<QString> names {u"script"_s, u"style"_s,    u"head"_s,     u"title"_s, u"iframe"_s,
                                      u"object"_s, u"noscript"_s, u"template"_s, u"nav"_s,   u"svg"_s,
                                      u"math"_s,   u"select"_s,   u"textarea"_s};
    return names;
}

bool isLetter(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

bool isNameCharacter(QChar character)
{
    return isLetter(character) || (character >= u'0' && character <= u'9');
}

bool isHarmlessAnchor(QStringView value)
{
    return !value.isEmpty() && std::all_of(value.begin(), value.end(), [](QChar character) {
        return character.isLetterOrNumber() || character == u'-' || character == u'_' || character == u'.';
    });
}

bool isHarmlessAddress(QStringView value)
{
    if (value.startsWith(u'#'))
        return isHarmlessAnchor(value.mid(1));
    const bool isKnown = value.startsWith("https://"_L1, Qt::CaseInsensitive)
        || value.startsWith("http://"_L1, Qt::CaseInsensitive)
        || value.startsWith("mailto:"_L1, Qt::CaseInsensitive);
    return isKnown && std::none_of(value.begin(), value.end(), [](QChar character) {
               return character <= u' ' || character == u'"' || character == u'<' || character == u'>';
           });
}

class Sanitiser
{
public:
    explicit Sanitiser(QStringView html) : m_html(html.left(kMaxInput)), m_isCut(html.size() > kMaxInput) { }

    QString result()
    {
        m_result.reserve(m_html.size());
        while (m_at < m_html.size() && !m_isFull)
            m_html[m_at] == u'<' ? takeMarkup() : takeText();
        while (!m_open.isEmpty())
            closeLast();
        if (m_isCut || m_isFull)
            m_result += u"<p>…</p>"_s;
        return std::move(m_result);
    }

private:
    void takeText()
    {
        const QChar character = m_html[m_at++];
        const bool endsEntity = m_inEntity && character == u';';
        m_inEntity = character == u'&' || (m_inEntity && (isNameCharacter(character) || character == u'#'));
        m_wordLength = character.isSpace() ? 0 : m_wordLength + 1;
        if (m_wordLength > kLongestWord && !m_inEntity && !endsEntity) {
            m_result += u'\n';
            m_wordLength = 0;
        }
        if (character == u'>')
            m_result += "&gt;"_L1;
        else if (character != u'\0')
            m_result += character;
    }

    void takeMarkup()
    {
        const QStringView rest = m_html.mid(m_at);
        const QChar next = rest.size() > 1 ? rest[1] : QChar();
        if (rest.startsWith("<!--"_L1)) {
            skipBehind(u"-->");
        } else if (next == u'!' || next == u'?') {
            skipBehind(u">");
        } else if (isLetter(next) || (next == u'/' && rest.size() > 2 && isLetter(rest[2]))) {
            takeElement();
        } else {
            m_result += "&lt;"_L1;
            ++m_at;
        }
    }

    void skipBehind(QStringView end)
    {
        const qsizetype found = m_html.indexOf(end, m_at);
        m_at = found < 0 ? m_html.size() : found + end.size();
    }

    void takeElement()
    {
        const bool isEnd = m_html[m_at + 1] == u'/';
        m_at += isEnd ? 2 : 1;
        const qsizetype start = m_at;
        while (m_at < m_html.size() && isNameCharacter(m_html[m_at]))
            ++m_at;
        const QString name = m_html.mid(start, m_at - start).toString().toLower();
        m_address.clear();
        m_anchor.clear();
        takeAttributes();
        if (isEnd)
            end(name);
        else
            begin(name);
    }

    /// Stands behind the ">" of the element afterwards.
    void takeAttributes()
    {
        while (m_at < m_html.size() && m_html[m_at] != u'>') {
            const qsizetype start = m_at;
            while (m_at < m_html.size() && isNameCharacter(m_html[m_at]))
                ++m_at;
            const QStringView name = m_html.mid(start, m_at - start);
            if (name.isEmpty()) {
                ++m_at;
                continue;
            }
            skipSpace();
            if (m_at < m_html.size() && m_html[m_at] == u'=') {
                ++m_at;
                skipSpace();
                keepAttribute(name, attributeValue());
            }
        }
        ++m_at;
    }

    void skipSpace()
    {
        while (m_at < m_html.size() && m_html[m_at].isSpace())
            ++m_at;
    }

    QStringView attributeValue()
    {
        if (m_at >= m_html.size())
            return {};
        const QChar quote = m_html[m_at];
        if (quote == u'"' || quote == u'\'') {
            const qsizetype start = m_at + 1;
            const qsizetype found = m_html.indexOf(quote, start);
            m_at = found < 0 ? m_html.size() : found + 1;
            return m_html.mid(start, (found < 0 ? m_html.size() : found) - start);
        }
        const qsizetype start = m_at;
        while (m_at < m_html.size() && m_html[m_at] != u'>' && !m_html[m_at].isSpace())
            ++m_at;
        return m_html.mid(start, m_at - start);
    }

    void keepAttribute(QStringView name, QStringView value)
    {
        const QStringView trimmed = value.trimmed();
        if (name.compare("href"_L1, Qt::CaseInsensitive) == 0 && isHarmlessAddress(trimmed))
            m_address = trimmed.toString();
        else if ((name.compare("id"_L1, Qt::CaseInsensitive) == 0
                  || name.compare("name"_L1, Qt::CaseInsensitive) == 0)
                 && isHarmlessAnchor(trimmed))
            m_anchor = trimmed.toString();
    }

    void begin(const QString &name)
    {
        if (droppedElements().contains(name)) {
            dropUntilEnd(name);
        } else if (name == "br"_L1 || name == "hr"_L1) {
            add(u'<' + name + u'>');
        } else if (name == "tr"_L1) {
            add(u"<br>"_s);
        } else if (name == "td"_L1 || name == "th"_L1) {
            m_result += u' ';
        } else if (keptElements().contains(name) && m_open.size() < kMaxNesting) {
            QString attributes;
            if (!m_anchor.isEmpty())
                attributes += " id=\""_L1 + m_anchor + u'"';
            if (name == "a"_L1 && !m_address.isEmpty())
                attributes += " href=\""_L1 + m_address + u'"';
            add(u'<' + name + attributes + u'>');
            m_open << name;
        }
    }

    void dropUntilEnd(const QString &name)
    {
        const qsizetype found = m_html.indexOf("</"_L1 + name, m_at, Qt::CaseInsensitive);
        m_at = found < 0 ? m_html.size() : found;
    }

    void end(const QString &name)
    {
        if (!m_open.contains(name))
            return;
        while (m_open.last() != name)
            closeLast();
        closeLast();
    }

    void closeLast()
    {
        m_result += "</"_L1 + m_open.takeLast() + u'>';
        m_wordLength = 0;
    }

    void add(const QString &element)
    {
        m_isFull = ++m_elements > kMaxElements;
        m_result += element;
        m_wordLength = 0;
    }

    QStringView m_html;
    qsizetype m_at = 0;
    QString m_result;
    QStringList m_open;
    QString m_address;
    QString m_anchor;
    qsizetype m_wordLength = 0;
    bool m_inEntity = false;
    int m_elements = 0;
    bool m_isCut;
    bool m_isFull = false;
};

} // namespace

QString safeHtml(QStringView html)
{
    return Sanitiser(html).result();
}

} // namespace runebook
