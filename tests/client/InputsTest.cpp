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
