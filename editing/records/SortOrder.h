#pragma once

#include "document/VXDocument.h"

#include <vector>

namespace runebook {

/// The places of a list in the natural order of one field: without regard to case, numbers by their value,
/// code points by their number, records without a value last in either direction. Equal ones keep the order
/// of the list.
std::vector<quint32> sortedPlaces(const InfoList &infos, GlyphField field, Qt::SortOrder order);

/// Appends to \a key bytes whose plain comparison is the natural order of texts.
void appendNaturalKey(std::string &key, std::string_view utf8);

} // namespace runebook
