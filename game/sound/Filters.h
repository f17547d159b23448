#pragma once

#include <span>

namespace drench::game {

/// Frames a second of all sounds.
constexpr int sampleRate = 48000;

/// A filter of second order. Its coefficients are those of Bristow-Johnson, "Cookbook formulae for
/// audio equalizer biquad filter coefficients", 1998. Frequencies in Hz, below half the sample
/// rate; `quality` is the cookbook's Q.
class Biquad {
  public:
    static Biquad lowPass(double frequency, double quality = 0.7071);
    static Biquad highPass(double frequency, double quality = 0.7071);

    /// With a gain of 1 at the frequency.
    static Biquad bandPass(double frequency, double quality);

    /// Takes the coefficients of another filter and keeps what has passed, so that a filter can
    /// sweep.
    void retune(const Biquad& other);

    double filter(double sample);

    /// Filters the samples in place.
    void filter(std::span<float> samples);

  private:
    Biquad(double b0, double b1, double b2, double a0, double a1, double a2);

    double b0_;
    double b1_;
    double b2_;
    double a1_;
    double a2_;

    // The state of a transposed direct form II.
    double first_ = 0.0;
    double second_ = 0.0;
};

} // namespace drench::game
