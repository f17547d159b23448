#include "bench/Witness.h"

#include <algorithm>
#include <utility>

namespace drench::bench {

namespace {

using client::Hypothesis;
using client::SearchLimits;

/// More than enough: nothing hurries.
constexpr int budgetOfSearch = 1'000'000;
constexpr std::size_t mostHypotheses = 200;

/// Milliseconds. Beyond what any line of these does to a record.
constexpr double widestMisfit = 400.0;

/// A hypothesis, and the index of the one that it continues, a tick before.
struct Node {
    Hypothesis hypothesis;
    std::size_t parent;
};

/// The spawn from which the first sighting came about, without any record.
std::vector<Node> spawns(MapManager& map, const PlayerUpdate& seen) {
    std::vector<Node> found;
    for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
        Hypothesis start;
        start.player = Player(seen.id, nullptr, 0.0f, pose);
        start.player.setMapMan(&map);
        start.player.update(0.0f);
        if (client::isSeen(start.player, seen))
            found.push_back({start, 0});
    }
    return found;
}

std::vector<Node> continued(const std::vector<Node>& nodes, const client::SentRecords& records,
                            const PlayerUpdate& seen, const client::TickTimes& times) {
    const double narrow = 3.0 * times.spread + 3.0;
    const double wide = 3.0 * narrow;
    const SearchLimits searches[] = {{0, narrow, narrow, wide, false},
                                     {1, narrow, wide, wide, false},
                                     {2, narrow, wide, wide, false},
                                     {4, narrow, wide, wide, false},
                                     {8, narrow, wide, wide, false},
                                     {16, narrow, wide, wide, false},
                                     {0, wide, wide, wide, false},
                                     {2, wide, wide, wide, false},
                                     {4, wide, wide, wide, false},
                                     {8, wide, wide, wide, false},
                                     {0, widestMisfit, widestMisfit, widestMisfit, false},
                                     {2, widestMisfit, widestMisfit, widestMisfit, false}};
    for (const SearchLimits& limits : searches) {
        std::vector<Node> found;
        int budget = budgetOfSearch;
        for (std::size_t parent = 0; parent < nodes.size(); ++parent) {
            for (Hypothesis& next :
                 client::explain(nodes[parent].hypothesis, records, seen, times, limits, budget)) {
                next.lost.erase(next.lost.begin(),
                                std::lower_bound(next.lost.begin(), next.lost.end(),
                                                 nodes[parent].hypothesis.next));
                found.push_back({std::move(next), parent});
            }
        }
        if (!found.empty())
            return found;
    }
    return {};
}

/// Keeps the likeliest of the nodes with the same future, and of these the likeliest.
void prune(std::vector<Node>& nodes) {
    std::stable_sort(nodes.begin(), nodes.end(), [](const Node& a, const Node& b) {
        return a.hypothesis.cost < b.hypothesis.cost;
    });
    std::vector<Hypothesis> distinct;
    std::vector<Node> kept;
    for (Node& node : nodes) {
        const std::size_t before = distinct.size();
        client::merge(distinct, Hypothesis(node.hypothesis));
        if (distinct.size() > before && kept.size() < mostHypotheses)
            kept.push_back(std::move(node));
    }
    nodes = std::move(kept);
}

/// The records that acted in the newest tick of a hypothesis which continues another.
template<class Take>
void forEachActed(const Hypothesis& before, const Hypothesis& after, const Take& take) {
    for (std::uint64_t number = before.next; number < after.next; ++number) {
        if (!std::binary_search(after.lost.begin(), after.lost.end(), number))
            take(number);
    }
}

} // namespace

std::optional<Truth> testify(MapManager& map, const std::vector<Sighting>& sightings,
                             const client::SentRecords& records, double guessedDelay,
                             std::string& problem) {
    client::ArrivalLine line;
    line.guessDelay(guessedDelay);
    std::vector<std::vector<Node>> ticks;
    for (std::size_t tick = 0; tick < sightings.size(); ++tick) {
        const Sighting& sighting = sightings[tick];
        std::vector<Node> nodes;
        if (tick == 0) {
            nodes = spawns(map, sighting.seen);
        } else {
            client::TickTimes times;
            times.due = std::min(sighting.at, line.due() + sighting.period);
            times.arrival = sighting.at;
            times.period = sighting.period;
            times.delay = line.delay();
            times.spread = line.spread();
            nodes = continued(ticks.back(), records, sighting.seen, times);
            prune(nodes);
        }
        if (nodes.empty()) {
            problem = "no explanation of tick " + std::to_string(tick) + " of " +
                      std::to_string(sightings.size());
            return std::nullopt;
        }
        const auto index = static_cast<std::int64_t>(tick);
        line.arrival(index, index - 1, sighting.at, sighting.period);
        if (tick > 0) {
            const Node& likeliest = nodes.front();
            forEachActed(ticks.back()[likeliest.parent].hypothesis, likeliest.hypothesis,
                         [&](std::uint64_t number) {
                             if (records[number].isView)
                                 line.acted(records[number].sentAt);
                         });
        }
        ticks.push_back(std::move(nodes));
    }

    Truth truth;
    truth.delay = line.delay();
    truth.states.resize(ticks.size(), ticks.front().front().hypothesis.player);
    std::size_t chosen = 0;
    for (std::size_t tick = ticks.size(); tick-- > 0;) {
        const Node& node = ticks[tick][chosen];
        truth.states[tick] = node.hypothesis.player;
        if (tick > 0)
            forEachActed(ticks[tick - 1][node.parent].hypothesis, node.hypothesis,
                         [&](std::uint64_t number) { truth.acted[number] = tick; });
        chosen = node.parent;
    }
    return truth;
}

} // namespace drench::bench
