#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

/// By script, question and field: [value that the question began with, answer].
inline const Setting<QVariantMap> kScriptAnswers("VXScriptAnswers");

} // namespace runebook::Settings
