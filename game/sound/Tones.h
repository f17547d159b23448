#pragma once

#include "common/Chance.h"
#include "game/sound/Filters.h"

#include <cstddef>
#include <vector>

// What sounds are made of. Times are seconds, frequencies Hz.

namespace drench::game {

/// One channel, sampleRate frames a second, from -1 to 1.
using Samples = std::vector<float>;

std::size_t framesIn(double seconds);

Samples silence(double seconds);

/// A burst of noise through a band whose middle glides from one frequency to another.
struct Burst {
    double start = 0.0;

    /// Rises within `attack`, and then falls by a factor of e in each `decay`.
    double attack = 0.002;
    double decay = 0.05;
    double frequency = 1000.0;
    double lastFrequency = 1000.0;
    double quality = 0.7;
    double gain = 1.0;
};

void addBurst(Samples& samples, const Burst& burst, Chance& chance);

/// A sine that glides and dies away.
struct Tone {
    double start = 0.0;
    double attack = 0.002;
    double decay = 0.05;
    double frequency = 440.0;

    /// The factor of the frequency in a second.
    double glide = 1.0;
    double gain = 1.0;
};

void addTone(Samples& samples, const Tone& tone);

/// A bubble of air that rises to the surface of water: it rings higher as it gets there. After van
/// den Doel, "Physically based models for liquid sounds", 2005.
Tone bubble(double start, double frequency, double gain, Chance& chance);

/// Many bubbles.
struct Bubbles {
    int count = 0;

    /// Most begin early, none after this.
    double lastStart = 0.0;

    /// The range of their frequencies.
    double low = 500.0;
    double high = 1500.0;
    double gain = 1.0;
};

void addBubbles(Samples& samples, const Bubbles& bubbles, Chance& chance);

/// Scales the samples to this peak.
void normalize(Samples& samples, float peak);

/// A sound that begins and ends without a click, with this peak. What no ear hears but loudspeakers
/// move for is taken away, and the sharpest hiss.
Samples finished(Samples samples, float peak);

} // namespace drench::game
