#include "game/Solids.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>

namespace drench::game {

namespace {

using Corners = std::array<glm::vec3, 4>;

/// A flat face with its corners counter-clockwise.
void addFace(Solids& solids, const glm::mat4& place, const Corners& corners, arena::Colour colour) {
    Corners placed;
    std::transform(corners.begin(), corners.end(), placed.begin(),
                   [&](glm::vec3 corner) { return glm::vec3(place * glm::vec4(corner, 1.0f)); });
    // The diagonals span the face even where two corners are one.
    const glm::vec3 across = glm::cross(placed[2] - placed[0], placed[3] - placed[1]);
    const float size = glm::length(across);
    if (!(size > 0.0f))
        return;
    const glm::vec3 normal = across / size;
    for (const std::size_t corner : {0u, 1u, 2u, 0u, 2u, 3u})
        solids.vertices.push_back({placed[corner], normal, colour, solids.sun});
}

} // namespace

void addBlock(Solids& solids, const glm::mat4& place, glm::vec3 low, glm::vec3 high,
              arena::Colour colour, float taper) {
    const glm::vec3 middle = 0.5f * (low + high);
    const auto corner = [&](bool right, bool up, bool ahead) {
        glm::vec3 at(right ? high.x : low.x, up ? high.y : low.y, ahead ? high.z : low.z);
        if (ahead) {
            at.x = middle.x + (at.x - middle.x) * taper;
            at.y = middle.y + (at.y - middle.y) * taper;
        }
        return at;
    };
    const Corners faces[] = {
        {corner(1, 0, 0), corner(1, 1, 0), corner(1, 1, 1), corner(1, 0, 1)},
        {corner(0, 0, 0), corner(0, 0, 1), corner(0, 1, 1), corner(0, 1, 0)},
        {corner(0, 1, 0), corner(0, 1, 1), corner(1, 1, 1), corner(1, 1, 0)},
        {corner(0, 0, 0), corner(1, 0, 0), corner(1, 0, 1), corner(0, 0, 1)},
        {corner(0, 0, 1), corner(1, 0, 1), corner(1, 1, 1), corner(0, 1, 1)},
        {corner(0, 0, 0), corner(0, 1, 0), corner(1, 1, 0), corner(1, 0, 0)},
    };
    for (const Corners& face : faces)
        addFace(solids, place, face, colour);
}

void addLimb(Solids& solids, const glm::mat4& place, glm::vec3 from, glm::vec3 to, float thickness,
             arena::Colour colour) {
    const float length = glm::distance(from, to);
    if (!(length > 0.0f))
        return;
    const glm::vec3 ahead = (to - from) / length;
    const glm::vec3 hint =
        std::abs(ahead.y) < 0.9f ? glm::vec3(0.0f, 1.0f, 0.0f) : glm::vec3(0.0f, 0.0f, 1.0f);
    const glm::vec3 side = glm::normalize(glm::cross(hint, ahead));
    const glm::mat4 along(glm::vec4(side, 0.0f), glm::vec4(glm::cross(ahead, side), 0.0f),
                          glm::vec4(ahead, 0.0f), glm::vec4(from, 1.0f));
    const float half = 0.5f * thickness;
    addBlock(solids, place * along, {-half, -half, 0.0f}, {half, half, length}, colour);
}

void addTube(Solids& solids, const glm::mat4& place, glm::vec3 back, float length, float radius,
             float radiusAtEnd, arena::Colour colour) {
    constexpr int sides = 8;
    const auto rim = [&](int side, bool ahead) {
        const float angle =
            (static_cast<float>(side) + 0.5f) * glm::two_pi<float>() / static_cast<float>(sides);
        const float around = ahead ? radiusAtEnd : radius;
        return back +
               glm::vec3(around * std::cos(angle), around * std::sin(angle), ahead ? length : 0.0f);
    };
    const glm::vec3 front = back + glm::vec3(0.0f, 0.0f, length);
    for (int side = 0; side < sides; ++side) {
        const glm::vec3 low = rim(side, false);
        const glm::vec3 next = rim(side + 1, false);
        const glm::vec3 lowAhead = rim(side, true);
        const glm::vec3 nextAhead = rim(side + 1, true);
        addFace(solids, place, {low, next, nextAhead, lowAhead}, colour);
        if (side % 2 == 0) {
            addFace(solids, place, {front, lowAhead, nextAhead, rim(side + 2, true)}, colour);
            addFace(solids, place, {back, rim(side + 2, false), next, low}, colour);
        }
    }
}

arena::Colour darker(arena::Colour colour, float share) {
    const auto scaled = [&](std::uint8_t part) {
        return static_cast<std::uint8_t>(static_cast<float>(part) * share);
    };
    return {scaled(colour.red), scaled(colour.green), scaled(colour.blue)};
}

} // namespace drench::game
