#pragma once

namespace runebook {

/// So long after its start an interpreter that is not supported is warned about: windows are there then.
inline constexpr int kStartWarningDelayMs = 1000;

} // namespace runebook
