#include "client/Hypothesis.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <utility>

namespace drench::client {

namespace {

template<typename T>
bool sameBits(const T& a, const T& b) {
    using Bytes = std::array<std::byte, sizeof(T)>;
    return std::bit_cast<Bytes>(a) == std::bit_cast<Bytes>(b);
}

bool isClose(const vec3& a, const vec3& b, float distance) {
    const vec3 apart = a - b;
    return std::abs(apart.x) <= distance && std::abs(apart.y) <= distance &&
           std::abs(apart.z) <= distance;
}

bool isClose(const quat& a, const quat& b) {
    return isClose(vec3(a.x, a.y, a.z), vec3(b.x, b.y, b.z), closeView) &&
           std::abs(a.w - b.w) <= closeView;
}

} // namespace

Milliseconds TickTimes::misfit(const SentRecord& record, int tick) const {
    const Milliseconds expected = record.sentAt + delay;
    const Milliseconds dueThen = due - (count - tick) * period;
    // A late snapshot may show a late tick, in which more had arrived.
    const Milliseconds latest = tick == count ? std::max(due, arrival) : dueThen;
    if (expected > latest)
        return latest - expected;
    return std::max(0.0, dueThen - period - expected);
}

void merge(std::vector<Hypothesis>& hypotheses, Hypothesis&& hypothesis) {
    for (Hypothesis& other : hypotheses) {
        if (other.next == hypothesis.next && sameFuture(other.player, hypothesis.player)) {
            if (hypothesis.cost < other.cost)
                other = std::move(hypothesis);
            return;
        }
    }
    hypotheses.push_back(std::move(hypothesis));
}

bool sameFuture(const Player& a, const Player& b) {
    return sameBits(a.position, b.position) && sameBits(a.look, b.look) &&
           sameBits(a.direction, b.direction) && sameBits(a.strafeVector, b.strafeVector) &&
           sameBits(a.rotation, b.rotation) && sameBits(a.verticalSpeed, b.verticalSpeed) &&
           sameBits(a.box.min, b.box.min) && sameBits(a.box.max, b.box.max) &&
           sameBits(a.keys, b.keys) && a.inAir == b.inAir && a.dead == b.dead;
}

bool hasView(const Player& player, const PlayerUpdate& seen, bool isTolerant) {
    if (!isTolerant)
        return sameBits(player.direction, seen.direction) &&
               sameBits(player.rotation, seen.rotation);
    return isClose(player.direction, seen.direction, closeView) &&
           isClose(player.rotation, seen.rotation);
}

bool hasPosition(const Player& player, const PlayerUpdate& seen, bool isTolerant) {
    return isTolerant ? isClose(player.position, seen.position, closePosition)
                      : sameBits(player.position, seen.position);
}

void takeOver(Player& player, const PlayerUpdate& seen) {
    if (!sameBits(player.position, seen.position)) {
        player.look += seen.position - player.position;
        player.position = seen.position;
        player.box = Box(seen.position, Player::bodySize);
    }
    if (!sameBits(player.direction, seen.direction)) {
        player.direction = seen.direction;
        player.look = player.position + player.direction;
    }
    player.rotation = seen.rotation;
}

bool isSeen(const Player& player, const PlayerUpdate& seen) {
    return hasView(player, seen, false) && hasPosition(player, seen, false);
}

} // namespace drench::client
