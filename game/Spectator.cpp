#include "game/Spectator.h"

#include "client/Records.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>

namespace drench::game {

namespace {

/// World units a second, about that of a running player.
constexpr float flightSpeed = 400.0f;

/// World units: how far behind a player the camera is, and how far above its middle it looks.
constexpr float followDistance = 330.0f;
constexpr float followHeight = 55.0f;

/// Radians above the horizon, when one does not look around: the first of these at which the
/// camera has room behind a player, whose back may be at a wall.
constexpr float followPitches[] = {0.3f, 0.65f, 1.0f, 1.35f};

/// The share of the distance that is room enough.
constexpr float enoughRoom = 0.6f;

/// World units from the middle of a figure to the camera.
constexpr float nearestFigure = 110.0f;

/// World units that the camera keeps from cubes.
constexpr float wallGap = 16.0f;

/// Looks at the way to the camera: no cube fits between two of them.
constexpr int sweepSteps = 16;
constexpr int sweepHalvings = 6;

/// Seconds in which two thirds of a turn are followed.
constexpr float followTime = 0.25f;

/// Radians: straight up or down nobody knows which way is ahead.
constexpr float steepest = 1.5f;

float yawOf(glm::vec3 direction) {
    return std::atan2(direction.x, direction.z);
}

float pitchOf(glm::vec3 direction) {
    return std::atan2(direction.y, std::hypot(direction.x, direction.z));
}

glm::vec3 directionOf(float yaw, float pitch) {
    return {std::cos(pitch) * std::sin(yaw), std::sin(pitch), std::cos(pitch) * std::cos(yaw)};
}

float withinTurn(float angle) {
    return std::remainder(angle, glm::two_pi<float>());
}

/// The share of a way that is gone without coming near a cube.
float freeShare(const MapManager& map, glm::vec3 from, glm::vec3 way) {
    const auto isFree = [&](float share) {
        constexpr vec3 room{2.0f * wallGap, 2.0f * wallGap, 2.0f * wallGap};
        return !map.collides(Box(inGame(from + share * way), room));
    };
    float reached = 0.0f;
    for (int step = 1; step <= sweepSteps; ++step) {
        const float share = static_cast<float>(step) / static_cast<float>(sweepSteps);
        if (isFree(share)) {
            reached = share;
            continue;
        }
        // Halving the last step, so that the camera glides along a wall.
        float blocked = share;
        for (int halving = 0; halving < sweepHalvings; ++halving) {
            const float middle = 0.5f * (reached + blocked);
            (isFree(middle) ? reached : blocked) = middle;
        }
        break;
    }
    return reached;
}

/// How steeply to look down on a player from behind.
float pitchWithRoom(const MapManager& map, glm::vec3 from, float yaw) {
    float best = followPitches[0];
    float most = 0.0f;
    for (const float pitch : followPitches) {
        const float room = freeShare(map, from, -followDistance * directionOf(yaw, -pitch));
        if (room > most) {
            most = room;
            best = pitch;
        }
        if (room >= enoughRoom)
            break;
    }
    return best;
}

} // namespace

void Spectator::setView(View view) {
    view_ = view;
    aroundYaw_ = 0.0f;
    aroundPitch_ = 0.0f;
    followed_ = 0;
}

void Spectator::watch(char id) {
    wanted_ = id;
    if (view_ == View::flying)
        setView(View::eye);
}

void Spectator::flyFrom(glm::vec3 eye, glm::vec3 direction) {
    setView(View::flying);
    eye_ = eye;
    yaw_ = yawOf(direction);
    pitch_ = std::clamp(pitchOf(direction), -steepest, steepest);
}

void Spectator::turn(float right, float up) {
    float& yaw = view_ == View::flying ? yaw_ : aroundYaw_;
    float& pitch = view_ == View::flying ? pitch_ : aroundPitch_;
    yaw = withinTurn(yaw - right);
    pitch = std::clamp(pitch + up, -steepest, steepest);
}

void Spectator::fly(glm::vec3 way, float seconds) {
    if (view_ != View::flying)
        return;
    const glm::vec3 ahead = directionOf(yaw_, pitch_);
    const glm::vec3 right(-std::cos(yaw_), 0.0f, std::sin(yaw_));
    constexpr glm::vec3 upward(0.0f, 1.0f, 0.0f);
    eye_ += flightSpeed * seconds * (way.x * right + way.y * upward + way.z * ahead);
    eye_ = glm::clamp(eye_, glm::vec3(-farPlane / 2.0f), glm::vec3(farPlane));
}

char Spectator::watched(std::span<const PlayerUpdate> players) const {
    char first = 0;
    for (const PlayerUpdate& player : players) {
        if (player.id == wanted_)
            return wanted_;
        if (client::isPlayerId(player.id) && (first == 0 || player.id < first))
            first = player.id;
    }
    return first;
}

void Spectator::place(Camera& camera, const PlayerUpdate* player, const MapManager& map,
                      float seconds) {
    if (view_ == View::flying) {
        camera.eye = eye_;
        camera.direction = directionOf(yaw_, pitch_);
    } else if (player && !client::isSoaked(*player)) {
        if (view_ == View::eye) {
            camera.eye = onScreen(player->position);
            turnTo(camera, onScreen(player->direction));
        } else {
            follow(camera, *player, map, seconds);
        }
    }
    // Where a flight would begin.
    eye_ = camera.eye;
    yaw_ = yawOf(camera.direction);
    pitch_ = std::clamp(pitchOf(camera.direction), -steepest, steepest);
}

bool Spectator::isInTheWay(glm::vec3 figure, const Camera& camera) const {
    return view_ != View::eye && glm::distance(figure, camera.eye) < nearestFigure;
}

void Spectator::follow(Camera& camera, const PlayerUpdate& player, const MapManager& map,
                       float seconds) {
    const glm::vec3 middle = onScreen(player.position);
    const glm::vec3 rise(0.0f, followHeight, 0.0f);
    const glm::vec3 over = middle + freeShare(map, middle, rise) * rise;
    const bool isNew = followed_ != player.id;
    followed_ = player.id;
    const float followed = isNew ? 1.0f : 1.0f - std::exp(-seconds / followTime);
    const float yaw = yawOf(onScreen(player.direction));
    followedYaw_ += withinTurn(yaw - followedYaw_) * followed;
    const float pitch = -pitchWithRoom(map, over, followedYaw_ + aroundYaw_);
    followedPitch_ += (pitch - followedPitch_) * followed;
    camera.direction = directionOf(followedYaw_ + aroundYaw_,
                                   std::clamp(followedPitch_ + aroundPitch_, -steepest, steepest));
    const glm::vec3 way = -followDistance * camera.direction;
    camera.eye = over + freeShare(map, over, way) * way;
}

} // namespace drench::game
