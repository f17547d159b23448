#include "game/sound/Filters.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

using namespace drench::game;

namespace {

/// The factor by which the filter scales a sine of this frequency, once it has settled.
double gainAt(Biquad filter, double frequency) {
    double before = 0.0;
    double after = 0.0;
    for (int i = 0; i < 2 * sampleRate; ++i) {
        const double sample = std::sin(2.0 * std::numbers::pi * frequency * i / sampleRate);
        const double filtered = filter.filter(sample);
        if (i < sampleRate)
            continue;
        before += sample * sample;
        after += filtered * filtered;
    }
    return std::sqrt(after / before);
}

const double halfPower = std::sqrt(0.5);

} // namespace

TEST(Filters, LowPassLetsTheLowThrough) {
    EXPECT_NEAR(gainAt(Biquad::lowPass(1000.0), 50.0), 1.0, 0.01);
    EXPECT_NEAR(gainAt(Biquad::lowPass(1000.0), 1000.0), halfPower, 0.01);
    EXPECT_NEAR(gainAt(Biquad::lowPass(1000.0), 10000.0), 0.01, 0.005);
}

TEST(Filters, HighPassLetsTheHighThrough) {
    EXPECT_NEAR(gainAt(Biquad::highPass(1000.0), 100.0), 0.01, 0.005);
    EXPECT_NEAR(gainAt(Biquad::highPass(1000.0), 1000.0), halfPower, 0.01);
    EXPECT_NEAR(gainAt(Biquad::highPass(1000.0), 10000.0), 1.0, 0.01);
}

TEST(Filters, BandPassLetsTheMiddleThrough) {
    EXPECT_NEAR(gainAt(Biquad::bandPass(1000.0, 2.0), 1000.0), 1.0, 0.001);
    EXPECT_LT(gainAt(Biquad::bandPass(1000.0, 2.0), 100.0), 0.1);
    EXPECT_LT(gainAt(Biquad::bandPass(1000.0, 2.0), 10000.0), 0.1);
}

TEST(Filters, RetunedFilterActsAsTheOtherOne) {
    Biquad filter = Biquad::lowPass(100.0);
    filter.retune(Biquad::lowPass(1000.0));
    EXPECT_NEAR(gainAt(filter, 1000.0), halfPower, 0.01);
}

TEST(Filters, SpanIsFilteredInPlace) {
    float samples[] = {1.0f, 0.0f, 0.0f};
    Biquad one = Biquad::lowPass(5000.0);
    Biquad other = one;
    one.filter(samples);
    EXPECT_FLOAT_EQ(samples[0], static_cast<float>(other.filter(1.0)));
    EXPECT_FLOAT_EQ(samples[1], static_cast<float>(other.filter(0.0)));
    EXPECT_NE(samples[2], 0.0f);
}
