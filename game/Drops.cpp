#include "game/Drops.h"

#include <algorithm>
#include <cmath>

namespace drench::game {

namespace {

/// World units per second². Less than what pulls bodies, which fall faster than they would on
/// earth.
constexpr float dropGravity = 1000.0f;

/// A drop is gone after 1 / fading seconds.
constexpr float fading = 1.1f;

/// The share of its speed that a drop keeps when it bounces, and how often it does not end there.
constexpr float bounce = 0.28f;
constexpr double bounceShare = 0.6;

arena::CellIndex cellOf(glm::vec3 place) {
    const glm::vec3 cell = glm::floor(place / arena::cubeEdge);
    return {static_cast<int>(cell.x), static_cast<int>(cell.y), static_cast<int>(cell.z)};
}

bool isInCube(const arena::Grid& grid, const arena::CellIndex& cell) {
    return cell.column >= 0 && cell.column < grid.cells[0] && cell.row >= 0 &&
           cell.row < grid.cells[1] && cell.depth >= 0 && cell.depth < grid.cells[2] &&
           grid.isCube(cell);
}

/// World units from the origin; further away nothing is drawn, and cells could not be counted.
constexpr float farthest = 100'000.0f;

} // namespace

void Drops::begin(Chance& chance, int count, glm::vec3 place, glm::vec3 velocity, float spread,
                  float largest) {
    if (!(std::abs(place.x) + std::abs(place.y) + std::abs(place.z) < farthest))
        return;
    const auto around = [&] { return spread * static_cast<float>(chance.bell()); };
    for (int i = 0; i < count && drops_.size() < most; ++i) {
        Drop drop;
        drop.place = place;
        drop.velocity = velocity + glm::vec3(around(), around(), around());
        drop.size = largest * static_cast<float>(chance.between(0.35, 1.0));
        drop.left = static_cast<float>(chance.between(0.55, 1.0));
        drops_.push_back(drop);
    }
}

void Drops::advance(const arena::Grid& grid, Chance& chance, float seconds) {
    for (Drop& drop : drops_) {
        const arena::CellIndex before = cellOf(drop.place);
        drop.velocity.y -= dropGravity * seconds;
        const glm::vec3 start = drop.place;
        drop.place += drop.velocity * seconds;
        drop.left -= fading * seconds;
        const arena::CellIndex after = cellOf(drop.place);
        if (after == before || !isInCube(grid, after))
            continue;
        if (!chance.happens(bounceShare)) {
            drop.left = 0.0f;
            continue;
        }
        // Back to where it came from, and off along each axis on which it has crossed a face.
        drop.place = start;
        drop.velocity *= bounce;
        for (int axis = 0; axis < 3; ++axis) {
            arena::CellIndex from = before;
            arena::CellIndex to = after;
            if (arena::indexAlong(from, axis) != arena::indexAlong(to, axis))
                drop.velocity[axis] = -drop.velocity[axis];
        }
    }
    std::erase_if(drops_, [](const Drop& drop) { return drop.left <= 0.0f; });
}

} // namespace drench::game
