#include "game/Autopilot.h"

#include "tests/client/SessionLine.h"
#include "tests/game/Snapshots.h"
#include "tests/support/Courts.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

using namespace drench;
using namespace drench::game;

namespace {

/// Somebody in a room whose inputs come by themselves.
class Piloted : public testing::Test {
  protected:
    TemporaryFolder cache;
    MapManager ring = loaded(arenaText(32, 16, 32, solidInRing));
    MapManager court = loaded(emptyCourt());
    PlayingLine line;
    Autopilot autopilot;
    std::int64_t tick = 0;

    Piloted() { setenv("XDG_CACHE_HOME", cache.path.c_str(), 1); }

    /// A tick of the room; the records that the room gets for it.
    Strings act() {
        const PlayerUpdate ann = playerAt('1', {1024.0f, 3 * 64.0f + 75.25f, 256.0f}, "Ann");
        line.now += milliseconds(17);
        // A silent room would be given up.
        line.hear(bytesOf(snapshotOf({ann})));
        line.events();
        autopilot.act({snapshotOf({ann}), tick++, line.now}, line.session,
                      [](const PlayerUpdate& self) { return snapshotOf({self}); });
        line.session.service(line.now);
        return allButKeepAlives(line.heardByRoom());
    }

    /// Whether it acts by itself within a minute.
    bool actsAtLast() {
        for (int i = 0; i < 12'000; ++i) {
            if (!act().empty())
                return true;
            std::this_thread::sleep_for(milliseconds(5));
        }
        return false;
    }
};

} // namespace

TEST_F(Piloted, WithoutAskingNothingIsDone) {
    autopilot.enterArena(ring);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(act(), Strings{});
}

TEST_F(Piloted, ABotStandsUntilTheArenaIsChartedAndPlaysThen) {
    autopilot.letBotPlay(1.0);
    autopilot.enterArena(ring);
    EXPECT_EQ(act(), Strings{}) << "charting takes more than no time";
    EXPECT_TRUE(actsAtLast());
    autopilot.enterArena(ring);
    bool acts = false;
    for (int i = 0; i < 100; ++i)
        acts = !act().empty() || acts;
    EXPECT_TRUE(acts) << "the chart of the same arena is at hand";
}

TEST_F(Piloted, ABotChartsTheArenaThatIsFound) {
    autopilot.letBotPlay(1.0);
    autopilot.enterArena(court);
    EXPECT_EQ(act(), Strings{});
    autopilot.enterArena(ring);
    EXPECT_TRUE(actsAtLast()) << "though another chart was under way";
}

TEST_F(Piloted, AScriptActsAtItsTicks) {
    autopilot.playScript(bots::readScript("at 3 say hello\nat 5 leave\n", "script"));
    autopilot.enterArena(ring);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(act(), Strings{}) << i;
    EXPECT_EQ(act(), Strings{chatDatagram('1', "hello")});
    EXPECT_FALSE(autopilot.hasLeft());
    act();
    act();
    EXPECT_TRUE(autopilot.hasLeft());
}
