#pragma once

#include <QStringList>

namespace runebook {

/// The settings that document windows write by themselves, by being used: how they look and what was searched
/// for. Whoever makes windows that nobody sees keeps them away from the user's.
QStringList windowSettingKeys();

} // namespace runebook
