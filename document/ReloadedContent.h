#pragma once

#include "model/VXGlyphInfo.h"

namespace runebook {

/// For each record of \a fresh the one of \a former that it is a newer state of, or null. A record is the
/// same one by its name (of several of one name the first is the first, and so on), else by its only code
/// point. Linear.
InfoList formerRecords(const InfoList &former, const InfoList &fresh);

/// Puts into \a fresh the records of \a former that it has newer states of, with the new values: so whoever
/// points to them (a selection, an undo step, a script) goes on doing so.
void takeReloaded(InfoList &fresh, const InfoList &former, int fileVersion);

} // namespace runebook
