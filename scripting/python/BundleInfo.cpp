#include "scripting/python/BundleInfo.h"

#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "scripting/python/PropertyListLimits.h"

#include <QFile>
#include <QFileInfo>
#include <plist/plist.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// An information dictionary is a few kilobytes; what is larger is something else.
constexpr qint64 kMaxBytes = 1 << 20;

struct PlistFree {
    void operator()(void *list) const { plist_free(list); }
};

QByteArray dictionaryBytes(const QString &bundle)
{
    for (const auto place : {"/Resources/Info.plist"_L1, "/Contents/Info.plist"_L1, "/Info.plist"_L1}) {
        if (fileKind(bundle + place) != FileKind::None)
            return bytesOfSmallFile(bundle + place, kMaxBytes).value_or(QByteArray());
    }
    return {};
}

} // namespace

std::optional<BundleInfo> BundleInfo::read(const QString &path)
{
    if (!QFileInfo(path).isDir())
        return {};
    BundleInfo info;
    const QByteArray bytes = dictionaryBytes(path);
    if (!isHarmlessPropertyList(bytes))
        return info;
    plist_t parsed = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &parsed);
    const std::unique_ptr<void, PlistFree> list(parsed);
    if (!list || plist_get_node_type(list.get()) != PLIST_DICT)
        return info;
    info.hasDictionary = true;
    plist_t version = plist_dict_get_item(list.get(), "CFBundleVersion");
    if (!version || plist_get_node_type(version) != PLIST_STRING)
        return info;
    char *text = nullptr;
    plist_get_string_val(version, &text);
    info.version = QString::fromUtf8(text);
    std::free(text);
    return info;
}

} // namespace runebook
