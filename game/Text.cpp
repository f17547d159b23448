#include "game/Text.h"

#include <algorithm>
#include <cstdint>

namespace drench::game {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

struct Range {
    char32_t first;
    char32_t last;
};

/// Characters without a width, and those that turn the writing direction of what follows.
constexpr Range invisible[] = {
    {0x00AD, 0x00AD},   {0x034F, 0x034F},   {0x061C, 0x061C}, {0x115F, 0x1160}, {0x17B4, 0x17B5},
    {0x180B, 0x180F},   {0x200B, 0x200F},   {0x202A, 0x202E}, {0x2060, 0x206F}, {0x3164, 0x3164},
    {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
};

/// Line and paragraph separators among them.
constexpr Range controls[] = {{0x00, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x2029}};

template<std::size_t count>
bool isIn(const Range (&ranges)[count], char32_t character) {
    return std::any_of(std::begin(ranges), std::end(ranges), [&](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

std::uint8_t byteAt(std::string_view text, std::size_t at) {
    return static_cast<std::uint8_t>(text[at]);
}

/// The number of a character of this length, without a look at its validity.
char32_t numberOf(std::string_view character) {
    if (character.size() == 1)
        return byteAt(character, 0);
    // The lead byte holds 5, 4 or 3 bits, each further one 6.
    char32_t number = byteAt(character, 0) & (0xFFu >> (character.size() + 1));
    for (std::size_t i = 1; i < character.size(); ++i)
        number = number << 6 | (byteAt(character, i) & 0x3Fu);
    return number;
}

std::size_t lengthByLead(std::uint8_t lead) {
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead < 0xE0)
        return 2;
    if (lead >= 0xE0 && lead < 0xF0)
        return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

bool isValid(char32_t number, std::size_t length) {
    constexpr char32_t leastOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
    return number >= leastOfLength[length] && number <= 0x10FFFF &&
           (number < 0xD800 || number > 0xDFFF);
}

} // namespace

std::size_t characterLength(std::string_view text, std::size_t at) {
    if (at >= text.size())
        return 0;
    const std::size_t length = lengthByLead(byteAt(text, at));
    if (length == 0 || length > text.size() - at)
        return 0;
    const std::string_view character = text.substr(at, length);
    const bool continues = std::all_of(character.begin() + 1, character.end(), [](char byte) {
        return (static_cast<std::uint8_t>(byte) & 0xC0u) == 0x80;
    });
    return continues && isValid(numberOf(character), length) ? length : 0;
}

std::string_view wholeCharacters(std::string_view text, std::size_t mostBytes) {
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t next = end + std::max<std::size_t>(characterLength(text, end), 1);
        if (next > mostBytes)
            break;
        end = next;
    }
    return text.substr(0, end);
}

std::string drawable(std::string_view text) {
    std::string drawn;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterLength(text, at);
        const std::string_view character = text.substr(at, length);
        if (length == 0 || isIn(controls, numberOf(character)))
            drawn += replacement;
        else if (!isIn(invisible, numberOf(character)))
            drawn += character;
        at += std::max<std::size_t>(length, 1);
    }
    return drawn;
}

std::string_view withoutOuterBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::string drawableName(std::string_view name) {
    const std::string drawn = drawable(name);
    const std::string_view middle = withoutOuterBlanks(drawn);
    return middle.empty() ? "(no name)" : std::string(middle);
}

} // namespace drench::game
