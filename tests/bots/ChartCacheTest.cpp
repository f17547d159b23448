#include "bots/ChartCache.h"
#include "common/Descriptor.h"
#include "common/Files.h"
#include "tests/bots/SameChart.h"
#include "tests/support/Courts.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

using namespace drench;

using bots::keptChart;
using bots::Roadmap;

namespace {

constexpr std::uint64_t program = 5;

/// An arena that is charted quickly, and a folder that does not exist yet.
class ChartCache : public testing::Test {
  protected:
    MapManager map = loaded(arenaText(32, 16, 32, solidInRing));
    TemporaryFolder around;
    std::string folder = around.path + "/cache/drench";
    std::vector<std::string> told;
    bool goesOn = true;

    std::optional<Roadmap> chart(std::uint64_t ofProgram = program) {
        told.clear();
        return keptChart(
            map, folder, ofProgram, [this] { return goesOn; },
            [this](const std::string& line) { told.push_back(line); });
    }
    bool wasMade() const { return !told.empty(); }

    /// The file of the chart, the only one beside its lock.
    std::string file() const {
        std::string found;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() == ".chart") {
                EXPECT_EQ(found, "");
                found = entry.path();
            }
        }
        return found;
    }
};

} // namespace

TEST_F(ChartCache, SecondStartReadsWhatTheFirstHasMade) {
    const std::optional<Roadmap> made = chart();
    ASSERT_TRUE(made.has_value());
    ASSERT_TRUE(wasMade());
    EXPECT_EQ(told.front(), "charting the arena");
    EXPECT_GT(made->reach.places.size(), 100u);
    const std::optional<Roadmap> read = chart();
    ASSERT_TRUE(read.has_value());
    EXPECT_FALSE(wasMade());
    expectSameChart(*read, *made);
}

TEST_F(ChartCache, AnotherProgramChartsAnewInTheSameFile) {
    ASSERT_TRUE(chart());
    const std::string before = file();
    ASSERT_TRUE(chart(program + 1));
    EXPECT_TRUE(wasMade());
    EXPECT_EQ(file(), before);
    ASSERT_TRUE(chart(program + 1));
    EXPECT_FALSE(wasMade());
}

TEST_F(ChartCache, DamagedFileIsReplaced) {
    ASSERT_TRUE(chart());
    const std::string whole = readFile(file());
    for (const std::string& damaged : {std::string(), whole.substr(0, whole.size() / 2)}) {
        replaceFile(file(), damaged);
        ASSERT_TRUE(chart());
        EXPECT_TRUE(wasMade());
        EXPECT_EQ(readFile(file()), whole);
    }
}

TEST_F(ChartCache, WithoutAFolderOrAProgramNothingIsKept) {
    ASSERT_TRUE(chart(0));
    EXPECT_TRUE(wasMade());
    EXPECT_FALSE(std::filesystem::exists(folder));
    folder.clear();
    ASSERT_TRUE(chart());
    EXPECT_TRUE(wasMade());
}

TEST_F(ChartCache, FolderThatCannotBeMadeDoesNotMatter) {
    folder = around.write("file", "in the way") + "/drench";
    ASSERT_TRUE(chart());
    EXPECT_TRUE(wasMade());
    EXPECT_EQ(readFile(around.path + "/file"), "in the way");
}

TEST_F(ChartCache, FileThatCannotBeReplacedDoesNotMatter) {
    ASSERT_TRUE(chart());
    const std::string path = file();
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    ASSERT_TRUE(chart());
    EXPECT_TRUE(wasMade());
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST_F(ChartCache, NobodyWaitsAtAPipe) {
    ASSERT_TRUE(chart());
    const std::string path = file();
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    ASSERT_TRUE(chart());
    EXPECT_TRUE(wasMade());
    EXPECT_TRUE(std::filesystem::is_fifo(path));
}

TEST_F(ChartCache, NobodyWaitsForAChartThatIsNotWanted) {
    goesOn = false;
    EXPECT_FALSE(chart().has_value());
    goesOn = true;
    ASSERT_TRUE(chart());
    EXPECT_TRUE(wasMade()) << "a chart that was not finished is not kept";
    std::filesystem::remove(file());
    goesOn = false;
    const Descriptor held(open((file() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    EXPECT_FALSE(chart().has_value());
}

TEST_F(ChartCache, OneChartsWhileTheOthersWait) {
    ASSERT_TRUE(chart());
    const std::string whole = readFile(file());
    const std::string path = file();
    std::filesystem::remove(path);
    std::optional<Descriptor> held(std::in_place,
                                   open((path + ".lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_GE(held->number, 0);
    ASSERT_EQ(flock(held->number, LOCK_EX), 0);
    std::atomic<bool> waits = false;
    std::vector<std::string> lines;
    std::optional<Roadmap> read;
    std::thread other([&] {
        MapManager own = loaded(arenaText(32, 16, 32, solidInRing));
        read = keptChart(
            own, folder, program, [] { return true; },
            [&](const std::string& line) {
                lines.push_back(line);
                waits = true;
            });
        EXPECT_TRUE(read.has_value());
    });
    while (!waits)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    replaceFile(path, whole);
    held.reset();
    other.join();
    for (const std::string& line : lines)
        EXPECT_EQ(line, "waiting for another process that charts the arena");
}

TEST_F(ChartCache, WaitingEndsWhenNobodyWantsTheChart) {
    ASSERT_TRUE(chart());
    const std::string path = file();
    std::filesystem::remove(path);
    const Descriptor held(open((path + ".lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(flock(held.number, LOCK_EX), 0);
    goesOn = false;
    EXPECT_FALSE(chart().has_value());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(ChartFolder, IsDrenchInTheUsersCache) {
    setenv("HOME", "/home/ann", 1);
    unsetenv("XDG_CACHE_HOME");
    EXPECT_EQ(bots::chartFolder(), "/home/ann/.cache/drench");
    setenv("XDG_CACHE_HOME", "/var/cache/ann", 1);
    EXPECT_EQ(bots::chartFolder(), "/var/cache/ann/drench");
    setenv("XDG_CACHE_HOME", "relative", 1);
    EXPECT_EQ(bots::chartFolder(), "/home/ann/.cache/drench");
    setenv("XDG_CACHE_HOME", "", 1);
    unsetenv("HOME");
    EXPECT_EQ(bots::chartFolder(), "");
}

TEST(ProgramChecksum, IsThatOfThisProgram) {
    EXPECT_NE(bots::programChecksum(), 0u);
    EXPECT_EQ(bots::programChecksum(), bots::programChecksum());
}
