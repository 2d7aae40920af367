#pragma once

#include <string>
#include <string_view>

/// How anchors meet: a mark's "_top" is drawn onto a letter's "top".
namespace runebook::AnchorSides {

/// What an anchor is called without the number that it has in a ligature, "top" for "top_2".
std::string_view plainAnchor(std::string_view anchor);
/// The name of what a plain anchor meets; empty for those that meet nothing, such as carets.
std::string counterpart(std::string_view plain);

} // namespace runebook::AnchorSides
