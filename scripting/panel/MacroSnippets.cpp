#include "scripting/panel/MacroSnippets.h"

#include "platform/FileBytes.h"
#include "scripting/python/PropertyListLimits.h"

#include <QFile>
#include <memory>
#include <plist/plist.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 kMaxBytes = 16 << 20;
constexpr uint32_t kMaxSnippets = 2000;
constexpr auto kCode = "code";
constexpr auto kTitle = "title";

QString textOf(plist_t dictionary, const char *key)
{
    const plist_t item = plist_dict_get_item(dictionary, key);
    uint64_t length = 0;
    const char *text = item ? plist_get_string_ptr(item, &length) : nullptr;
    return text ? QString::fromUtf8(text, static_cast<qsizetype>(length)) : QString();
}

} // namespace

QVariantList snippetsOfFile(const QString &path)
{
    return snippetsOfPropertyList(bytesOfSmallFile(path, kMaxBytes).value_or(QByteArray()));
}

QVariantList snippetsOfPropertyList(const QByteArray &bytes)
{
    if (!isHarmlessPropertyList(bytes))
        return {};
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &root);
    const std::unique_ptr<void, void (*)(plist_t)> owner(root, &plist_free);
    if (!root || plist_get_node_type(root) != PLIST_ARRAY)
        return {};
    QVariantList snippets;
    const uint32_t count = qMin(plist_array_get_size(root), kMaxSnippets);
    for (uint32_t i = 0; i < count; ++i) {
        const plist_t item = plist_array_get_item(root, i);
        if (plist_get_node_type(item) == PLIST_DICT)
            snippets << QVariantMap {{u"code"_s, textOf(item, kCode)}, {u"title"_s, textOf(item, kTitle)}};
    }
    return snippets;
}

QString titleOfSnippet(const QVariantMap &snippet)
{
    const auto text = [&snippet](const QString &key) {
        const QVariant value = snippet.value(key);
        return value.typeId() == QMetaType::QString ? value.toString() : QString();
    };
    const QString code = text(u"code"_s);
    if (code.isEmpty())
        return {};
    QString title = text(u"title"_s);
    if (title.isEmpty())
        title = code.section(u'\n', 0, 0).trimmed();
    return title.size() < 2 ? QString() : title;
}

} // namespace runebook
