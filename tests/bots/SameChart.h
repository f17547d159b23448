#pragma once

#include "bots/Roadmap.h"

#include <gtest/gtest.h>

using namespace drench;

/// Everything that a chart says of its map is alike.
inline void expectSameChart(const bots::Roadmap& a, const bots::Roadmap& b) {
    const auto isSame = [](const arena::CellIndex& one, const arena::CellIndex& other) {
        return one.column == other.column && one.row == other.row && one.depth == other.depth;
    };
    ASSERT_EQ(a.reach.places.size(), b.reach.places.size());
    ASSERT_EQ(a.roads.size(), b.roads.size());
    for (std::size_t i = 0; i < a.reach.places.size(); ++i) {
        SCOPED_TRACE(i);
        const arena::StandingPlace& place = a.reach.places[i];
        const arena::StandingPlace& other = b.reach.places[i];
        EXPECT_TRUE(isSame(place.feet, other.feet));
        EXPECT_EQ(place.position.x, other.position.x);
        EXPECT_EQ(place.position.y, other.position.y);
        EXPECT_EQ(place.position.z, other.position.z);
        EXPECT_EQ(place.next, other.next);
        ASSERT_EQ(a.roads[i].size(), b.roads[i].size());
        for (std::size_t j = 0; j < a.roads[i].size(); ++j) {
            EXPECT_EQ(a.roads[i][j].to, b.roads[i][j].to);
            EXPECT_EQ(a.roads[i][j].gait, b.roads[i][j].gait);
            EXPECT_EQ(a.roads[i][j].ticks, b.roads[i][j].ticks);
        }
    }
    EXPECT_EQ(a.reach.landings, b.reach.landings);
    EXPECT_EQ(a.reach.ticks, b.reach.ticks);
    ASSERT_EQ(a.reach.departures.size(), b.reach.departures.size());
    for (std::size_t i = 0; i < a.reach.departures.size(); ++i)
        EXPECT_TRUE(isSame(a.reach.departures[i], b.reach.departures[i])) << i;
    EXPECT_EQ(a.placeOfCell, b.placeOfCell);
}
