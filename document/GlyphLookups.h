#pragma once

#include "model/VXGlyphInfo.h"

#include <optional>

namespace runebook {

/// Where a preview finds the records that another one is composed of.
class GlyphLookups
{
public:
    virtual InfoPtr infoForName(const QString &name) const = 0;
    virtual std::optional<InfoList> baseInfosForUniName(const QString &name) const = 0;

protected:
    ~GlyphLookups() = default;
};

} // namespace runebook
