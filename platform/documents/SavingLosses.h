#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace runebook {

/// A value that would not come back from the file that a save writes.
struct SavingLoss {
    qsizetype place = -1; ///< of what it belongs to, for Document::showPlaceRequested
    QString record; ///< how a person calls that
    QString field;
    QString sentence; ///< what would become of it
    bool takesOthers = false; ///< written, it would take other records with it: no save writes it
};

/// What a save would not keep; of very many the first are listed.
struct SavingLosses {
    QList<SavingLoss> listed;
    qsizetype count = 0; ///< records concerned
    qsizetype takingOthers = 0; ///< among them those that no save writes
    bool isFixable = true; ///< by Document::fixSavingLosses

    bool isEmpty() const { return count == 0; }
    /// One line for each that is listed, at most \a most, and one that counts the others.
    QStringList lines(qsizetype most) const;
};

} // namespace runebook
