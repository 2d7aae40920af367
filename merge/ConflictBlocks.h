#pragma once

#include <QByteArray>
#include <array>

namespace runebook {

/// The three sides (base, ours, theirs) of a text with conflicts between markers: for each the text with that
/// side of every conflict. Merged again they give the same conflicts, for whoever is to resolve them. Where a
/// conflict names no base, the base has nothing in its place.
std::array<QByteArray, 3> sidesOfConflicts(const QByteArray &text);

} // namespace runebook
