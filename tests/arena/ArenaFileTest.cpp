#include "arena/ArenaFile.h"
#include "common/Files.h"
#include "tests/support/Courts.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <gtest/gtest.h>

using namespace drench;

namespace {

constexpr char plan[] = "arena Small\n"
                        "size 2 1 2\n"
                        "legend\n"
                        ". 0 air\n"
                        "g 1 ground\n"
                        "row 0\n"
                        "gg\n"
                        "g.\n";
constexpr char mapText[] = "2 1 2\n 1 1 1 1\n 1 1 0 0\n";

std::string problem(const std::function<void()>& read) {
    try {
        read();
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(ArenaFile, EveryKindGivesTheSameMap) {
    const TemporaryFolder folder;
    const MapManager map = loaded(mapText);
    const arena::ArenaFile fromText = arena::readWholeArena(folder.write("mapdata", mapText));
    const arena::ArenaFile fromPlan = arena::readWholeArena(folder.write("small", plan));
    const arena::ArenaFile fromVox =
        arena::readWholeArena(folder.write("voxels", arena::writeVox(map)));
    EXPECT_TRUE(sameCells(fromText.text.map, map));
    EXPECT_TRUE(sameCells(fromPlan.text.map, map));
    EXPECT_TRUE(sameCells(fromVox.text.map, map));
    EXPECT_TRUE(fromText.isMapText);
    EXPECT_FALSE(fromPlan.isMapText);
    EXPECT_FALSE(fromVox.isMapText);
}

TEST(ArenaFile, OnlyAPlanHasANameAndPlaces) {
    const TemporaryFolder folder;
    const arena::ArenaFile fromPlan = arena::readArena(folder.write("small", plan));
    EXPECT_EQ(fromPlan.name, "Small");
    EXPECT_EQ(fromPlan.placeOf({1, 0, 1}), (arena::TextPlace{8, 2}));
    const arena::ArenaFile fromText = arena::readArena(folder.write("mapdata", mapText));
    EXPECT_EQ(fromText.name, "");
    EXPECT_FALSE(fromText.placeOf);
}

TEST(ArenaFile, MapTextThatEndsEarlyIsReadOnlyOnRequest) {
    const TemporaryFolder folder;
    const std::string file = folder.write("mapdata", "2 1 2\n 1 1 1 1\n 1 1 0\n");
    const arena::ArenaFile arena = arena::readArena(file);
    EXPECT_FALSE(arena.text.problems.empty());
    EXPECT_EQ(problem([&] { arena::readWholeArena(file); }).substr(0, file.size() + 3),
              file + ":3:");
}

TEST(ArenaFile, HarmlessProblemsDoNotMatter) {
    const TemporaryFolder folder;
    const arena::ArenaFile arena =
        arena::readWholeArena(folder.write("wrapped", "2 1 2 1 1 1 1 1 1\n2 0 0"));
    EXPECT_FALSE(arena.text.problems.empty());
    EXPECT_EQ(arena::cell(arena.text.map, 1, 0, 0).cellValue, 12);
}

TEST(ArenaFile, ErrorsBeginWithTheFile) {
    const TemporaryFolder folder;
    const std::string missing = folder.path + "/missing";
    EXPECT_EQ(problem([&] { arena::readArena(missing); }),
              missing + ": cannot be read (No such file or directory)");
    const std::string broken = folder.write("broken", "VOX broken");
    EXPECT_EQ(problem([&] { arena::readVox(broken, "VOX broken"); }).substr(0, broken.size() + 2),
              broken + ": ");
    const std::string badPlan = folder.write("bad.plan", "arena A\nsize 2 x 2\n");
    EXPECT_EQ(problem([&] { arena::readArena(badPlan); }).substr(0, badPlan.size() + 5),
              badPlan + ":2:8:");
}
