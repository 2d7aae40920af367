#pragma once

#include "tools/torture/FaultControl.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <random>

namespace torture {

/// What came of one kind of torture.
struct Figures {
    QString name;
    int runs = 0;
    int kept = 0; ///< the old file, whole
    int renewed = 0; ///< the new file, whole
    int rescued = 0; ///< neither, but the new text whole in a rescue file
    int told = 0; ///< failures with a message that names path, step and reason
    QString skipped {}; ///< why it could not be done here
    QStringList violations {}; ///< what must never happen
};

/// What all tortures need: a folder of their own, and chance that can be repeated.
class Bench
{
public:
    Bench(QString folder, quint32 seed) : random(seed), m_folder(std::move(folder)) { }

    /// An empty folder for one run, everything of the user's in it.
    QString freshFolder();
    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

    std::mt19937 random;

private:
    QString m_folder;
    int m_count = 0;
};

/// Runs \a work in a process of its own, and returns its wait status.
int inChild(const std::function<int()> &work);
/// The same, killed after that time unless it ends before.
int inChildFor(int microseconds, const std::function<int()> &work);

/// Begins to count the calls on files in \a folder, and spoils one.
void arm(const QString &folder, const Fault &fault);
/// Ends that; the kinds of the calls, in their order.
QByteArray disarm();

QByteArray contentOf(const QString &path);
void write(const QString &path, const QByteArray &bytes);
/// The whole rescue files beside \a path, and those in the user's data folder.
QStringList rescueFiles(const QString &path);

/// A text of about \a size bytes in which every line tells the generation.
QByteArray textOf(int generation, int size);

/// Saves \a bytes; fills \a error.
bool save(const QString &path, const QByteArray &bytes, QString *error);
/// Looks at what a save of \a fresh over \a old has left; \a isAcknowledged when it said that it went well.
void judgeSave(Figures &figures, const QString &what, const QString &path, const QByteArray &old,
               const QByteArray &fresh, bool isAcknowledged);

// The tortures. \a seconds is what one may use; those that go through a list of cases ignore it.
Figures killAtEveryCall(Bench &bench);
Figures killCycles(Bench &bench, double seconds);
Figures failEveryCall(Bench &bench);
Figures fillDisk(Bench &bench);
Figures spoilPlace(Bench &bench);
Figures changeFromOutside(Bench &bench);

} // namespace torture
