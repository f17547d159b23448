#pragma once

#include "game/Scene.h"

#include <cstdint>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <vector>

namespace drench::game {

/// What a part of the water looks like; in the order that shaders count.
enum class WaterLook : std::uint8_t { stream, drop, wet, shadow, lens, streak, wash };

/// A corner of a triangle of water.
struct WaterVertex {
    /// World units; for what runs down the screen, the place on it, from -1 to 1.
    glm::vec3 place{0.0f};

    /// From -1 to 1 across the thing and along it.
    glm::vec2 shape{0.0f};

    /// For streams the place along it, world units, moving with the water.
    float along = 0.0f;

    /// 0 to 1.
    float strength = 1.0f;
    float look = 0.0f;
};

static_assert(sizeof(WaterVertex) == 32);

using WaterShapes = std::vector<WaterVertex>;

/// Adds the patches, jets and drops of a scene, towards its camera, in the order to draw them in.
void addWater(WaterShapes& shapes, const Scene& scene);

/// Adds the water that runs down the screen of a soaked player.
/// @param aspect  the picture's width over its height
void addSoaking(WaterShapes& shapes, const SoakedOverlay& soaked, float aspect);

} // namespace drench::game
