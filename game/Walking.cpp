#include "game/Walking.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>

namespace drench::game {

namespace {

/// World units. Bodies run 370 in a second, so their legs take five steps in it.
constexpr float stepLength = 74.0f;

/// World units per second at which legs swing their widest.
constexpr float fullSpeed = 300.0f;

/// Faster than any walk: a spawn.
constexpr float fastest = 3000.0f;

/// Seconds in which two thirds of a change of stride are done.
constexpr float strideTime = 0.09f;

constexpr float phaseRound = 2000.0f;

} // namespace

void Walking::move(glm::vec3 position, float seconds) {
    const glm::vec2 moved(position.x - last_.x, position.z - last_.z);
    const float way = glm::length(moved);
    last_ = position;
    if (!hasStarted_ || !(seconds > 0.0f)) {
        hasStarted_ = true;
        return;
    }
    const float speed = way / seconds;
    if (!(speed < fastest))
        return;
    phase_ = std::fmod(phase_ + way / stepLength, phaseRound);
    const glm::vec2 target = moved / std::max(seconds * fullSpeed, way);
    way_ += (target - way_) * (1.0f - std::exp(-seconds / strideTime));
}

float Walking::stride() const {
    return glm::length(way_);
}

} // namespace drench::game
