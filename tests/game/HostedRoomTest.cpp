#include "game/HostedRoom.h"

#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

using namespace drench::game;

namespace {

/// A folder with programs that do what these scripts say.
class Programs {
  public:
    Programs(const std::string& server, const std::string& bots) {
        write("drench-server", server);
        write("drench-bots", bots);
    }

    const std::string& path() const { return folder_.path; }

  private:
    void write(const std::string& name, const std::string& script) {
        const std::string file = folder_.write(name, "#!/bin/sh\n" + script);
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    TemporaryFolder folder_;
};

} // namespace

TEST(HostedRoom, SaysWhichProgramIsMissing) {
    const TemporaryFolder empty;
    const HostedRoom room(empty.path, 3, drench::client::Clock::now());
    EXPECT_EQ(room.state(), HostedRoom::State::failed);
    EXPECT_NE(room.problem().find(empty.path + "/drench-server"), std::string::npos)
        << room.problem();
}

TEST(HostedRoom, SaysThatARoomHasEnded) {
    const Programs programs("exit 0\n", "exit 0\n");
    HostedRoom room(programs.path(), 3, drench::client::Clock::now());
    EXPECT_TRUE(room.address().starts_with("localhost:")) << room.address();
    for (int i = 0; i < 500 && room.state() == HostedRoom::State::starting; ++i) {
        room.service(drench::client::Clock::now());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(room.state(), HostedRoom::State::failed);
    EXPECT_NE(room.problem().find("ended"), std::string::npos) << room.problem();
}

TEST(HostedRoom, GivesUpOnARoomThatDoesNotAnswer) {
    const Programs programs("exec sleep 60\n", "exit 0\n");
    const drench::client::Time now = drench::client::Clock::now();
    HostedRoom room(programs.path(), 3, now);
    room.service(now + std::chrono::seconds(9));
    EXPECT_EQ(room.state(), HostedRoom::State::starting);
    room.service(now + std::chrono::seconds(11));
    EXPECT_EQ(room.state(), HostedRoom::State::failed);
}
