// The font files that the user chose for the previews of a script.
#include "document/VXDocument.h"
#include "platform/UserDefaults.h"

#include <QFileInfo>
#include <QFontDatabase>
#include <QRawFont>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QString kFontPaths = u"VXScriptToPreviewFontPath"_s;

/// The font of each script, of any size; nothing while it has to be made again.
std::optional<QHash<QString, QFont>> &fontOfScript()
{
    static std::optional<QHash<QString, QFont>> fonts;
    return fonts;
}

/// The [script, path] pairs; anything else in the defaults is passed over.
QList<QStringList> storedPairs()
{
    QList<QStringList> pairs;
    for (const QVariant &pair : UserDefaults::standard().arrayForKey(kFontPaths)) {
        if (const QStringList words = pair.toStringList(); words.size() == 2)
            pairs << words;
    }
    return pairs;
}

void storePairs(const QList<QStringList> &pairs)
{
    QVariantList list;
    for (const QStringList &pair : pairs)
        list << QVariant(pair);
    UserDefaults::standard().setObjectForKey(list, kFontPaths);
    VXDocument::setNeedsUpdateScriptToFontCache();
}

/// The font that a file brings: the very face of the file, not another one of its family. Nothing when it
/// cannot be loaded. A file is loaded once for the run.
std::optional<QFont> fontOfFile(const QString &path)
{
    static QHash<QString, QFont> fonts;
    const auto known = fonts.constFind(path);
    if (known != fonts.constEnd())
        return *known;
    if (!QFileInfo(path).isFile())
        return {};
    constexpr double kAnySize = 16;
    const QRawFont face(path, kAnySize);
    const int id = face.isValid() ? QFontDatabase::addApplicationFont(path) : -1;
    const QString family = id < 0 ? QString() : QFontDatabase::applicationFontFamilies(id).value(0);
    if (family.isEmpty())
        return {};
    QFont font(family);
    font.setStyleName(face.styleName());
    font.setWeight(QFont::Weight(face.weight()));
    font.setStyle(face.style());
    fonts.insert(path, font);
    return font;
}

QList<QStringList> pairsWithout(const QString &script)
{
    QList<QStringList> pairs = storedPairs();
    pairs.removeIf([&script](const QStringList &pair) { return pair.at(0) == script; });
    return pairs;
}

} // namespace

std::optional<QFont> VXDocument::fontForScriptSize(const QString &script, double size)
{
    // However the defaults change, the fonts follow.
    static const QMetaObject::Connection following = connect(
        &UserDefaults::standard(), &UserDefaults::changed, &UserDefaults::standard(), [](const QString &key) {
            if (key == kFontPaths)
                setNeedsUpdateScriptToFontCache();
        });
    auto &fonts = fontOfScript();
    if (!fonts) {
        fonts.emplace();
        for (const QStringList &pair : storedPairs()) {
            const std::optional<QFont> font = pair.at(0).isEmpty() ? std::nullopt : fontOfFile(pair.at(1));
            if (font)
                fonts->insert(pair.at(0), *font);
        }
    }
    const auto found = fonts->constFind(script.isEmpty() ? u"default"_s : script);
    if (found == fonts->constEnd())
        return {};
    QFont font = *found;
    font.setPointSizeF(size);
    return font;
}

QString VXDocument::previewFontForScript(const QString &script)
{
    for (const QStringList &pair : storedPairs()) {
        if (pair.at(0) == script)
            return pair.at(1);
    }
    return {};
}

void VXDocument::registerPreviewFontForScript(const QString &path, const QString &script)
{
    if (path.isEmpty() || script.isEmpty())
        return;
    QList<QStringList> pairs = pairsWithout(script);
    pairs << QStringList {script, path};
    storePairs(pairs);
}

void VXDocument::removePreviewFontForScript(const QString &script)
{
    storePairs(pairsWithout(script));
}

void VXDocument::setNeedsUpdateScriptToFontCache()
{
    fontOfScript().reset();
}
