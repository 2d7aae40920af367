#include "packaging/help/HelpPage.h"

#include "tests/TestMain.h"

#include <QTest>

using namespace runebook;
using namespace Qt::StringLiterals;

class HelpPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anchorsAreThoseOfCodeHosts_data();
    void anchorsAreThoseOfCodeHosts();
    void textBecomesHtml_data();
    void textBecomesHtml();
    void contentsLeadToTheHeadings();
};

void HelpPageTest::anchorsAreThoseOfCodeHosts_data()
{
    QTest::addColumn<QString>("heading");
    QTest::addColumn<QString>("anchor");
    QTest::newRow("blanks") << u"The friendly layer"_s << u"the-friendly-layer"_s;
    QTest::newRow("punctuation") << u"Don't: `a.b` (twice)"_s << u"dont-ab-twice"_s;
    QTest::newRow("what may stay") << u"0.1.0_x – y-z"_s << u"010_x--y-z"_s;
    QTest::newRow("other letters") << u"Größe"_s << u"größe"_s;
}

void HelpPageTest::anchorsAreThoseOfCodeHosts()
{
    QFETCH(QString, heading);
    QTEST(headingAnchor(heading), "anchor");
}

void HelpPageTest::textBecomesHtml_data()
{
    QTest::addColumn<QString>("markdown");
    QTest::addColumn<QString>("html");
    QTest::newRow("styles")
        << u"a *b* **c** `d<e>` & \"f\""_s
        << u"<p>a <em>b</em> <strong>c</strong> <code>d&lt;e&gt;</code> &amp; &quot;f&quot;</p>"_s;
    QTest::newRow("wrapped lines") << u"one\ntwo\n\nthree"_s << u"<p>one two</p><p>three</p>"_s;
    QTest::newRow("code keeps its lines") << u"```python\nif a < b:\n\n    c\n```\n\nd"_s
                                          << u"<pre><code>if a &lt; b:\n\n    c\n</code></pre><p>d</p>"_s;
    QTest::newRow("nested lists") << u"- a\n  - b\n  - c\n- d\n\ne"_s
                                  << u"<ul><li>a<ul><li>b</li><li>c</li></ul></li><li>d</li></ul><p>e</p>"_s;
    QTest::newRow("a paragraph in an item")
        << u"- a\n\n  b\n- c"_s << u"<ul><li>a<p>b</p></li><li>c</li></ul>"_s;
    QTest::newRow("numbers after bullets")
        << u"- a\n\n1. b\n2. c"_s << u"<ul><li>a</li></ul><ol><li>b</li><li>c</li></ol>"_s;
    QTest::newRow("table") << u"| a | `b` |\n|---|---|\n| **c** | d |"_s
                           << u"<table><tr><th>a</th><th><code>b</code></th></tr>"
                              "<tr><td><strong>c</strong></td><td>d</td></tr></table>"_s;
    QTest::newRow("a list ends at a table")
        << u"- a\n\n| b |\n|---|\n| c |"_s
        << u"<ul><li>a</li></ul><table><tr><th>b</th></tr><tr><td>c</td></tr></table>"_s;
    QTest::newRow("headings") << u"# A `b`\n## A b"_s
                              << u"<h1 id=\"a-b\">A <code>b</code></h1><h2 id=\"a-b-1\">A b</h2>"_s;
    QTest::newRow("a link within") << u"[a](#b)"_s << u"<p><a href=\"#b\">a</a></p>"_s;
    QTest::newRow("a link to a page") << u"[a](docs/other.md)"_s << u"<p><a href=\"other.html\">a</a></p>"_s;
    QTest::newRow("a link into a page") << u"[a](other.md#b)"_s << u"<p><a href=\"other.html#b\">a</a></p>"_s;
    QTest::newRow("a link to what is not installed") << u"[a](docs/architecture.md#b)"_s << u"<p>a</p>"_s;
    QTest::newRow("a link to the net")
        << u"[a](https://a.org/?b&c)"_s << u"<p><a href=\"https://a.org/?b&amp;c\">a</a></p>"_s;
    QTest::newRow("links that run") << u"[a](javascript:b) [c](file:///etc/passwd)"_s << u"<p>a c</p>"_s;
    QTest::newRow("images stay out") << u"a ![b](c.png) d"_s << u"<p>a  d</p>"_s;
}

void HelpPageTest::textBecomesHtml()
{
    QFETCH(QString, markdown);
    QString body = helpPage({markdown, {{u"other.md"_s, u"other.html"_s}}}).section(u"<main>\n"_s, 1);
    body = body.section(u"</main>"_s, 0, 0);
    // Line breaks between tags are free; those in code are not.
    for (const QString &tag :
         {u"p>"_s, u"li>"_s, u"ul>"_s, u"ol>"_s, u"tr>"_s, u"table>"_s, u"pre>"_s, u"h1>"_s, u"h2>"_s})
        body.replace(tag + u'\n', tag);
    QTEST(body, "html");
}

void HelpPageTest::contentsLeadToTheHeadings()
{
    const QString page = helpPage({u"# T & t\n## A\n### B\n#### C\n## A"_s, {}});
    QVERIFY(page.contains(u"<title>T &amp; t – Runebook</title>"_s));
    const QString contents = page.section(u"<nav"_s, 1).section(u"</nav>"_s, 0, 0);
    QCOMPARE(
        contents.section(u"<ul>\n"_s, 1),
        u"<li class=\"level2\"><a href=\"#a\">A</a></li>\n<li class=\"level3\"><a href=\"#b\">B</a></li>\n"
        "<li class=\"level2\"><a href=\"#a-1\">A</a></li>\n</ul>\n"_s);
    for (const QString &anchor : {u"a"_s, u"b"_s, u"a-1"_s})
        QVERIFY(page.contains(u" id=\"%1\""_s.arg(anchor)));
    QVERIFY(!helpPage({u"only text"_s, {}}).contains("<nav"_L1));
}

RUNEBOOK_TEST_MAIN(HelpPageTest)
#include "HelpPageTest.moc"
