#include "packaging/help/HelpPage.h"

#include "packaging/help/HelpStyle.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Goes through a document once, from top to bottom, and writes it down as HTML. Qt's own export is not used:
/// it fixes fonts and colours at every word, which no style sheet could turn dark.
class PageWriter
{
public:
    explicit PageWriter(const HelpSource &source) : m_pages(source.pages) { }

    void writeFrame(const QTextFrame &frame)
    {
        for (auto it = frame.begin(); !it.atEnd(); ++it) {
            if (auto *table = qobject_cast<QTextTable *>(it.currentFrame())) {
                closeAll();
                writeTable(*table);
            } else if (it.currentBlock().isValid()) {
                writeBlock(it.currentBlock());
            }
        }
        closeAll();
    }

    QString title() const { return m_title; }
    QString contents() const { return m_contents; }
    QString body() const { return m_body; }

private:
    void writeBlock(const QTextBlock &block);
    void writeHeading(const QTextBlock &block);
    void writeListItem(const QTextBlock &block);
    void writeTable(const QTextTable &table);
    QString inlineText(const QTextBlock &block, bool isHeading = false) const;
    QString fragmentText(const QTextFragment &fragment, bool isHeading) const;
    QString target(const QString &link) const;
    QString uniqueAnchor(const QString &heading);
    void closeLists(int depth);
    void closeCode();
    void closeAll()
    {
        closeCode();
        closeLists(0);
    }

    QHash<QString, QString> m_pages;
    QHash<QString, int> m_anchors; ///< how often each was used
    QString m_title;
    QString m_contents;
    QString m_body;
    QStringList m_openLists; ///< the end tags of the lists that are open, outermost first
    bool m_isInCode = false;
};

bool isCode(const QTextBlock &block)
{
    return block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage)
        || block.blockFormat().hasProperty(QTextFormat::BlockCodeFence);
}

void PageWriter::writeBlock(const QTextBlock &block)
{
    if (isCode(block)) { // each line is a block of its own
        if (!m_isInCode) {
            closeLists(0);
            m_body += "<pre><code>"_L1;
        }
        m_isInCode = true;
        m_body += block.text().toHtmlEscaped() + u'\n';
        return;
    }
    closeCode();
    if (block.textList()) {
        writeListItem(block);
        return;
    }
    // An indented paragraph goes on with the item before it.
    closeLists(qMin(block.blockFormat().indent(), int(m_openLists.size())));
    if (block.blockFormat().headingLevel() > 0)
        writeHeading(block);
    else if (!block.text().isEmpty())
        m_body += "<p>"_L1 + inlineText(block) + "</p>\n"_L1;
}

void PageWriter::writeHeading(const QTextBlock &block)
{
    const int level = block.blockFormat().headingLevel();
    const QString text = inlineText(block, true);
    if (level == 1 && m_title.isEmpty())
        m_title = block.text();
    const QString anchor = uniqueAnchor(block.text());
    m_body += u"<h%1 id=\"%2\">"_s.arg(level).arg(anchor) + text + u"</h%1>\n"_s.arg(level);
    if (level == 2 || level == 3)
        m_contents +=
            u"<li class=\"level%1\"><a href=\"#%2\">"_s.arg(level).arg(anchor) + text + "</a></li>\n"_L1;
}

void PageWriter::writeListItem(const QTextBlock &block)
{
    const QTextListFormat format = block.textList()->format();
    const bool isNumbered = format.style() <= QTextListFormat::ListDecimal;
    const QString endTag = isNumbered ? u"</li></ol>\n"_s : u"</li></ul>\n"_s;
    const int depth = qMax(1, format.indent());
    closeLists(depth);
    if (m_openLists.size() == depth && m_openLists.last() != endTag)
        closeLists(depth - 1);
    if (m_openLists.size() == depth) {
        m_body += "</li>\n"_L1;
    } else {
        m_body += isNumbered ? "<ol>\n"_L1 : "<ul>\n"_L1;
        m_openLists << endTag;
    }
    m_body += "<li>"_L1 + inlineText(block);
}

void PageWriter::writeTable(const QTextTable &table)
{
    m_body += "<table>\n"_L1;
    for (int row = 0; row < table.rows(); ++row) {
        const QString cellTag = row == 0 ? u"th"_s : u"td"_s;
        m_body += "<tr>"_L1;
        for (int column = 0; column < table.columns(); ++column) {
            const QTextBlock block = table.cellAt(row, column).firstCursorPosition().block();
            m_body += u'<' + cellTag + u'>' + inlineText(block, row == 0) + "</"_L1 + cellTag + u'>';
        }
        m_body += "</tr>\n"_L1;
    }
    m_body += "</table>\n"_L1;
}

/// Headings, of columns too, are bold by themselves.
QString PageWriter::inlineText(const QTextBlock &block, bool isHeading) const
{
    QString html;
    for (auto it = block.begin(); !it.atEnd(); ++it)
        html += fragmentText(it.fragment(), isHeading);
    return html;
}

QString PageWriter::fragmentText(const QTextFragment &fragment, bool isHeading) const
{
    const QTextCharFormat format = fragment.charFormat();
    if (format.isImageFormat())
        return {};
    QString html = fragment.text().toHtmlEscaped();
    if (format.fontFixedPitch())
        html = "<code>"_L1 + html + "</code>"_L1;
    if (format.fontItalic())
        html = "<em>"_L1 + html + "</em>"_L1;
    if (format.fontWeight() >= QFont::Bold && !isHeading)
        html = "<strong>"_L1 + html + "</strong>"_L1;
    if (const QString link = target(format.anchorHref()); !link.isEmpty())
        html = u"<a href=\"%1\">"_s.arg(link.toHtmlEscaped()) + html + "</a>"_L1;
    return html;
}

/// Where a link of the Markdown file leads on the page; empty when it leads to nothing that is installed.
QString PageWriter::target(const QString &link) const
{
    if (link.startsWith(u'#') || link.startsWith("https://"_L1))
        return link;
    const auto hash = link.indexOf(u'#');
    const QString file = link.left(hash).section(u'/', -1);
    const QString page = m_pages.value(file);
    return page.isEmpty() || hash < 0 ? page : page + link.mid(hash);
}

QString PageWriter::uniqueAnchor(const QString &heading)
{
    const QString anchor = headingAnchor(heading);
    const int used = m_anchors[anchor]++;
    return used == 0 ? anchor : anchor + u'-' + QString::number(used);
}

void PageWriter::closeLists(int depth)
{
    while (m_openLists.size() > depth)
        m_body += m_openLists.takeLast();
}

void PageWriter::closeCode()
{
    if (m_isInCode)
        m_body += "</code></pre>\n"_L1;
    m_isInCode = false;
}

} // namespace

QString headingAnchor(const QString &heading)
{
    QString anchor;
    for (const QChar c : heading.toLower()) {
        if (c.isLetterOrNumber() || c == u'-' || c == u'_')
            anchor += c;
        else if (c == u' ')
            anchor += u'-';
    }
    return anchor;
}

QString helpPage(const HelpSource &source)
{
    QTextDocument document;
    document.setMarkdown(source.markdown);
    PageWriter writer(source);
    writer.writeFrame(*document.rootFrame());

    QString page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                   "<meta name=\"viewport\" content=\"width=device-width\">\n"_L1;
    page += "<title>"_L1 + writer.title().toHtmlEscaped() + u" – Runebook</title>\n"_s;
    page += "<style>\n"_L1 + helpStyle() + "</style>\n</head>\n<body>\n"_L1;
    if (!writer.contents().isEmpty())
        page += "<nav aria-label=\"Contents\">\n<ul>\n"_L1 + writer.contents() + "</ul>\n</nav>\n"_L1;
    return page + "<main>\n"_L1 + writer.body() + "</main>\n</body>\n</html>\n"_L1;
}

} // namespace runebook
