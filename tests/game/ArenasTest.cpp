#include "game/Arenas.h"

#include "common/Files.h"
#include "tests/support/Arenas.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

std::vector<std::string> namesOf(const KnownArenas& known) {
    std::vector<std::string> names;
    for (const KnownArena& arena : known.arenas)
        names.push_back(arena.name);
    return names;
}

using Names = std::vector<std::string>;

KnownArenas readThose(const std::string& usual, std::vector<std::string> folders) {
    return readArenas(usual, folders);
}

} // namespace

TEST(Arenas, OfTheSourceTreeAreKnownByName) {
    const KnownArenas known = readThose(DRENCH_MAPDATA, {DRENCH_ARENAS});
    EXPECT_TRUE(known.problems.empty());
    ASSERT_GE(known.arenas.size(), 3u);
    EXPECT_EQ(known.arenas[0].name, "The Dry Fountain") << "the usual one, named by its plan";
    EXPECT_EQ(known.arenas[0].file, DRENCH_MAPDATA);
    EXPECT_EQ(known.arenas[0].map.columns, 32);
    for (std::size_t i = 1; i < known.arenas.size(); ++i)
        EXPECT_NE(known.arenas[i].name, "The Dry Fountain");
}

TEST(Arenas, AreReadFromEachFolderOnce) {
    const TemporaryFolder folder;
    const std::string court = emptyCourt();
    folder.write("b", court);
    folder.write("a", arenaText(4, 4, 4, [](int, int j, int) { return j == 0; }));
    folder.write("copy", court);
    folder.write(".hidden", arenaText(5, 5, 5, [](int, int j, int) { return j == 0; }));
    const KnownArenas known = readThose(DRENCH_MAPDATA, {folder.path, folder.path, "/none"});
    EXPECT_EQ(namesOf(known), (Names{"mapdata", "a", "b"}));
    EXPECT_TRUE(known.problems.empty());
}

TEST(Arenas, OfOtherMaterialsAreOthers) {
    const TemporaryFolder folder;
    std::string text = arenaText(4, 4, 4, [](int, int j, int) { return j == 0; });
    folder.write("a", text);
    const std::size_t solid = text.find("1 1");
    ASSERT_NE(solid, std::string::npos);
    folder.write("b", text.replace(solid, 3, "1 2"));
    EXPECT_EQ(namesOf(readThose(DRENCH_MAPDATA, {folder.path})), (Names{"mapdata", "a", "b"}));
}

TEST(Arenas, WhatIsNoneIsToldAndLeftOut) {
    const TemporaryFolder folder;
    folder.write("notes", "to do");
    folder.write("arena", emptyCourt());
    const KnownArenas known = readThose(folder.path + "/missing", {folder.path});
    EXPECT_EQ(namesOf(known), Names{"arena"});
    ASSERT_EQ(known.problems.size(), 2u);
    EXPECT_EQ(known.problems[0].rfind(folder.path + "/missing: ", 0), 0u) << known.problems[0];
    EXPECT_EQ(known.problems[1].rfind(folder.path + "/notes:", 0), 0u) << known.problems[1];
}

TEST(Arenas, OnlySoManyFilesAreLookedAt) {
    const TemporaryFolder folder;
    for (int i = 0; i < 150; ++i)
        folder.write(std::to_string(i), "nothing");
    EXPECT_EQ(readThose(DRENCH_MAPDATA, {folder.path}).problems.size(), 100u);
}

TEST(ArenaFolders, AreTheUsersTheSystemsAndTheOneBesideTheExecutable) {
    setenv("XDG_DATA_HOME", "/home/ann/data", 1);
    setenv("XDG_DATA_DIRS", "/opt/share:relative::/usr/share", 1);
    std::vector<std::string> folders = arenaFolders();
    ASSERT_EQ(folders.size(), 4u);
    EXPECT_EQ(folders[0], "/home/ann/data/drench/arenas");
    EXPECT_EQ(folders[1], "/opt/share/drench/arenas");
    EXPECT_EQ(folders[2], "/usr/share/drench/arenas");
    EXPECT_TRUE(folders[3].ends_with("/Resources/arenas"));
    EXPECT_TRUE(usualArena().ends_with("/Resources/mapdata"));

    unsetenv("XDG_DATA_HOME");
    setenv("HOME", "/home/ann", 1);
    setenv("XDG_DATA_DIRS", "", 1);
    folders = arenaFolders();
    ASSERT_EQ(folders.size(), 4u);
    EXPECT_EQ(folders[0], "/home/ann/.local/share/drench/arenas");
    EXPECT_EQ(folders[1], "/usr/local/share/drench/arenas");
}
