#include "game/ArenaFinder.h"

#include "client/Records.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace drench::game {

namespace {

/// World units: bodies' boxes and positions may differ by their rounding, never by as much.
constexpr float slack = 1.0f;

/// World units a tick: a body that moves less does not rise. An undone step may leave its rounding.
constexpr float stillness = 0.01f;

/// World units a tick: bodies rise and fall by multiples of twice this.
constexpr float leastStep = 0.25f;

Box bodyWith(vec3 centre, float margin) {
    return Box(centre, Player::bodySize + vec3(2.0f * margin));
}

bool isPlaying(const PlayerUpdate& player) {
    return client::isPlayerId(player.id) && !client::isSoaked(player);
}

} // namespace

ArenaFinder::ArenaFinder(std::vector<const MapManager*> arenas)
    : arenas_(std::move(arenas)), contradictions_(arenas_.size(), 0) {}

void ArenaFinder::see(const client::Snapshot& snapshot) {
    std::vector<bool> contradicted(arenas_.size(), false);
    std::array<std::optional<Track>, maxPlayers> tracks;
    for (const PlayerUpdate& player : snapshot.state.updates) {
        if (!isPlaying(player))
            continue;
        const auto slot = static_cast<std::size_t>(player.id - '1');
        if (tracks[slot])
            continue;
        tracks[slot] = follow(player, snapshot.tick);
        const std::optional<Track>& before = tracks_[slot];
        const bool hasStopped = before && before->rise && tracks[slot]->rise &&
                                std::fabs(*tracks[slot]->rise) < stillness;
        for (std::size_t i = 0; i < arenas_.size(); ++i) {
            if (!mayStandAt(*arenas_[i], player.position) ||
                (hasStopped && !mayStopAt(*arenas_[i], before->position, *before->rise)))
                contradicted[i] = true;
        }
    }
    tracks_ = tracks;
    for (std::size_t i = 0; i < arenas_.size(); ++i)
        contradictions_[i] += contradicted[i] ? 1 : 0;
}

ArenaFinder::Track ArenaFinder::follow(const PlayerUpdate& player, std::int64_t tick) const {
    // World units a tick: no body moves faster, but a respawn moves it anywhere.
    constexpr float fastest = 60.0f;
    Track track{player.position, tick, std::nullopt};
    const std::optional<Track>& before = tracks_[static_cast<std::size_t>(player.id - '1')];
    if (!before || tick != before->tick + 1)
        return track;
    const vec3 way = player.position - before->position;
    if (std::fabs(way.x) < fastest && std::fabs(way.y) < fastest && std::fabs(way.z) < fastest)
        track.rise = way.y;
    return track;
}

ArenaFinder::Verdict ArenaFinder::verdict() const {
    const std::size_t left = fitting().size();
    if (left == 0)
        return Verdict::none;
    return left == 1 ? Verdict::one : Verdict::several;
}

std::vector<std::size_t> ArenaFinder::fitting() const {
    std::vector<std::size_t> fit;
    for (std::size_t i = 0; i < arenas_.size(); ++i) {
        if (contradictions_[i] <= mostContradictions)
            fit.push_back(i);
    }
    return fit;
}

std::size_t ArenaFinder::best() const {
    const std::vector<std::size_t> fit = fitting();
    if (!fit.empty())
        return fit.front();
    return static_cast<std::size_t>(
        std::min_element(contradictions_.begin(), contradictions_.end()) - contradictions_.begin());
}

bool mayStandAt(const MapManager& map, vec3 centre) {
    return centre.x >= 0.0f && centre.x <= map.width && centre.z >= 0.0f &&
           centre.z <= map.length && centre.y >= 0.0f && !map.collides(bodyWith(centre, -slack));
}

bool mayStopAt(const MapManager& map, vec3 centre, float rise) {
    const float step = rise - static_cast<float>(Player::gravity);
    // The top of a jump: nothing needs to stop it.
    if (std::fabs(step) < leastStep)
        return true;
    // Whoever touches a ceiling may jump again, and is stopped by it again.
    const auto isBlocked = [&](float upward) {
        return map.collides(bodyWith(centre + vec3(0.0f, upward, 0.0f), slack));
    };
    return isBlocked(step) || isBlocked(Player::takeOffSpeed);
}

} // namespace drench::game
