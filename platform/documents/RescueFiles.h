#pragma once

#include "platform/CheckedFile.h"
#include "platform/Error.h"

#include <QList>
#include <QString>
#include <memory>

namespace runebook {

/// The files that hold the new text while a save writes over the old one. They lie beside the file, or in the
/// user's data folder where that is not possible. A rescue file has its proper name only once it is whole,
/// and is locked while its save goes on: whatever else has such a name was left by a save that did not end.
namespace RescueFiles {

/// A rescue file in the making.
struct Place {
    std::unique_ptr<CheckedFile>
        file; ///< open and locked, under its preliminary name; null when none could be made
    QString name; ///< for the time when it is whole
    int failure = 0; ///< the errno then
};
/// Makes one for \a target, at the best place; what earlier failures left is never overwritten.
Place create(const QString &target);
/// A new file beside \a target under a preliminary name, with the mode of a new file, to be renamed to it.
Place createInFolderOf(const QString &target);

/// Notes for the next start that a save of \a target goes on whose rescue file is \a rescue. The note's path;
/// empty when there is no place for notes, and the rescue file is found when its target is opened.
QString note(const QString &target, const QString &rescue);

struct Found {
    QString path;
    QString target; ///< empty when nobody knows any more
};
/// The whole rescue files that dead saves of \a target left.
QList<Found> leftFor(const QString &target);
/// Whether dead saves of one of \a files, paths or URLs, left a text that is another than the file's: the
/// error names both. Only looks: nothing is made or taken away.
bool areMet(const QStringList &files, Error *error);
/// All that are known: those that notes name, and those in the user's data folder. Takes away notes, and
/// unfinished files, that are of no use to anybody.
QList<Found> leftForAny();
/// Removes a rescue file and the notes that name it.
bool remove(const QString &path);

} // namespace RescueFiles

} // namespace runebook
