#include "game/Cues.h"

#include "arena/Map.h"
#include "client/Records.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace drench::game {

namespace {

/// World units from step to step: a runner's, for bodies of this height.
constexpr float stride = 105.0f;

/// The share of a stride that a standing body has behind it, so that the first step is heard soon.
constexpr float strideAtRest = 0.6f;

/// World units a tick. A jump begins with 11.5, a walk's unevenness stays below 2, and a body that
/// has just landed settles by less than 4.
constexpr float jumpingRise = 5.0f;
constexpr float settlingRise = 2.0f;
constexpr float fallingRise = -4.0f;

/// World units a tick that a fall loses when it ends; missed states hide a part of it.
constexpr float landingLoss = 2.0f;

/// The speed of a fall, world units a tick, that lands with full loudness: one from a balcony.
constexpr float loudestFall = 24.0f;
constexpr float softestLanding = 0.15f;

/// World units a tick along any axis: faster bodies were moved, by a respawn or a lying room.
constexpr float fastest = 60.0f;

/// World units from a body's feet down to the cube that carries it: a body that has just landed
/// hangs up to half of it above the floor.
constexpr float floorGap = 8.0f;

/// Ticks from splash to splash where a jet lands.
constexpr int splashPeriod = 9;

/// Loudness of what happens often, and of what one does oneself.
constexpr float jetSplashLoudness = 0.35f;
constexpr float stepLoudness = 0.6f;
constexpr float ownShare = 0.55f;

/// World units: no arena reaches as far, and beyond it single precision loses the steps.
constexpr float farthest = 65536.0f;

bool isPlausible(const PlayerUpdate& update) {
    const auto isNear = [](float coordinate) { return std::fabs(coordinate) < farthest; };
    const float length = update.direction.length();
    return update.id != 0 && isNear(update.position.x) && isNear(update.position.y) &&
           isNear(update.position.z) && length > 0.9f && length < 1.1f;
}

std::string nameOf(const PlayerUpdate& update) {
    return std::string(client::untilZero({update.name, sizeof update.name}));
}

bool mayHaveWalked(vec3 way, int ticks) {
    const float most = fastest * static_cast<float>(ticks);
    return std::fabs(way.x) < most && std::fabs(way.y) < most && std::fabs(way.z) < most;
}

} // namespace

std::vector<Cue> Cues::hear(const UpdateMessage& state, char ownId, int ticks,
                            std::optional<int> ownTicks) {
    cues_.clear();
    if (ticks < 1)
        return cues_;
    ownId_ = ownId;
    jets_.clear();
    std::vector<Body> bodies;
    for (const PlayerUpdate& update : state.updates) {
        const auto isSame = [&](const Body& each) { return each.id == update.id; };
        if (!isPlausible(update) || std::any_of(bodies.begin(), bodies.end(), isSame))
            continue;
        const int passed = update.id == ownId ? ownTicks.value_or(ticks) : ticks;
        const auto before = std::find_if(bodies_.begin(), bodies_.end(), isSame);
        if (before != bodies_.end() && before->name == nameOf(update)) {
            bodies.push_back(follow(*before, update, passed));
            continue;
        }
        Body& body = bodies.emplace_back();
        body.id = update.id;
        body.name = nameOf(update);
        body.position = update.position;
        body.points = update.points;
        body.walked = strideAtRest * stride;
        body.soaked = client::isSoaked(update);
        if (!body.soaked && (begun_ || isOwn(body)))
            add(Sound::spawn, body, 1.0f);
        hearJet(body, update, update.shooting, passed);
    }
    bodies_ = std::move(bodies);
    begun_ = true;
    return std::move(cues_);
}

Cues::Body Cues::follow(const Body& before, const PlayerUpdate& now, int ticks) {
    Body body = before;
    body.points = now.points;
    body.soaked = client::isSoaked(now);
    const bool isHit = body.soaked && !before.soaked;
    // A point is lost by being soaked in the same tick.
    const std::int64_t soakings = std::int64_t{now.points} - before.points + (isHit ? 1 : 0);
    if (isOwn(body) && soakings > 0)
        add(Sound::soaking, body, 1.0f);

    if (isHit)
        add(isOwn(body) ? Sound::soaked : Sound::splash, before, 1.0f);
    if (body.soaked || before.soaked) {
        body.position = now.position;
        body.rise = 0.0f;
        if (!body.soaked)
            add(Sound::spawn, body, 1.0f);
    } else if (ticks > 0) {
        body.position = now.position;
        hearBody(body, before, ticks);
    }
    hearJet(body, now, now.shooting && !before.shooting, ticks);
    return body;
}

void Cues::hearBody(Body& body, const Body& before, int ticks) {
    const vec3 way = body.position - before.position;
    if (!mayHaveWalked(way, ticks)) {
        body.rise = 0.0f;
        return;
    }
    body.rise = way.y / static_cast<float>(ticks);
    if (body.rise > jumpingRise && before.rise < settlingRise)
        add(Sound::jump, body, stepLoudness);
    if (before.rise < fallingRise && body.rise > before.rise + landingLoss) {
        const float loudness = std::clamp(-before.rise / loudestFall, softestLanding, 1.0f);
        add(Sound::landing, body, loudness, materialBelow(*map_, body.position).value_or(0));
        // A part of the fall lies in these ticks, if some were missed: it must not land again.
        body.rise = 0.0f;
    }
    hearWalk(body, way, ticks);
}

void Cues::hearWalk(Body& body, vec3 way, int ticks) {
    const std::optional<int> material = materialBelow(*map_, body.position);
    if (!material || std::fabs(body.rise) > settlingRise)
        return;
    const float walked = std::hypot(way.x, way.z);
    if (walked < 0.1f * static_cast<float>(ticks)) {
        body.walked = strideAtRest * stride;
        return;
    }
    body.walked += walked;
    if (body.walked < stride)
        return;
    // One step is heard, however many were missed.
    body.walked = std::fmod(body.walked, stride);
    add(Sound::step, body, stepLoudness, *material);
}

void Cues::hearJet(Body& body, const PlayerUpdate& update, bool begins, int ticks) {
    body.shooting = update.shooting && !body.soaked;
    if (!body.shooting)
        return;
    if (begins) {
        add(Sound::jet, body, 1.0f);
        body.ticksToSplash = 0;
    }
    jets_.push_back({body.id, isOwn(body) ? std::nullopt : std::optional(body.position)});
    body.ticksToSplash -= ticks;
    if (body.ticksToSplash > 0)
        return;
    body.ticksToSplash = splashPeriod;
    const vec3 end = map_->pointOfIntersection(update.position, update.direction);
    if (isMiss(end))
        return;
    const arena::CellIndex hit = arena::cellAt(*map_, end + update.direction);
    cues_.push_back({Sound::splash, end, jetSplashLoudness,
                     arena::cell(*map_, hit.column, hit.row, hit.depth).cellValue, isOwn(body)});
}

void Cues::add(Sound sound, const Body& body, float loudness, int material) {
    const bool isEvent = sound == Sound::soaking || sound == Sound::soaked || sound == Sound::spawn;
    const bool own = isOwn(body);
    cues_.push_back({sound, own ? std::nullopt : std::optional(body.position),
                     own && !isEvent ? ownShare * loudness : loudness, material, own});
}

std::optional<int> materialBelow(const MapManager& map, vec3 centre) {
    if (!map.hasCells())
        return std::nullopt;
    const vec3 feet = centre - vec3(0.0f, 0.5f * Player::bodySize.y + floorGap, 0.0f);
    const float x = 0.5f * Player::bodySize.x;
    const float z = 0.5f * Player::bodySize.z;
    for (const vec3 corner :
         {vec3(0.0f), vec3(x, 0.0f, z), vec3(-x, 0.0f, z), vec3(x, 0.0f, -z), vec3(-x, 0.0f, -z)}) {
        if (!map.collides(feet + corner))
            continue;
        const arena::CellIndex at = arena::cellAt(map, feet + corner);
        return arena::cell(map, at.column, at.row, at.depth).cellValue;
    }
    return std::nullopt;
}

} // namespace drench::game
