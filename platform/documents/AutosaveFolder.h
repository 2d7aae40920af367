#pragma once

#include "platform/Error.h"
#include "platform/documents/FileState.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

namespace runebook {

/// What lies beside an autosaved content and tells where it belongs.
struct AutosaveNote {
    QString originalPath; ///< empty for a document without file
    QString type; ///< of the original
    QString displayName;
    FileState original; ///< when its content was read
    std::optional<quint64> originalHash;
    QDateTime savedAt;
    qint64 process = 0;

    QByteArray toJson() const;
    /// Whatever can be read; the rest stays empty.
    static AutosaveNote fromJson(const QByteArray &json);
};

/// The folders of autosaved contents: each process has one of its own and keeps a lock on it as long as it
/// lives, so that another one never takes what is still in use.
namespace AutosaveFolder {

inline constexpr QLatin1StringView kContentSuffix {".xml"};
inline constexpr QLatin1StringView kNoteSuffix {".json"};
/// Of the file beside a content that holds what stood in editors at that time; absent when nothing did.
inline constexpr QLatin1StringView kTypedSuffix {".typed"};

/// The file with another suffix that belongs to the content \a contentPath.
QString besideContent(const QString &contentPath, QLatin1StringView suffix);

/// This process's folder, made and locked on first use; empty and an error when it cannot be made.
QString own(Error *error = nullptr);
/// Whether the program gives such names to the files in a folder: a number of its own, then a suffix.
bool isOwnName(const QString &fileName);
/// Takes the folder away if nothing is left in it.
void removeOwnIfEmpty();

/// The folder of a process that is no more, held so that no second process offers the same contents.
class Abandoned
{
public:
    explicit Abandoned(const QString &path);
    ~Abandoned();
    Abandoned(const Abandoned &) = delete;
    Abandoned &operator=(const Abandoned &) = delete;

    /// Whether its process is really gone.
    bool isTaken() const { return m_lock >= 0; }
    const QString &path() const { return m_path; }

private:
    QString m_path;
    int m_lock;
};
/// All folders but this process's own: those that the program has made, no links to others.
QStringList others();

} // namespace AutosaveFolder

} // namespace runebook
