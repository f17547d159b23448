#include "client/Prediction.h"
#include "src/FileLoader.h"
#include "tests/client/PredictedLine.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::client;
using std::chrono::milliseconds;

namespace {

PredictedLine::Settings lineOf(int delay, int jitter, double loss, std::uint64_t seed) {
    PredictedLine::Settings settings;
    settings.line.delay = milliseconds(delay);
    settings.line.jitter = milliseconds(jitter);
    settings.line.loss = loss;
    settings.seed = seed;
    return settings;
}

/// Plays for a while, with a soaking now and then.
void playLong(PredictedLine& line) {
    for (int life = 0; life < 4; ++life) {
        line.playAtRandom(15.0);
        line.soak();
    }
}

} // namespace

TEST(Prediction, ExplainsEverySnapshotOfAGoodLineToTheBit) {
    for (std::uint64_t seed = 0; seed < 4; ++seed) {
        PredictedLine line(fileStringContents(DRENCH_MAPDATA), lineOf(0, 0, 0.0, seed));
        playLong(line);
        const Prediction::Statistics& statistics = line.prediction.statistics();
        EXPECT_GT(statistics.exact, 3500u) << seed;
        EXPECT_EQ(statistics.close + statistics.unexplained, 0u) << seed;
        EXPECT_EQ(statistics.lostViews + statistics.lostKeys, 0u) << seed;
    }
}

TEST(Prediction, ExplainsEverySnapshotAtEightyMillisecondsOfRoundTrip) {
    for (std::uint64_t seed = 0; seed < 4; ++seed) {
        PredictedLine line(fileStringContents(DRENCH_MAPDATA), lineOf(40, 0, 0.0, seed));
        playLong(line);
        const Prediction::Statistics& statistics = line.prediction.statistics();
        EXPECT_GT(statistics.exact, 3500u) << seed;
        EXPECT_EQ(statistics.close + statistics.unexplained, 0u) << seed;
        EXPECT_EQ(statistics.lostViews + statistics.lostKeys, 0u) << seed;
    }
}

TEST(Prediction, ExplainsNearlyEverySnapshotThroughJitterAndLoss) {
    std::uint64_t explained = 0;
    std::uint64_t all = 0;
    for (std::uint64_t seed = 0; seed < 4; ++seed) {
        PredictedLine line(fileStringContents(DRENCH_MAPDATA), lineOf(40, 5, 0.02, seed));
        playLong(line);
        explained += line.prediction.statistics().exact + line.prediction.statistics().close;
        all += line.matches.size();
    }
    EXPECT_GT(all, 13'000u);
    EXPECT_GE(static_cast<double>(explained) / static_cast<double>(all), 0.999);
}

TEST(Prediction, FollowsThroughBurstsOfLossOnALongLine) {
    std::uint64_t explained = 0;
    std::uint64_t all = 0;
    for (std::uint64_t seed = 0; seed < 4; ++seed) {
        PredictedLine::Settings settings = lineOf(100, 20, 0.05, seed);
        settings.line.meanBurst = 3.0;
        PredictedLine line(fileStringContents(DRENCH_MAPDATA), settings);
        playLong(line);
        explained += line.prediction.statistics().exact + line.prediction.statistics().close;
        all += line.matches.size();
    }
    EXPECT_GT(all, 13'000u);
    EXPECT_GE(static_cast<double>(explained) / static_cast<double>(all), 0.97);
}
