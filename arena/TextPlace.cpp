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

bool beginsAsUtf16(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        return true;
    // Two characters of ASCII, whose other bytes are zeros.
    const auto isZero = [&](std::size_t index) { return bytes[index] == '\0'; };
    return bytes.size() >= 4 && isZero(0) != isZero(1) && isZero(0) == isZero(2) &&
           isZero(1) == isZero(3);
}

} // namespace drench::arena
