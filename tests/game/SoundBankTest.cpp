#include "game/sound/SoundBank.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <utility>

using namespace drench::game;

namespace {

const SoundBank& bank() {
    static const SoundBank made(1);
    return made;
}

/// Every sound that is not a loop, with its name.
std::vector<std::pair<std::string, const Samples*>> allSounds() {
    std::vector<std::pair<std::string, const Samples*>> all;
    const char* const names[] = {"jet",     "splash", "step",  "jump", "landing",
                                 "soaking", "soaked", "spawn", "chat"};
    for (int sound = 0; sound < 9; ++sound) {
        for (int material = 0; material < 13; ++material) {
            for (unsigned variant = 0; variant < 5; ++variant)
                all.emplace_back(names[sound] + (" on " + std::to_string(material)) + ", variant " +
                                     std::to_string(variant),
                                 &bank().of(static_cast<Sound>(sound), material, variant));
        }
    }
    return all;
}

float peakOf(const Samples& samples) {
    float peak = 0.0f;
    for (const float sample : samples)
        peak = std::max(peak, std::fabs(sample));
    return peak;
}

double energyOf(const Samples& samples) {
    double sum = 0.0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum;
}

/// The largest step between neighbours in a part of the samples.
float largestStep(const Samples& samples, std::size_t first, std::size_t last) {
    float largest = 0.0f;
    for (std::size_t i = first + 1; i < last; ++i)
        largest = std::max(largest, std::fabs(samples[i] - samples[i - 1]));
    return largest;
}

/// The energy around a frequency.
double energyNear(const Samples& samples, double frequency) {
    Samples filtered = samples;
    Biquad::bandPass(frequency, 3.0).filter(filtered);
    return energyOf(filtered);
}

/// Where the middle of the energy lies, as a frequency: crossings of zero, weighted by loudness.
double pitchOf(const Samples& samples, std::size_t first, std::size_t last) {
    const Samples part(samples.begin() + static_cast<std::ptrdiff_t>(first),
                       samples.begin() + static_cast<std::ptrdiff_t>(last));
    double energy = 0.0;
    double change = 0.0;
    for (std::size_t i = 1; i < part.size(); ++i) {
        energy += std::pow(static_cast<double>(part[i]), 2.0);
        change += std::pow(static_cast<double>(part[i] - part[i - 1]), 2.0);
    }
    return std::sqrt(change / energy) * sampleRate / (2.0 * std::numbers::pi);
}

} // namespace

TEST(SoundBank, EverySoundIsHeardAndNoneIsTooLoud) {
    for (const auto& [name, samples] : allSounds()) {
        EXPECT_GT(energyOf(*samples), 1.0) << name;
        EXPECT_GE(peakOf(*samples), 0.2f) << name;
        EXPECT_LE(peakOf(*samples), 0.61f) << name;
    }
}

TEST(SoundBank, NoSoundLastsASecond) {
    for (const auto& [name, samples] : allSounds())
        EXPECT_LT(samples->size(), static_cast<std::size_t>(sampleRate)) << name;
}

TEST(SoundBank, SoundsBeginAndEndWithoutAClick) {
    constexpr std::size_t millisecond = sampleRate / 1000;
    for (const auto& [name, samples] : allSounds()) {
        const std::size_t size = samples->size();
        EXPECT_LT(std::fabs(samples->front()), 1e-4f) << name;
        EXPECT_LT(std::fabs(samples->back()), 1e-4f) << name;
        EXPECT_LT(largestStep(*samples, 0, millisecond / 2), 0.05f) << name;
        EXPECT_LT(largestStep(*samples, size - millisecond, size), 0.005f) << name;
    }
}

TEST(SoundBank, SoundsHaveNoConstantPart) {
    for (const auto& [name, samples] : allSounds()) {
        double sum = 0.0;
        for (const float sample : *samples)
            sum += static_cast<double>(sample);
        EXPECT_LT(std::fabs(sum / static_cast<double>(samples->size())), 0.002) << name;
    }
}

TEST(SoundBank, JetLeadsFromItsEndIntoItsBeginning) {
    const Samples& jet = bank().jet();
    Samples seam(jet.end() - 200, jet.end());
    seam.insert(seam.end(), jet.begin(), jet.begin() + 200);
    EXPECT_LE(largestStep(seam, 198, 202), largestStep(jet, 0, jet.size()));

    // As loud in each tenth of a second, the blended ones too.
    const double mean = energyOf(jet) / static_cast<double>(jet.size());
    for (std::size_t at = 0; at + 4800 <= jet.size(); at += 4800) {
        const Samples part(jet.begin() + static_cast<std::ptrdiff_t>(at),
                           jet.begin() + static_cast<std::ptrdiff_t>(at + 4800));
        EXPECT_NEAR(energyOf(part) / 4800.0 / mean, 1.0, 0.5) << at;
    }
}

TEST(SoundBank, EqualSeedsMakeEqualSounds) {
    const SoundBank again(1);
    EXPECT_EQ(again.jet(), bank().jet());
    const SoundBank other(2);
    EXPECT_NE(other.jet(), bank().jet());
    for (const Sound sound : {Sound::jet, Sound::splash, Sound::step, Sound::soaked}) {
        EXPECT_EQ(again.of(sound, 3, 1), bank().of(sound, 3, 1));
        EXPECT_NE(other.of(sound, 3, 1), bank().of(sound, 3, 1));
    }
}

TEST(SoundBank, SuccessiveStepsAndSplashesDiffer) {
    for (unsigned variant = 0; variant < 10; ++variant) {
        for (const Sound sound : {Sound::step, Sound::splash})
            EXPECT_NE(bank().of(sound, 2, variant), bank().of(sound, 2, variant + 1));
    }
    EXPECT_FALSE(bank().of(Sound::step, 2, ~0u).empty());
}

TEST(SoundBank, StepsSoundLikeWhatIsTroddenOn) {
    const auto brightness = [](int material) {
        const Samples& samples = bank().of(Sound::step, material, 0);
        return pitchOf(samples, 0, samples.size());
    };
    EXPECT_LT(brightness(3), brightness(2)) << "wood is duller than stone";
    EXPECT_LT(brightness(2), brightness(8)) << "sand crunches";
    EXPECT_NE(bank().of(Sound::step, 1, 0), bank().of(Sound::step, 8, 0));
    EXPECT_EQ(bank().of(Sound::step, 99, 0), bank().of(Sound::step, 2, 0)) << "unknown ones: stone";
    EXPECT_EQ(bank().of(Sound::step, 5, 0), bank().of(Sound::step, 1, 0)) << "leaves: grass";
    EXPECT_EQ(surfaceOf(7), Surface::marble);
    EXPECT_EQ(surfaceOf(6), Surface::water);
}

TEST(SoundBank, SoakingRisesAndBeingSoakedFalls) {
    const Samples& soaking = bank().of(Sound::soaking, 0, 0);
    EXPECT_LT(pitchOf(soaking, 0, 3600), pitchOf(soaking, 9600, 14400));
    const Samples& soaked = bank().of(Sound::soaked, 0, 0);
    EXPECT_GT(pitchOf(soaked, 4800, 14400), pitchOf(soaked, 28800, 43200));
}

TEST(SoundBank, ChimeRingsOnItsNotes) {
    const Samples& chime = bank().of(Sound::spawn, 0, 0);
    EXPECT_GT(energyNear(chime, 659.26), 5.0 * energyNear(chime, 300.0));
    EXPECT_GT(energyNear(chime, 987.77), 5.0 * energyNear(chime, 6000.0));
}
