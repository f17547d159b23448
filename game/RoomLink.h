#pragma once

#include <string>
#include <string_view>

namespace drench::game {

/// The room that a link names, "drench://HOST[:PORT]" with or without a slash behind it, as
/// HOST[:PORT]. Any other text is returned as it is.
std::string roomOfLink(std::string_view text);

} // namespace drench::game
