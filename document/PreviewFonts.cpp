// The font files that the user chose for the previews of a script.
#include "document/VXDocument.h"
#include "platform/UserDefaults.h"

#include <QFileInfo>
#include <QFontDatabase>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QString kFontPaths = u"VXScriptToPreviewFontPath"_s;

std::optional<QHash<QString, QString>> &familyOfScript()
{
    static std::optional<QHash<QString, QString>> families;
    return families;
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

/// The family that a font file brings; null when it cannot be loaded. A file is loaded once for the run.
QString familyOfFile(const QString &path)
{
    static QHash<QString, QString> families;
    const auto known = families.constFind(path);
    if (known != families.constEnd())
        return *known;
    QString family;
    if (QFileInfo(path).isFile()) {
        const int id = QFontDatabase::addApplicationFont(path);
        family = id < 0 ? QString() : QFontDatabase::applicationFontFamilies(id).value(0);
    }
    if (!family.isEmpty())
        families.insert(path, family);
    return family;
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
    auto &families = familyOfScript();
    if (!families) {
        families.emplace();
        for (const QStringList &pair : storedPairs()) {
            const QString family = familyOfFile(pair.at(1));
            if (!family.isEmpty() && !pair.at(0).isEmpty())
                families->insert(pair.at(0), family);
        }
    }
    const QString family = families->value(script.isEmpty() ? u"default"_s : script);
    if (family.isEmpty())
        return {};
    QFont font(family);
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
    familyOfScript().reset();
}
