#include "game/sound/Tones.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

float peakOf(const Samples& samples) {
    float peak = 0.0f;
    for (const float sample : samples)
        peak = std::max(peak, std::fabs(sample));
    return peak;
}

/// Half waves a second between two moments.
double crossings(const Samples& samples, double from, double to) {
    int count = 0;
    for (std::size_t i = framesIn(from) + 1; i < framesIn(to); ++i)
        count += (samples[i] > 0.0f) != (samples[i - 1] > 0.0f);
    return count / (to - from);
}

/// The largest sample between two moments.
float peakBetween(const Samples& samples, double from, double to) {
    return peakOf(Samples(samples.begin() + static_cast<std::ptrdiff_t>(framesIn(from)),
                          samples.begin() + static_cast<std::ptrdiff_t>(framesIn(to))));
}

} // namespace

TEST(Tones, ToneBeginsRisesAndDiesAway) {
    Samples samples = silence(1.0);
    addTone(samples, {.start = 0.1, .attack = 0.1, .decay = 0.1, .frequency = 1000.0, .gain = 0.5});
    EXPECT_EQ(peakBetween(samples, 0.0, 0.1), 0.0f);
    EXPECT_NEAR(peakBetween(samples, 0.14, 0.15), 0.25f, 0.02f) << "half of the attack";
    EXPECT_NEAR(peakOf(samples), 0.5f, 0.01f);
    EXPECT_NEAR(peakBetween(samples, 0.3, 0.301), 0.5f / 2.71828f, 0.01f) << "one decay later";
    EXPECT_NEAR(crossings(samples, 0.1, 0.5), 2000.0, 10.0);
}

TEST(Tones, ToneGlidesByItsFactor) {
    Samples samples = silence(1.2);
    addTone(samples, {.decay = 10.0, .frequency = 200.0, .glide = 4.0});
    EXPECT_NEAR(crossings(samples, 0.0, 0.1), 400.0, 60.0);
    EXPECT_NEAR(crossings(samples, 0.95, 1.05), 1600.0, 60.0);
}

TEST(Tones, BurstGlidesFromOneBandToAnother) {
    Samples samples = silence(0.5);
    Chance chance(1);
    addBurst(samples, {.decay = 0.1, .frequency = 4000.0, .lastFrequency = 300.0, .quality = 4.0},
             chance);
    EXPECT_GT(crossings(samples, 0.0, 0.05), 3.0 * crossings(samples, 0.35, 0.45));
    EXPECT_GT(peakBetween(samples, 0.0, 0.1), 5.0f * peakBetween(samples, 0.4, 0.5));
}

TEST(Tones, BubblesRiseInPitchAndLastAsLongAsTheyAreLow) {
    Chance chance(1);
    const Tone low = bubble(0.2, 400.0, 0.3, chance);
    const Tone high = bubble(0.2, 4000.0, 0.3, chance);
    EXPECT_GT(low.glide, 1.0);
    EXPECT_GT(low.decay, 3.0 * high.decay);
    EXPECT_EQ(low.start, 0.2);
    EXPECT_EQ(low.gain, 0.3);
}

TEST(Tones, MostBubblesBeginEarly) {
    double early = 0.0;
    double late = 0.0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Samples samples = silence(0.8);
        Chance chance(seed);
        addBubbles(samples, {.count = 20, .lastStart = 0.8, .low = 2000.0, .high = 4000.0}, chance);
        for (std::size_t i = 0; i < samples.size(); ++i)
            (i < samples.size() / 2 ? early : late) += std::pow(static_cast<double>(samples[i]), 2);
    }
    EXPECT_GT(early, 1.3 * late);
    EXPECT_GT(late, 0.1 * early);
}

TEST(Tones, SoundsBehindTheEndAreLeftOut) {
    Samples samples = silence(0.1);
    Chance chance(1);
    addTone(samples, {.start = 0.2});
    addBurst(samples, {.start = 0.2}, chance);
    EXPECT_EQ(peakOf(samples), 0.0f);
    EXPECT_EQ(samples.size(), 4800u);
}

TEST(Tones, FinishedSoundHasItsPeakSoftEndsAndNoConstantPart) {
    Samples samples = silence(0.5);
    addTone(samples, {.attack = 0.0, .decay = 100.0, .frequency = 440.0});
    for (float& sample : samples)
        sample += 3.0f;
    const Samples sound = finished(samples, 0.4f);
    EXPECT_FLOAT_EQ(peakOf(sound), 0.4f);
    EXPECT_EQ(sound.front(), 0.0f);
    EXPECT_EQ(sound.back(), 0.0f);
    double sum = 0.0;
    for (std::size_t i = 4800; i < 19200; ++i)
        sum += static_cast<double>(sound[i]);
    EXPECT_NEAR(sum / 14400.0, 0.0, 0.001);
}

TEST(Tones, SilenceStaysSilent) {
    EXPECT_EQ(peakOf(finished(silence(0.2), 0.5f)), 0.0f);
}
