#include "packaging/help/HelpPage.h"

#include "packaging/help/HelpStyle.h"

#include <QProcess>
#include <QRegularExpression>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Match = QRegularExpressionMatch;

QString htmlOf(const QString &markdown)
{
    QProcess converter;
    converter.start(QStringLiteral(RUNEBOOK_CMARK_GFM),
                    {u"--nobreaks"_s, u"-e"_s, u"table"_s, u"-e"_s, u"autolink"_s});
    converter.write(markdown.toUtf8());
    converter.closeWriteChannel();
    const bool isDone = converter.waitForFinished() && converter.exitCode() == 0;
    return isDone ? QString::fromUtf8(converter.readAllStandardOutput()) : QString();
}

/// Replaces every match of \a pattern, in which "." is any character, by what \a replacement makes of it.
template <typename Replacement>
QString replaced(const QString &html, const QString &pattern, Replacement replacement)
{
    const QRegularExpression expression(pattern, QRegularExpression::DotMatchesEverythingOption);
    QString result;
    qsizetype end = 0;
    for (const Match &match : expression.globalMatch(html)) {
        result += html.mid(end, match.capturedStart() - end) + replacement(match);
        end = match.capturedEnd();
    }
    return result + html.mid(end);
}

/// What a reader sees of \a html, but for the few characters that have to be written as entities.
QString plainText(QString html)
{
    static const QRegularExpression kTag(u"<[^>]*>|&\\w+;"_s);
    return html.remove(kTag);
}

/// Where a link of the Markdown file leads on the page; empty when it leads to nothing that is installed.
QString target(const QString &link, const QHash<QString, QString> &pages)
{
    if (link.startsWith(u'#') || link.startsWith("https://"_L1))
        return link;
    const auto hash = link.indexOf(u'#');
    const QString page = pages.value(link.left(hash).section(u'/', -1));
    return page.isEmpty() || hash < 0 ? page : page + link.mid(hash);
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
    QString body = replaced(htmlOf(source.markdown), u"<img [^>]*>|<!--.*?-->"_s,
                            [](const Match &) { return QString(); });
    body = replaced(body, u"<a href=\"([^\"]*)\"[^>]*>(.*?)</a>"_s, [&source](const Match &link) {
        const QString to = target(link.captured(1), source.pages);
        return to.isEmpty() ? link.captured(2) : u"<a href=\"%1\">%2</a>"_s.arg(to, link.captured(2));
    });

    QString title;
    QString contents;
    QHash<QString, int> anchors; // how often each was used
    body = replaced(body, u"<h([1-6])>(.*?)</h\\1>"_s, [&](const Match &heading) {
        const QString level = heading.captured(1);
        const QString text = heading.captured(2);
        QString anchor = headingAnchor(plainText(text));
        if (const int used = anchors[anchor]++; used > 0)
            anchor += u'-' + QString::number(used);
        if (level == u'1' && title.isEmpty())
            title = replaced(text, u"<[^>]*>"_s, [](const Match &) { return QString(); });
        if (level == u'2' || level == u'3')
            contents += u"<li class=\"level%1\"><a href=\"#%2\">%3</a></li>\n"_s.arg(level, anchor, text);
        return u"<h%1 id=\"%2\">%3</h%1>"_s.arg(level, anchor, text);
    });
    if (body.isEmpty())
        return {};

    QString page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                   "<meta name=\"viewport\" content=\"width=device-width\">\n"_L1;
    page += "<title>"_L1 + title + u" – Runebook</title>\n"_s;
    page += "<style>\n"_L1 + helpStyle() + "</style>\n</head>\n<body>\n"_L1;
    if (!contents.isEmpty())
        page += "<nav aria-label=\"Contents\">\n<ul>\n"_L1 + contents + "</ul>\n</nav>\n"_L1;
    return page + "<main>\n"_L1 + body + "</main>\n</body>\n</html>\n"_L1;
}

} // namespace runebook
