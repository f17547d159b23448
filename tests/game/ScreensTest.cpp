#include "game/Screens.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;
using Panel = Screens::Panel;
using Place = Screens::Place;
using Loss = Screens::Loss;

constexpr client::Time start{std::chrono::hours(1)};

Screens inMatch() {
    Screens screens;
    screens.join("here:5000");
    screens.enter();
    return screens;
}

} // namespace

TEST(Screens, LeadFromTheChoiceOfARoomThroughAMatchAndBack) {
    Screens screens;
    EXPECT_EQ(screens.place(), Place::start);
    screens.join("here:5000");
    EXPECT_EQ(screens.place(), Place::joining);
    EXPECT_EQ(screens.room(), "here:5000");
    EXPECT_FALSE(screens.gameHasInput());
    screens.enter();
    EXPECT_EQ(screens.place(), Place::match);
    EXPECT_TRUE(screens.gameHasInput());
    screens.leave();
    EXPECT_EQ(screens.place(), Place::start);
    EXPECT_EQ(screens.room(), "");
}

TEST(Screens, EscapeOpensTheMenuOfAMatchAndClosesWhateverLiesOverIt) {
    Screens screens = inMatch();
    screens.escape();
    EXPECT_EQ(screens.panel(), Panel::menu);
    EXPECT_FALSE(screens.gameHasInput());
    screens.openSettings();
    EXPECT_EQ(screens.panel(), Panel::settings);
    screens.escape();
    EXPECT_EQ(screens.panel(), Panel::menu) << "from where they were opened";
    screens.escape();
    EXPECT_TRUE(screens.gameHasInput());
    screens.openChat();
    EXPECT_EQ(screens.panel(), Panel::chat);
    screens.escape();
    EXPECT_TRUE(screens.gameHasInput());
}

TEST(Screens, EscapeOpensNoMenuOutsideOfAMatch) {
    Screens screens;
    screens.escape();
    EXPECT_EQ(screens.panel(), Panel::none);
    screens.openSettings();
    EXPECT_EQ(screens.panel(), Panel::settings);
    screens.escape();
    EXPECT_EQ(screens.panel(), Panel::none);
    screens.join("here:5000");
    screens.escape();
    EXPECT_EQ(screens.panel(), Panel::none);
}

TEST(Screens, ChatAndSettingsOpenOnlyWhereTheyBelong) {
    Screens screens = inMatch();
    screens.openSettings();
    EXPECT_EQ(screens.panel(), Panel::none) << "they are in the menu";
    screens.escape();
    screens.openChat();
    EXPECT_EQ(screens.panel(), Panel::menu);
    Screens atStart;
    atStart.openChat();
    EXPECT_EQ(atStart.panel(), Panel::none);
}

TEST(Screens, FewFramesAreAskedForWhereverNobodyPlays) {
    Screens screens;
    EXPECT_TRUE(screens.isCalm());
    screens = inMatch();
    EXPECT_FALSE(screens.isCalm());
    screens.openChat();
    EXPECT_FALSE(screens.isCalm()) << "the match is watched meanwhile";
    screens.closePanel();
    screens.escape();
    EXPECT_TRUE(screens.isCalm());
}

TEST(Screens, ALostRoomIsJoinedAgainByItselfWithGrowingPauses) {
    for (const Loss why : {Loss::silent, Loss::replaced}) {
        Screens screens = inMatch();
        screens.lose(why, start);
        EXPECT_EQ(screens.place(), Place::trouble);
        EXPECT_DOUBLE_EQ(screens.secondsUntilJoin(start), 1.0);
        EXPECT_FALSE(screens.isJoinDue(start + milliseconds(999)));
        EXPECT_TRUE(screens.isJoinDue(start + milliseconds(1000)));
        screens.joinAgain();
        EXPECT_EQ(screens.place(), Place::joining);
        EXPECT_FALSE(screens.trouble().what.empty()) << "still to be told";
        screens.lose(Loss::unanswered, start);
        EXPECT_DOUBLE_EQ(screens.secondsUntilJoin(start), 2.0) << "whatever came of it";
        screens.joinAgain();
        screens.lose(Loss::nobodyListens, start);
        EXPECT_DOUBLE_EQ(screens.secondsUntilJoin(start), 4.0);
        screens.joinAgain();
        screens.enter();
        EXPECT_TRUE(screens.trouble().what.empty());
        screens.lose(why, start);
        EXPECT_DOUBLE_EQ(screens.secondsUntilJoin(start), 1.0) << "from the beginning";
    }
}

TEST(Screens, PausesDoubleUpToHalfAMinute) {
    EXPECT_DOUBLE_EQ(secondsBefore(0), 1.0);
    EXPECT_DOUBLE_EQ(secondsBefore(1), 2.0);
    EXPECT_DOUBLE_EQ(secondsBefore(4), 16.0);
    EXPECT_DOUBLE_EQ(secondsBefore(5), 30.0);
    EXPECT_DOUBLE_EQ(secondsBefore(1000000000), 30.0);
}

TEST(Screens, JoiningAgainCanBeStopped) {
    Screens screens = inMatch();
    screens.lose(Loss::silent, start);
    screens.stopTrying();
    EXPECT_FALSE(screens.isJoinDue(start + std::chrono::hours(1)));
    EXPECT_LT(screens.secondsUntilJoin(start), 0.0);
    EXPECT_EQ(screens.place(), Place::trouble) << "one may still try by hand";
}

TEST(Screens, OnlyAFullRoomIsTriedAgainByItselfBeforeItEverLetOneIn) {
    Screens screens;
    for (const Loss why : {Loss::unanswered, Loss::nobodyListens}) {
        screens.join("here:5000");
        screens.lose(why, start);
        EXPECT_LT(screens.secondsUntilJoin(start), 0.0);
    }
    screens.join("here:5000");
    screens.lose(Loss::full, start);
    EXPECT_DOUBLE_EQ(screens.secondsUntilJoin(start), 1.0);
}

TEST(Screens, EachTroubleNamesTheRoomAndWhatCanBeDone) {
    std::vector<std::string> said;
    for (const Loss why :
         {Loss::full, Loss::unanswered, Loss::nobodyListens, Loss::silent, Loss::replaced}) {
        Screens screens;
        screens.join("here:5000");
        screens.lose(why, start);
        EXPECT_NE(screens.trouble().what.find("here:5000"), std::string::npos);
        EXPECT_FALSE(screens.trouble().advice.empty());
        EXPECT_EQ(std::count(said.begin(), said.end(), screens.trouble().what), 0);
        said.push_back(screens.trouble().what);
    }
    Screens screens;
    screens.join("here:99999");
    screens.fail({"It cannot be joined.", "Its port is none."});
    EXPECT_EQ(screens.place(), Place::trouble);
    EXPECT_EQ(screens.trouble().advice, "Its port is none.");
    EXPECT_LT(screens.secondsUntilJoin(start), 0.0) << "it would fail again";
}

TEST(Screens, KnowFromTheEventWhyARoomIsLost) {
    using Reason = client::Dropped::Reason;
    EXPECT_EQ(lossIn(client::Refused{}), Loss::full);
    EXPECT_EQ(lossIn(client::Unanswered{true}), Loss::nobodyListens);
    EXPECT_EQ(lossIn(client::Unanswered{false}), Loss::unanswered);
    EXPECT_EQ(lossIn(client::Dropped{Reason::silence}), Loss::silent);
    EXPECT_EQ(lossIn(client::Dropped{Reason::replaced}), Loss::replaced);
    EXPECT_EQ(lossIn(client::Joined{'1'}), std::nullopt);
    EXPECT_EQ(lossIn(client::PlayerLeft{"Ann"}), std::nullopt);
}

TEST(Screens, GiveTheMouseToTheGameInAMatchAndWhileAWordIsWritten) {
    Screens screens;
    EXPECT_FALSE(screens.gameHasMouse());
    screens.join("room");
    EXPECT_FALSE(screens.gameHasMouse());
    screens.enter();
    EXPECT_TRUE(screens.gameHasMouse());
    screens.openChat();
    EXPECT_TRUE(screens.gameHasMouse());
    EXPECT_FALSE(screens.gameHasInput());
    screens.closePanel();
    screens.escape();
    EXPECT_FALSE(screens.gameHasMouse()) << "the menu";
}

TEST(Screens, SayWhyOneDoesNotPlay) {
    const Screens::Time start{};
    Screens screens;
    EXPECT_EQ(screens.whyNotPlaying(), "");
    screens.join("room");
    EXPECT_EQ(screens.whyNotPlaying(), "room has not answered yet.");
    screens.lose(Loss::full, start);
    EXPECT_EQ(screens.whyNotPlaying(), "room is full.");
    screens.joinAgain();
    EXPECT_EQ(screens.whyNotPlaying(), "room is full.") << "the last that is known";
    screens.enter();
    EXPECT_EQ(screens.whyNotPlaying(), "");
    screens.leave();
    EXPECT_EQ(screens.whyNotPlaying(), "");
}

TEST(Screens, AWatchedMatchHasAMenuAndNoChat) {
    Screens screens;
    screens.watch("localhost:5000, yesterday");
    EXPECT_EQ(screens.place(), Screens::Place::watching);
    EXPECT_EQ(screens.room(), "localhost:5000, yesterday");
    EXPECT_TRUE(screens.gameHasInput());
    screens.openChat();
    EXPECT_EQ(screens.panel(), Screens::Panel::none);
    screens.escape();
    EXPECT_EQ(screens.panel(), Screens::Panel::menu);
    EXPECT_FALSE(screens.gameHasInput());
    screens.openSettings();
    screens.closePanel();
    EXPECT_EQ(screens.panel(), Screens::Panel::menu);
    screens.leave();
    EXPECT_EQ(screens.place(), Screens::Place::start);
}
