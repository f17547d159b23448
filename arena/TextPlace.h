#pragma once

#include <compare>
#include <string>
#include <string_view>

namespace drench::arena {

/// A place in a text file, counted from 1; columns count bytes.
struct TextPlace {
    int line = 0;
    int column = 0;

    auto operator<=>(const TextPlace&) const = default;
};

/// Something wrong with a map text.
struct TextProblem {
    TextPlace place;
    std::string words;

    /// Whether the server still reads every cell as the file means it.
    bool harmless = false;
};

/// The text in quotes for error messages: at most 40 characters, with '?' for each byte that is not
/// printable ASCII.
std::string quoted(std::string_view text);

/// Whether the bytes begin like text in UTF-16, with a byte order mark or without.
bool beginsAsUtf16(std::string_view bytes);

inline constexpr const char* utf16Words = "UTF-16, to be saved as plain ASCII or UTF-8,";

} // namespace drench::arena
