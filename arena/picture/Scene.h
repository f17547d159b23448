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

/// A colour as amounts of light: 0 is none, 1 what white paper in full light sends back.
using Light = std::array<double, 3>;

/// Light as the eye takes colours for evenly spaced, and back: squares, near enough to the 2.2th
/// power, and every machine rounds their roots alike.
Light lightOf(Colour colour);
Colour colourFrom(const Light& light);

/// From `a` at share 0 to `b` at share 1.
Light mixed(const Light& a, const Light& b, double share);

/// The colour of whatever stands for players and spawns; no material is like it.
constexpr Colour signalColour = {226, 24, 124};

/// The sun is a square of this many parts; its four corners are numbered after them.
constexpr int sunParts = 16;

/// A grid of cubes and bodies under a sun.
struct Scene {
    Grid grid;

    /// What is written on the sides of each of the grid's bodies.
    std::vector<std::string> labels;

    /// Unit vectors towards the parts and the corners of the sun.
    std::vector<Triple> suns;
};

/// The cubes of the map, which must have cells and outlive the scene; a cube is a cell that blocks,
/// whatever its material. `towardsSun` need not be a unit vector, but must not be straight up.
Scene sceneOf(const MapManager& map, const Triple& towardsSun);

/// Adds a player's body in signalColour; what of it lies outside the grid is not seen.
void addBody(Scene& scene, const std::string& label, const Box& box);

/// Whether this part or corner of the sun shines on a point that lies in no cube.
bool inSun(const Scene& scene, const Triple& point, int sun);

/// A number for the face that was met; every other face of the scene has another one.
std::uint64_t faceNumber(const Scene& scene, const Hit& hit);

/// Light that a face sends back.
struct Shade {
    Light light{};
    bool inSun = false;
};

/// The face that a ray has met, lit by the sky and one part of the sun, darker in corners, with
/// its cube's edges drawn. `pixel` is the size in cells of what one pixel shows there.
/// The shade of a corner follows from the three cells that meet the face there (Lysenko, 0fps.net,
/// 2013) and is interpolated over the face.
Shade shade(const Scene& scene, const Ray& ray, const Hit& hit, int sun, double pixel);

} // namespace drench::arena
