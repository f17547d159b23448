#pragma once

#include "arena/Materials.h"
#include "arena/Rays.h"
#include "src/Box.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace drench::arena {

// Light in the pictures.

/// A colour as amounts of light: 0 is none, 1 is the light of white paper in full light.
using Light = std::array<double, 3>;

/// Converts between light and colour values, which are spaced as the eye sees. Light is the square
/// of a value, close to the usual power of 2.2; every machine rounds square roots alike.
Light lightOf(Colour colour);
Colour colourFrom(const Light& light);

/// From `a` at share 0 to `b` at share 1.
Light mixed(const Light& a, const Light& b, double share);

/// The colour of all signs for players and spawns; no material is like it.
constexpr Colour signalColour = {226, 24, 124};

/// The sun is a square of this many parts. The numbers of its four corners follow those of the
/// parts.
constexpr int sunParts = 16;

/// A grid of cubes and bodies under a sun.
struct Scene {
    Grid grid;

    /// The text on the sides of each body of the grid.
    std::vector<std::string> labels;

    /// Unit vectors towards the parts and the corners of the sun.
    std::vector<Triple> suns;
};

/// The cubes of the map, which must have cells and outlive the scene; a cube is a cell that blocks,
/// whatever its material. `towardsSun` need not be a unit vector, but must not be straight up.
Scene sceneOf(const MapManager& map, const Triple& towardsSun);

/// Adds a player's body in signalColour. The parts of it outside the grid are not seen.
void addBody(Scene& scene, const std::string& label, const Box& box);

/// Whether this part or corner of the sun shines on a point that lies in no cube.
bool inSun(const Scene& scene, const Triple& point, int sun);

/// A number for the face that was met; every face of the scene has another one.
std::uint64_t faceNumber(const Scene& scene, const Hit& hit);

/// Light that a face sends back.
struct Shade {
    Light light{};
    bool inSun = false;
};

/// The light of the face that a ray has met: lit by the sky and one part of the sun, darker in
/// corners, with its cube's edges drawn. `pixel` is the size of a pixel there, in cells. A corner's
/// shade follows from the three cells that meet the face there (Lysenko, 0fps.net, 2013) and is
/// interpolated over the face.
Shade shade(const Scene& scene, const Ray& ray, const Hit& hit, int sun, double pixel);

} // namespace drench::arena
