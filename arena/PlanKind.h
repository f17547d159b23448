#pragma once

#include <compare>
#include <string_view>

// What reading and writing plans share.

namespace drench::arena {

/// What a character of a plan stands for.
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

/// How the names of marks begin, characters that stand for air too.
inline constexpr std::string_view markPrefix = "spawn-";

/// Visible ASCII, in the order in which kinds of cells without a character of their own get them.
/// '#' starts a comment.
inline constexpr std::string_view legendCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "!\"$%&'()*+,-./:;<=>?@[\\]^_`{|}~";

/// What parts words in a line of a plan.
constexpr bool isBlankInPlan(char c) {
    return c == ' ' || c == '\t';
}

/// What no arena's name may hold.
constexpr bool isControl(char c) {
    return (c >= 0 && c < ' ') || c == '\x7f';
}

} // namespace drench::arena
