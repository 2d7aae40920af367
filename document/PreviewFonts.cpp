#include "document/PreviewFonts.h"

#include "document/DocumentSettings.h"
#include "document/FontFile.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QRawFont>
#include <algorithm>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr double kAnySize = 16;

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
    for (const QVariant &pair : Settings::kPreviewFonts.value()) {
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
    Settings::kPreviewFonts.set(list);
    PreviewFonts::setNeedUpdate();
}

/// What is known of a font file, as long as it stays the same.
struct LoadedFont {
    QDateTime changed;
    qint64 size = 0;
    int id = -1; ///< of the framework
    std::optional<QFont> font;

    bool isOf(const QFileInfo &file) const { return changed == file.lastModified() && size == file.size(); }
};

/// Loads a file under a family name of its own: a font of the same family may be installed, or have stood in
/// this file before, and would be drawn in its place.
LoadedFont load(const QFileInfo &file)
{
    static int count = 0;
    LoadedFont loaded {file.lastModified(), file.size(), -1, {}};
    const QRawFont face(file.filePath(), kAnySize);
    QFile bytes(file.filePath());
    if (!face.isValid() || !bytes.open(QIODevice::ReadOnly))
        return loaded;
    const QString ownFamily = u"%1 (preview %2)"_s.arg(face.familyName()).arg(++count);
    const QByteArray own = fontWithFamily(bytes.readAll(), ownFamily);
    // Kinds that cannot be renamed are told by family and style as far as that goes.
    loaded.id = own.isEmpty() ? QFontDatabase::addApplicationFont(file.filePath())
                              : QFontDatabase::addApplicationFontFromData(own);
    const QString family =
        loaded.id < 0 ? QString() : QFontDatabase::applicationFontFamilies(loaded.id).value(0);
    if (family.isEmpty())
        return loaded;
    loaded.font.emplace(family);
    if (own.isEmpty())
        loaded.font->setStyleName(face.styleName());
    loaded.font->setWeight(QFont::Weight(face.weight()));
    loaded.font->setStyle(face.style());
    return loaded;
}

QHash<QString, LoadedFont> &loadedFonts()
{
    static QHash<QString, LoadedFont> fonts;
    return fonts;
}

/// The font that a file brings: the very face of the file as it is now. Nothing when it cannot be loaded.
std::optional<QFont> fontOfFile(const QString &path)
{
    const QFileInfo file(path);
    if (!file.isFile())
        return {};
    LoadedFont &known = loadedFonts()[path];
    if (!known.isOf(file)) {
        // The former font stays with the framework: texts that were laid out with it may still be shown.
        known = load(file);
    }
    return known.font;
}

/// Whether a file was written anew since it was loaded; looked at once a second at most.
bool hasFileChanged()
{
    constexpr qint64 kPauseMs = 1000;
    static QElapsedTimer pause;
    if (pause.isValid() && pause.elapsed() < kPauseMs)
        return false;
    pause.start();
    const auto &fonts = loadedFonts();
    return std::any_of(fonts.keyValueBegin(), fonts.keyValueEnd(),
                       [](const auto &entry) { return !entry.second.isOf(QFileInfo(entry.first)); });
}

QList<QStringList> pairsWithout(const QString &script)
{
    QList<QStringList> pairs = storedPairs();
    pairs.removeIf([&script](const QStringList &pair) { return pair.at(0) == script; });
    return pairs;
}

} // namespace

std::optional<QFont> PreviewFonts::fontForScript(const QString &script, double size)
{
    // However the defaults change, the fonts follow.
    static const QMetaObject::Connection following =
        Settings::kPreviewFonts.onChange(&UserDefaults::standard(), setNeedUpdate);
    auto &fonts = fontOfScript();
    if (!fonts || hasFileChanged()) {
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

QString PreviewFonts::pathForScript(const QString &script)
{
    for (const QStringList &pair : storedPairs()) {
        if (pair.at(0) == script)
            return pair.at(1);
    }
    return {};
}

void PreviewFonts::choose(const QString &path, const QString &script)
{
    if (path.isEmpty() || script.isEmpty())
        return;
    QList<QStringList> pairs = pairsWithout(script);
    pairs << QStringList {script, path};
    storePairs(pairs);
}

void PreviewFonts::remove(const QString &script)
{
    storePairs(pairsWithout(script));
}

void PreviewFonts::setNeedUpdate()
{
    fontOfScript().reset();
}
