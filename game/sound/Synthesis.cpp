#include "game/sound/Synthesis.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace drench::game {

namespace {

/// The parts of a step: the weight of the body, and what the foot does to the surface. Seconds, Hz
/// and gains; a ring of 0 is none.
struct StepSound {
    double thump;

    /// The noise underfoot.
    double frequency;
    double quality;
    double attack;
    double decay;
    double noise;
    double ring;
    double ringDecay;
    double ringGain;
};

constexpr StepSound stepSounds[surfaceCount] = {
    {0.7, 1500.0, 0.9, 0.002, 0.022, 1.6, 620.0, 0.012, 0.25},  // stone
    {0.9, 750.0, 1.0, 0.003, 0.020, 1.2, 235.0, 0.045, 0.80},   // wood
    {0.3, 3600.0, 0.6, 0.018, 0.045, 1.2, 0.0, 0.0, 0.0},       // sand
    {0.4, 2300.0, 0.5, 0.014, 0.040, 0.9, 0.0, 0.0, 0.0},       // grass
    {0.6, 2600.0, 1.2, 0.001, 0.014, 1.6, 1180.0, 0.030, 0.22}, // marble
    {0.3, 1100.0, 0.6, 0.008, 0.050, 1.1, 0.0, 0.0, 0.0},       // water
};

} // namespace

Surface surfaceOf(int material) {
    switch (material) {
    case 1: // ground
    case 5: // leaves
        return Surface::grass;
    case 3: // wood
        return Surface::wood;
    case 6: // water
        return Surface::water;
    case 7:  // marble
    case 11: // tile
        return Surface::marble;
    case 8: // sand
        return Surface::sand;
    default:
        return Surface::stone;
    }
}

Samples jetLoop(Chance chance) {
    const std::size_t frames = framesIn(1.6);
    const std::size_t blended = framesIn(0.4);
    // The hiss of the nozzle, the rush of the water, and a pump that trembles below.
    Biquad hiss = Biquad::bandPass(3600.0, 0.8);
    Biquad rush = Biquad::bandPass(1100.0, 0.8);
    Biquad body = Biquad::bandPass(320.0, 0.9);
    Biquad soften = Biquad::lowPass(8000.0);
    Biquad tremble = Biquad::lowPass(9.0);
    Samples noise(frames + blended);
    for (float& sample : noise) {
        const double white = chance.between(-1.0, 1.0);
        const double flutter = 1.0 + 14.0 * tremble.filter(chance.between(-1.0, 1.0));
        const double water = 0.45 * hiss.filter(white) +
                             rush.filter(white) * std::clamp(flutter, 0.4, 1.6) +
                             0.9 * body.filter(white);
        sample = static_cast<float>(soften.filter(water));
    }
    // What comes behind the end is blended into the beginning, at constant power.
    Samples loop(noise.begin(), noise.begin() + static_cast<std::ptrdiff_t>(frames));
    for (std::size_t i = 0; i < blended; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(blended);
        const double angle = 0.5 * std::numbers::pi * share;
        loop[i] = static_cast<float>(static_cast<double>(noise[i]) * std::sin(angle) +
                                     static_cast<double>(noise[frames + i]) * std::cos(angle));
    }
    normalize(loop, 0.35f);
    return loop;
}

Samples jetStart(Chance chance) {
    Samples samples = silence(0.22);
    addBurst(samples,
             {.attack = 0.006,
              .decay = 0.05,
              .frequency = 5200.0,
              .lastFrequency = 1800.0,
              .quality = 0.8},
             chance);
    addTone(samples,
            {.attack = 0.004, .decay = 0.03, .frequency = 180.0, .glide = 0.01, .gain = 0.5});
    return finished(std::move(samples), 0.4f);
}

Samples splash(Chance chance) {
    Samples samples = silence(0.5);
    addBurst(samples,
             {.attack = 0.004,
              .decay = 0.05,
              .frequency = 3800.0,
              .lastFrequency = 900.0,
              .quality = 0.5},
             chance);
    addBurst(samples,
             {.start = 0.02,
              .attack = 0.03,
              .decay = 0.1,
              .frequency = 1300.0,
              .lastFrequency = 600.0,
              .gain = 0.5},
             chance);
    addBubbles(samples, {.count = 16, .lastStart = 0.3, .low = 480.0, .high = 2100.0, .gain = 0.16},
               chance);
    return finished(std::move(samples), 0.5f);
}

Samples step(Surface surface, Chance chance) {
    const StepSound& sound = stepSounds[static_cast<std::size_t>(surface)];
    Samples samples = silence(0.22);
    const double pitch = chance.between(0.9, 1.1);
    addTone(samples, {.attack = 0.004,
                      .decay = 0.022,
                      .frequency = 105.0 * pitch,
                      .glide = 0.005,
                      .gain = sound.thump});
    // The heel, then the toes, softer.
    const double toes = chance.between(0.05, 0.07);
    for (const auto& [start, share] : {std::pair(0.0, 1.0), std::pair(toes, 0.35)}) {
        addBurst(samples,
                 {.start = start,
                  .attack = sound.attack,
                  .decay = sound.decay,
                  .frequency = sound.frequency * pitch,
                  .lastFrequency = 0.7 * sound.frequency * pitch,
                  .quality = sound.quality,
                  .gain = share * sound.noise},
                 chance);
    }
    if (sound.ring > 0.0)
        addTone(
            samples,
            {.decay = sound.ringDecay, .frequency = sound.ring * pitch, .gain = sound.ringGain});
    if (surface == Surface::water)
        addBubbles(samples, {.count = 6, .lastStart = 0.1, .gain = 0.3}, chance);
    return finished(std::move(samples), 0.4f);
}

Samples jump(Chance chance) {
    Samples samples = silence(0.25);
    addBurst(samples,
             {.attack = 0.05,
              .decay = 0.04,
              .frequency = 420.0,
              .lastFrequency = 1500.0,
              .quality = 1.1},
             chance);
    addTone(samples,
            {.attack = 0.02, .decay = 0.04, .frequency = 170.0, .glide = 14.0, .gain = 0.2});
    return finished(std::move(samples), 0.35f);
}

Samples landing(Chance chance) {
    Samples samples = silence(0.35);
    addTone(samples, {.attack = 0.003, .decay = 0.06, .frequency = 120.0, .glide = 0.02});
    addBurst(samples, {.decay = 0.03, .frequency = 420.0, .lastFrequency = 180.0, .gain = 1.4},
             chance);
    addBurst(samples,
             {.start = 0.03,
              .attack = 0.01,
              .decay = 0.04,
              .frequency = 1900.0,
              .lastFrequency = 1200.0,
              .quality = 0.8,
              .gain = 0.15},
             chance);
    return finished(std::move(samples), 0.6f);
}

Samples soakingBlip() {
    // A major chord, upward.
    constexpr double notes[] = {783.99, 1046.50, 1318.51};
    Samples samples = silence(0.6);
    double start = 0.0;
    for (const double note : notes) {
        addTone(samples, {.start = start, .attack = 0.006, .decay = 0.11, .frequency = note});
        addTone(
            samples,
            {.start = start, .attack = 0.004, .decay = 0.05, .frequency = 2.0 * note, .gain = 0.3});
        addTone(samples, {.start = start,
                          .attack = 0.003,
                          .decay = 0.02,
                          .frequency = 3.01 * note,
                          .gain = 0.15});
        start += 0.075;
    }
    return finished(std::move(samples), 0.45f);
}

Samples soakedGurgle(Chance chance) {
    Samples samples = silence(0.95);
    addBurst(samples,
             {.attack = 0.005,
              .decay = 0.09,
              .frequency = 2600.0,
              .lastFrequency = 400.0,
              .quality = 0.5},
             chance);
    // Ever lower and slower, like a drain.
    double start = 0.06;
    double pitch = 900.0;
    double gain = 0.5;
    while (start < 0.8) {
        addTone(samples, bubble(start, pitch * chance.between(0.9, 1.15), gain, chance));
        addTone(samples, bubble(start + 0.012, 0.5 * pitch, 0.6 * gain, chance));
        start += chance.between(0.045, 0.085);
        pitch *= 0.89;
        gain *= 0.9;
    }
    return finished(std::move(samples), 0.6f);
}

Samples spawnChime() {
    // Partials of a bar that swings freely, and the fifth above.
    Samples samples = silence(0.95);
    for (const auto& [start, note] : {std::pair(0.0, 659.26), std::pair(0.11, 987.77)}) {
        addTone(samples, {.start = start, .attack = 0.004, .decay = 0.26, .frequency = note});
        addTone(samples, {.start = start,
                          .attack = 0.003,
                          .decay = 0.09,
                          .frequency = 2.756 * note,
                          .gain = 0.28});
        addTone(samples, {.start = start, .decay = 0.03, .frequency = 5.404 * note, .gain = 0.1});
    }
    return finished(std::move(samples), 0.4f);
}

Samples chatTick() {
    Samples samples = silence(0.12);
    addTone(samples, {.attack = 0.003, .decay = 0.016, .frequency = 1320.0});
    addTone(samples,
            {.start = 0.035, .attack = 0.003, .decay = 0.014, .frequency = 1760.0, .gain = 0.6});
    return finished(std::move(samples), 0.25f);
}

} // namespace drench::game
