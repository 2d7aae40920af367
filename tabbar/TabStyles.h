#pragma once

#include "tabbar/PSMTabStyle.h"

namespace runebook {

/// The style known as \a name; none for other names.
std::unique_ptr<PSMTabStyle> tabStyleNamed(const QString &name);

} // namespace runebook
