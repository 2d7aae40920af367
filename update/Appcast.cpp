#include "update/Appcast.h"

#include <QCoreApplication>
#include <QStringDecoder>
#include <QXmlStreamReader>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMaxDepth = 64;
constexpr qsizetype kMaxItems = 2'000;
constexpr int kMaxAttributes = 256;
constexpr qsizetype kMaxText = 4'096;
// rss, channel, item, then the fields of the item.
constexpr qsizetype kItemDepth = 3;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Appcast)
};

Error malformed(const QString &reason)
{
    return {
        u"UpdateError"_s, UpdateError::kMalformed, Texts::tr("The update feed cannot be used."), reason, {}};
}

/// Whether an element could have more attributes than the reader compares in reasonable time: it looks at
/// each pair of them. A value cannot hold "<", so what lies between two of them bounds an element.
bool hasTooManyAttributes(QStringView text)
{
    int values = 0;
    bool afterEquals = false;
    for (const QChar character : text) {
        if (character == u'<')
            values = 0;
        else if (afterEquals && (character == u'"' || character == u'\'') && ++values > kMaxAttributes)
            return true;
        if (!character.isSpace())
            afterEquals = character == u'=';
    }
    return false;
}

/// Keeps track of where in the feed the reader is and gathers the entries.
class FeedReader
{
public:
    explicit FeedReader(const QString &text) : m_xml(text), m_feed(std::make_unique<SUAppcast>()) { }

    std::unique_ptr<SUAppcast> read(Error *error)
    {
        while (m_problem.isEmpty() && !m_xml.atEnd())
            take(m_xml.readNext());
        if (m_problem.isEmpty() && m_xml.hasError())
            m_problem = Texts::tr("Line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString().left(300));
        if (m_problem.isEmpty())
            return std::move(m_feed);
        fail(error, malformed(m_problem));
        return nullptr;
    }

private:
    void take(QXmlStreamReader::TokenType token)
    {
        if (token == QXmlStreamReader::DTD || token == QXmlStreamReader::EntityReference)
            m_problem = Texts::tr("It contains a document type declaration.");
        else if (token == QXmlStreamReader::StartElement)
            startElement();
        else if (token == QXmlStreamReader::Characters)
            addText();
        else if (token == QXmlStreamReader::EndElement)
            endElement();
    }

    void startElement()
    {
        const QString name = m_xml.name().toString();
        if (m_path.isEmpty() && name != "rss"_L1)
            m_problem = Texts::tr("It is no RSS feed.");
        else if (m_path.size() >= kMaxDepth)
            m_problem = Texts::tr("Its elements are nested too deeply.");
        else if (m_feed->itemList().size() >= kMaxItems)
            m_problem = Texts::tr("It lists more than %1 versions.").arg(kMaxItems);
        m_path << name;
        if (m_path.size() == kItemDepth && name == "item"_L1)
            m_item = new SUAppcastItem(m_feed.get());
        else if (m_item && m_path.size() == kItemDepth + 1 && name == "enclosure"_L1)
            takeEnclosure();
        m_text.clear();
    }

    void takeEnclosure()
    {
        for (const QXmlStreamAttribute &attribute : m_xml.attributes()) {
            const QString value = attribute.value().left(kMaxText).trimmed().toString();
            if (attribute.name() == "version"_L1)
                m_enclosedVersion = value;
            else if (attribute.name() == "shortVersionString"_L1)
                m_enclosedShortVersion = value;
            else if (attribute.name() == "url"_L1)
                m_enclosedUrl = value;
        }
    }

    void addText()
    {
        if (m_item && m_text.size() < SUAppcastItem::kMaxDescription)
            m_text += m_xml.text().left(SUAppcastItem::kMaxDescription - m_text.size());
    }

    void endElement()
    {
        if (m_item && m_path.size() == kItemDepth + 1)
            takeField(m_path.last());
        m_path.removeLast();
        if (m_item && m_path.size() < kItemDepth)
            finishItem();
    }

    void takeField(const QString &name)
    {
        const QString text = m_text.left(kMaxText).trimmed();
        if (name == "title"_L1)
            m_item->title = text;
        else if (name == "version"_L1)
            m_item->versionString = text;
        else if (name == "shortVersionString"_L1)
            m_item->displayVersionString = text;
        else if (name == "pubDate"_L1)
            m_item->date = text;
        else if (name == "link"_L1)
            m_item->infoURL = QUrl(text, QUrl::StrictMode);
        else if (name == "releaseNotesLink"_L1)
            m_item->releaseNotesURL = QUrl(text, QUrl::StrictMode);
        else if (name == "description"_L1)
            m_item->itemDescription = m_text;
    }

    void finishItem()
    {
        if (m_item->versionString.isEmpty())
            m_item->versionString = m_enclosedVersion;
        if (m_item->displayVersionString.isEmpty())
            m_item->displayVersionString =
                m_enclosedShortVersion.isEmpty() ? m_item->versionString : m_enclosedShortVersion;
        if (m_item->infoURL.isEmpty())
            m_item->infoURL = QUrl(m_enclosedUrl, QUrl::StrictMode);
        m_feed->addItem(std::exchange(m_item, nullptr));
        m_enclosedVersion.clear();
        m_enclosedShortVersion.clear();
        m_enclosedUrl.clear();
    }

    QXmlStreamReader m_xml;
    std::unique_ptr<SUAppcast> m_feed;
    SUAppcastItem *m_item = nullptr;
    QStringList m_path;
    QString m_text;
    QString m_enclosedVersion, m_enclosedShortVersion, m_enclosedUrl;
    QString m_problem;
};

} // namespace

std::unique_ptr<SUAppcast> readAppcast(QByteArrayView bytes, Error *error)
{
    // Decoded here: a declaration of another encoding must not make two readings of the same bytes.
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        fail(error, malformed(Texts::tr("It is not UTF-8.")));
        return nullptr;
    }
    if (hasTooManyAttributes(text)) {
        fail(error, malformed(Texts::tr("An element has too many attributes.")));
        return nullptr;
    }
    return FeedReader(text).read(error);
}

} // namespace runebook

void SUAppcast::addItem(SUAppcastItem *item)
{
    item->setParent(this);
    m_items << item;
}
