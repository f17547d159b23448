#include "game/Patches.h"

#include "game/ArenaFaces.h"
#include "game/Camera.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>

namespace drench::game {

namespace {

/// Seconds until a wet spot is dry.
constexpr float dryingTime = 7.0f;

/// World units: of a first splash, and by how much each further one widens it.
constexpr float firstRadius = 13.0f;
constexpr float widening = 1.2f;
constexpr float widest = 30.0f;

/// Water this near to the middle of a spot wets it anew.
constexpr float sameSpot = 14.0f;

constexpr float shadowRadius = 34.0f;
constexpr float shadowStrength = 0.55f;

/// World units between a body's feet and the ground at which its shadow is gone.
constexpr float highestShadow = 420.0f;

arena::CellIndex moved(arena::CellIndex cell, int axis, int steps) {
    arena::indexAlong(cell, axis) += steps;
    return cell;
}

} // namespace

Patch patchOn(const arena::Grid& grid, glm::vec3 place, int axis, int side, float radius) {
    Patch patch;
    patch.place = place;
    patch.axis = axis;
    patch.side = side;
    patch.radius = std::min(radius, largestPatch);
    const int along[] = {firstAlong(axis), secondAlong(axis)};

    const glm::vec3 inCells = place / arena::cubeEdge;
    arena::CellIndex cube;
    for (int each = 0; each < 3; ++each) {
        const float at = each == axis ? std::round(inCells[each]) - (side > 0 ? 1.0f : 0.0f)
                                      : std::floor(inCells[each]);
        const int last = grid.cells[static_cast<std::size_t>(each)] - 1;
        arena::indexAlong(cube, each) =
            static_cast<int>(std::clamp(at, 0.0f, static_cast<float>(last)));
    }
    const auto hasFace = [&](const arena::CellIndex& cell) {
        return grid.isCube(cell) && !grid.isCube(moved(cell, axis, side));
    };
    const auto toEdge = [&](int which, bool up) {
        const float low = static_cast<float>(arena::indexAlong(cube, along[which]));
        const float within = std::clamp(inCells[along[which]] - low, 0.0f, 1.0f);
        return (up ? 1.0f - within : within) * arena::cubeEdge;
    };
    for (int which = 0; which < 2; ++which) {
        for (const bool up : {false, true}) {
            float& reach = (up ? patch.high : patch.low)[which];
            const bool goesOn = hasFace(moved(cube, along[which], up ? 1 : -1));
            reach = goesOn ? patch.radius : std::min(patch.radius, toEdge(which, up));
        }
    }
    // Where both sides of a corner go on, but not the corner itself, one side ends at its edge.
    for (const bool right : {false, true}) {
        for (const bool up : {false, true}) {
            float& first = (right ? patch.high : patch.low)[0];
            const float second = (up ? patch.high : patch.low)[1];
            const auto corner = moved(moved(cube, along[0], right ? 1 : -1), along[1], up ? 1 : -1);
            if (first > toEdge(0, right) && second > toEdge(1, up) && !hasFace(corner))
                first = toEdge(0, right);
        }
    }
    patch.strength = 1.0f;
    return patch;
}

Patch shadowOf(const arena::Grid& grid, glm::vec3 position) {
    const std::optional<arena::Hit> hit =
        arena::trace(grid, arena::rayAlong(inGame(position), {0.0f, -1.0f, 0.0f}));
    if (!hit)
        return {};
    const auto down = static_cast<float>(hit->distance);
    const float height = std::max(0.0f, down - 0.5f * Player::bodySize.y);
    Patch patch =
        patchOn(grid, position - glm::vec3(0.0f, down, 0.0f), hit->axis, hit->side, shadowRadius);
    patch.strength = shadowStrength * std::max(0.0f, 1.0f - height / highestShadow);
    return patch;
}

void WetPatches::wet(const arena::Grid& grid, glm::vec3 place, int axis, int side) {
    const auto same = std::ranges::find_if(patches_, [&](const Patch& patch) {
        return patch.axis == axis && patch.side == side &&
               glm::distance(patch.place, place) < sameSpot;
    });
    if (same != patches_.end()) {
        *same = patchOn(grid, same->place, axis, side, std::min(same->radius + widening, widest));
        return;
    }
    const Patch patch = patchOn(grid, place, axis, side, firstRadius);
    if (patches_.size() < most)
        patches_.push_back(patch);
    else
        *std::ranges::min_element(patches_, {}, &Patch::strength) = patch;
}

void WetPatches::dry(float seconds) {
    for (Patch& patch : patches_)
        patch.strength -= seconds / dryingTime;
    std::erase_if(patches_, [](const Patch& patch) { return patch.strength <= 0.0f; });
}

} // namespace drench::game
