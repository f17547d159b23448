#include "client/recording/RecordingReader.h"
#include "tests/window/Desk.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

/// 24 s of four bots.
constexpr char match[] = DRENCH_TEST_DATA "/match.drench";

/// The bar in a window of 1280 x 720: its middle, and its ends.
constexpr int barHeight = 676;
constexpr int barLeft = 188;
constexpr int barRight = 1028;

/// A window that shows the match.
struct Cinema {
    TemporaryFolder folder;
    Display display;
    ToolProcess window{"/usr/bin/env",
                       windowCommand(display.name, folder.path,
                                     std::string(match) + " --size 1280x720 --fps-limit 30")};

    /// Whether the bar says that this share of the match has been played.
    bool isPlayed(double share) const {
        const int x = barLeft + static_cast<int>(share * (barRight - barLeft));
        const arena::Colour colour = display.colourAt({x, barHeight});
        return colour.blue > 230 && colour.red < 100 && colour.green > 150;
    }
    bool playsTo(double share) const {
        return waitUntil([&] { return isPlayed(share); });
    }
    void tap(const std::string& key) const { display.xdotool("key " + key); }
    void click(double share) const {
        const int x = barLeft + static_cast<int>(share * (barRight - barLeft));
        display.xdotool("mousemove " + std::to_string(x) + " " + std::to_string(barHeight));
        display.xdotool("mousedown 1");
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        display.xdotool("mouseup 1");
    }
};

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> files;
    if (std::filesystem::is_directory(folder)) {
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            files.push_back(entry.path().string());
    }
    return files;
}

} // namespace

TEST(WindowWatching, ARecordingPlaysAndPausesAndLeaps) {
    Cinema cinema;
    ASSERT_TRUE(cinema.playsTo(0.1)) << cinema.window.err();
    cinema.tap("space");
    std::this_thread::sleep_for(std::chrono::seconds(1));
    double share = 0.1;
    while (cinema.isPlayed(share) && share < 1.0)
        share += 0.02;
    std::this_thread::sleep_for(std::chrono::seconds(2));
    EXPECT_FALSE(cinema.isPlayed(share + 0.02)) << "paused";
    cinema.click(0.8);
    EXPECT_TRUE(cinema.playsTo(0.75));
    EXPECT_FALSE(cinema.isPlayed(0.85));
    cinema.tap("Home");
    EXPECT_TRUE(waitUntil([&] { return !cinema.isPlayed(0.1); }));
    cinema.tap("n");
    cinema.tap("n");
    EXPECT_TRUE(cinema.playsTo(0.2)) << "before the second soaking";
    EXPECT_FALSE(cinema.isPlayed(0.3));
    cinema.tap("space");
    EXPECT_TRUE(cinema.playsTo(0.3)) << "goes on";
    cinema.window.signal(SIGTERM);
    EXPECT_EQ(cinema.window.status(), 0) << cinema.window.err();
    EXPECT_EQ(cinema.window.err(), "");
}

TEST(WindowWatching, AMatchIsRecordedWithoutAndWithAKey) {
    const TemporaryFolder data;
    Desk desk({.environment = "XDG_DATA_HOME=" + data.path});
    desk.settle();
    const std::string folder = data.path + "/drench/recordings";
    desk.tap("F9");
    EXPECT_TRUE(waitUntil([&] { return filesIn(folder).size() == 1; }));
    desk.press("w");
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    desk.release("w");
    desk.tap("F9");
    desk.tap("F10");
    EXPECT_TRUE(waitUntil([&] { return filesIn(folder).size() == 2; }));
    desk.window.signal(SIGTERM);
    EXPECT_EQ(desk.window.status(), 0) << desk.window.err();
    for (const std::string& file : filesIn(folder)) {
        client::RecordingReader reader = client::RecordingReader::open(file);
        EXPECT_GT(reader.datagrams(), 60u) << file;
        EXPECT_FALSE(reader.header().arena.empty()) << "the only one that it can be";
        std::size_t sent = 0;
        while (const std::optional<client::RecordedDatagram> each = reader.next())
            sent += each->way == client::Way::toRoom ? 1 : 0;
        EXPECT_GT(sent, 0u) << "one's own inputs";
        EXPECT_TRUE(reader.problems().empty()) << reader.problems().front();
    }
}

namespace {

/// The window's program without a display.
ToolProcess withoutDisplay(const TemporaryFolder& folder, const std::string& arguments,
                           const std::string& environment = "") {
    return {"/usr/bin/env",
            windowCommand("", folder.path, std::string(match) + " " + arguments, environment)};
}

constexpr char oneSecond[] = " --from 8 --to 9 --size 320x180 --fps 25 --plain";

} // namespace

TEST(Video, HasEveryFrameAndItsSound) {
    const TemporaryFolder folder;
    const std::string file = folder.path + "/match.mp4";
    for (const std::string view : {"eye --player 3", "follow", "above"}) {
        std::string arguments = "--video " + file + oneSecond;
        arguments += " --view " + view;
        ToolProcess film = withoutDisplay(folder, arguments);
        ASSERT_EQ(film.status(), 0) << film.err();
        EXPECT_EQ(film.err(), "");
        ToolProcess probe("/usr/bin/env",
                          "ffprobe -v error -count_frames -show_entries "
                          "stream=codec_name,width,height,nb_read_frames,duration -of csv " +
                              file);
        ASSERT_EQ(probe.status(), 0) << probe.err();
        EXPECT_NE(probe.out().find("stream,h264,320,180,1.000000,25\n"), std::string::npos)
            << probe.out();
        EXPECT_NE(probe.out().find("stream,aac,1.000000,"), std::string::npos) << probe.out();
    }
}

TEST(Video, IsTheSameEveryTime) {
    const TemporaryFolder folder;
    for (const char* name : {"/first.mp4", "/second.mp4"})
        ASSERT_EQ(withoutDisplay(folder, "--video " + folder.path + name + oneSecond).status(), 0);
    EXPECT_TRUE(readFile(folder.path + "/first.mp4") == readFile(folder.path + "/second.mp4"));
}

TEST(Video, ThatCannotBeMadeLeavesWhatWasThere) {
    const TemporaryFolder folder;
    const std::string file = folder.write("match.mp4", "an old one");
    ToolProcess film = withoutDisplay(folder, "--video " + file + oneSecond, "PATH=/nowhere");
    EXPECT_EQ(film.status(), 2);
    EXPECT_EQ(film.err(), "ffmpeg is not installed, and makes the videos: apt-get install "
                          "ffmpeg\n");
    ToolProcess interrupted = withoutDisplay(folder, "--video " + file + " --size 1280x720");
    EXPECT_TRUE(waitUntil([&] { return filesIn(folder.path).size() > 1; })) << "it is being made";
    interrupted.signal(SIGINT);
    EXPECT_EQ(interrupted.status(), 1) << interrupted.err();
    EXPECT_EQ(readFile(file), "an old one");
    EXPECT_EQ(filesIn(folder.path).size(), 1u);
}

TEST(Video, WrongUseIsNamed) {
    const TemporaryFolder folder;
    const std::map<std::string, std::string> words = {
        {"--video x.mp4 --size 321x180", "even numbers"},
        {"--video x.mp4 --from 100", "nothing to be shown"},
        {"--video /no/where/x.mp4", "cannot be written"},
        {"--to 5", "--video"},
        {"--video x.mp4 --view round", "--view"},
        {"--video x.mp4 --camera 1,2,3", "--camera"},
    };
    for (const auto& [arguments, word] : words) {
        ToolProcess film = withoutDisplay(folder, arguments);
        EXPECT_EQ(film.status(), 2) << arguments;
        EXPECT_NE(film.err().find(word), std::string::npos) << arguments << ": " << film.err();
    }
    for (const char* option : {"--video x.mp4", "--from 1", "--view eye", "--player 1"}) {
        ToolProcess room("/usr/bin/env",
                         windowCommand("", folder.path, std::string("localhost:1 ") + option));
        EXPECT_EQ(room.status(), 2);
        EXPECT_NE(room.err().find("wants a recorded match"), std::string::npos) << room.err();
    }
}
