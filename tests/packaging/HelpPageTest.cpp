#include "packaging/help/HelpPage.h"

#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QTest>

using namespace runebook;
using namespace Qt::StringLiterals;

class HelpPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    TABLE(anchorsAreThoseOfCodeHosts, (const QString &heading, const QString &anchor), {
        row("blanks", "The friendly layer", "the-friendly-layer");
        row("punctuation", "Don't: `a.b` (twice)", "dont-ab-twice");
        row("what may stay", "0.1.0_x – y-z", "010_x--y-z");
        row("other letters", "Größe", "größe");
    })
    {
        QCOMPARE(headingAnchor(heading), anchor);
    }

    TABLE(textBecomesHtml, (const QString &markdown, const QString &html), {
        row("styles", "a *b* **c** `d<e>` & \"f\"",
            "<p>a <em>b</em> <strong>c</strong> <code>d&lt;e&gt;</code> &amp; &quot;f&quot;</p>");
        row("wrapped lines", "one\ntwo\n\nthree", "<p>one two</p><p>three</p>");
        row("code keeps its lines", "```python\nif a < b:\n\n    c\n```\n\nd",
            "<pre><code class=\"language-python\">if a &lt; b:\n\n    c\n</code></pre><p>d</p>");
        row("nested lists", "- a\n  - b\n  - c\n- d\n\ne",
            "<ul><li>a<ul><li>b</li><li>c</li></ul></li><li>d</li></ul><p>e</p>");
        row("a paragraph in an item", "- a\n\n  b\n- c",
            "<ul><li><p>a</p><p>b</p></li><li><p>c</p></li></ul>");
        row("numbers after bullets", "- a\n\n1. b\n2. c", "<ul><li>a</li></ul><ol><li>b</li><li>c</li></ol>");
        row("table", "| a | `b` |\n|---|---|\n| **c** | d |",
            "<table><thead><tr><th>a</th><th><code>b</code></th></tr></thead>"
            "<tbody><tr><td><strong>c</strong></td><td>d</td></tr></tbody></table>");
        row("a list ends at a table", "- a\n\n| b |\n|---|\n| c |",
            "<ul><li>a</li></ul><table><thead><tr><th>b</th></tr></thead><tbody><tr><td>c</td></tr></tbody></"
            "table>");
        row("headings", "# A `b`\n## A b", "<h1 id=\"a-b\">A <code>b</code></h1><h2 id=\"a-b-1\">A b</h2>");
        row("a link within", "[a](#b)", "<p><a href=\"#b\">a</a></p>");
        row("a link to a page", "[a](docs/other.md)", "<p><a href=\"other.html\">a</a></p>");
        row("a link into a page", "[a](other.md#b)", "<p><a href=\"other.html#b\">a</a></p>");
        row("a link to what is not installed", "[a](docs/architecture.md#b)", "<p>a</p>");
        row("a link to the net", "[a](https://a.org/?b&c)",
            "<p><a href=\"https://a.org/?b&amp;c\">a</a></p>");
        row("links that run", "[a](javascript:b) [c](file:///etc/passwd)", "<p>a c</p>");
        row("images stay out", "a ![b](c.png) d", "<p>a  d</p>");
    })
    {
        QString body = helpPage({markdown, {{u"other.md"_s, u"other.html"_s}}}).section(u"<main>\n"_s, 1);
        body = body.section(u"</main>"_s, 0, 0);
        // Line breaks between tags are free; those in code are not.
        for (const char *tag :
             {"p", "li", "ul", "ol", "thead", "tbody", "tr", "th", "td", "table", "pre", "h1", "h2"})
            body.replace(QString::fromLatin1(tag) + ">\n"_L1, QString::fromLatin1(tag) + u'>');
        body.replace("\n<ul>"_L1, "<ul>"_L1);
        QCOMPARE(body, html);
    }

    void contentsLeadToTheHeadings()
    {
        const QString page = helpPage({u"# T & t\n## A\n### B\n#### C\n## A"_s, {}});
        QVERIFY(page.contains(u"<title>T &amp; t – Runebook</title>"_s));
        const QString contents = page.section(u"<nav"_s, 1).section(u"</nav>"_s, 0, 0);
        QCOMPARE(contents.section(u"<ul>\n"_s, 1),
                 u"<li class=\"level2\"><a href=\"#a\">A</a></li>\n<li class=\"level3\"><a "
                 u"href=\"#b\">B</a></li>\n"
                 "<li class=\"level2\"><a href=\"#a-1\">A</a></li>\n</ul>\n"_s);
        for (const QString &anchor : {u"a"_s, u"b"_s, u"a-1"_s})
            QVERIFY(page.contains(u" id=\"%1\""_s.arg(anchor)));
        QVERIFY(!helpPage({u"only text"_s, {}}).contains("<nav"_L1));
    }
};

RUNEBOOK_TEST_MAIN(HelpPageTest)
#include "HelpPageTest.moc"
