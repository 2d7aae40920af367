#pragma once

#include "scripting/python/PythonPlaces.h"

#include <QSet>
#include <QVariantMap>

namespace runebook {

/// Finds the installations of Python that the program can use, without running any of them. A description of
/// one has the keys "name", "fullPath" and "version" (an installation chosen by hand has no version).
class PythonDiscovery
{
public:
    explicit PythonDiscovery(PythonPlaces places) : m_places(std::move(places)) { }

    /// All supported installations, the newest last, and after them the one at \a chosenPath when it is not
    /// among them; \a chosenPath may be empty.
    QList<QVariantMap> find(const QString &chosenPath) const;

public: // walking
    /// The version folders below \a path: of a framework, or of every framework in a folder. Null path: none.
    QStringList allFrameworkPaths(const QString &path) const;
    QStringList allVersionsOfFramework(const QString &path) const;
    /// The shared libraries in the places for them, links resolved, each once.
    QStringList allLibraries() const;

public: // support
    static constexpr const char *kOldestVersion = "3.9";
    static constexpr const char *kNewestVersion = "3.11.999";
    static bool isSupportedVersion(const QString &version);
    /// Whether the framework version at \a path is supported; on yes \a version gets its version.
    static bool isSupported(const QString &path, QString *version = nullptr);

private:
    QList<QVariantMap> supportedFrameworks() const;
    QList<QVariantMap> supportedLibraries() const;
    QVariantMap chosen(const QString &path, const QList<QVariantMap> &listed) const;

    PythonPlaces m_places;
};

} // namespace runebook
