#include "replay/Verification.h"

#include "client/Records.h"
#include "common/Chance.h"
#include "src/Player.h"
#include "tests/replay/RecordedMatch.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>

using replay::Frame;
using replay::RecordedTime;
using replay::Verification;

namespace {

/// The match as a player hears it over a line that delays by up to `jitter`, and loses and holds
/// back some states.
std::vector<Frame> overLine(const std::vector<Frame>& sent, std::uint64_t seed, double loss,
                            RecordedTime jitter, double heldBack) {
    Chance chance(seed);
    std::vector<Frame> heard;
    RecordedTime last(0);
    for (const Frame& frame : sent) {
        if (chance.happens(loss))
            continue;
        RecordedTime time = frame.time + RecordedTime(static_cast<std::int64_t>(
                                             chance.share() * static_cast<double>(jitter.count())));
        // Nobody overtakes, but those that are held back are overtaken.
        if (chance.happens(heldBack))
            time += std::chrono::milliseconds(50);
        else
            last = time = std::max(time, last);
        heard.push_back({time, frame.state});
    }
    std::stable_sort(heard.begin(), heard.end(),
                     [](const Frame& a, const Frame& b) { return a.time < b.time; });
    return heard;
}

/// Lets `alter` change the player '2' in each state in which it lives and moves, with its state in
/// the one before.
std::vector<Frame> altered(std::vector<Frame> frames,
                           const std::function<void(PlayerUpdate&, const PlayerUpdate&)>& alter) {
    const std::vector<Frame> honest = frames;
    for (std::size_t i = 1; i < frames.size(); ++i) {
        const PlayerUpdate* before = client::playerWith(honest[i - 1].state, '2');
        for (PlayerUpdate& player : frames[i].state.updates) {
            if (before && player.id == '2' && !client::isSoaked(player) &&
                !client::isSoaked(*before))
                alter(player, *before);
        }
    }
    return frames;
}

/// The steps of player '2' in which it walks.
std::uint64_t walkedSteps(const std::vector<Frame>& frames) {
    std::uint64_t count = 0;
    altered(frames, [&](PlayerUpdate& player, const PlayerUpdate& before) {
        count += player.position.x != before.position.x;
    });
    return count;
}

} // namespace

TEST(Verification, FindsNothingInAnHonestMatch) {
    RecordedMatch match;
    const Verification verification = replay::verify(match.frames, match.map);
    EXPECT_EQ(verification.states, match.frames.size());
    EXPECT_GT(verification.steps, 4500u);
    EXPECT_EQ(verification.impossibleSteps, 0u);
    EXPECT_EQ(verification.overGaps, 0u);
    EXPECT_EQ(verification.late, 0u);
}

TEST(Verification, FindsNothingInAnHonestMatchOverBadLines) {
    RecordedMatch match;
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        const Verification lossy = replay::verify(
            overLine(match.frames, seed, 0.02, std::chrono::milliseconds(0), 0.0), match.map);
        EXPECT_EQ(lossy.impossibleSteps, 0u) << seed;
        const Verification bad = replay::verify(
            overLine(match.frames, seed, 0.02, std::chrono::milliseconds(20), 0.01), match.map);
        EXPECT_EQ(bad.impossibleSteps, 0u)
            << seed << ": " << bad.listed.front().name << ' ' << bad.listed.front().what << " at "
            << bad.listed.front().time.count();
        EXPECT_GT(bad.steps, 4000u);
        EXPECT_LT(bad.overGaps, bad.steps / 10);
    }
}

TEST(Verification, FindsEverySingleStateThatIsShiftedOnASteadyLine) {
    RecordedMatch match;
    for (std::size_t i = 0; i < match.frames.size(); ++i)
        match.frames[i].time = std::chrono::microseconds(16400 * i);
    int shifted = 0;
    for (std::size_t i = 100; i < match.frames.size(); i += 97) {
        std::vector<Frame> frames = match.frames;
        for (PlayerUpdate& player : frames[i].state.updates) {
            if (player.id != '2' || client::isSoaked(player))
                continue;
            player.position.y += 0.3f;
            ++shifted;
            EXPECT_GE(replay::verify(frames, match.map).impossibleSteps, 1u) << i;
        }
    }
    EXPECT_GE(shifted, 5);
}

TEST(Verification, FindsAWalkThatIsAFewPercentTooFast) {
    RecordedMatch match;
    vec3 ahead;
    const std::vector<Frame> fast =
        altered(match.frames, [&](PlayerUpdate& player, const PlayerUpdate& before) {
            ahead += (player.position - before.position) * 0.05f;
            ahead.y = 0.0f;
            player.position += ahead;
        });
    const Verification verification = replay::verify(fast, match.map);
    EXPECT_GT(verification.impossibleSteps, walkedSteps(match.frames) / 2);
    ASSERT_FALSE(verification.listed.empty());
    EXPECT_EQ(verification.listed.front().id, '2');
    EXPECT_NE(verification.listed.front().what.find("units from where any keys lead"),
              std::string::npos);
}

TEST(Verification, FindsAWalkThatIsTooFastOverABadLine) {
    RecordedMatch match;
    vec3 ahead;
    const std::vector<Frame> fast =
        altered(match.frames, [&](PlayerUpdate& player, const PlayerUpdate& before) {
            ahead += (player.position - before.position) * 0.1f;
            ahead.y = 0.0f;
            player.position += ahead;
        });
    const Verification verification =
        replay::verify(overLine(fast, 1, 0.02, std::chrono::milliseconds(20), 0.0), match.map);
    EXPECT_GT(verification.impossibleSteps, 100u);
}

TEST(Verification, FindsJumpsThatAreTooHigh) {
    RecordedMatch match;
    float raised = 0.0f;
    const std::vector<Frame> high =
        altered(match.frames, [&](PlayerUpdate& player, const PlayerUpdate& before) {
            const float rise = player.position.y - before.position.y;
            raised = rise > 0.0f ? raised + 0.05f * rise : 0.0f;
            player.position.y += raised;
        });
    EXPECT_GT(replay::verify(high, match.map).impossibleSteps, 20u);
}

TEST(Verification, FindsAViewThatTurnsWithoutItsRotation) {
    RecordedMatch match;
    int changed = 0;
    const std::vector<Frame> wrong =
        altered(match.frames, [&](PlayerUpdate& player, const PlayerUpdate&) {
            if (++changed == 50)
                player.rotation.y += 0.02f;
        });
    const Verification verification = replay::verify(wrong, match.map);
    ASSERT_EQ(verification.impossibleSteps, 2u) << "there and back";
    EXPECT_EQ(verification.listed.front().what, "its rotation does not turn with its direction");
}

TEST(Verification, FindsWhoComesBackTooEarlyOrElsewhere) {
    RecordedMatch match;
    std::vector<Frame> early = match.frames;
    char victim = 0;
    RecordedTime soakedAt(0);
    std::size_t firstBack = 0;
    for (std::size_t i = 1; i < early.size() && firstBack == 0; ++i) {
        for (const PlayerUpdate& player : early[i].state.updates) {
            const PlayerUpdate* before = client::playerWith(early[i - 1].state, player.id);
            if (player.id == 0 || !before)
                continue;
            if (victim == 0 && client::isSoaked(player) && !client::isSoaked(*before)) {
                victim = player.id;
                soakedAt = early[i].time;
            }
            if (player.id == victim && !client::isSoaked(player) && client::isSoaked(*before))
                firstBack = i;
        }
    }
    ASSERT_NE(firstBack, 0u);
    std::vector<Frame> elsewhere = early;
    for (std::size_t i = firstBack; i < elsewhere.size(); ++i) {
        for (PlayerUpdate& player : elsewhere[i].state.updates) {
            if (player.id == victim && !client::isSoaked(player))
                player.position.x += 64.0f;
        }
    }
    const Verification moved = replay::verify(elsewhere, match.map);
    ASSERT_GE(moved.impossibleSteps, 1u);
    EXPECT_EQ(moved.listed.front().what, "comes back where no spawn is");

    // Without two of the seconds in between.
    std::vector<Frame> shorter;
    for (const Frame& frame : early) {
        const RecordedTime since = frame.time - soakedAt;
        if (since > std::chrono::seconds(1) && since < std::chrono::seconds(3))
            continue;
        shorter.push_back(frame);
        if (since >= std::chrono::seconds(3))
            shorter.back().time -= std::chrono::seconds(2);
    }
    bool isFound = false;
    for (const replay::Impossible& one : replay::verify(shorter, match.map).listed)
        isFound = isFound || (one.id == victim && one.what == "comes back too early");
    EXPECT_TRUE(isFound);
}

TEST(Verification, OfNothingIsEmpty) {
    RecordedMatch match;
    EXPECT_EQ(replay::verify({}, match.map).steps, 0u);
}
