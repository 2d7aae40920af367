#pragma once

namespace runebook {

/// Tells the document controller which kinds of files there are, how a document of them is made and which
/// window shows it. The delay of autosaves follows the user's setting from then on.
void registerDocumentKinds();

} // namespace runebook
