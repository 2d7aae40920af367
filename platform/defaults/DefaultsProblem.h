#pragma once

#include <QString>

namespace runebook {

/// What was wrong with the file of the user's defaults when it was opened.
struct DefaultsProblem {
    bool isThere = false;
    QString file;
    QString keptAt; ///< where the damaged file lies now; empty when it could not be read, or not be moved
};

/// Moves the defaults file \a path aside when it is damaged, so that an intact one can be written in its
/// place. Done by making UserDefaults.
void setDamagedDefaultsAside(const QString &path);

/// The first problem since the last call.
DefaultsProblem takeDefaultsProblem();

} // namespace runebook
