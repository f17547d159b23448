#pragma once

#include "game/Figures.h"
#include "game/GunInHands.h"
#include "game/Labels.h"
#include "game/Scene.h"
#include "game/Water.h"
#include "game/WaterShapes.h"
#include "tests/fuzz/Require.h"
#include "tests/support/Courts.h"

#include <cmath>
#include <cstddef>
#include <string>

// Where hostile players are seen, and what holds for every picture of them.

/// A court with some cubes to stand on and to hide behind.
inline MapManager& courtWithCubes() {
    static MapManager map = court(9, 6, 9, [](int i, int j, int k) {
        return (j == 1 && i % 3 == 0 && k % 4 == 0) || (j <= 3 && i == 4 && k == 4);
    });
    return map;
}

/// The first player has this name.
inline UpdateMessage fourPlayers(const std::string& name) {
    UpdateMessage state;
    for (int i = 0; i < maxPlayers; ++i) {
        PlayerUpdate player;
        player.id = static_cast<char>('1' + i);
        player.position = {96.0f + 128.0f * static_cast<float>(i), standing, 160.0f};
        player.direction = {0.0f, 0.0f, 1.0f};
        (i == 0 ? name : "Bo").copy(player.name, sizeof player.name - 1);
        state.add(player);
    }
    return state;
}

inline bool isFinite(const glm::vec2& v) {
    return std::isfinite(v.x) && std::isfinite(v.y);
}

inline bool isFinite(const glm::vec3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

inline void requireBounded(const drench::game::Scene& scene) {
    using namespace drench::game;
    constexpr float aspect = 16.0f / 9.0f;
    require(isFinite(scene.camera.eye) && isFinite(scene.camera.direction), "the eye is somewhere");
    require(glm::length(scene.camera.direction) > 0.1f, "the eye looks somewhere");
    require(scene.figures.size() <= maxPlayers && scene.shadows.size() <= maxPlayers,
            "each player is shown once");
    require(scene.jets.size() <= Water::mostJets && scene.drops.size() <= Drops::most &&
                scene.splashes.size() <= WetPatches::most,
            "water is bounded");
    require(scene.names.size() <= maxPlayers, "each figure has one name");
    for (const Label& label : labelsOf(scene, aspect)) {
        require(label.place.x >= 0.0f && label.place.x <= 1.0f && label.place.y >= 0.0f &&
                    label.place.y <= 1.0f && std::isfinite(label.distance),
                "a label lies in the picture");
        require(label.colour >= 0 && label.colour < maxPlayers, "a colour is a player's");
    }
}

/// Aborts unless all of the scene can be drawn.
inline void requireDrawable(const drench::game::Scene& scene) {
    using namespace drench::game;
    /// More than the most figures, jets, drops and patches that a scene may hold.
    constexpr std::size_t mostVertices = 40'000;
    requireBounded(scene);
    Solids solids;
    for (const FigurePose& figure : scene.figures)
        addFigure(solids, figure);
    if (scene.gun)
        addGunInHands(solids, *scene.gun, scene.camera);
    require(solids.vertices.size() <= mostVertices, "solids are bounded");
    for (const SolidVertex& vertex : solids.vertices)
        require(isFinite(vertex.position) && isFinite(vertex.normal), "a vertex is somewhere");
    WaterShapes shapes;
    addWater(shapes, scene);
    require(shapes.size() <= mostVertices, "shapes of water are bounded");
    for (const WaterVertex& vertex : shapes)
        require(isFinite(vertex.place) && isFinite(vertex.shape) && std::isfinite(vertex.along) &&
                    vertex.strength >= 0.0f && vertex.strength <= 1.0f,
                "water is somewhere");
}
