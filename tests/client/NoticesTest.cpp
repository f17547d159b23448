#include "client/Notices.h"

#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>

namespace {

/// The event that a notice with this text is taken for.
std::string noticed(const std::string& text) {
    return described(client::parseNotice(text));
}

} // namespace

TEST(Notices, TellWhoComesAndGoes) {
    EXPECT_EQ(noticed("Ann joined"), "joining [Ann]");
    EXPECT_EQ(noticed("Ann disconnected"), "leaving [Ann]");
    EXPECT_EQ(noticed("Bartholomew disconnected"), "leaving [Bartholomew]");
    EXPECT_EQ(noticed(" joined"), "joining []");
}

TEST(Notices, TellWhoSoakedWhom) {
    EXPECT_EQ(noticed("Ann soaked Bo!"), "soaking [Ann] [Bo]");
    EXPECT_EQ(noticed(" soaked !"), "soaking [] []");
    EXPECT_EQ(noticed("Ann! soaked Bo!!"), "soaking [Ann!] [Bo!]");
}

TEST(Notices, OfTheLongestSoakingHaveLostTheirLastCharacter) {
    EXPECT_EQ(noticed("Bartholomew soaked Maximiliana"), "soaking [Bartholomew] [Maximiliana]");
    EXPECT_EQ(noticed("Bartholomew soaked Maximilian!"), "soaking [Bartholomew] [Maximilian]");
    EXPECT_EQ(noticed("Bartholomew soaked Ann"), "notice [Bartholomew soaked Ann]");
}

TEST(Notices, HoldNamesThatReadLikeNotices) {
    EXPECT_EQ(noticed("A joined joined"), "joining [A joined]");
    EXPECT_EQ(noticed("A soaked B joined"), "joining [A soaked B]");
    EXPECT_EQ(noticed("Ann joined soaked Bo!"), "soaking [Ann joined] [Bo]");
    EXPECT_EQ(noticed("Bartholomew soaked Max joined"), "notice [Bartholomew soaked Max joined]");
    EXPECT_EQ(noticed("A soaked soaked Bo!"), "soaking [A] [soaked Bo]");
    EXPECT_EQ(noticed("A soaked  soaked Maximilian!"), "soaking [A soaked ] [Maximilian]");
}

TEST(Notices, OfOtherFormsArePassedOn) {
    EXPECT_EQ(noticed("The water is off."), "notice [The water is off.]");
    EXPECT_EQ(noticed(""), "notice []");
    EXPECT_EQ(noticed("Bartholomew I joined"), "notice [Bartholomew I joined]");
    EXPECT_EQ(noticed("Maximilianus soaked Bo!"), "notice [Maximilianus soaked Bo!]");
}
