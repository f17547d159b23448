#include "arena/TextPlace.h"

#include <algorithm>

namespace drench::arena {

std::string quoted(std::string_view text) {
    constexpr std::size_t most = 40;
    std::string shown(text.substr(0, text.size() > most ? most - 3 : most));
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return "\"" + shown + (text.size() > most ? "...\"" : "\"");
}

} // namespace drench::arena
