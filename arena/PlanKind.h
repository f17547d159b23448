#pragma once

#include <compare>
#include <string_view>

// Shared by the reading and writing of plans.

namespace drench::arena {

/// The numbers of a cell that a plan writes with one character.
struct PlanKind {
    int solid = 0;
    int cellValue = 0;

    auto operator<=>(const PlanKind&) const = default;
};

constexpr PlanKind planAir;

/// The kind that a plan writes as the cellValue alone.
constexpr PlanKind usualKind(int cellValue) {
    return {cellValue == 0 ? 0 : 1, cellValue};
}

/// The prefix of the names of marks. Marks are characters for air, too.
inline constexpr std::string_view markPrefix = "spawn-";

/// Visible ASCII, in the order in which kinds of cells without a character of their own get them.
/// '#' starts a comment.
inline constexpr std::string_view legendCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "!\"$%&'()*+,-./:;<=>?@[\\]^_`{|}~";

/// Whether the character separates words in a line of a plan.
constexpr bool isBlankInPlan(char c) {
    return c == ' ' || c == '\t';
}

/// Whether the character is a control character. No arena's name may hold one.
constexpr bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

} // namespace drench::arena
