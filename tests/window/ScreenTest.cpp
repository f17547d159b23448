#include "arena/picture/Png.h"
#include "src/Player.h"
#include "tests/window/Desk.h"

#include <cmath>
#include <csignal>

namespace {

/// The mouse turns by these counts to the right, as the room sees it; negative to the left.
bool turnsBy(Desk& desk, int moved, int turned) {
    const vec3 before = desk.seen()->direction;
    desk.moveMouse(moved, 0);
    return desk.sees([&](const PlayerUpdate& ann) {
        return std::abs(turnRight(before, ann.direction) - turned / Player::countsPerRadian) < 1e-3;
    });
}

// Where things stand in a window that fills the screen. The pointer hides what it clicks on, so
// what tells of it stands beside.
constexpr Pixel playOnButton{520, 309};
constexpr Pixel playOnText{640, 309};
constexpr Pixel settingsButton{640, 357};
constexpr Pixel leftAndRightSwapped{965, 243};
constexpr Pixel besideThatSwitch{931, 243};
constexpr Pixel firstTab{312, 158};
constexpr Pixel doneButton{372, 594};

bool isAmber(arena::Colour colour) {
    return colour.red > 220 && colour.green > 150 && colour.blue < 130;
}

bool isBright(arena::Colour colour) {
    return colour.blue > 220 && colour.red < 130;
}

} // namespace

TEST(WindowScreen, WithoutTheFocusAllKeysAreLetGoAndTheMouseIsFree) {
    Desk desk;
    desk.settle();
    const vec3 start = desk.seen()->position;
    desk.press("w");
    EXPECT_TRUE(desk.sees([&](const PlayerUpdate& ann) {
        return std::hypot(ann.position.x - start.x, ann.position.z - start.z) > 20.0f;
    }));
    const std::string window = desk.windowNumber();
    desk.display.xdotool("windowunmap --sync " + window);
    EXPECT_TRUE(desk.comesToRest()) << "though the key is still down";
    const vec3 direction = desk.seen()->direction;
    desk.moveMouse(100, 0);
    desk.display.xdotool("mousemove 7 9");
    EXPECT_FALSE(desk.sees(
        [&](const PlayerUpdate& ann) { return turnRight(direction, ann.direction) != 0.0; }, 700));
    EXPECT_EQ(desk.display.xdotool("getmouselocation").find("x:7 y:9 "), 0u);
    desk.release("w");

    desk.display.xdotool("windowmap --sync " + window + " windowfocus --sync " + window);
    EXPECT_TRUE(desk.turnsAtLast()) << "the focus is back";
}

TEST(WindowScreen, ResizesAndPlaysOn) {
    const TemporaryFolder folder;
    const std::string file = folder.path + "/picture.png";
    Desk desk({.arguments = "--screenshot " + file});
    desk.settle();
    desk.display.xdotool("windowsize --sync " + desk.windowNumber() + " 600 220");
    EXPECT_TRUE(turnsBy(desk, 90, 90));
    desk.window.signal(SIGTERM);
    EXPECT_EQ(desk.window.status(), 0) << desk.window.err();
    const arena::Image picture = arena::decodePng(readFile(file));
    EXPECT_EQ(picture.width, 600);
    EXPECT_EQ(picture.height, 220);
}

TEST(WindowScreen, AClickInTheSettingsActsAndIsKept) {
    Desk desk({.size = "1280x720"});
    desk.settle();
    EXPECT_TRUE(turnsBy(desk, 90, 90));
    const auto shows = [&](Pixel place, bool (&isSo)(arena::Colour)) {
        return waitUntil([&] { return isSo(desk.display.colourAt(place)); });
    };
    desk.tap("Escape");
    ASSERT_TRUE(shows(playOnButton, isAmber)) << "no menu";
    desk.click(settingsButton);
    ASSERT_TRUE(shows(firstTab, isBright)) << "no settings";
    ASSERT_FALSE(isBright(desk.display.colourAt(besideThatSwitch)));
    desk.click(leftAndRightSwapped);
    ASSERT_TRUE(shows(besideThatSwitch, isBright)) << "not switched";
    EXPECT_TRUE(waitUntil([&] {
        return desk.settingsFile().find("invert-x = true") != std::string::npos;
    })) << desk.settingsFile();
    desk.click(doneButton);
    ASSERT_TRUE(shows(playOnButton, isAmber)) << "no menu again";
    desk.click(playOnText);
    EXPECT_TRUE(desk.turnsAtLast());
    EXPECT_TRUE(turnsBy(desk, 90, -90));
}
