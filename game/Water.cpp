#include "game/Water.h"

#include "game/Camera.h"

#include <algorithm>
#include <cmath>
#include <glm/common.hpp>
#include <glm/geometric.hpp>

namespace drench::game {

namespace {

/// World units per second. The room's shots land at once; water that took as long as real water
/// would tell players to aim ahead.
constexpr float jetSpeed = 4200.0f;

/// Seconds in which two thirds of a bend is gone after a turn.
constexpr float bendTime = 0.07f;

/// A bend's largest distance from the straight line, as a share of the jet's length.
constexpr float largestBend = 0.15f;

/// By how much the middle of a jet rises, as a share of its length.
constexpr float rise = 0.03f;

/// Of a jet into the sky: world units per second, per second², and its seconds in the air.
constexpr float skySpeed = 1500.0f;
constexpr float skyGravity = 1500.0f;
constexpr float skyTime = 1.25f;
constexpr int skySteps = 12;

// For each jet, per second.
constexpr float dripRate = 34.0f;
constexpr float sprayRate = 90.0f;
constexpr float splashRate = 14.0f;

constexpr int burstDrops = 110;
/// The share of the way to a wall that a nozzle goes at most.
constexpr float shareBeforeWall = 0.7f;

constexpr float longestStep = 0.1f;

constexpr glm::vec3 upward{0.0f, 1.0f, 0.0f};

/// Takes whole numbers out of an amount that is due.
int takeWhole(float& due) {
    const float whole = std::floor(due);
    due -= whole;
    return static_cast<int>(whole);
}

/// How far water comes out on the way from a body's middle to its nozzle, 1 or less: for players
/// who stand before a wall, the nozzle is on this side of it and before where the water lands.
float nozzleShare(const arena::Grid& grid, const Shooter& shooter,
                  const std::optional<Landing>& landing) {
    const glm::vec3 middle = shooter.body.position;
    const glm::vec3 way = shooter.nozzle - middle;
    float share = 1.0f;
    if (const auto hit = arena::trace(grid, arena::rayAlong(inGame(middle), inGame(way))))
        share = std::min(share, shareBeforeWall * static_cast<float>(hit->distance));
    const float ahead = glm::dot(way, shooter.direction);
    if (landing && ahead > 0.0f) {
        const float end = glm::dot(landing->place - middle, shooter.direction);
        share = std::min(share, shareBeforeWall * std::max(end, 0.0f) / ahead);
    }
    return share;
}

} // namespace

glm::vec3 pointOn(const Jet& jet, float share) {
    const float rest = 1.0f - share;
    return rest * rest * jet.from + 2.0f * share * rest * jet.over + share * share * jet.to;
}

glm::vec3 directionOn(const Jet& jet, float share) {
    return (1.0f - share) * (jet.over - jet.from) + share * (jet.to - jet.over);
}

Water::Water(const MapManager& map, std::uint64_t seed)
    : map_(&map), grid_(arena::gridOf(map)), chance_(seed) {}

void Water::advance(float seconds, std::span<const Shooter> shooters,
                    std::span<const WetBody> bodies) {
    const float step = std::clamp(seconds, 0.0f, longestStep);
    for (Flow& flow : flows_)
        flow.isFed = false;
    for (const Shooter& shooter : shooters) {
        const std::size_t known = jets_.size();
        const std::size_t index = flowOf(shooter);
        if (index < mostJets)
            aim(index, shooter, bodies, step, index == known);
    }
    for (std::size_t i = 0; i < jets_.size(); ++i) {
        run(i, step);
        spray(i, step);
    }
    for (std::size_t i = jets_.size(); i-- > 0;) {
        if (jets_[i].tail < 1.0f)
            continue;
        jets_.erase(jets_.begin() + static_cast<std::ptrdiff_t>(i));
        flows_.erase(flows_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    drops_.advance(grid_, chance_, step);
    patches_.dry(step);
}

void Water::burst(glm::vec3 place) {
    drops_.begin(chance_, burstDrops, place, 170.0f * upward, 210.0f, 5.0f);
}

/// The index of the shooter's jet; mostJets if there are too many.
std::size_t Water::flowOf(const Shooter& shooter) {
    for (std::size_t i = 0; i < jets_.size(); ++i) {
        // Water that has left the nozzle for good is not caught up with.
        if (jets_[i].whose == shooter.body.id && jets_[i].tail == 0.0f)
            return i;
    }
    if (jets_.size() == mostJets)
        return mostJets;
    Jet jet;
    jet.whose = shooter.body.id;
    jet.front = 0.0f;
    jets_.push_back(jet);
    flows_.emplace_back();
    return jets_.size() - 1;
}

void Water::aim(std::size_t index, const Shooter& shooter, std::span<const WetBody> bodies,
                float seconds, bool isNew) {
    Jet& jet = jets_[index];
    Flow& flow = flows_[index];
    flow.isFed = true;
    flow.landing = landingOf(*map_, shooter.body, shooter.direction, bodies);
    const bool wasIntoSky = jet.intoSky;
    jet.width = nozzleShare(grid_, shooter, flow.landing);
    jet.from = glm::mix(shooter.body.position, shooter.nozzle, jet.width);
    jet.intoSky = !flow.landing;
    if (jet.intoSky) {
        aimIntoSky(index, shooter);
        return;
    }
    jet.to = flow.landing->place;
    jet.length = glm::distance(jet.from, jet.to);
    flow.flight = std::max(jet.length / jetSpeed, 0.01f);
    // The middle follows a turn later than the end, which lies where the room has it.
    const glm::vec3 middle = 0.5f * (jet.from + jet.to) + rise * jet.length * upward;
    glm::vec3 bend(0.0f);
    if (!isNew && !wasIntoSky)
        bend = (jet.over - middle) * std::exp(-seconds / bendTime);
    const float far = glm::length(bend);
    const float farthest = largestBend * jet.length;
    jet.over = middle + (far > farthest ? farthest / far * bend : bend);
}

void Water::aimIntoSky(std::size_t index, const Shooter& shooter) {
    Jet& jet = jets_[index];
    Flow& flow = flows_[index];
    const glm::vec3 velocity = skySpeed * glm::normalize(shooter.direction);
    const auto at = [&](float time) {
        return jet.from + velocity * time - 0.5f * skyGravity * time * time * upward;
    };
    flow.flight = skyTime;
    for (int i = 0; i < skySteps; ++i) {
        const float begin = skyTime * static_cast<float>(i) / skySteps;
        const glm::vec3 start = at(begin);
        const glm::vec3 way = at(skyTime * static_cast<float>(i + 1) / skySteps) - start;
        const std::optional<arena::Hit> hit =
            arena::trace(grid_, arena::rayAlong(inGame(start), inGame(way)));
        if (!hit || hit->distance > 1.0)
            continue;
        flow.flight = begin + static_cast<float>(hit->distance) * skyTime / skySteps;
        flow.landing = Landing{at(flow.flight), false, hit->axis, hit->side};
        jet.intoSky = false;
        break;
    }
    // A parabola is a curve of the second order, and its ends' tangents meet at half the time.
    jet.over = jet.from + 0.5f * flow.flight * velocity;
    jet.to = at(flow.flight);
    jet.length = glm::distance(jet.from, jet.to);
}

void Water::run(std::size_t index, float seconds) {
    Jet& jet = jets_[index];
    const Flow& flow = flows_[index];
    const float share = seconds / flow.flight;
    jet.front = std::min(1.0f, jet.front + share);
    if (!flow.isFed)
        jet.tail += share;
}

void Water::spray(std::size_t index, float seconds) {
    const Jet& jet = jets_[index];
    Flow& flow = flows_[index];
    flow.drips += dripRate * seconds;
    for (int i = takeWhole(flow.drips); i > 0; --i) {
        const auto share = static_cast<float>(chance_.between(jet.tail, jet.front));
        const glm::vec3 along = directionOn(jet, share);
        const float length = std::max(glm::length(along), 1.0f);
        drops_.begin(chance_, 1, pointOn(jet, share), 300.0f / length * along, 34.0f, 1.7f);
    }
    if (jet.front < 1.0f)
        return;
    flow.sprays += sprayRate * seconds;
    const int count = takeWhole(flow.sprays);
    if (!flow.landing) {
        drops_.begin(chance_, count, jet.to, directionOn(jet, 1.0f), 70.0f, 3.2f);
        return;
    }
    glm::vec3 normal(0.0f);
    normal[flow.landing->axis] = static_cast<float>(flow.landing->side);
    drops_.begin(chance_, count, jet.to + 1.5f * normal, 130.0f * normal + 60.0f * upward, 95.0f,
                 2.2f);
    flow.splashes += splashRate * seconds;
    if (takeWhole(flow.splashes) > 0 && !flow.landing->onBody)
        patches_.wet(grid_, jet.to, flow.landing->axis, flow.landing->side);
}

} // namespace drench::game
