#include "game/Pacing.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace drench;
using namespace drench::game;
using std::chrono::milliseconds;

namespace {

constexpr client::Time start{std::chrono::hours(1)};

} // namespace

TEST(Pacing, FramesAreDueAtEvenDistancesWhateverTheirOwnLengths) {
    Pacing pacing(50.0);
    EXPECT_LE(pacing.due(), start) << "the first one at once";
    pacing.begin(start);
    pacing.begin(pacing.due());
    const client::Time due = pacing.due();
    pacing.begin(due + milliseconds(7));
    EXPECT_EQ(pacing.due(), due + milliseconds(20)) << "a little late: the next is in time again";
}

TEST(Pacing, MissedFramesAreNotMadeUpFor) {
    Pacing pacing(50.0);
    pacing.begin(start);
    const client::Time late = start + milliseconds(500);
    pacing.begin(late);
    EXPECT_EQ(pacing.due(), late);
    pacing.begin(late);
    EXPECT_EQ(pacing.due(), late + milliseconds(20));
}

TEST(Pacing, AWindowThatNobodySeesIsDrawnSeldom) {
    Pacing pacing(100.0);
    pacing.begin(start);
    pacing.begin(start);
    pacing.rest(true);
    pacing.begin(start + milliseconds(10));
    EXPECT_EQ(pacing.due() - (start + milliseconds(10)), milliseconds(200));
    pacing.rest(false);
    const client::Time due = pacing.due();
    pacing.begin(due);
    EXPECT_EQ(pacing.due() - due, milliseconds(10));
}

TEST(Pacing, SleepsUntilSomethingComesOrTheTimeIsUp) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
    const auto slept = [&](milliseconds length) {
        const client::Time before = client::Clock::now();
        sleepOnSockets({ends, 1}, before, before + length);
        return client::Clock::now() - before;
    };
    EXPECT_GE(slept(milliseconds(30)), milliseconds(29));
    EXPECT_LT(slept(milliseconds(-30)), milliseconds(25)) << "a moment in the past";
    ASSERT_EQ(send(ends[1], "x", 1, 0), 1);
    EXPECT_LT(slept(std::chrono::seconds(20)), std::chrono::seconds(10));
    close(ends[0]);
    close(ends[1]);
}

TEST(Pacing, AMenuIsDrawnTwentyTimesASecondAndNoMoreThanTheLimit) {
    Pacing pacing(100.0);
    pacing.calm(true);
    EXPECT_DOUBLE_EQ(pacing.rate(), 20.0);
    pacing.begin(start);
    const client::Time due = pacing.due();
    pacing.begin(due);
    EXPECT_EQ(pacing.due() - due, milliseconds(50));
    pacing.setRate(10.0);
    EXPECT_DOUBLE_EQ(pacing.rate(), 10.0);
    pacing.setRate(60.0);
    pacing.calm(false);
    EXPECT_DOUBLE_EQ(pacing.rate(), 60.0);
}

TEST(Pacing, SlowCalmFramesLeaveSomeTimeToOthers) {
    Pacing pacing(100.0);
    pacing.begin(start);
    const client::Time late = start + milliseconds(300);
    EXPECT_LE(pacing.waitEnd(late), late);
    pacing.calm(true);
    EXPECT_EQ(pacing.waitEnd(late), late + milliseconds(15));
    EXPECT_EQ(pacing.waitEnd(start - milliseconds(100)), pacing.due());
}
