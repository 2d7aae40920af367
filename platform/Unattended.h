#pragma once

namespace runebook {

/// True while nobody sits in front of the program, as when it runs a script without windows: a dialog may be
/// shown, but nothing may wait for an answer.
bool isUnattended();
void setUnattended(bool isUnattended);

} // namespace runebook
