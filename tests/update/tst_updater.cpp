#include "FeedServer.h"
#include "app/update/PageView.h"
#include "app/update/SUUpdater.h"
#include "app/update/SafeHtml.h"
#include "app/update/UpdateWindow.h"
#include "platform/UserDefaults.h"
#include "tests/TestMain.h"

#include <QDesktopServices>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

QByteArray feed(const QByteArray &items)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<rss version=\"2.0\" xmlns:u=\"urn:update\"><channel>"
           "<title>Runebook</title>"
        + items + "</channel></rss>";
}

QByteArray item(const QByteArray &version, const QByteArray &notes = "<b>Better</b>")
{
    return "<item><title>Runebook " + version
        + "</title><link>https://example.org/get</link><description>"
          "<![CDATA["
        + notes + "]]></description><enclosure url=\"https://example.org/a.deb\" u:version=\"" + version
        + "\" u:shortVersionString=\"v" + version + "\"/></item>";
}

/// What the check came to, in one line.
QString outcomeOf(SUUpdater &updater)
{
    QString outcome;
    const auto connections = {
        QObject::connect(&updater, &SUUpdater::foundUpdate, &updater,
                         [&](SUAppcastItem *found) { outcome = "new "_L1 + found->versionString; }),
        QObject::connect(&updater, &SUUpdater::foundNothingNewer, &updater,
                         [&](SUAppcastItem *found) { outcome = "old "_L1 + found->versionString; }),
        QObject::connect(&updater, &SUUpdater::failed, &updater, [&](const Error &error) {
            outcome = u"error %1 %2"_s.arg(error.code).arg(error.text());
        })};
    updater.checkForUpdates();
    const bool hasAnswered = QTest::qWaitFor([&] { return !outcome.isEmpty(); }, 20'000);
    for (const QMetaObject::Connection &connection : connections)
        QObject::disconnect(connection);
    return hasAnswered ? outcome : u"nothing"_s;
}

/// Offers the last entry.
struct NewestFirst : SUUpdaterDelegate {
    SUAppcastItem *bestValidUpdateInAppcastForUpdater(SUAppcast *appcast, SUUpdater *) override
    {
        return appcast->itemList().isEmpty() ? nullptr : appcast->itemList().last();
    }
};

} // namespace

/// The update check against a server on this machine, honest and hostile.
class UpdaterTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void readsFeeds_data();
    void readsFeeds();
    void survivesServers_data();
    void survivesServers();
    void refusesAddresses_data();
    void refusesAddresses();
    void followsRedirectsToHttpsOnly_data();
    void followsRedirectsToHttpsOnly();
    void asksWithoutTraces();
    void readsEntries();
    void asksItsDelegate();
    void staysSilentUnlessAsked();
    void showsWhatItFound();
    void makesPagesSafe_data();
    void makesPagesSafe();
    void boundsPages_data();
    void boundsPages();
    void opensLinksOutside();

private:
    FeedServer m_server;
    std::unique_ptr<SUUpdater> m_updater;
};

void UpdaterTest::init()
{
    for (const QString &key : {u"SUFeedURL"_s, u"SUSkippedVersion"_s})
        UserDefaults::standard().removeObjectForKey(key);
    m_updater = std::make_unique<SUUpdater>();
    m_updater->setCurrentVersion(u"2.0"_s);
    m_updater->setLimits({64 * 1024, 700});
}

void UpdaterTest::readsFeeds_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("outcome"); // what it begins with
    QTest::newRow("newer") << feed(item("2.1") + item("3.0")) << u"new 2.1"_s;
    QTest::newRow("the same") << feed(item("2.0.0")) << u"old 2.0.0"_s;
    QTest::newRow("older") << feed(item("1.9")) << u"old 1.9"_s;
    QTest::newRow("version as an element")
        << feed("<item><u:version>2.10</u:version></item>") << u"new 2.10"_s;
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf" + feed(item("2.1"))) << u"new 2.1"_s;
    QTest::newRow("no entry") << feed("") << u"error 8"_s;
    QTest::newRow("no version") << feed("<item><title>New</title></item>") << u"error 7"_s;
    QTest::newRow("nothing") << QByteArray() << u"error 6"_s;
    QTest::newRow("a web page") << QByteArray("<html><body>Hello</body></html>") << u"error 6"_s;
    QTest::newRow("cut") << feed(item("2.1")).chopped(30) << u"error 6"_s;
    QTest::newRow("not UTF-8") << feed("<item><title>\xff</title></item>") << u"error 6"_s;
    QTest::newRow("says UTF-16, is not")
        << QByteArray("<?xml version=\"1.0\" encoding=\"utf-16\"?><rss><channel><item>"
                      "<version>2.5</version></item></channel></rss>")
        << u"new 2.5"_s;
    QTest::newRow("DOCTYPE") << QByteArray("<!DOCTYPE rss>" + feed(item("2.1"))) << u"error 6"_s;
    QTest::newRow("external entity") << QByteArray(
        "<!DOCTYPE rss [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><rss>&a;</rss>")
                                     << u"error 6"_s;
    QTest::newRow("undeclared entity") << feed("<item>&bomb;</item>") << u"error 6"_s;
    QByteArray bomb = "<!DOCTYPE rss [<!ENTITY a \"" + QByteArray(20'000, 'x') + "\">]><rss>";
    for (int i = 0; i < 6'000; ++i)
        bomb += "&a;";
    QTest::newRow("entity bomb") << QByteArray(bomb + "</rss>") << u"error 6"_s;
    QTest::newRow("nested without end") << feed(QByteArray("<a>").repeated(15'000)) << u"error 6"_s;
    QByteArray attributes;
    for (int i = 0; i < 5'000; ++i)
        attributes += " a" + QByteArray::number(i) + "=''";
    QTest::newRow("thousands of attributes") << feed("<item" + attributes + "/>") << u"error 6"_s;
    QTest::newRow("thousands of entries") << feed(QByteArray("<item/>").repeated(3'000)) << u"error 6"_s;
    QTest::newRow("huge notes") << feed(item("2.1", QByteArray(60'000, 'n'))) << u"new 2.1"_s;
}

void UpdaterTest::readsFeeds()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, outcome);
    m_server.answer(body);
    m_updater->setFeedURL(m_server.address());
    const QString came = outcomeOf(*m_updater);
    QVERIFY2(came.startsWith(outcome), qPrintable(came));
}

void UpdaterTest::survivesServers_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<int>("manner");
    QTest::addColumn<QString>("outcome");
    QTest::newRow("endless body") << QByteArray("HTTP/1.1 200 OK") << int(FeedServer::Endless)
                                  << u"error 4"_s;
    QTest::newRow("one byte at a time")
        << QByteArray("HTTP/1.1 200 OK") << int(FeedServer::Slow) << u"error 5"_s;
    QTest::newRow("hangs up") << QByteArray("HTTP/1.1 200 OK") << int(FeedServer::HangUp) << u"error 3"_s;
    QTest::newRow("not found") << QByteArray("HTTP/1.1 404 Gone") << int(FeedServer::Whole) << u"error 3"_s;
    QTest::newRow("wants a password") << QByteArray("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"x\"")
                                      << int(FeedServer::Whole) << u"error 3"_s;
    QTest::newRow("compressed") << QByteArray("HTTP/1.1 200 OK\r\nContent-Encoding: gzip")
                                << int(FeedServer::Whole) << u"error 3"_s;
    QTest::newRow("no HTTP") << QByteArray("Hello") << int(FeedServer::Whole) << u"error 3"_s;
}

void UpdaterTest::survivesServers()
{
    QFETCH(QByteArray, head);
    QFETCH(int, manner);
    QFETCH(QString, outcome);
    m_server.answer(feed(item("2.1")), head, FeedServer::Manner(manner));
    m_updater->setFeedURL(m_server.address());
    const QString came = outcomeOf(*m_updater);
    QVERIFY2(came.startsWith(outcome), qPrintable(came));
    // The next check is none the worse for it.
    m_server.answer(feed(item("2.1")));
    QCOMPARE(outcomeOf(*m_updater), u"new 2.1"_s);
}

void UpdaterTest::refusesAddresses_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("outcome");
    QTest::newRow("none") << u"  "_s << u"error 1"_s;
    QTest::newRow("http") << u"http://192.0.2.1/feed.xml"_s << u"error 2"_s;
    QTest::newRow("a host like this machine") << u"http://localhost.example.org/"_s << u"error 2"_s;
    QTest::newRow("a file") << u"file:///etc/passwd"_s << u"error 2"_s;
    QTest::newRow("data") << u"data:text/xml,<rss/>"_s << u"error 2"_s;
    QTest::newRow("ftp") << u"ftp://example.org/feed.xml"_s << u"error 2"_s;
    QTest::newRow("no address") << u"feed.xml"_s << u"error 2"_s;
    QTest::newRow("invalid") << u"https://[::"_s << u"error 2"_s;
}

void UpdaterTest::refusesAddresses()
{
    QFETCH(QString, address);
    QFETCH(QString, outcome);
    m_updater->setFeedURL(address);
    const QString came = outcomeOf(*m_updater);
    QVERIFY2(came.startsWith(outcome), qPrintable(came));
}

void UpdaterTest::followsRedirectsToHttpsOnly_data()
{
    QTest::addColumn<QString>("target"); // %1 is the port of the other server
    QTest::addColumn<QString>("outcome");
    QTest::newRow("http here") << u"http://127.0.0.1:%1/"_s << u"error 2"_s;
    QTest::newRow("http elsewhere") << u"http://192.0.2.1/"_s << u"error 2"_s;
    QTest::newRow("https on this machine") << u"https://127.0.0.1:%1/"_s << u"error 2"_s;
    QTest::newRow("a file") << u"file:///etc/passwd"_s << u"error 3"_s;
    // Allowed, so it is tried; nobody answers under this name.
    QTest::newRow("https elsewhere") << u"https://feed.invalid/"_s << u"error 3"_s;
}

void UpdaterTest::followsRedirectsToHttpsOnly()
{
    QFETCH(QString, target);
    QFETCH(QString, outcome);
    FeedServer other;
    other.answer(feed(item("9")));
    if (target.contains("%1"_L1))
        target = target.arg(other.serverPort());
    m_server.answer({}, "HTTP/1.1 302 Found\r\nLocation: " + target.toUtf8());
    m_updater->setFeedURL(m_server.address());
    m_updater->setLimits({64 * 1024, 15'000});
    const QString came = outcomeOf(*m_updater);
    QVERIFY2(came.startsWith(outcome), qPrintable(came));
    QCOMPARE(other.requests(), 0);
}

void UpdaterTest::asksWithoutTraces()
{
    m_updater->setFeedURL(m_server.address());
    for (int i = 0; i < 2; ++i) {
        m_server.answer(feed(item("2.1")), "HTTP/1.1 200 OK\r\nSet-Cookie: who=you");
        QCOMPARE(outcomeOf(*m_updater), u"new 2.1"_s);
        QCOMPARE(m_server.requests(), 1);
        QVERIFY(!m_server.lastRequest().toLower().contains("cookie"));
        QVERIFY(m_server.lastRequest().contains("Accept-Encoding: identity"));
    }
}

void UpdaterTest::readsEntries()
{
    Error error;
    const auto appcast = readAppcast(feed(item("2.1", "<p>A &amp; B</p>") + item("3")), &error);
    QVERIFY2(appcast, qPrintable(error.text()));
    QCOMPARE(appcast->items().size(), 2);
    const SUAppcastItem *first = appcast->itemList().first();
    QCOMPARE(first->title, u"Runebook 2.1"_s);
    QCOMPARE(first->versionString, u"2.1"_s);
    QCOMPARE(first->displayVersionString, u"v2.1"_s);
    QCOMPARE(first->itemDescription, u"<p>A &amp; B</p>"_s);
    QCOMPARE(first->infoURL, QUrl(u"https://example.org/get"_s));
}

void UpdaterTest::asksItsDelegate()
{
    NewestFirst delegate;
    m_updater->setDelegate(&delegate);
    m_updater->setFeedURL(m_server.address());
    m_server.answer(feed(item("2.1") + item("3.0") + item("2.5")));
    QCOMPARE(outcomeOf(*m_updater), u"new 2.5"_s);
    m_server.answer(feed(""));
    QVERIFY(outcomeOf(*m_updater).startsWith("error 8"_L1));
}

void UpdaterTest::staysSilentUnlessAsked()
{
    const QSignalSpy found(m_updater.get(), &SUUpdater::foundUpdate);
    const QSignalSpy old(m_updater.get(), &SUUpdater::foundNothingNewer);
    const QSignalSpy failed(m_updater.get(), &SUUpdater::failed);
    const auto checkWith = [this](const QByteArray &body) {
        m_server.answer(body);
        m_updater->setFeedURL(m_server.address());
        m_updater->checkForUpdatesInBackground();
        return QTest::qWaitFor([this] { return !m_updater->isChecking(); });
    };
    m_updater->checkForUpdatesInBackground(); // no address
    QVERIFY(!m_updater->isChecking());
    QVERIFY(checkWith("no feed"));
    QVERIFY(checkWith(feed(item("1.0"))));
    QCOMPARE(found.size() + old.size() + failed.size(), 0);
    QVERIFY(checkWith(feed(item("2.1"))));
    QCOMPARE(found.size(), 1);
    m_updater->skipVersion(u"2.1"_s);
    QVERIFY(checkWith(feed(item("2.1"))));
    QCOMPARE(found.size(), 1);
    QCOMPARE(outcomeOf(*m_updater), u"new 2.1"_s); // asked for, it is told all the same
}

void UpdaterTest::showsWhatItFound()
{
    new UpdatePresenter(*m_updater);
    const auto shown = [](const QString &name) -> QWidget * {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == name && widget->isVisible())
                return widget;
        }
        return nullptr;
    };
    m_updater->checkForUpdates();
    auto *message = qobject_cast<QMessageBox *>(shown(u"updateMessage"_s));
    QVERIFY(message);
    QVERIFY(message->informativeText().contains("preferences"_L1));

    m_server.answer(feed(item("<img src='/dev/zero'>2.1", "<h1>New</h1><script>bad()</script>")
                             .replace("u:version=\"<img src='/dev/zero'>2.1\"", "u:version=\"2.1\"")
                             .replace("\"v<img src='/dev/zero'>2.1\"", "\"v2.1 &lt;img src='/dev/zero'>\"")
                             .replace("Runebook <img src='/dev/zero'>2.1", "Runebook")));
    m_updater->setFeedURL(m_server.address());
    QCOMPARE(outcomeOf(*m_updater), u"new 2.1"_s);
    QWidget *window = shown(u"updateWindow"_s);
    QVERIFY(window);
    QVERIFY(!shown(u"updateMessage"_s));
    const auto *heading = window->findChild<QLabel *>();
    QCOMPARE(heading->text(), u"Version v2.1 <img src='/dev/zero'> is available"_s);
    QCOMPARE(heading->textFormat(), Qt::PlainText);
    QCOMPARE(window->findChild<PageView *>()->toPlainText(), u"New"_s);

    for (QPushButton *button : window->findChildren<QPushButton *>()) {
        if (button->text().contains("Skip"_L1))
            QTest::mouseClick(button, Qt::LeftButton);
    }
    QCOMPARE(m_updater->skippedVersion(), u"2.1"_s);
    QVERIFY(!shown(u"updateWindow"_s));
}

void UpdaterTest::makesPagesSafe_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("safe");
    const auto row = [](const char *name, const char *html, const char *safe) {
        QTest::newRow(name) << QString::fromUtf8(html) << QString::fromUtf8(safe);
    };
    row("text", "A < B > C &amp; D", "A &lt; B &gt; C &amp; D");
    row("structure", "<h1>A</h1><ul><li>b</ul>", "<h1>A</h1><ul><li>b</li></ul>");
    row("script", "a<script>alert('</p>')</script>b", "ab");
    row("style", "<style>@import '/dev/zero'</style>b", "b");
    row("unfinished script", "a<script>b", "a");
    row("picture", "a<img src=/dev/zero onerror=x>b", "ab");
    row("events and styles", "<p onclick='x()' style='background:url(/dev/zero)'>a</p>", "<p>a</p>");
    row("link", "<a href=\"https://example.org/?a=1&amp;b=2\">x</a>",
        "<a href=\"https://example.org/?a=1&amp;b=2\">x</a>");
    row("link within", "<h2 id=\"new-1\">a</h2><a href='#new-1'>x</a>",
        "<h2 id=\"new-1\">a</h2><a href=\"#new-1\">x</a>");
    row("script link", "<a href='javascript:x()'>x</a>", "<a>x</a>");
    row("hidden script link", "<a href=' java&#115;cript:x()'>x</a>", "<a>x</a>");
    row("file link", "<a href='file:///etc/passwd'>x</a>", "<a>x</a>");
    row("quote in a link", "<a href='https://a/\"onclick=x'>x</a>", "<a>x</a>");
    row("contents list", "<nav><a href='#a'>A</a></nav><p>b", "<p>b</p>");
    row("comment", "a<!-- <b> -->b", "ab");
    row("declarations", "<!DOCTYPE html><?php x ?>b", "b");
    row("upper case", "<B>x</B>", "<b>x</b>");
    row("wrong order", "<b><i>x</b></i>", "<b><i>x</i></b>");
    row("table", "<table><tr><td>a<td>b</table>", "<br> a b");
    row("unfinished", "a<b", "a<b></b>");
    row("half a quote", "a<p title=\"b", "a<p></p>");
}

void UpdaterTest::makesPagesSafe()
{
    QFETCH(QString, html);
    QFETCH(QString, safe);
    QCOMPARE(safeHtml(html), safe);
    QCOMPARE(safeHtml(safe).remove(u"&amp;"_s).count(u'<'), QString(safe).remove(u"&amp;"_s).count(u'<'));
}

void UpdaterTest::boundsPages_data()
{
    QTest::addColumn<QString>("piece");
    for (const char *piece :
         {"<table><tr><td>", "<ul><li>", "<p>", "<b>", "x", "&amp;", "<a href='https://a/'>x", "<!--",
          "<p title='", "<br>", "<blockquote>a", "<script>", "</p>"})
        QTest::newRow(piece) << QString::fromLatin1(piece);
}

void UpdaterTest::boundsPages()
{
    QFETCH(QString, piece);
    const QString safe = safeHtml(piece.repeated(2'000'000 / piece.size()));
    QVERIFY(safe.size() < 1'000'000);
    QVERIFY(safe.count(u'<') < 13'000);
    int depth = 0;
    int deepest = 0;
    static const QRegularExpression element(u"<(/?)(?!br|hr)[a-z]"_s);
    for (auto match = element.globalMatch(safe); match.hasNext();) {
        depth += match.next().captured(1).isEmpty() ? 1 : -1;
        deepest = qMax(deepest, depth);
    }
    QCOMPARE(depth, 0);
    QVERIFY(deepest <= 13);
    PageView view;
    view.resize(500, 400);
    view.setPage(piece.repeated(2'000'000 / piece.size()));
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
}

void UpdaterTest::opensLinksOutside()
{
    PageView view;
    QSignalSpy opened(&view, &PageView::linkOpened);
    view.resize(300, 200);
    view.setPage(u"<a href='mailto:me@example.org'>link link link</a>"_s);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, QPoint(30, 22));
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened.at(0).at(0).toUrl(), QUrl(u"mailto:me@example.org"_s));
    QVERIFY(view.toPlainText().contains("link link"_L1)); // the page itself stays
    Q_EMIT view.anchorClicked(QUrl(u"file:///etc/passwd"_s));
    QCOMPARE(opened.size(), 1);
}

RUNEBOOK_TEST_MAIN(UpdaterTest)
#include "tst_updater.moc"
