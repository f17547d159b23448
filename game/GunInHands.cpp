#include "game/GunInHands.h"

#include "game/Liveries.h"
#include "game/WaterGun.h"

#include <cmath>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/matrix.hpp>

namespace drench::game {

namespace {

using glm::mat4;
using glm::vec3;

// In what the eye sees, x to the left, y up, z ahead.
constexpr vec3 grip{-22.0f, -23.5f, 42.0f};

/// The gun points to the middle of the picture, far away.
constexpr float turnIn = 0.13f;
constexpr float turnUp = 0.09f;

/// World units back and radians up at the full kick.
constexpr float kickBack = 2.2f;
constexpr float kickUp = 0.05f;

/// World units for a sway by the picture's height, at the grip's distance.
constexpr float swayScale = 40.0f;

/// From what the eye sees to the world: x to the left, y up, z ahead.
mat4 eyePlace(const Camera& camera) {
    return glm::rotate(glm::inverse(viewMatrix(camera)), glm::radians(180.0f), {0.0f, 1.0f, 0.0f});
}

/// The gun's place before the eye.
mat4 heldPlace(const OwnGun& gun) {
    const vec3 sway(-swayScale * gun.sway.x, swayScale * gun.sway.y, 0.0f);
    const vec3 back(0.0f, 0.3f * gun.kick, -kickBack * gun.kick);
    mat4 place = glm::translate(mat4(1.0f), grip + sway + back);
    place = glm::rotate(place, turnIn + 0.6f * gun.sway.x, {0.0f, 1.0f, 0.0f});
    return glm::rotate(place, -turnUp - kickUp * gun.kick - 0.6f * gun.sway.y, {1.0f, 0.0f, 0.0f});
}

} // namespace

void addGunInHands(Solids& solids, const OwnGun& gun, const Camera& camera) {
    solids.sun = static_cast<std::uint8_t>(std::lround(255.0f * gun.sun));
    const arena::Colour colour = liveryOf(gun.colour, gun.palette).colour;
    const mat4 eye = eyePlace(camera);
    const mat4 held = heldPlace(gun);
    const mat4 place = eye * held;
    addGun(solids, place, colour);

    struct Arm {
        vec3 hand;
        vec3 elbow;
        vec3 shoulder;
    };
    // Hands on the gun; elbows and shoulders below the picture's edge.
    const Arm arms[] = {{{0.0f, -5.5f, 0.5f}, {-26.0f, -38.0f, 26.0f}, {-22.0f, -42.0f, 4.0f}},
                        {{0.5f, -3.6f, 20.0f}, {0.0f, -38.0f, 40.0f}, {14.0f, -44.0f, 12.0f}}};
    for (const Arm& arm : arms) {
        addBlock(solids, place, arm.hand - vec3(3.6f, 3.4f, 3.6f),
                 arm.hand + vec3(3.6f, 3.2f, 3.6f), skinColour);
        const vec3 wrist(held * glm::vec4(arm.hand, 1.0f));
        const vec3 cuff = wrist + 0.45f * (arm.elbow - wrist);
        addLimb(solids, eye, wrist, cuff, 5.6f, skinColour);
        addLimb(solids, eye, cuff, arm.elbow, 7.6f, colour);
        addLimb(solids, eye, arm.elbow, arm.shoulder, 8.0f, colour);
    }
}

vec3 ownNozzle(const OwnGun& gun, const Camera& camera) {
    vec3 tip(heldPlace(gun) * glm::vec4(gunTip, 1.0f));
    const float scale = std::tan(0.5f * camera.fieldOfView) / std::tan(0.5f * gunFieldOfView);
    tip.x *= scale;
    tip.y *= scale;
    return vec3(eyePlace(camera) * glm::vec4(tip, 1.0f));
}

} // namespace drench::game
