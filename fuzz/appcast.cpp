// An update feed: it reads or fails with a reason, and its notes come out as elements that are known, closed
// in order, without a way to load anything. What is safe already stays as it is.
#include "update/Appcast.h"
#include "fuzz/Require.h"
#include "update/SafeHtml.h"

#include <QRegularExpression>

using namespace runebook;

namespace {

void checkPage(const QString &html)
{
    static const QRegularExpression element(
        QStringLiteral("<(/?)([a-z0-9]+)( id=\"[^\"<>]*\")?( href=\"[^\"<> ]*\")?>"));
    const QString safe = safeHtml(html);
    QStringList open;
    qsizetype elements = 0;
    for (auto matches = element.globalMatch(safe); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const QString name = match.captured(2);
        ++elements;
        if (name == QLatin1String("br") || name == QLatin1String("hr"))
            continue;
        if (match.captured(1).isEmpty()) {
            open << name;
            continue;
        }
        REQUIRE(!open.isEmpty() && open.last() == name, safe, html);
        open.removeLast();
    }
    REQUIRE(open.isEmpty(), safe, html);
    REQUIRE(elements == safe.count(QLatin1Char('<')), safe, html);
    for (const char *word : {"href=\"javascript", "href=\"file", "href=\"data", "src="}) {
        const bool isInElement = safe.contains(QLatin1String("<a ") + QLatin1String(word));
        REQUIRE(!isInElement, safe, html);
    }
    // Not when the first pass met a bound: what it added counts as well.
    REQUIRE(html.size() > 4096 || safeHtml(safe).count(QLatin1Char('<')) == elements, safeHtml(safe), safe);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    Error error;
    const std::unique_ptr<SUAppcast> appcast = readAppcast(bytes, &error);
    REQUIRE((appcast != nullptr) == error.domain.isEmpty(), error.domain, error.text());
    if (appcast) {
        for (const SUAppcastItem *item : appcast->itemList())
            checkPage(item->itemDescription);
    }
    checkPage(QString::fromUtf8(bytes));
    return 0;
}
