#include "client/Inputs.h"

#include <gtest/gtest.h>

using namespace drench;

using client::Inputs;
using client::Time;

TEST(Inputs, AreEmptyUntilSomethingIsToBeSentOnce) {
    Inputs inputs;
    EXPECT_TRUE(inputs.isEmpty());
    inputs.setKey(keyIndex::forward, true, Time());
    EXPECT_TRUE(inputs.isEmpty()) << "a key is sent more often";

    Inputs jump;
    jump.setKey(keyIndex::jump, true, Time());
    Inputs across;
    across.turn(1, 0);
    Inputs up;
    up.turn(0, 1);
    Inputs words;
    words.say("");
    for (Inputs* one : {&jump, &across, &up, &words}) {
        EXPECT_FALSE(one->isEmpty());
        one->clear();
        EXPECT_TRUE(one->isEmpty());
        EXPECT_TRUE(one->takeDue('1', Time()).empty());
    }
}

TEST(Inputs, AreTakenOnce) {
    Inputs inputs;
    inputs.setKey(keyIndex::jump, true, Time());
    inputs.turn(1, 1);
    inputs.say("Hello!");
    EXPECT_EQ(inputs.takeDue('1', Time()).size(), 3u);
    EXPECT_TRUE(inputs.isEmpty());
    EXPECT_TRUE(inputs.takeDue('1', Time()).empty());
}

TEST(Inputs, KeepTheirKeysWhenCleared) {
    Inputs inputs;
    inputs.setKey(keyIndex::forward, true, Time());
    inputs.clear();
    EXPECT_EQ(inputs.keysDueAt(), Time());
    EXPECT_EQ(inputs.takeDue('1', Time()).size(), 1u);
}

TEST(Inputs, AreDueWithTheirFirstKey) {
    const Time later = Time() + std::chrono::milliseconds(10);
    Inputs inputs;
    EXPECT_EQ(inputs.keysDueAt(), Time::max());
    inputs.setKey(keyIndex::left, true, later);
    EXPECT_EQ(inputs.keysDueAt(), later);
    inputs.setKey(keyIndex::forward, true, Time());
    EXPECT_EQ(inputs.keysDueAt(), Time());
    EXPECT_EQ(inputs.takeDue('1', Time()).size(), 1u);
    EXPECT_EQ(inputs.keysDueAt(), later);
}

TEST(Inputs, HoldSixteenWords) {
    Inputs inputs;
    for (int i = 0; i < 17; ++i)
        inputs.say(std::to_string(i));
    EXPECT_EQ(inputs.words.size(), 16u);
    EXPECT_EQ(inputs.words.back(), "15");
}

TEST(Inputs, SendALostViewAgain) {
    Inputs inputs;
    inputs.turn(1, 2);
    ViewMessage view;
    view.dx = 10;
    view.dy = -20;
    inputs.sendAgain(view, Time());
    EXPECT_EQ(inputs.dx, 11);
    EXPECT_EQ(inputs.dy, -18);
}

TEST(Inputs, TellALostKeyAsItIsNow) {
    const Time later = Time() + std::chrono::milliseconds(20);
    KeyMessage lost;
    lost.key = keyIndex::left;
    lost.down = 1;
    Inputs held;
    held.setKey(keyIndex::left, true, Time());
    held.takeDue('1', Time());
    EXPECT_TRUE(held.takeDue('1', later).empty());
    held.sendAgain(lost, later);
    const std::vector<client::InputRecord> due = held.takeDue('1', later);
    ASSERT_EQ(due.size(), 1u);
    EXPECT_EQ(std::get<KeyMessage>(due[0]).key, keyIndex::left);
    EXPECT_EQ(std::get<KeyMessage>(due[0]).down, 1);

    // Released meanwhile, and told three times already.
    Inputs released;
    released.sendAgain(lost, later);
    EXPECT_EQ(released.keysDueAt(), later);
    const std::vector<client::InputRecord> release = released.takeDue('1', later);
    ASSERT_EQ(release.size(), 1u);
    EXPECT_EQ(std::get<KeyMessage>(release[0]).down, 0);
    EXPECT_EQ(released.keysDueAt(), Time::max());
}

TEST(Inputs, KeepReleasesThatAreLeftWhenOneIsSentAgain) {
    Inputs inputs;
    inputs.setKey(keyIndex::left, true, Time());
    inputs.takeDue('1', Time());
    inputs.setKey(keyIndex::left, false, Time());
    KeyMessage lost;
    lost.key = keyIndex::left;
    inputs.sendAgain(lost, Time());
    EXPECT_EQ(inputs.keys[keyIndex::left].releasesLeft, 3);
}

TEST(Inputs, AskForALostJumpAgain) {
    Inputs inputs;
    KeyMessage lost;
    lost.key = keyIndex::jump;
    lost.down = 1;
    inputs.sendAgain(lost, Time());
    EXPECT_TRUE(inputs.jump);
    EXPECT_EQ(inputs.keysDueAt(), Time::max());
}

TEST(Inputs, SendNothingElseAgain) {
    Inputs inputs;
    inputs.sendAgain(TalkMessage(), Time());
    KeyMessage odd;
    for (const int key : {-1, int{keyIndex::count}, 127, -128}) {
        odd.key = static_cast<signed char>(key);
        inputs.sendAgain(odd, Time());
    }
    EXPECT_TRUE(inputs.isEmpty());
    EXPECT_EQ(inputs.keysDueAt(), Time::max());
}
