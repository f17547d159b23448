#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text as it is drawn. Names and words come from other players and rooms, and may be any bytes.

namespace drench::game {

/// The length in bytes of the UTF-8 character that begins at `at`; 0 if none does: a stray or
/// missing byte, an overlong form, a surrogate or a number beyond U+10FFFF.
std::size_t characterLength(std::string_view text, std::size_t at);

/// The longest beginning of at most `mostBytes` bytes that cuts no character. Bytes that belong to
/// no character count as one each.
std::string_view wholeCharacters(std::string_view text, std::size_t mostBytes);

/// The text as valid UTF-8 that can be drawn on one line: U+FFFD stands for each control character
/// and each byte of no character, and nothing for characters that are invisible or turn the
/// writing direction. At most three times as long.
std::string drawable(std::string_view text);

std::string_view withoutOuterBlanks(std::string_view text);

/// A player's name as it is drawn, without blanks at its ends; "(no name)" if nothing is left.
std::string drawableName(std::string_view name);

} // namespace drench::game
