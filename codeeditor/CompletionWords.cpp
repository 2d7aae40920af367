#include "codeeditor/KeywordTable.h"

#include <QFile>
#include <memory>
#include <plist/plist.h>

namespace runebook {

QStringList completionWords(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    const std::unique_ptr<void, void (*)(plist_t)> owner(root, &plist_free);
    if (!root || plist_get_node_type(root) != PLIST_ARRAY)
        return {};

    QStringList words;
    const uint32_t count = plist_array_get_size(root);
    words.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const plist_t item = plist_array_get_item(root, i);
        uint64_t length = 0;
        if (const char *text = plist_get_string_ptr(item, &length))
            words.append(QString::fromUtf8(text, qsizetype(length)));
    }
    return words;
}

} // namespace runebook
