#include "bots/Skill.h"

#include <gtest/gtest.h>

using namespace drench;

using bots::Skill;
using bots::skillOf;

TEST(Skill, MoreOfItIsBetterInEverything) {
    const Skill beginner = skillOf(0.0);
    const Skill best = skillOf(1.0);
    EXPECT_LT(best.reaction, beginner.reaction);
    EXPECT_LT(best.perceptionDelay, beginner.perceptionDelay);
    EXPECT_GT(best.memory, beginner.memory);
    EXPECT_GT(best.topSpeed, beginner.topSpeed);
    EXPECT_LT(best.movement, beginner.movement);
    EXPECT_LT(best.correction, beginner.correction);
    EXPECT_LT(best.spread, beginner.spread);
    EXPECT_LT(best.wobble, beginner.wobble);
    EXPECT_GT(best.pursuit, beginner.pursuit);
    EXPECT_GT(best.anticipation, beginner.anticipation);
    EXPECT_GT(best.caution, beginner.caution);
    EXPECT_LT(best.mercy, beginner.mercy);
}

TEST(Skill, StaysWithinWhatPeopleCanDo) {
    constexpr double ticksPerSecond = 62.0;
    for (const double level : {0.0, 0.5, 1.0}) {
        const Skill skill = skillOf(level);
        EXPECT_GE(skill.reaction / ticksPerSecond, 0.14);
        EXPECT_LE(skill.reaction / ticksPerSecond, 0.4);
        // Eyes take in what happened between a twentieth and a fifth of a second ago.
        EXPECT_GE(skill.perceptionDelay / ticksPerSecond, 0.05);
        EXPECT_LE(skill.perceptionDelay / ticksPerSecond, 0.2);
        EXPECT_GE(skill.movement / ticksPerSecond, 0.1);
        EXPECT_LE(skill.movement / ticksPerSecond, 0.3);
        EXPECT_GE(skill.correction / ticksPerSecond, 0.1);
        EXPECT_LE(skill.correction / ticksPerSecond, 0.3);
        // 360 counts are 57.3 degrees.
        EXPECT_LE(skill.topSpeed * ticksPerSecond / 360.0 * 57.3, 620.0);
        EXPECT_LT(skill.pursuit, 1.0);
        EXPECT_GT(skill.spread, 0.0);
        EXPECT_GT(skill.wobble, 0.0);
    }
}

TEST(Skill, GoesStraightFromOneEndToTheOtherAndNoFurther) {
    EXPECT_DOUBLE_EQ(skillOf(0.25).reaction,
                     0.75 * skillOf(0.0).reaction + 0.25 * skillOf(1.0).reaction);
    EXPECT_DOUBLE_EQ(skillOf(7.0).topSpeed, skillOf(1.0).topSpeed);
    EXPECT_DOUBLE_EQ(skillOf(-1.0).topSpeed, skillOf(0.0).topSpeed);
}

TEST(Skill, MakesMercilessFromTwoThirdsOn) {
    EXPECT_DOUBLE_EQ(skillOf(0.0).mercy, 250.0);
    EXPECT_DOUBLE_EQ(skillOf(0.5).mercy, 250.0);
    EXPECT_NEAR(skillOf(0.575).mercy, 125.0, 1e-9);
    EXPECT_DOUBLE_EQ(skillOf(0.65).mercy, 0.0);
    EXPECT_DOUBLE_EQ(skillOf(1.0).mercy, 0.0);
}

TEST(Skill, LetsEverybodyRememberForLongerThanOneIsSoaked) {
    // Two hundred and fifty ticks: who returns still knows where it was soaked from.
    EXPECT_GT(skillOf(0.0).memory, 250.0);
}
