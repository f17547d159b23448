#include "client/PredictionStart.h"

#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace drench::client {

namespace {

/// The effort to find a spawn at most: three milliseconds, if a dozen snapshots were missed.
constexpr int spawnBudget = 60'000;

/// World units. How far a body may be from a spawn pose's column to have started there, a tick.
constexpr float wanderPerTick = 10.0f;

/// World units. The keys of a walk are believed to have changed if that explains a step better by
/// this for each.
constexpr float priceOfOtherKey = 0.02f;

/// Holds the keys that best lead from a place to `player`'s in one tick, walls included. Of
/// several, those stay that are held already.
void guessWalk(Player& player, const vec3& before) {
    constexpr int walkKeys[] = {keyIndex::right, keyIndex::left, keyIndex::backward,
                                keyIndex::forward};
    const Player held = player;
    float least = std::numeric_limits<float>::max();
    for (int keys = 0; keys < 1 << std::size(walkKeys); ++keys) {
        Player walking = held;
        float changes = 0.0f;
        for (std::size_t i = 0; i < std::size(walkKeys); ++i) {
            bool& key = walking.keys[walkKeys[i]];
            changes += key != ((keys >> i & 1) != 0) ? priceOfOtherKey : 0.0f;
            key = (keys >> i & 1) != 0;
        }
        const vec3 direction = walking.direction;
        walking.placeAt(before, before + direction);
        walking.verticalSpeed = held.position.y - before.y + static_cast<float>(Player::gravity);
        walking.inAir = true;
        walking.update(0.0f);
        const vec3 apart = walking.position - held.position;
        const float distance = std::abs(apart.x) + std::abs(apart.z) + changes;
        if (distance < least) {
            least = distance;
            std::copy(std::begin(walking.keys), std::end(walking.keys), std::begin(player.keys));
        }
    }
}

/// One hypothesis for each record that may be the first to act after a tick that was due at `due`,
/// from `start.next` on. The keys before it have acted on a player who lived by then.
std::vector<Hypothesis> startsFrom(Hypothesis start, const Evidence& evidence, bool hasLived,
                                   Milliseconds due, Milliseconds arrival) {
    const SentRecords& records = evidence.records;
    const ArrivalLine& line = evidence.line;
    std::vector<Hypothesis> starts;
    const Milliseconds slack = 3.0 * line.spread() + 2.0;
    // How much too early the record before acted.
    Milliseconds early = 0.0;
    const auto costOf = [&](Milliseconds late) {
        return (late * late + early * early) / (2.0 * line.spread() * line.spread());
    };
    for (start.next = std::max(start.next, records.begin()); start.next < records.end();
         ++start.next) {
        const SentRecord& record = records[start.next];
        const Milliseconds expected = record.sentAt + line.delay();
        if (expected > due - slack) {
            start.cost = costOf(std::max(0.0, due - expected));
            starts.push_back(start);
        }
        if (expected > arrival + slack)
            return starts;
        early = std::max(0.0, expected - arrival);
        if (hasLived && !record.isView && record.key != keyIndex::jump)
            record.actOn(start.player);
    }
    start.cost = costOf(0.0);
    starts.push_back(start);
    return starts;
}

/// A guess of the speed in the air: in free fall the mean speed over some ticks was that of the
/// middle of their time.
float fallingSpeed(float rise, int ticks) {
    const double mean = static_cast<double>(rise) / ticks;
    const double speed = mean - Player::gravity * (ticks - 1) / 2.0;
    return static_cast<float>(std::round(speed / Player::gravity) * Player::gravity);
}

} // namespace

std::vector<Hypothesis> startsAtSpawn(MapManager& map, const Evidence& evidence,
                                      std::int64_t tick) {
    const int likely = likelyTicks(evidence);
    int budget = spawnBudget;
    const int most =
        evidence.line.hasArrivals() ? std::min(likely + tickUncertainty, mostTicks) : mostTicks;
    for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
        Hypothesis start;
        start.player = Player(evidence.seen.id, nullptr, 0.0f, pose);
        start.player.setMapMan(&map);
        const vec3 apart = evidence.seen.position - start.player.position;
        const float reach = wanderPerTick * static_cast<float>(most);
        if (std::abs(apart.x) > reach || std::abs(apart.z) > reach)
            continue;
        if (isSeen(start.player, evidence.seen)) {
            start.tick = tick + likely;
            start.ticks = likely;
            return startsFrom(start, evidence, false, timesAfter(evidence, likely).due,
                              evidence.arrival);
        }
        std::vector<std::vector<Hypothesis>> starts;
        std::vector<Departure> departures;
        starts.reserve(static_cast<std::size_t>(most));
        for (int ticks = 1; ticks <= most; ++ticks) {
            TickTimes times = timesAfter(evidence, std::max(ticks, likely));
            times.count = ticks;
            start.tick = tick + std::max(0, likely - ticks);
            const Milliseconds spawned = times.due - ticks * evidence.period;
            starts.push_back(startsFrom(start, evidence, false, spawned, spawned));
            departures.push_back({times, starts.back()});
        }
        std::vector<Hypothesis> found = search(evidence, departures, false, budget);
        if (!found.empty())
            return found;
    }
    return {};
}

std::vector<Hypothesis> startsAtSight(MapManager& map, const Evidence& evidence, std::int64_t tick,
                                      const std::optional<PlayerUpdate>& before,
                                      const Hypothesis* likeliest) {
    const PlayerUpdate& seen = evidence.seen;
    const int ticks = likelyTicks(evidence);
    Hypothesis start;
    start.tick = tick + ticks;
    start.ticks = ticks;
    start.next = evidence.records.begin();
    start.player = bodyAt(map, seen.position, seen.position + seen.direction);
    start.player.direction = seen.direction;
    start.player.rotation = seen.rotation;
    if (likeliest) {
        std::copy(std::begin(likeliest->player.keys), std::end(likeliest->player.keys),
                  start.player.keys);
        // Under a wrong delay, earlier records may be still to act.
        if (evidence.line.knowsDelay())
            start.next = likeliest->next;
    }
    if (before && ticks == 1)
        guessWalk(start.player, before->position);
    std::vector<Hypothesis> starts =
        startsFrom(start, evidence, true, timesAfter(evidence, ticks).due, evidence.arrival);
    const std::size_t grounded = starts.size();
    for (std::size_t i = 0; i < grounded && before; ++i) {
        Hypothesis inAir = starts[i];
        inAir.player.inAir = true;
        inAir.player.verticalSpeed = fallingSpeed(seen.position.y - before->position.y, ticks);
        starts.push_back(std::move(inAir));
    }
    for (Hypothesis& hypothesis : starts)
        hypothesis.player.keys[keyIndex::shoot] = seen.shooting;
    return starts;
}

} // namespace drench::client
