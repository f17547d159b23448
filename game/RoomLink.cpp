#include "game/RoomLink.h"

namespace drench::game {

std::string roomOfLink(std::string_view text) {
    constexpr std::string_view scheme = "drench://";
    if (!text.starts_with(scheme))
        return std::string(text);
    text.remove_prefix(scheme.size());
    if (text.ends_with('/'))
        text.remove_suffix(1);
    return std::string(text);
}

} // namespace drench::game
