#include "common/Files.h"
#include "tests/window/Desk.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <thread>
#include <vector>

namespace {

/// The bytes of a second: two sides of floats, 48000 times.
constexpr std::size_t second = 48000 * 2 * sizeof(float);

/// What a window plays, written into a file instead.
class Recorder {
  public:
    std::string environment() const { return "SDL_AUDIODRIVER=disk SDL_DISKAUDIOFILE=" + file(); }

    /// Whether it gets louder than this within some seconds, or falls silent.
    bool hears(double loudness) const {
        return listensUntil([&](double heard) { return heard > loudness; });
    }
    bool fallsSilent() const {
        return listensUntil([](double heard) { return heard >= 0.0 && heard < 1e-4; });
    }

  private:
    template<class Wanted>
    bool listensUntil(const Wanted& wanted) const {
        for (int tries = 0; tries < 10; ++tries) {
            if (wanted(listen()))
                return true;
        }
        return false;
    }

    /// The loudness, as a root of the mean square, of the next half second; -1 if none comes.
    double listen() const {
        const std::size_t from = recorded();
        const std::size_t wanted = from + second / 2;
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience);
        while (recorded() < wanted) {
            if (std::chrono::steady_clock::now() > end)
                return -1.0;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        const std::string bytes = drench::readFile(file());
        std::vector<float> samples(second / 2 / sizeof(float));
        std::memcpy(samples.data(), bytes.data() + from, second / 2);
        double sum = 0.0;
        for (const float sample : samples)
            sum += static_cast<double>(sample) * static_cast<double>(sample);
        return std::sqrt(sum / static_cast<double>(samples.size()));
    }

    std::string file() const { return folder_.path + "/sound"; }

    /// In whole samples.
    std::size_t recorded() const {
        std::error_code missing;
        const auto size = std::filesystem::file_size(file(), missing);
        return missing ? 0 : static_cast<std::size_t>(size) / sizeof(float) * sizeof(float);
    }

    TemporaryFolder folder_;
};

} // namespace

TEST(WindowSound, OnesOwnJetIsHeardAsLongAsItIsFired) {
    const Recorder recorder;
    Desk desk({.environment = recorder.environment()});
    desk.settle();
    EXPECT_TRUE(recorder.fallsSilent()) << "standing";
    desk.pressButton(1);
    ASSERT_TRUE(desk.sees([](const PlayerUpdate& ann) { return ann.shooting; }));
    EXPECT_TRUE(recorder.hears(0.01));
    desk.releaseButton(1);
    ASSERT_TRUE(desk.sees([](const PlayerUpdate& ann) { return !ann.shooting; }));
    EXPECT_TRUE(recorder.fallsSilent());
}

TEST(WindowSound, OnesOwnStepsAreHeard) {
    const Recorder recorder;
    Desk desk({.environment = recorder.environment()});
    desk.settle();
    ASSERT_TRUE(recorder.fallsSilent());
    desk.press("w");
    EXPECT_TRUE(recorder.hears(0.002));
    desk.release("w");
    EXPECT_TRUE(desk.comesToRest());
}

TEST(WindowSound, WithoutVolumeNothingIsHeard) {
    const Recorder recorder;
    Desk desk(
        {.settings = "[sound]\nmaster-volume = 0.0\n", .environment = recorder.environment()});
    desk.settle();
    desk.pressButton(1);
    ASSERT_TRUE(desk.sees([](const PlayerUpdate& ann) { return ann.shooting; }));
    EXPECT_TRUE(recorder.fallsSilent()) << "though the button is down";
    desk.releaseButton(1);
}

TEST(WindowSound, WithoutASoundDeviceThePlayGoesOnAndOneLineSaysSo) {
    Desk desk({.environment = "SDL_AUDIODRIVER=none-of-them"});
    desk.settle();
    desk.window.signal(SIGTERM);
    EXPECT_EQ(desk.window.status(), 0);
    EXPECT_EQ(desk.window.err().rfind("Nothing can be heard: ", 0), 0u) << desk.window.err();
    EXPECT_EQ(desk.window.err().find('\n'), desk.window.err().size() - 1) << desk.window.err();
}
