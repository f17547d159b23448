#include "game/OpenedRecording.h"

#include "arena/ArenaFile.h"
#include "client/recording/RecordingBytes.h"
#include "common/Files.h"
#include "tests/game/Snapshots.h"
#include "tests/support/Arenas.h"
#include "tests/support/Datagrams.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

using client::Way;

/// Writes a recording down, sixteen milliseconds a tick.
class Recording {
  public:
    explicit Recording(const std::string& arena = "") : bytes_(header(arena)) {}

    void add(const std::string& datagram, std::uint32_t line = 0, Way way = Way::fromRoom) {
        bytes_.add({now_, way, line, datagram});
    }
    void tick() { now_ += std::chrono::milliseconds(16); }

    /// A body that stands there.
    void stand(int ticks, vec3 place, std::uint32_t line = 0) {
        for (int i = 0; i < ticks; ++i) {
            add(bytesOf(snapshotOf({playerAt('1', place, "Ann")})), line);
            tick();
        }
    }

    std::string finish() {
        bytes_.end();
        return bytes_.takeReady();
    }

  private:
    static client::RecordingHeader header(const std::string& arena) {
        client::RecordingHeader header;
        header.arena = arena;
        header.room = "room:5000";
        return header;
    }

    client::RecordingBytes bytes_;
    client::RecordedTime now_{};
};

/// The same court with a cube where bodies stand in the other.
std::string courtWithBlock() {
    return arenaText(32, 16, 32, [](int i, int j, int k) {
        return j == 0 || i == 0 || k == 0 || i == 31 || k == 31 || (i == 7 && k == 7 && j < 4);
    });
}

constexpr vec3 inTheBlock{480.0f, standing, 480.0f};

struct OpeningRecordings : testing::Test {
    TemporaryFolder folder;
    std::vector<KnownArena> known;

    OpeningRecordings() {
        known.push_back({"block", "block", loaded(courtWithBlock())});
        known.push_back({"court", "court", loaded(emptyCourt())});
    }

    OpenedRecording open(const std::string& bytes) {
        return openRecording(folder.write("match.drench", bytes), known);
    }
};

/// Snapshots that came sixteen milliseconds apart.
long snapshotsIn(const Playback& playback) {
    return std::lround((playback.end() - playback.begin()) / 0.016) + 1;
}

bool isBlocked(const MapManager& map) {
    return !map.cubeIsNull(7, 3, 7);
}

} // namespace

TEST_F(OpeningRecordings, FindTheArenaByWhatIsSeen) {
    Recording recording;
    recording.stand(50, inTheBlock);
    const OpenedRecording opened = open(recording.finish());
    EXPECT_FALSE(isBlocked(*opened.map));
    EXPECT_EQ(snapshotsIn(opened.playback), 50);
    EXPECT_FALSE(opened.mesh.indices.empty());
    EXPECT_EQ(opened.title.find("room:5000, "), 0u) << opened.title;
    EXPECT_TRUE(opened.problems.empty());
}

TEST_F(OpeningRecordings, TakeTheArenaThatTheyHold) {
    known.erase(known.begin());
    Recording recording(courtWithBlock());
    recording.stand(50, inTheBlock);
    const std::string bytes = recording.finish();
    EXPECT_TRUE(isBlocked(*open(bytes).map));
    const std::string file = folder.write("named.drench", bytes);
    EXPECT_FALSE(isBlocked(*openRecording(file, known, true).map)) << "but one that was named";
}

TEST_F(OpeningRecordings, SayThatNoArenaFits) {
    known.pop_back();
    Recording recording;
    recording.stand(50, inTheBlock);
    const OpenedRecording opened = open(recording.finish());
    ASSERT_EQ(opened.problems.size(), 1u);
    EXPECT_NE(opened.problems[0].find("not known here"), std::string::npos);
}

TEST_F(OpeningRecordings, TakeAnotherArenaForOneThatIsBroken) {
    Recording recording("no arena");
    recording.stand(50, inTheBlock);
    const OpenedRecording opened = open(recording.finish());
    EXPECT_FALSE(isBlocked(*opened.map));
    ASSERT_EQ(opened.problems.size(), 1u);
    EXPECT_NE(opened.problems[0].find("cannot be shown"), std::string::npos);
}

TEST_F(OpeningRecordings, OfARelayPlayTheLineThatTellsMost) {
    Recording recording;
    recording.stand(10, inTheBlock, 3);
    recording.add(acceptanceDatagram('2'), 5);
    recording.stand(40, inTheBlock, 5);
    recording.add(keepAliveDatagram('2'), 5, Way::toRoom);
    recording.stand(40, inTheBlock, 6);
    const OpenedRecording opened = open(recording.finish());
    EXPECT_EQ(snapshotsIn(opened.playback), 40);
    EXPECT_EQ(opened.playback.recorder(), '2');
}

TEST_F(OpeningRecordings, WithoutAStateAreRefused) {
    Recording recording;
    EXPECT_THROW(open(recording.finish()), InputError);
    Recording silent;
    silent.add(acceptanceDatagram('1'));
    EXPECT_THROW(open(silent.finish()), InputError);
}

TEST_F(OpeningRecordings, ThatAreCutShowWhatIsThere) {
    Recording recording;
    recording.stand(500, inTheBlock);
    const std::string whole = recording.finish();
    const OpenedRecording opened = open(whole.substr(0, whole.size() * 2 / 3));
    EXPECT_GT(snapshotsIn(opened.playback), 50);
    EXPECT_LT(snapshotsIn(opened.playback), 500);
    EXPECT_FALSE(opened.problems.empty());
}

TEST_F(OpeningRecordings, ThatAreNoLongerWantedAreGivenUp) {
    Recording recording;
    recording.stand(50, inTheBlock);
    const std::string file = folder.write("match.drench", recording.finish());
    std::stop_source stop;
    EXPECT_FALSE(openRecording(file, known, false, stop.get_token()).mesh.indices.empty());
    stop.request_stop();
    EXPECT_THROW(openRecording(file, known, false, stop.get_token()), InputError);
}

TEST_F(OpeningRecordings, AreToldFromOtherFiles) {
    EXPECT_TRUE(isRecording(folder.write("a", Recording().finish())));
    EXPECT_FALSE(isRecording(folder.write("b", "localhost")));
    EXPECT_FALSE(isRecording(folder.write("c", "DRENCH")));
    EXPECT_FALSE(isRecording(folder.path));
    EXPECT_FALSE(isRecording(folder.path + "/none"));
    EXPECT_THROW(openRecording(folder.path + "/none", known), InputError);
}
