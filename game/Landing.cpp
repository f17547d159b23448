#include "game/Landing.h"

#include "game/Camera.h"
#include "src/Collisions.h"
#include "src/Player.h"

#include <cmath>
#include <glm/common.hpp>

namespace drench::game {

namespace {

/// The face of a body or a cube that a point lies on: the one whose plane is nearest, among those
/// that look towards where the water comes from.
/// @param toPlane  the point's distance from the plane across each axis
void setFace(Landing& landing, glm::vec3 direction, glm::vec3 toPlane) {
    float nearest = INFINITY;
    for (int axis = 0; axis < 3; ++axis) {
        if (direction[axis] == 0.0f || !(toPlane[axis] < nearest))
            continue;
        nearest = toPlane[axis];
        landing.axis = axis;
        landing.side = direction[axis] > 0.0f ? -1 : 1;
    }
}

} // namespace

std::optional<Landing> landingOf(const MapManager& map, const WetBody& shooter, glm::vec3 direction,
                                 std::span<const WetBody> bodies) {
    const ::vec3 from = inGame(shooter.position);
    const ::vec3 hit = map.pointOfIntersection(from, inGame(direction));
    if (isMiss(hit) || !std::isfinite(hit.dot(hit)))
        return {};
    Landing landing;
    landing.place = onScreen(hit);
    const glm::vec3 inCells = landing.place / arena::cubeEdge;
    setFace(landing, direction, glm::abs(inCells - glm::round(inCells)));

    for (const WetBody& body : bodies) {
        if (body.id == shooter.id)
            continue;
        const Box box(inGame(body.position), Player::bodySize);
        ::vec3 entry;
        if (!Line_AABB(from, inGame(landing.place), box.min, box.max, entry))
            continue;
        landing.place = onScreen(entry);
        landing.onBody = true;
        const glm::vec3 off = glm::abs(landing.place - body.position);
        setFace(landing, direction, glm::abs(off - 0.5f * onScreen(Player::bodySize)));
    }
    return landing;
}

} // namespace drench::game
