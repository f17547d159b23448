#include "game/sound/Tones.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace drench::game {

namespace {

double secondsAt(std::size_t frame) {
    return static_cast<double>(frame) / sampleRate;
}

/// From 0 to 1 with the shape of half a cosine.
double rise(double share) {
    return 0.5 - 0.5 * std::cos(std::numbers::pi * share);
}

double envelope(double seconds, double attack, double decay) {
    return seconds < attack ? rise(seconds / attack) : std::exp(-(seconds - attack) / decay);
}

/// Frames from the start to the moment when nothing is left to hear, 80 dB below the peak.
std::size_t lifetime(double attack, double decay) {
    return framesIn(attack + 9.2 * decay);
}

} // namespace

std::size_t framesIn(double seconds) {
    return static_cast<std::size_t>(seconds * sampleRate);
}

Samples silence(double seconds) {
    return Samples(framesIn(seconds), 0.0f);
}

void addBurst(Samples& samples, const Burst& burst, Chance& chance) {
    // Frames between two tunings of the filter: too short for an ear.
    constexpr std::size_t tuningPeriod = 32;
    const std::size_t first = framesIn(burst.start);
    const double length = burst.attack + 4.0 * burst.decay;
    Biquad band = Biquad::bandPass(burst.frequency, burst.quality);
    const std::size_t end = std::min(samples.size(), first + lifetime(burst.attack, burst.decay));
    for (std::size_t i = 0; first + i < end; ++i) {
        const double seconds = secondsAt(i);
        if (i % tuningPeriod == 0 && burst.frequency != burst.lastFrequency) {
            const double share = std::min(seconds / length, 1.0);
            band.retune(Biquad::bandPass(burst.frequency *
                                             std::pow(burst.lastFrequency / burst.frequency, share),
                                         burst.quality));
        }
        samples[first + i] +=
            static_cast<float>(burst.gain * envelope(seconds, burst.attack, burst.decay) *
                               band.filter(chance.between(-1.0, 1.0)));
    }
}

void addTone(Samples& samples, const Tone& tone) {
    const std::size_t first = framesIn(tone.start);
    const double glideInAFrame = std::pow(tone.glide, 1.0 / sampleRate);
    double phase = 0.0;
    double step = 2.0 * std::numbers::pi * tone.frequency / sampleRate;
    const std::size_t end = std::min(samples.size(), first + lifetime(tone.attack, tone.decay));
    for (std::size_t i = 0; first + i < end; ++i) {
        samples[first + i] += static_cast<float>(
            tone.gain * envelope(secondsAt(i), tone.attack, tone.decay) * std::sin(phase));
        phase += step;
        step *= glideInAFrame;
    }
}

Tone bubble(double start, double frequency, double gain, Chance& chance) {
    Tone tone;
    tone.start = start;
    tone.attack = 0.003;
    tone.decay = 12.0 / frequency * chance.between(0.8, 1.6);
    tone.frequency = frequency;
    tone.glide = chance.between(4.0, 60.0);
    tone.gain = gain;
    return tone;
}

void addBubbles(Samples& samples, const Bubbles& bubbles, Chance& chance) {
    for (int i = 0; i < bubbles.count; ++i) {
        const double share = chance.share();
        const double pitch = bubbles.low * std::pow(bubbles.high / bubbles.low, chance.share());
        const double gain = bubbles.gain * chance.between(0.3, 1.0);
        addTone(samples, bubble(bubbles.lastStart * share * share, pitch, gain, chance));
    }
}

void normalize(Samples& samples, float peak) {
    float highest = 0.0f;
    for (const float sample : samples)
        highest = std::max(highest, std::fabs(sample));
    if (highest > 0.0f) {
        for (float& sample : samples)
            sample *= peak / highest;
    }
}

Samples finished(Samples samples, float peak) {
    constexpr double lowest = 35.0;
    const std::size_t in = framesIn(0.002);
    const std::size_t out = framesIn(0.03);
    constexpr double harsh = 9000.0;
    Biquad::highPass(lowest).filter(samples);
    Biquad::lowPass(harsh).filter(samples);
    for (std::size_t i = 0; i < in; ++i)
        samples[i] *= static_cast<float>(rise(static_cast<double>(i) / static_cast<double>(in)));
    for (std::size_t i = 0; i < out; ++i)
        samples[samples.size() - 1 - i] *=
            static_cast<float>(rise(static_cast<double>(i) / static_cast<double>(out)));
    normalize(samples, peak);
    return samples;
}

} // namespace drench::game
