#pragma once

#include "model/ReadNotes.h"
#include "model/VXGlyphInfo.h"

#include <QStringList>

namespace runebook {

/// What saving as \a fileVersion makes of a file that was read with these notes: one sentence for each thing
/// that will be written differently or left out, in the user's language; none when the file comes out as it
/// was.
QStringList savingChanges(const ReadNotes &notes, int fileVersion);

/// A record with more code points than a file keeps, and those that come back from the file.
struct LostCodePoints {
    InfoPtr info;
    QStringList kept;
};
std::vector<LostCodePoints> lostCodePoints(const InfoList &infos, int fileVersion);

} // namespace runebook
