#pragma once

#include "game/Camera.h"
#include "game/Liveries.h"

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

    /// Steps taken so far, for the legs; two make a whole swing.
    float walkPhase = 0.0f;

    /// Where the body walks, along x and z: of length 0, standing, to 1, at full speed. So far
    /// swing the legs.
    glm::vec2 way{0.0f};
    bool inAir = false;
    bool shooting = false;
    bool soaked = false;
    std::string name;

    /// Index of the player's colour and shape, 0 to 3.
    int colour = 0;
    Palette palette = Palette::usual;

    /// The share of the sun's light that gets there.
    float sun = 1.0f;
};

/// A name above a figure's head, for a figure in sight.
struct NameLabel {
    /// The middle of the text's lower edge.
    glm::vec3 place{0.0f};
    std::string name;

    /// Index of the player's colour.
    int colour = 0;

    /// From the eye.
    float distance = 0.0f;
};

/// A stream of water: a curve of the second order (Bézier) from the nozzle to where the water
/// lands.
struct Jet {
    glm::vec3 from{0.0f};

    /// The point that the curve bends towards.
    glm::vec3 over{0.0f};
    glm::vec3 to{0.0f};

    /// The part of the curve that has water, from 0 at the nozzle to 1 at the end.
    float tail = 0.0f;
    float front = 1.0f;

    /// Along the straight line.
    float length = 0.0f;

    /// Thickness, as a share of the usual one; less for a nozzle right before the eye.
    float width = 1.0f;

    /// Whether the water ends in the air.
    bool intoSky = false;

    /// The identifier of who fires it.
    char whose = 0;
};

struct Drop {
    glm::vec3 place{0.0f};

    /// How far it goes in a second.
    glm::vec3 velocity{0.0f};

    /// Radius.
    float size = 0.0f;

    /// 1 when new, 0 when gone.
    float left = 1.0f;
};

/// A dark patch with soft edges on the face of a cube: wet, or the shadow of a body.
struct Patch {
    glm::vec3 place{0.0f};

    /// The face's normal points along this axis, to this side: see CubeFace.
    int axis = 1;
    int side = 1;
    float radius = 0.0f;

    /// How far the face reaches from `place`, down and up along its first and second axis; never
    /// beyond the edge of what is solid, nor the radius.
    glm::vec2 low{0.0f};
    glm::vec2 high{0.0f};

    /// 1 just after the water came, 0 when dry.
    float strength = 0.0f;
};

/// One's own hands and water gun.
struct OwnGun {
    /// Shift of the gun in the picture, as shares of its height: x to the right, y up.
    glm::vec2 sway{0.0f};

    /// 0 at rest, 1 at the strongest.
    float kick = 0.0f;
    bool shooting = false;
    int colour = 0;
    Palette palette = Palette::usual;

    /// The share of the sun's light that gets there.
    float sun = 1.0f;
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
    std::vector<NameLabel> names;
    std::vector<Jet> jets;
    std::vector<Drop> drops;
    std::vector<Patch> splashes;
    std::vector<Patch> shadows;

    /// Nothing while one plays no part: soaked, or looking on.
    std::optional<OwnGun> gun;
    std::optional<SoakedOverlay> soaked;

    /// Seconds since the window opened, for what moves by itself.
    double time = 0.0;
};

} // namespace drench::game
