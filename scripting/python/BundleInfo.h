#pragma once

#include <QString>
#include <optional>

namespace runebook {

/// What a bundle (a folder with an information dictionary) tells about itself.
struct BundleInfo {
    bool hasDictionary = false;
    QString version; ///< "CFBundleVersion"; null when it is missing or no text

    /// Reads the property list of the bundle at \a path, in text or binary form. Nothing when there is no
    /// folder; without a readable list a bundle without dictionary.
    static std::optional<BundleInfo> read(const QString &path);
};

} // namespace runebook
