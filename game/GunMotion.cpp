#include "game/GunMotion.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>

namespace drench::game {

namespace {

/// Shares of the picture's height for each radian that the view turns in a second.
constexpr float lagOfTurn = 0.012f;
constexpr float largestLag = 0.05f;

// Seconds in which two thirds of a change are done.
constexpr float lagTime = 0.08f;
constexpr float kickTime = 0.05f;

/// Shares of the picture's height, to each side and up.
constexpr float bobAside = 0.010f;
constexpr float bobUp = 0.008f;

/// The kick while water comes: this much, and as much less or more by the pump's beats.
constexpr float steadyKick = 0.7f;
constexpr float beat = 0.3f;
constexpr float beatsInSecond = 9.0f;
constexpr float calmKick = 0.33f;

/// Radians, to the right and up.
glm::vec2 turnBetween(glm::vec3 from, glm::vec3 to) {
    const float yaw = std::atan2(from.x, from.z) - std::atan2(to.x, to.z);
    const auto pitch = [](glm::vec3 v) { return std::atan2(v.y, std::hypot(v.x, v.z)); };
    return {std::remainder(yaw, glm::two_pi<float>()), pitch(to) - pitch(from)};
}

} // namespace

OwnGun GunMotion::advance(float seconds, glm::vec3 direction, const Walking& walking, bool shooting,
                          bool isCalm) {
    glm::vec2 target(0.0f);
    if (seconds > 0.0f && direction_ != glm::vec3(0.0f))
        target = glm::clamp(-lagOfTurn / seconds * turnBetween(direction_, direction),
                            glm::vec2(-largestLag), glm::vec2(largestLag));
    direction_ = direction;
    lag_ += (target - lag_) * (1.0f - std::exp(-seconds / lagTime));

    fired_ = shooting ? fired_ + seconds : 0.0f;
    const float aim =
        shooting ? steadyKick + beat * std::sin(fired_ * beatsInSecond * glm::two_pi<float>())
                 : 0.0f;
    kick_ += (aim - kick_) * (1.0f - std::exp(-seconds / kickTime));

    OwnGun gun;
    gun.shooting = shooting;
    gun.kick = kick_;
    if (isCalm) {
        gun.kick *= calmKick;
        return gun;
    }
    const float angle = walking.phase() * glm::pi<float>();
    const glm::vec2 bob(bobAside * std::sin(angle), -bobUp * std::abs(std::cos(angle)));
    gun.sway = lag_ + walking.stride() * bob;
    return gun;
}

} // namespace drench::game
