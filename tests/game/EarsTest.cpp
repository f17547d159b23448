#include "game/Ears.h"

#include "tests/game/Snapshots.h"
#include "tests/support/Arenas.h"

#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

using client::Prediction;

constexpr vec3 middle{1024.0f, standing, 1024.0f};

class Hearkening : public testing::Test {
  protected:
    MapManager map = loaded(emptyCourt());
    Ears ears{map};
    std::int64_t tick = 0;

    void see(std::initializer_list<PlayerUpdate> players,
             const std::optional<Prediction::Body>& own = {}) {
        client::Snapshot snapshot{};
        snapshot.state = snapshotOf(players);
        snapshot.tick = tick++;
        ears.take(snapshot, '1', own);
    }

    int count(Sound sound) const {
        return static_cast<int>(std::count_if(ears.cues().begin(), ears.cues().end(),
                                              [&](const Cue& cue) { return cue.sound == sound; }));
    }

    Prediction::Body bodyIn(std::int64_t ownTick, vec3 at, bool shooting = false) {
        Player player = bodyAt(map, at, at + vec3(0.0f, 0.0f, 1.0f));
        player.keys[keyIndex::shoot] = shooting;
        return {player, ownTick, at};
    }
};

} // namespace

TEST_F(Hearkening, CollectUntilAFrameHasPassedItOn) {
    PlayerUpdate walker = playerAt('2', middle);
    for (int i = 0; i < 100; ++i) {
        see({walker});
        walker.position.z += 6.0f;
    }
    EXPECT_EQ(count(Sound::step), 6);
    ears.forget();
    EXPECT_TRUE(ears.cues().empty());
}

TEST_F(Hearkening, HearOneselfWhereOneIsPredicted) {
    const PlayerUpdate late = playerAt('1', middle);
    for (int i = 0; i < 100; ++i)
        see({late}, bodyIn(i, middle + vec3(0.0f, 0.0f, 6.0f * static_cast<float>(i)), i > 50));
    EXPECT_EQ(count(Sound::step), 6);
    EXPECT_EQ(count(Sound::jet), 1);
    ASSERT_EQ(ears.jets().size(), 1u);
    EXPECT_FALSE(ears.jets()[0].place.has_value());
}

TEST_F(Hearkening, HearThePredictedTickOnceOnly) {
    float height = 500.0f;
    float speed = 0.0f;
    const PlayerUpdate late = playerAt('1', middle);
    for (int i = 0; i < 40; ++i) {
        // Two ticks at once, then none: a fall without an end.
        if (i % 2 == 1) {
            for (int each = 0; each < 2; ++each)
                height += speed -= 0.5f;
        }
        see({late}, bodyIn(i / 2 * 2 + i % 2 * 2, middle + vec3(0.0f, height, 0.0f)));
    }
    EXPECT_EQ(count(Sound::landing), 0);
}

TEST_F(Hearkening, WordsOfOthersTick) {
    ears.take(client::Chat{'2', "hi"}, '1', {});
    EXPECT_EQ(count(Sound::chat), 1);
    ears.take(client::Chat{'1', "hi"}, '1', {});
    EXPECT_EQ(count(Sound::chat), 1) << "one's own";
    ears.take(client::Notice{"hi"}, '1', {});
    EXPECT_EQ(ears.cues().size(), 1u);
}

TEST_F(Hearkening, RoomThatTalksOnIsNotHeardForEver) {
    for (int i = 0; i < 1000; ++i)
        ears.take(client::Chat{'2', "hi"}, '1', {});
    EXPECT_EQ(ears.cues().size(), 64u);
}

TEST_F(Hearkening, SnapshotsLongApartAreHeardOnce) {
    see({playerAt('2', middle)});
    tick += std::int64_t{1} << 40;
    see({playerAt('2', middle)});
    EXPECT_TRUE(ears.cues().empty());
}
