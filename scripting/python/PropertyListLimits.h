#pragma once

#include <QByteArray>

namespace runebook {

/// Whether the property list \a bytes, in XML or binary form, is of a size and depth that the parser stands:
/// lists nested less than 32 deep and fewer than 200,000 elements. The parser itself calls itself for each
/// level, and follows a binary list's references as often as they are made, so that a small file can take the
/// program's whole stack or memory. What is no property list at all may pass; the parser says so.
bool isHarmlessPropertyList(const QByteArray &bytes);

} // namespace runebook
