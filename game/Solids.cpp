#include "game/Solids.h"

#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>
#include <iterator>

namespace drench::game {

namespace {

using Corners = std::array<glm::vec3, 4>;

glm::vec3 placed(const glm::mat4& place, glm::vec3 point) {
    return glm::vec3(place * glm::vec4(point, 1.0f));
}

/// A flat face with its corners in the world, counter-clockwise.
void addFace(Solids& solids, const Corners& corners, arena::Colour colour) {
    // The diagonals span the face even where two corners are one.
    const glm::vec3 across = glm::cross(corners[2] - corners[0], corners[3] - corners[1]);
    const float size = glm::length(across);
    if (!(size > 0.0f))
        return;
    const glm::vec3 normal = across / size;
    constexpr std::size_t order[] = {0, 1, 2, 0, 2, 3};
    // Written where they stay: a vertex that is made elsewhere and copied takes twice as long.
    solids.vertices.resize(solids.vertices.size() + std::size(order));
    auto vertex = solids.vertices.end() - std::ssize(order);
    for (const std::size_t corner : order) {
        vertex->position = corners[corner];
        vertex->normal = normal;
        vertex->colour = colour;
        vertex->sun = solids.sun;
        ++vertex;
    }
}

constexpr std::size_t tubeSides = 8;

/// The corners of a tube's end, as seen along it.
const std::array<glm::vec2, tubeSides>& tubeCorners() {
    static const std::array<glm::vec2, tubeSides> corners = [] {
        std::array<glm::vec2, tubeSides> made;
        for (std::size_t side = 0; side < tubeSides; ++side) {
            const float angle = (static_cast<float>(side) + 0.5f) * glm::two_pi<float>() /
                                static_cast<float>(tubeSides);
            made[side] = {std::cos(angle), std::sin(angle)};
        }
        return made;
    }();
    return corners;
}

} // namespace

void addBlock(Solids& solids, const glm::mat4& place, glm::vec3 low, glm::vec3 high,
              arena::Colour colour, float taper) {
    const glm::vec3 middle = 0.5f * (low + high);
    // By bits: 1 for the higher x, 2 for the higher y, 4 for the higher z.
    std::array<glm::vec3, 8> corners;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const bool ahead = (i & 4) != 0;
        glm::vec3 at((i & 1) != 0 ? high.x : low.x, (i & 2) != 0 ? high.y : low.y,
                     ahead ? high.z : low.z);
        if (ahead) {
            at.x = middle.x + (at.x - middle.x) * taper;
            at.y = middle.y + (at.y - middle.y) * taper;
        }
        corners[i] = placed(place, at);
    }
    constexpr std::size_t faces[][4] = {{1, 3, 7, 5}, {0, 4, 6, 2}, {2, 6, 7, 3},
                                        {0, 1, 5, 4}, {4, 5, 7, 6}, {0, 2, 3, 1}};
    for (const auto& face : faces)
        addFace(solids, {corners[face[0]], corners[face[1]], corners[face[2]], corners[face[3]]},
                colour);
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
    const glm::vec3 front = back + glm::vec3(0.0f, 0.0f, length);
    std::array<glm::vec3, tubeSides> near;
    std::array<glm::vec3, tubeSides> far;
    for (std::size_t side = 0; side < tubeSides; ++side) {
        const glm::vec2 corner = tubeCorners()[side];
        near[side] = placed(place, back + glm::vec3(radius * corner, 0.0f));
        far[side] = placed(place, front + glm::vec3(radiusAtEnd * corner, 0.0f));
    }
    const glm::vec3 nearMiddle = placed(place, back);
    const glm::vec3 farMiddle = placed(place, front);
    for (std::size_t side = 0; side < tubeSides; ++side) {
        const std::size_t next = (side + 1) % tubeSides;
        const std::size_t afterNext = (side + 2) % tubeSides;
        addFace(solids, {near[side], near[next], far[next], far[side]}, colour);
        if (side % 2 == 0) {
            addFace(solids, {farMiddle, far[side], far[next], far[afterNext]}, colour);
            addFace(solids, {nearMiddle, near[afterNext], near[next], near[side]}, colour);
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
