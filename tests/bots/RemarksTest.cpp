#include "bots/Remarks.h"

#include "src/Messages.h"

#include <cctype>
#include <gtest/gtest.h>
#include <set>
#include <vector>

using namespace drench;

using bots::Remarks;

namespace {

struct Said {
    int tick;
    std::string text;
};

/// What is said over some ticks with these points at each.
template<typename Points>
std::vector<Said> listen(std::uint64_t seed, int ticks, const Points& pointsAt) {
    Remarks remarks{Chance(seed)};
    std::vector<Said> said;
    for (int tick = 0; tick < ticks; ++tick) {
        remarks.notePoints(pointsAt(tick));
        if (const auto text = remarks.take())
            said.push_back({tick, *text});
    }
    return said;
}

} // namespace

TEST(Remarks, AreRareHoweverMuchHappens) {
    constexpr int twentySeconds = 1240;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        int before = 0;
        for (const Said& said : listen(seed, 40000, [](int tick) { return tick / 20; })) {
            EXPECT_GE(said.tick - before, twentySeconds);
            before = said.tick;
        }
    }
}

TEST(Remarks, CelebrateASoakSometimes) {
    std::set<std::string> texts;
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        for (const Said& said : listen(seed, 5000, [](int tick) { return tick / 200; }))
            texts.insert(said.text);
    }
    EXPECT_GE(texts.size(), 3u);
}

TEST(Remarks, ComplainOnlyOfTheSecondSoakingInARow) {
    int afterOne = 0;
    int afterTwo = 0;
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        const auto once = [](int tick) { return tick < 3000 ? 0 : -1; };
        const auto twice = [](int tick) { return tick < 3000 ? 0 : tick < 3300 ? -1 : -2; };
        afterOne += !listen(seed, 3600, once).empty();
        afterTwo += !listen(seed, 3600, twice).empty();
    }
    EXPECT_EQ(afterOne, 0);
    EXPECT_GT(afterTwo, 10);
    EXPECT_LT(afterTwo, 40);
}

TEST(Remarks, AreNotInARowAcrossASuccess) {
    int said = 0;
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        // The success comes before anybody may speak, between two soakings.
        const auto points = [](int tick) {
            return tick < 500 ? 0 : tick < 700 ? -1 : tick < 2000 ? 0 : -1;
        };
        said += !listen(seed, 2500, points).empty();
    }
    EXPECT_EQ(said, 0);
}

TEST(Remarks, BreakALongSilence) {
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        const std::vector<Said> said = listen(seed, 16000, [](int) { return 0; });
        ASSERT_GE(said.size(), 1u);
        EXPECT_GE(said.front().tick, 5000);
    }
}

TEST(Remarks, FitAChatRecordAndArePlain) {
    // A soak, then two soakings, over and over; or nothing at all.
    const auto upAndDown = [](int tick) {
        return -(tick / 300) + (tick % 300 >= 100 && tick % 300 < 200 ? 1 : 0);
    };
    std::set<std::string> texts;
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        for (const Said& said : listen(seed, 6000, upAndDown))
            texts.insert(said.text);
        for (const Said& said : listen(seed, 16000, [](int) { return 0; }))
            texts.insert(said.text);
    }
    EXPECT_GE(texts.size(), 12u);
    for (const std::string& text : texts) {
        EXPECT_FALSE(text.empty());
        EXPECT_LE(text.size(), sizeof TalkMessage::text) << text;
        for (const char c : text)
            EXPECT_TRUE(std::isprint(static_cast<unsigned char>(c))) << text;
    }
}

TEST(Remarks, AreTakenOnce) {
    Remarks remarks{Chance(1)};
    int taken = 0;
    for (int tick = 0; tick < 16000; ++tick) {
        remarks.notePoints(0);
        if (remarks.take()) {
            ++taken;
            EXPECT_EQ(remarks.take(), std::nullopt);
        }
    }
    EXPECT_GT(taken, 0);
}
