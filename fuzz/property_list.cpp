// Reads arbitrary bytes as a file of snippets, both forms of property lists. Aborts when what is found is
// not what the reader promises.
#include "fuzz/Require.h"
#include "scripting/panel/MacroSnippets.h"

#include <QVariantMap>
#include <cstdint>

using namespace Qt::StringLiterals;
using namespace runebook;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QVariantList snippets = snippetsOfPropertyList(bytes);
    REQUIRE(snippets.size() <= 2000, QString::number(snippets.size()), u"at most 2000"_s);
    for (const QVariant &snippet : snippets) {
        const QString title = titleOfSnippet(snippet.toMap());
        REQUIRE(title.isEmpty() || title.size() >= 2, title, u"nothing, or two characters"_s);
    }
    return 0;
}
