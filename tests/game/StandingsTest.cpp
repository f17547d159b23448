#include "game/Standings.h"

#include "tests/game/Snapshots.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

PlayerUpdate with(int points, char id) {
    PlayerUpdate player = playerAt(id, {500.0f, 139.0f, 500.0f}, "somebody");
    player.points = points;
    return player;
}

} // namespace

TEST(Standings, TheBestComeFirstAndEqualsByTheirIdentifiers) {
    Match match;
    match.take(client::Joined{'1'}, {});
    client::Snapshot snapshot{};
    snapshot.state = snapshotOf({with(-3, '1'), with(7, '4'), with(2, '2'), with(7, '3')});
    match.take(snapshot, {});
    std::string order;
    for (const MatchPlayer& player : standings(match))
        order += player.id;
    EXPECT_EQ(order, "3421");
}

TEST(Standings, OfNobodyAreEmpty) {
    EXPECT_TRUE(standings(Match()).empty());
}
