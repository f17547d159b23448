#include "arena/SpawnWays.h"

#include "arena/PlaceGraph.h"

namespace drench::arena {

namespace {

/// For each pair of spawns whether a way leads from the first to the second; never from or to a
/// spawn where nobody lands.
using Ways = std::vector<std::vector<bool>>;

Ways waysOf(const Reach& reach) {
    const std::size_t spawns = reach.landings.size();
    Ways ways(spawns, std::vector<bool>(spawns, false));
    for (std::size_t from = 0; from < spawns; ++from) {
        if (reach.landings[from] < 0)
            continue;
        const std::vector<bool> reached = reachableFrom(reach, reach.landings[from]);
        for (std::size_t to = 0; to < spawns; ++to)
            ways[from][to] =
                reach.landings[to] >= 0 && reached[static_cast<std::size_t>(reach.landings[to])];
    }
    return ways;
}

/// The largest group of spawns that reach each other; of equally large ones, the one with the
/// lowest number.
std::vector<int> mainGroup(const Ways& ways) {
    std::vector<int> largest;
    for (std::size_t first = 0; first < ways.size(); ++first) {
        std::vector<int> group;
        for (std::size_t other = 0; other < ways.size(); ++other) {
            if (ways[first][other] && ways[other][first])
                group.push_back(static_cast<int>(other));
        }
        if (group.size() > largest.size())
            largest = group;
    }
    return largest;
}

} // namespace

std::string spawnNames(const std::vector<int>& poses) {
    std::string names = poses.size() == 1 ? "spawn " : "spawns ";
    for (std::size_t i = 0; i < poses.size(); ++i) {
        if (i > 0)
            names += i + 1 == poses.size() ? " and " : ", ";
        names += std::to_string(poses[i] + 1);
    }
    return names;
}

std::vector<MissingWay> missingWays(const Reach& reach) {
    const Ways ways = waysOf(reach);
    const std::vector<int> main = mainGroup(ways);
    std::vector<int> cutOff;
    std::vector<int> neverEntered;
    std::vector<int> neverLeft;
    for (std::size_t pose = 0; pose < ways.size(); ++pose) {
        if (reach.landings[pose] < 0)
            continue;
        const auto some = static_cast<std::size_t>(main.front());
        const bool isEntered = ways[some][pose];
        const bool isLeft = ways[pose][some];
        if (!isEntered && !isLeft)
            cutOff.push_back(static_cast<int>(pose));
        else if (!isEntered)
            neverEntered.push_back(static_cast<int>(pose));
        else if (!isLeft)
            neverLeft.push_back(static_cast<int>(pose));
    }

    std::vector<MissingWay> missing;
    if (!cutOff.empty())
        missing.push_back({spawnNames(cutOff) + (cutOff.size() == 1 ? " is" : " are") +
                               " cut off: no way from there to " + spawnNames(main) +
                               ", and none back",
                           cutOff.front()});
    if (!neverEntered.empty())
        missing.push_back({"no way from " + spawnNames(main) + " to " + spawnNames(neverEntered),
                           neverEntered.front()});
    if (!neverLeft.empty())
        missing.push_back({"no way from " + spawnNames(neverLeft) + " to " + spawnNames(main),
                           neverLeft.front()});
    return missing;
}

} // namespace drench::arena
