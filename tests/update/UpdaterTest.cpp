#include "platform/defaults/UserDefaults.h"
#include "tests/ShownTexts.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/update/FeedServer.h"
#include "update/PageView.h"
#include "update/SUUpdater.h"
#include "update/SafeHtml.h"
#include "update/UpdateWindow.h"

#include <QDesktopServices>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
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
            outcome = (error.domain == "UpdateError"_L1 ? u"error %1 %2"_s : error.domain)
                          .arg(error.code)
                          .arg(error.text());
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
public Q_SLOTS:
    void openUrl(const QUrl &url) { m_opened = url; }

private Q_SLOTS:
    void init()
    {
        for (const QString &key : {u"SUFeedURL"_s, u"SUSkippedVersion"_s})
            UserDefaults::standard().removeObjectForKey(key);
        m_updater = std::make_unique<SUUpdater>();
        m_updater->setCurrentVersion(u"2.0"_s);
        m_updater->setLimits({64 * 1024, 700});
    }

    // outcome: what it begins with
    TABLE(readsFeeds, (const QByteArray &body, const QString &outcome), {
        row("newer", feed(item("2.1") + item("3.0")), "new 2.1");
        row("the same", feed(item("2.0.0")), "old 2.0.0");
        row("older", feed(item("1.9")), "old 1.9");
        row("version as an element", feed("<item><u:version>2.10</u:version></item>"), "new 2.10");
        row("byte order mark", QByteArray("\xef\xbb\xbf" + feed(item("2.1"))), "new 2.1");
        row("no entry", feed(""), "error 8");
        row("no version", feed("<item><title>New</title></item>"), "error 7");
        row("nothing", QByteArray(), "error 6");
        row("a web page", "<html><body>Hello</body></html>", "error 6");
        row("cut", feed(item("2.1")).chopped(30), "error 6");
        row("not UTF-8", feed("<item><title>\xff</title></item>"), "error 6");
        row("says UTF-16, is not",
            QByteArray("<?xml version=\"1.0\" encoding=\"utf-16\"?><rss><channel><item>"
                       "<version>2.5</version></item></channel></rss>"),
            "new 2.5");
        row("DOCTYPE", QByteArray("<!DOCTYPE rss>" + feed(item("2.1"))), "error 6");
        row("external entity",
            QByteArray("<!DOCTYPE rss [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><rss>&a;</rss>"),
            "error 6");
        row("undeclared entity", feed("<item>&bomb;</item>"), "error 6");
        QByteArray bomb = "<!DOCTYPE rss [<!ENTITY a \"" + QByteArray(20'000, 'x') + "\">]><rss>";
        for (int i = 0; i < 6'000; ++i)
            bomb += "&a;";
        row("entity bomb", QByteArray(bomb + "</rss>"), "error 6");
        row("nested without end", feed(QByteArray("<a>").repeated(15'000)), "error 6");
        QByteArray attributes;
        for (int i = 0; i < 5'000; ++i)
            attributes += " a" + QByteArray::number(i) + "= '>'";
        row("thousands of attributes", feed("<item" + attributes + "/>"), "error 6");
        row("thousands of entries", feed(QByteArray("<item/>").repeated(3'000)), "error 6");
        row("huge notes", feed(item("2.1", QByteArray(60'000, 'n'))), "new 2.1");
    })
    {
        m_server.answer(body);
        m_updater->setFeedURL(m_server.address());
        const QString came = outcomeOf(*m_updater);
        QVERIFY2(came.startsWith(outcome), qPrintable(came));
    }

    TABLE(survivesServers, (const QByteArray &head, int manner, const QString &outcome), {
        row("endless body", "HTTP/1.1 200 OK", int(FeedServer::Endless), "error 4");
        row("one byte at a time", "HTTP/1.1 200 OK", int(FeedServer::Slow), "error 5");
        row("hangs up", "HTTP/1.1 200 OK", int(FeedServer::HangUp), "error 3");
        row("not found", "HTTP/1.1 404 Gone", int(FeedServer::Whole), "error 3");
        row("wants a password", "HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"x\"",
            int(FeedServer::Whole), "error 3");
        row("compressed", "HTTP/1.1 200 OK\r\nContent-Encoding: gzip", int(FeedServer::Whole), "error 3");
        row("no HTTP", "Hello", int(FeedServer::Whole), "error 3");
    })
    {
        m_server.answer(feed(item("2.1")), head, FeedServer::Manner(manner));
        m_updater->setFeedURL(m_server.address());
        const QString came = outcomeOf(*m_updater);
        QVERIFY2(came.startsWith(outcome), qPrintable(came));
        // The next check is none the worse for it.
        m_server.answer(feed(item("2.1")));
        QCOMPARE(outcomeOf(*m_updater), u"new 2.1"_s);
    }

    TABLE(refusesAddresses, (const QString &address, const QString &outcome), {
        row("none", "  ", "error 1");
        row("http", "http://192.0.2.1/feed.xml", "error 2");
        row("a host like this machine", "http://localhost.example.org/", "error 2");
        row("a file", "file:///etc/passwd", "error 2");
        row("data", "data:text/xml,<rss/>", "error 2");
        row("ftp", "ftp://example.org/feed.xml", "error 2");
        row("no address", "feed.xml", "error 2");
        row("invalid", "https://[::", "error 2");
    })
    {
        m_updater->setFeedURL(address);
        const QString came = outcomeOf(*m_updater);
        QVERIFY2(came.startsWith(outcome), qPrintable(came));
        QVERIFY(!address.startsWith("http:"_L1) || came.contains(address)); // it is told
    }

    // target: %1 is the port of the other server
    TABLE(followsRedirectsToHttpsOnly, (QString target, const QString &outcome), {
        row("http here", "http://127.0.0.1:%1/", "error 2");
        row("http elsewhere", "http://192.0.2.1/", "error 2");
        row("https on this machine", "https://127.0.0.1:%1/", "error 2");
        row("a file", "file:///etc/passwd", "error 3");
        // Allowed, so it is tried; nobody answers under this name.
        row("https elsewhere", "https://feed.invalid/", "error 3");
    })
    {
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

    void asksWithoutTraces()
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

    void readsEntries()
    {
        Error error;
        const auto appcast =
            readAppcast(feed(item("2.1", "<p>A &amp; B</p>")
                             + "<item><u:shortVersionString>three</u:shortVersionString>"
                               "<releaseNotesLink>https://example.org/all</releaseNotesLink></item>"),
                        &error);
        QVERIFY2(appcast, qPrintable(error.text()));
        QCOMPARE(appcast->items().size(), 2);
        const SUAppcastItem *first = appcast->itemList().first();
        const SUAppcastItem *last = appcast->itemList().last();
        QCOMPARE(last->versionString + last->displayVersionString, u"three"_s);
        QCOMPARE(last->releaseNotesURL, QUrl(u"https://example.org/all"_s));
        QCOMPARE(first->title, u"Runebook 2.1"_s);
        QCOMPARE(first->versionString, u"2.1"_s);
        QCOMPARE(first->displayVersionString, u"v2.1"_s);
        QCOMPARE(first->itemDescription, u"<p>A &amp; B</p>"_s);
        QCOMPARE(first->infoURL, QUrl(u"https://example.org/get"_s));
    }

    void asksItsDelegate()
    {
        NewestFirst delegate;
        m_updater->setDelegate(&delegate);
        m_updater->setFeedURL(m_server.address());
        m_server.answer(feed(item("2.1") + item("3.0") + item("2.5")));
        QCOMPARE(outcomeOf(*m_updater), u"new 2.5"_s);
        m_server.answer(feed(""));
        QVERIFY(outcomeOf(*m_updater).startsWith("error 8"_L1));
    }

    void staysSilentUnlessAsked()
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

    void showsWhatItFound()
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

        m_server.answer(
            feed(item("<img src='/dev/zero'>2.1", "<h1>New</h1><script>bad()</script>")
                     .replace("u:version=\"<img src='/dev/zero'>2.1\"", "u:version=\"2.1\"")
                     .replace("\"v<img src='/dev/zero'>2.1\"", "\"v2.1 &lt;img src='/dev/zero'>\"")
                     .replace("Runebook <img src='/dev/zero'>2.1", "Runebook")));
        m_updater->setFeedURL(m_server.address());
        QCOMPARE(outcomeOf(*m_updater), u"new 2.1"_s);
        QWidget *window = shown(u"updateWindow"_s);
        QVERIFY(window);
        QVERIFY(!shown(u"updateMessage"_s));
        COMPARE_TEXTS(u"update"_s, *window);
        const QList<QLabel *> labels = window->findChildren<QLabel *>();
        QVERIFY(std::ranges::any_of(labels,
                                    [](auto *label) { return label->text() == u"You have version 2.0."; }));
        const QLabel *heading = labels.first();
        QCOMPARE(heading->text(), u"Version v2.1 <img src='/dev/zero'> is available"_s);
        QVERIFY(
            std::ranges::all_of(labels, [](auto *label) { return label->textFormat() == Qt::PlainText; }));
        QCOMPARE(window->findChild<PageView *>()->toPlainText(), u"New"_s);

        const auto press = [&](const QString &text) {
            for (QPushButton *button : window->findChildren<QPushButton *>()) {
                if (button->text().remove(u'&').startsWith(text))
                    return QTest::mouseClick(button, Qt::LeftButton), true;
            }
            return false;
        };
        QVERIFY(!press(u"All Notes"_s)); // it has none elsewhere
        QVERIFY(press(u"Skip"_s));
        QCOMPARE(m_updater->skippedVersion(), u"2.1"_s);
        QVERIFY(!shown(u"updateWindow"_s));
        QCOMPARE(outcomeOf(*m_updater), u"new 2.1"_s);
        window = shown(u"updateWindow"_s);
        QDesktopServices::setUrlHandler(u"https"_s, this, "openUrl");
        QVERIFY(press(u"Open Download Page"_s));
        QDesktopServices::unsetUrlHandler(u"https"_s);
        QCOMPARE(m_opened, QUrl(u"https://example.org/get"_s));
        QVERIFY(!shown(u"updateWindow"_s));
    }

    TABLE(makesPagesSafe, (const QString &html, const QString &safe), {
        row("text", "A < B > C &amp; D", "A &lt; B &gt; C &amp; D");
        row("structure", "<h1>A</h1><ul><li>b</ul>", "<h1>A</h1><ul><li>b</li></ul>");
        row("script", "a<script>alert('</p>')</script>b", "ab");
        row("style", "<style>@import '/dev/zero'</style>b", "b");
        row("unfinished script", "a<script>b", "a");
        row("picture", "a<img src=/dev/zero onerror=x>b", "ab");
        row("events and styles", "<p onclick='x()' href='https://a/' style='background:url(/dev/zero)'>a</p>",
            "<p>a</p>");
        row("link", "<a href=\"https://example.org/?a=1&amp;b=2\">x</a>",
            "<a href=\"https://example.org/?a=1&amp;b=2\">x</a>");
        row("link within", "<h2 id=\"new-1\">a</h2><a href='#new-1'>x</a>",
            "<h2 id=\"new-1\">a</h2><a href=\"#new-1\">x</a>");
        row("script link", "<a href='javascript:x()'>x</a>", "<a>x</a>");
        row("hidden script link", "<a href=' java&#115;cript:x()'>x</a>", "<a>x</a>");
        row("file link", "<a href='file:///etc/passwd'>x</a>", "<a>x</a>");
        row("quote in a link", "<a href='https://a/\"onclick=x'>x</a>", "<a>x</a>");
        row("quote in an anchor", "<h2 id='a\"onclick=x'>a</h2>", "<h2>a</h2>");
        row("contents list", "<nav><a href='#a'>A</a></nav><p>b", "<p>b</p>");
        row("comment", "a<!-- <b> -->b", "ab");
        row("declarations", "<!DOCTYPE html><?php x ?>b", "b");
        row("upper case", "<B>x</B><ZZ>", "<b>x</b>");
        row("wrong order", "<b><i>x</b></i>", "<b><i>x</i></b>");
        row("table", "<table><tr><td>a<td>b</table>", "<br> a b");
        row("unfinished", "a<b", "a<b></b>");
        row("half a quote", "a<p title=\"b", "a<p></p>");
    })
    {
        QCOMPARE(safeHtml(html), safe);
        QCOMPARE(safeHtml(safe).remove(u"&amp;"_s).count(u'<'), QString(safe).remove(u"&amp;"_s).count(u'<'));
    }

    TABLE(boundsPages, (const QString &piece), {
        for (const char *piece :
             {"<table><tr><td>", "<ul><li>", "<p>", "<b>", "x", "&amp;", "<a href='https://a/'>x", "<!--",
              "<p title='", "<br>", "<blockquote>a", "<script>", "</p>"})
            row(piece, piece);
    })
    {
        const QString safe = safeHtml(piece.repeated(2'000'000 / piece.size()));
        QVERIFY(safe.size() < 1'000'000);
        QVERIFY(safe.count(u'<') < 13'000);
        static const QRegularExpression cutEntity(u"&[a-z]*\\n"_s);
        QVERIFY(!safe.contains(cutEntity));
        static const QRegularExpression anyElement(u"<[^>]*>|&[a-z]+;"_s), endless(u"\\S{1002}"_s);
        QVERIFY(
            !QString(safe).replace(anyElement, u" "_s).contains(endless)); // nothing that cannot be broken
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

    void opensLinksOutside()
    {
        PageView view;
        QSignalSpy opened(&view, &PageView::linkOpened);
        view.resize(300, 200);
        view.setPage(u"<a href='https://example.org/a#b'>link link link</a>"_s);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, QPoint(30, 22));
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened.at(0).at(0).toUrl(), QUrl(u"https://example.org/a#b"_s));
        QVERIFY(view.toPlainText().contains("link link"_L1)); // the page itself stays
        Q_EMIT view.anchorClicked(QUrl(u"file:///etc/passwd"_s));
        QCOMPARE(opened.size(), 1);
        view.setPage(u"<a href='#x'>x</a>"_s + u"y<br>"_s.repeated(200) + u"<h2 id='x'>x</h2>"_s);
        Q_EMIT view.anchorClicked(QUrl(u"#x"_s));
        QVERIFY(view.verticalScrollBar()->value() > 1'000);
    }

private:
    FeedServer m_server;
    std::unique_ptr<SUUpdater> m_updater;
    QUrl m_opened;
};

RUNEBOOK_TEST_MAIN(UpdaterTest)
#include "UpdaterTest.moc"
