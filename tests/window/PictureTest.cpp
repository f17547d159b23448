#include "arena/MapText.h"
#include "tests/support/PictureCourt.h"
#include "tests/support/StoredPicture.h"
#include "tests/window/Desk.h"
#include "tests/window/StillRoom.h"

#include <csignal>

using namespace drench;

namespace {

PlayerUpdate playerIn(char id, const std::string& name, int column, int row, int depth,
                      vec3 direction) {
    const vec3 place = pictures::standingIn(0, column, row, depth, direction).body.centre;
    PlayerUpdate player;
    player.id = id;
    player.position = place;
    direction.normalize();
    player.direction = direction;
    player.points = id - '1';
    name.copy(player.name, sizeof player.name - 1);
    return player;
}

/// Ann looks across the court at the bridge; the others stand around.
UpdateMessage courtState() {
    UpdateMessage state;
    state.add(playerIn('1', Desk::player, 6, 1, 10, vec3(-0.1f, 0.05f, -1.0f)));
    state.add(playerIn('2', "Bob", 6, 1, 6, vec3(-0.4f, 0.0f, 1.0f)));
    state.add(playerIn('3', "Cid", 5, 4, 6, vec3(1.0f, -0.3f, 0.6f)));
    state.add(playerIn('4', "Dee", 3, 1, 5, vec3(1.0f, 0.0f, 0.0f)));
    return state;
}

/// A loaded machine may have a bad line, of which is told in the middle of the upper edge.
void clearWarning(arena::Image& picture) {
    for (int y = 0; y < 40; ++y) {
        for (int x = 150; x < 330; ++x)
            picture.at(x, y) = {};
    }
}

/// The picture of a window in a room that plays the court.
/// @param folder  for all that the window needs
/// @param arguments  besides the usual, as `environment`
arena::Image pictureOf(const TemporaryFolder& folder, const std::string& arguments,
                       const std::string& environment = "") {
    const Display display;
    std::filesystem::create_directories(folder.path + "/drench");
    folder.write("drench/settings.toml", "[picture]\nless-motion = true\n");
    const std::string file = folder.path + "/picture.png";
    const StillRoom room(courtState());
    ToolProcess window("/usr/bin/env",
                       windowCommand(display.name, folder.path,
                                     "localhost:" + std::to_string(room.port()) + " --name " +
                                         Desk::player + " --size 480x270 --screenshot " + file +
                                         " " + arguments,
                                     environment));
    EXPECT_TRUE(waitUntil([&] { return room.heard() >= 2; })) << window.err();
    window.signal(SIGTERM);
    EXPECT_EQ(window.status(), 0) << window.err();
    arena::Image picture = arena::decodePng(readFile(file));
    clearWarning(picture);
    return picture;
}

std::string courtText() {
    return arena::writeMapText(pictures::testCourt());
}

} // namespace

TEST(WindowPicture, IsTheOneThatWasKept) {
    const TemporaryFolder folder;
    const std::string arena = folder.write("court", courtText());
    expectStored(pictureOf(folder, "--arena " + arena), "window.png");
}

TEST(WindowPicture, IsOfTheArenaThatFitsWhatTheRoomShows) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path + "/drench/arenas");
    folder.write("drench/arenas/court", courtText());
    expectStored(pictureOf(folder, "", "XDG_DATA_HOME=" + folder.path), "window.png");
}
