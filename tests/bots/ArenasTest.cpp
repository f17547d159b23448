#include "arena/ArenaFile.h"
#include "arena/Arrivals.h"
#include "bots/Geometry.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

using namespace drench;

TEST(Arenas, HaveNoCornerFarFromEveryLanding) {
    // Players meet around the landings. Further out nobody finds anybody.
    constexpr float farthest = 16.0f * arena::cubeEdge;
    int arenas = 0;
    for (const auto& entry : std::filesystem::directory_iterator(DRENCH_ARENAS)) {
        arena::ArenaFile file = arena::readWholeArena(entry.path());
        MapManager& map = file.text.map;
        const std::vector<arena::Arrival> arrivals = arena::arrivals(map);
        for (int i = 1; i + 1 < map.columns; ++i) {
            for (int k = 1; k + 1 < map.depth; ++k) {
                const vec3 middle = bots::bodyIn({i, 1, k});
                EXPECT_TRUE(std::any_of(arrivals.begin(), arrivals.end(),
                                        [&](const arena::Arrival& arrival) {
                                            return bots::horizontalDistance(arrival.landed.position,
                                                                            middle) <= farthest;
                                        }))
                    << entry.path() << ", column " << i << ", depth " << k;
            }
        }
        ++arenas;
    }
    EXPECT_GE(arenas, 3);
}
