#include "keeper/Notices.h"

namespace drench::keeper {

Notice noticeIn(std::string_view written) {
    if (written.ends_with(" joined\n"))
        return Notice::joined;
    if (written.ends_with(" disconnected\n"))
        return Notice::left;
    if (written.ends_with("!\n") && written.find(" soaked ") != std::string_view::npos)
        return Notice::soaked;
    if (written == "Player denied --- Game is full.\n")
        return Notice::refused;
    return Notice::other;
}

std::string printable(std::string_view written) {
    constexpr char digits[] = "0123456789abcdef";
    if (written.ends_with('\n'))
        written.remove_suffix(1);
    std::string line;
    for (const char character : written) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte != 0x7f && character != '\\') {
            line += character;
            continue;
        }
        line += "\\x";
        line += digits[byte >> 4];
        line += digits[byte & 0xf];
    }
    return line;
}

} // namespace drench::keeper
