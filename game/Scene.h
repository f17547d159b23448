#pragma once

#include "game/Camera.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <optional>
#include <string>
#include <vector>

namespace drench::game {

// All that is seen in one frame, as plain values. Lengths are world units, times seconds.

/// Another player.
struct FigurePose {
    /// '1' to '4'.
    char id = 0;

    /// The middle of the body, where the eye is.
    glm::vec3 position{0.0f};

    /// The view.
    glm::vec3 direction{0.0f, 0.0f, 1.0f};
    glm::quat rotation{1.0f, 0.0f, 0.0f, 0.0f};

    /// Steps taken so far, for the legs; two make a whole swing.
    float walkPhase = 0.0f;
    bool inAir = false;
    bool shooting = false;
    bool soaked = false;
    std::string name;

    /// Index of the player's colour and shape, 0 to 3.
    int colour = 0;
};

/// Water on its way from a nozzle to where it lands.
struct Jet {
    glm::vec3 from{0.0f};
    glm::vec3 to{0.0f};

    /// The identifier of who fires it.
    char whose = 0;
};

struct Drop {
    glm::vec3 place{0.0f};

    /// Radius.
    float size = 0.0f;
};

/// A wet spot on the face of a cube.
struct Splash {
    glm::vec3 place{0.0f};

    /// Unit normal of the face.
    glm::vec3 normal{0.0f, 1.0f, 0.0f};
    float radius = 0.0f;

    /// 1 just after the water came, 0 when dry.
    float wetness = 0.0f;
};

/// One's own hands and water gun.
struct OwnGun {
    /// Shift of the gun in the picture, as shares of its height: x to the right, y up.
    glm::vec2 sway{0.0f};

    /// 0 at rest, 1 at the strongest.
    float kick = 0.0f;
    bool shooting = false;
    int colour = 0;
};

/// What oneself sees while soaked.
struct SoakedOverlay {
    /// Seconds since the soaking, and until the return.
    float since = 0.0f;
    float left = 0.0f;

    /// Who it was; empty if unknown.
    std::string by;
};

struct Scene {
    Camera camera;
    std::vector<FigurePose> figures;
    std::vector<Jet> jets;
    std::vector<Drop> drops;
    std::vector<Splash> splashes;

    /// Nothing while one plays no part: soaked, or looking on.
    std::optional<OwnGun> gun;
    std::optional<SoakedOverlay> soaked;

    /// Seconds since the window opened, for what moves by itself.
    double time = 0.0;
};

} // namespace drench::game
