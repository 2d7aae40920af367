#include "editing/problems/AnchorSides.h"

namespace runebook {

std::string_view AnchorSides::plainAnchor(std::string_view anchor)
{
    if (!anchor.empty() && anchor.front() == '#') // a joint of letters that are joined
        anchor.remove_prefix(1);
    const std::size_t digits = anchor.find_last_not_of("0123456789");
    const bool isNumbered =
        digits != anchor.npos && digits > 0 && digits + 1 < anchor.size() && anchor[digits] == '_';
    return isNumbered ? anchor.substr(0, digits) : anchor;
}

std::string AnchorSides::counterpart(std::string_view plain)
{
    if (plain.empty() || plain.substr(0, 5) == "caret" || plain == "origin")
        return {};
    if (plain == "entry" || plain == "exit")
        return plain == "entry" ? "exit" : "entry";
    return plain.front() == '_' ? std::string(plain.substr(1)) : '_' + std::string(plain);
}

} // namespace runebook
