#include "game/sound/Filters.h"

#include <cmath>
#include <numbers>

namespace drench::game {

namespace {

/// The cosine of the angular frequency, and the cookbook's alpha.
struct Tuning {
    double cosine;
    double alpha;
};

Tuning tuningOf(double frequency, double quality) {
    const double angle = 2.0 * std::numbers::pi * frequency / sampleRate;
    return {std::cos(angle), std::sin(angle) / (2.0 * quality)};
}

} // namespace

Biquad::Biquad(double b0, double b1, double b2, double a0, double a1, double a2)
    : b0_(b0 / a0), b1_(b1 / a0), b2_(b2 / a0), a1_(a1 / a0), a2_(a2 / a0) {}

Biquad Biquad::lowPass(double frequency, double quality) {
    const auto [cosine, alpha] = tuningOf(frequency, quality);
    const double side = (1.0 - cosine) / 2.0;
    return {side, 2.0 * side, side, 1.0 + alpha, -2.0 * cosine, 1.0 - alpha};
}

Biquad Biquad::highPass(double frequency, double quality) {
    const auto [cosine, alpha] = tuningOf(frequency, quality);
    const double side = (1.0 + cosine) / 2.0;
    return {side, -2.0 * side, side, 1.0 + alpha, -2.0 * cosine, 1.0 - alpha};
}

Biquad Biquad::bandPass(double frequency, double quality) {
    const auto [cosine, alpha] = tuningOf(frequency, quality);
    return {alpha, 0.0, -alpha, 1.0 + alpha, -2.0 * cosine, 1.0 - alpha};
}

void Biquad::retune(const Biquad& other) {
    b0_ = other.b0_;
    b1_ = other.b1_;
    b2_ = other.b2_;
    a1_ = other.a1_;
    a2_ = other.a2_;
}

double Biquad::filter(double sample) {
    const double filtered = b0_ * sample + first_;
    first_ = b1_ * sample - a1_ * filtered + second_;
    second_ = b2_ * sample - a2_ * filtered;
    return filtered;
}

void Biquad::filter(std::span<float> samples) {
    for (float& sample : samples)
        sample = static_cast<float>(filter(static_cast<double>(sample)));
}

} // namespace drench::game
