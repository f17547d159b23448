#include "client/Interpolation.h"

#include "client/Records.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace drench::client {

namespace {

/// Snapshots kept: more than any line lets drawing lie behind.
constexpr std::size_t mostMoments = 64;

/// World units. Nobody moves as far in a tick but by a spawn or a soaking; falls are slower.
constexpr float leastLeap = 80.0f;

/// The share of a step from which on a key must have been held.
constexpr float heldShare = 0.5f;

/// Ticks behind the newest that a good line needs, apart from lateness: a whole one for the next
/// snapshot, most of another for one that is lost.
constexpr double delayWithoutLateness = 1.75;
constexpr double leastDelay = 2.0;

/// Standard deviations of lateness that drawing waits for.
constexpr double awaitedDeviations = 2.0;

constexpr double gentleDrift = 1.0 / 20.0;
constexpr double firmDrift = 1.0 / 2.0;
constexpr double clockJump = 30.0;

bool hasLeapt(const PlayerUpdate& from, const PlayerUpdate& to, std::int64_t ticks) {
    return isSoaked(from) != isSoaked(to) ||
           !((to.position - from.position).length() <= leastLeap * static_cast<float>(ticks));
}

vec3 blend(vec3 from, vec3 to, float share) {
    return from + (to - from) * share;
}

/// The normalised blend of two unit quaternions, the shorter way round.
quat blend(const quat& from, const quat& to, float share) {
    const float dot = from.x * to.x + from.y * to.y + from.z * to.z + from.w * to.w;
    const float sign = dot < 0.0f ? -1.0f : 1.0f;
    quat blended(from.x + (sign * to.x - from.x) * share, from.y + (sign * to.y - from.y) * share,
                 from.z + (sign * to.z - from.z) * share, from.w + (sign * to.w - from.w) * share);
    blended.normalize();
    return blended;
}

PlayerUpdate blend(const PlayerUpdate& from, const PlayerUpdate& to, float share) {
    PlayerUpdate blended = from;
    blended.position = blend(from.position, to.position, share);
    blended.direction = blend(from.direction, to.direction, share);
    blended.direction.normalize();
    blended.rotation = blend(from.rotation, to.rotation, share);
    return blended;
}

/// A key of two that push opposite ways, by the share of a whole step that was made along them.
void hold(Player& player, float share, int along, int against) {
    player.setKey(along, share > heldShare);
    player.setKey(against, share < -heldShare);
}

/// A player who moves on as between two states, `ticks` ticks apart, in which it did not leap.
Player movingOn(const PlayerUpdate& before, const PlayerUpdate& now, std::int64_t ticks,
                MapManager& map) {
    Player player = bodyAt(map, now.position, now.position + now.direction);
    const vec3 step = (now.position - before.position) / static_cast<float>(ticks);
    const vec3 ahead(player.direction.x, 0.0f, player.direction.z);
    const vec3 left(player.strafeVector.x, 0.0f, player.strafeVector.z);
    const float slope = ahead.dot(ahead);
    if (slope > 0.0f)
        hold(player, step.dot(ahead) / (slope * Player::walkingSpeed), keyIndex::forward,
             keyIndex::backward);
    hold(player, step.dot(left) / Player::strafingSpeed, keyIndex::left, keyIndex::right);
    if (step.y != 0.0f) {
        player.inAir = true;
        // The mean speed was that of the time's middle.
        player.verticalSpeed = static_cast<float>(
            static_cast<double>(step.y) - Player::gravity * static_cast<double>(ticks - 1) / 2.0);
    }
    return player;
}

} // namespace

void Interpolation::take(const UpdateMessage& state, std::int64_t tick, Time arrival) {
    if (!moments_.empty() && tick <= moments_.back().tick)
        return;
    const std::vector<PlayerUpdate> before =
        hasDrawn_ ? trueAt(drawn_) : std::vector<PlayerUpdate>();
    moments_.push_back({tick, state});
    if (moments_.size() > mostMoments)
        moments_.pop_front();
    for (const PlayerUpdate& after : hasDrawn_ ? trueAt(drawn_) : std::vector<PlayerUpdate>()) {
        const auto same =
            std::find_if(before.begin(), before.end(),
                         [&](const PlayerUpdate& player) { return player.id == after.id; });
        VisualError& error = errors_[static_cast<std::size_t>(after.id - '1')];
        if (same == before.end() || hasLeapt(*same, after, 1))
            error.clear();
        else
            error.add(same->position - after.position, arrival);
    }
}

std::vector<PlayerUpdate> Interpolation::at(double tick, Time now) {
    if (moments_.empty())
        return {};
    drawn_ = tick;
    hasDrawn_ = true;
    std::vector<PlayerUpdate> players = trueAt(tick);
    for (PlayerUpdate& player : players) {
        if (!isSoaked(player))
            player.position += errors_[static_cast<std::size_t>(player.id - '1')].at(now);
    }
    return players;
}

/// The same without what is left of corrections.
std::vector<PlayerUpdate> Interpolation::trueAt(double tick) const {
    const double beyond = tick - static_cast<double>(moments_.back().tick);
    if (beyond >= 0.0)
        return carriedOn(beyond);
    auto after = moments_.end() - 1;
    while (after != moments_.begin() && static_cast<double>((after - 1)->tick) > tick)
        --after;
    const Moment& later = *after;
    const Moment& earlier = after == moments_.begin() ? later : *(after - 1);
    const double span = static_cast<double>(later.tick - earlier.tick);
    const double share =
        span > 0.0 ? std::clamp((tick - static_cast<double>(earlier.tick)) / span, 0.0, 1.0) : 0.0;
    std::vector<PlayerUpdate> players;
    for (const PlayerUpdate& from : earlier.state.updates) {
        const PlayerUpdate* const to = playerWith(later.state, from.id);
        if (!to || !isPlayerId(from.id))
            continue;
        players.push_back(hasLeapt(from, *to, later.tick - earlier.tick)
                              ? from
                              : blend(from, *to, static_cast<float>(share)));
    }
    return players;
}

/// The newest snapshot's players, `ticks` later.
std::vector<PlayerUpdate> Interpolation::carriedOn(double ticks) const {
    const Moment& newest = moments_.back();
    const Moment* const before = moments_.size() > 1 ? &moments_[moments_.size() - 2] : nullptr;
    const double carried = std::min(ticks, double{longestCarry});
    const int whole = static_cast<int>(carried);
    std::vector<PlayerUpdate> players;
    for (const PlayerUpdate& player : newest.state.updates) {
        if (!isPlayerId(player.id))
            continue;
        players.push_back(player);
        const PlayerUpdate* const was = before ? playerWith(before->state, player.id) : nullptr;
        if (!was || isSoaked(player) || hasLeapt(*was, player, newest.tick - before->tick))
            continue;
        Player body = movingOn(*was, player, newest.tick - before->tick, *map_);
        for (int tick = 0; tick < whole; ++tick)
            body.update(0.0f);
        const vec3 last = body.position;
        body.update(0.0f);
        players.back().position =
            blend(last, body.position, static_cast<float>(carried - static_cast<double>(whole)));
    }
    return players;
}

double DrawnTick::advance(Time now, double target, double period) {
    const double passed =
        hasStarted_ ? std::chrono::duration<double, std::milli>(now - last_).count() / period : 0.0;
    last_ = now;
    const double expected = tick_ + passed;
    const double distance = target - expected;
    if (!hasStarted_ || !(std::abs(distance) <= clockJump)) {
        hasStarted_ = true;
        tick_ = target;
        return tick_;
    }
    const double most = passed * (std::abs(distance) > 1.0 ? firmDrift : gentleDrift);
    tick_ = expected + std::clamp(distance, -most, most);
    return tick_;
}

double interpolationDelay(double lateness, double spread, double period) {
    return std::max(leastDelay,
                    delayWithoutLateness + (lateness + awaitedDeviations * spread) / period);
}

} // namespace drench::client
