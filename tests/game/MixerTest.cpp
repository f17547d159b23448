#include "game/sound/Mixer.h"

#include "tests/game/Allocations.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace drench::game;

namespace {

const SoundBank& bank() {
    static const SoundBank made(1);
    return made;
}

using Stereo = std::vector<float>;

/// Frames pulled in blocks of this many.
Stereo pulled(Mixer& mixer, std::size_t frames, std::size_t block = 512) {
    Stereo samples(2 * frames);
    for (std::size_t at = 0; at < frames; at += block) {
        const std::size_t count = std::min(block, frames - at);
        mixer.pull(std::span(samples).subspan(2 * at, 2 * count));
    }
    return samples;
}

/// The energy of a side, 0 left and 1 right, from a frame on.
double energyOf(const Stereo& samples, std::size_t side, std::size_t from = 0) {
    double sum = 0.0;
    for (std::size_t i = 2 * from + side; i < samples.size(); i += 2)
        sum += static_cast<double>(samples[i]) * static_cast<double>(samples[i]);
    return sum;
}

double energyOf(const Stereo& samples) {
    return energyOf(samples, 0) + energyOf(samples, 1);
}

float peakOf(const Stereo& samples) {
    float peak = 0.0f;
    for (const float sample : samples)
        peak = std::max(peak, std::fabs(sample));
    return peak;
}

/// The largest step from a frame to the next, on either side.
float largestStep(const Stereo& samples) {
    float largest = 0.0f;
    for (std::size_t i = 2; i < samples.size(); ++i)
        largest = std::max(largest, std::fabs(samples[i] - samples[i - 2]));
    return largest;
}

/// A mixer whose volume has been reached.
Mixer readyMixer() {
    Mixer mixer(bank());
    pulled(mixer, 4800);
    return mixer;
}

/// What is heard of one sound at a place by a listener at the origin who looks along z.
Stereo heardAt(vec3 place, Sound sound = Sound::splash, float loudness = 1.0f) {
    Mixer mixer = readyMixer();
    mixer.play({sound, place, loudness});
    return pulled(mixer, sampleRate);
}

constexpr vec3 ahead{0.0f, 0.0f, 150.0f};
constexpr vec3 atLeft{150.0f, 0.0f, 0.0f};
constexpr vec3 atRight{-150.0f, 0.0f, 0.0f};

} // namespace

TEST(Mixer, IsSilentWithoutCues) {
    Mixer mixer = readyMixer();
    EXPECT_EQ(peakOf(pulled(mixer, 1000)), 0.0f);
    EXPECT_EQ(mixer.voices(), 0u);
    mixer.pull({});
}

TEST(Mixer, SoundIsHeardOnceAndEnds) {
    Mixer mixer = readyMixer();
    mixer.play({Sound::chat, {}});
    EXPECT_EQ(mixer.voices(), 1u);
    EXPECT_GT(energyOf(pulled(mixer, sampleRate)), 1.0);
    EXPECT_EQ(mixer.voices(), 0u);
    EXPECT_EQ(peakOf(pulled(mixer, sampleRate)), 0.0f);
}

TEST(Mixer, SoundWithoutAPlaceIsAsTheBankHasIt) {
    Mixer mixer = readyMixer();
    mixer.play({Sound::soaking, {}});
    const Samples& original = bank().of(Sound::soaking, 0, 0);
    const Stereo heard = pulled(mixer, original.size());
    const float middle = std::sqrt(0.5f);
    for (std::size_t i = 0; i < original.size(); ++i) {
        ASSERT_NEAR(heard[2 * i], middle * original[i], 1e-6f);
        ASSERT_EQ(heard[2 * i], heard[2 * i + 1]);
    }
}

TEST(Mixer, EachSideIsHeardByItsEar) {
    const Stereo left = heardAt(atLeft);
    EXPECT_LT(energyOf(left, 1), 1e-6 * energyOf(left, 0));
    const Stereo right = heardAt(atRight);
    EXPECT_LT(energyOf(right, 0), 1e-6 * energyOf(right, 1));
    const Stereo middle = heardAt(ahead);
    EXPECT_NEAR(energyOf(middle, 0), energyOf(middle, 1), 1e-6);
}

TEST(Mixer, SoundIsAsStrongFromAllSides) {
    const double middle = energyOf(heardAt(ahead));
    for (int degrees = 0; degrees < 360; degrees += 15) {
        const float angle = static_cast<float>(degrees) * 0.0174533f;
        const vec3 place{150.0f * std::sin(angle), 0.0f, 150.0f * std::cos(angle)};
        EXPECT_NEAR(energyOf(heardAt(place)) / middle, 1.0, 1e-3) << degrees;
    }
}

TEST(Mixer, FartherIsSofter) {
    const auto energyFrom = [](float distance) {
        return energyOf(heardAt({0.0f, 0.0f, distance}));
    };
    EXPECT_EQ(energyFrom(10.0f), energyFrom(192.0f));
    EXPECT_NEAR(energyFrom(384.0f) / energyFrom(192.0f), 0.25, 1e-3);
    EXPECT_NEAR(energyFrom(1920.0f) / energyFrom(192.0f), 0.01, 1e-3);
}

TEST(Mixer, NearSoundHasNoSide) {
    const Stereo near = heardAt({10.0f, 0.0f, 0.0f});
    EXPECT_NEAR(energyOf(near, 1) / energyOf(near, 0), 0.73, 0.05);
    const Stereo inside = heardAt({0.0f, 0.0f, 0.0f});
    EXPECT_NEAR(energyOf(inside, 1), energyOf(inside, 0), 1e-6);
}

TEST(Mixer, TurningListenerHearsThePlaceMove) {
    Mixer mixer = readyMixer();
    mixer.setJets(std::vector<HeardJet>{{'2', ahead}});
    pulled(mixer, 4800);
    mixer.listenFrom({vec3(), vec3(1.0f, 0.0f, 0.0f)});
    const Stereo heard = pulled(mixer, 9600);
    EXPECT_LT(energyOf(heard, 0, 512), 1e-6 * energyOf(heard, 1, 512)) << "now at the right";
    EXPECT_LT(largestStep(heard), 0.2f) << "no click";
}

TEST(Mixer, SamplesDoNotDependOnTheBlocks) {
    const auto play = [](std::size_t block) {
        Mixer mixer(bank());
        mixer.play({Sound::soaked, {}});
        mixer.play({Sound::splash, atLeft});
        mixer.setJets(std::vector<HeardJet>{{'2', ahead}});
        Stereo heard = pulled(mixer, 20000, block);
        mixer.setJets({});
        mixer.setVolume(0.25f);
        const Stereo rest = pulled(mixer, 20000, block);
        heard.insert(heard.end(), rest.begin(), rest.end());
        return heard;
    };
    const Stereo whole = play(20000);
    EXPECT_GT(energyOf(whole), 1.0);
    for (const std::size_t block : {1u, 7u, 512u})
        EXPECT_EQ(play(block), whole) << block;
}

TEST(Mixer, NeverClipsWithAllVoicesAtOnce) {
    Mixer mixer = readyMixer();
    for (int i = 0; i < 100; ++i)
        mixer.play({i % 2 == 0 ? Sound::soaked : Sound::landing, {}});
    mixer.setJets(std::vector<HeardJet>{{'1', {}}, {'2', ahead}, {'3', ahead}, {'4', ahead}});
    EXPECT_EQ(mixer.voices(), Mixer::mostVoices + 4);
    const Stereo heard = pulled(mixer, sampleRate);
    EXPECT_LT(peakOf(heard), 1.0f);
    EXPECT_GT(peakOf(heard), 0.95f) << "loud it is";
}

TEST(Mixer, SoftSoundsAreNotLimited) {
    Mixer mixer = readyMixer();
    mixer.play({Sound::soaking, {}, 0.5f});
    const Stereo half = pulled(mixer, 4800);
    mixer = readyMixer();
    mixer.play({Sound::soaking, {}, 1.0f});
    const Stereo whole = pulled(mixer, 4800);
    for (std::size_t i = 0; i < half.size(); ++i)
        ASSERT_NEAR(2.0f * half[i], whole[i], 1e-6f);
}

TEST(Mixer, LouderSoundTakesTheTurnOfTheSoftestWithoutAClick) {
    Mixer mixer = readyMixer();
    for (std::size_t i = 0; i < Mixer::mostVoices; ++i)
        mixer.play({Sound::spawn, {}, 0.02f});
    pulled(mixer, 4800);
    mixer.play({Sound::spawn, {}, 0.01f});
    EXPECT_EQ(mixer.voices(), Mixer::mostVoices) << "softer than all";
    mixer.play({Sound::soaking, {}, 1.0f});
    EXPECT_EQ(mixer.voices(), Mixer::mostVoices + 1) << "one makes way";
    EXPECT_LT(largestStep(pulled(mixer, 480)), 0.1f);
    EXPECT_EQ(mixer.voices(), Mixer::mostVoices);
}

TEST(Mixer, VoicesStayBounded) {
    Mixer mixer = readyMixer();
    for (int i = 1; i < 1000; ++i)
        mixer.play({Sound::soaked, {}, 0.001f * static_cast<float>(i)});
    EXPECT_LE(mixer.voices(), Mixer::mostVoices + 8);
    std::vector<HeardJet> jets;
    for (char id = 'a'; id < 'z'; ++id)
        jets.push_back({id, ahead});
    mixer.setJets(jets);
    EXPECT_LE(mixer.voices(), Mixer::mostVoices + 8 + 4);
}

TEST(Mixer, WhatCannotBeHeardTakesNoVoice) {
    Mixer mixer = readyMixer();
    mixer.play({Sound::step, vec3(0.0f, 0.0f, 60000.0f), 0.6f});
    mixer.play({Sound::splash, ahead, 0.0f});
    mixer.play({Sound::splash, vec3(std::nanf("")), 1.0f});
    EXPECT_EQ(mixer.voices(), 0u);
}

TEST(Mixer, JetGoesOnBeyondItsLoopAndDiesAway) {
    Mixer mixer = readyMixer();
    mixer.setJets(std::vector<HeardJet>{{'2', ahead}});
    const Stereo begin = pulled(mixer, 100);
    EXPECT_LT(peakOf(begin), 0.05f) << "it rises";
    pulled(mixer, 3 * bank().jet().size());
    const Stereo later = pulled(mixer, sampleRate);
    EXPECT_GT(energyOf(later), 10.0);
    EXPECT_LT(largestStep(later), 0.2f);
    EXPECT_EQ(mixer.voices(), 1u);
    mixer.setJets({});
    EXPECT_GT(energyOf(pulled(mixer, 480)), 0.01);
    pulled(mixer, 4800);
    EXPECT_EQ(mixer.voices(), 0u);
    EXPECT_EQ(peakOf(pulled(mixer, 480)), 0.0f);
}

TEST(Mixer, JetThatBeginsAgainKeepsItsVoice) {
    Mixer mixer = readyMixer();
    for (int i = 0; i < 10; ++i) {
        mixer.setJets(std::vector<HeardJet>{{'2', ahead}});
        pulled(mixer, 200);
        mixer.setJets({});
        pulled(mixer, 200);
    }
    EXPECT_EQ(mixer.voices(), 1u);
}

TEST(Mixer, JetsThatBeginTogetherDiffer) {
    const auto energyOfJets = [](std::vector<HeardJet> jets) {
        Mixer mixer = readyMixer();
        mixer.setJets(jets);
        return energyOf(pulled(mixer, sampleRate));
    };
    EXPECT_NEAR(energyOfJets({{'2', ahead}, {'3', ahead}}) / energyOfJets({{'2', ahead}}), 2.0, 0.3)
        << "the same one twice would have four times the energy";
}

TEST(Mixer, VolumeIsReachedWithoutAClick) {
    Mixer mixer = readyMixer();
    mixer.setJets(std::vector<HeardJet>{{'2', ahead}});
    pulled(mixer, 4800);
    mixer.setVolume(0.0f);
    const Stereo falling = pulled(mixer, 960);
    EXPECT_LT(largestStep(falling), 0.2f);
    EXPECT_GT(energyOf(falling), 0.1);
    pulled(mixer, 8);
    EXPECT_EQ(peakOf(pulled(mixer, sampleRate)), 0.0f) << "silent when asked";
    EXPECT_EQ(mixer.voices(), 1u) << "what goes on comes back";
    mixer.setVolume(0.5f);
    EXPECT_LT(peakOf(pulled(mixer, 100)), 0.05f);
    EXPECT_GT(energyOf(pulled(mixer, 4800)), 0.1);
}

TEST(Mixer, HalfAVolumeIsAQuarterOfTheSamples) {
    EXPECT_EQ(factorOf(0.0), 0.0f);
    EXPECT_EQ(factorOf(0.5), 0.25f);
    EXPECT_EQ(factorOf(1.0), 1.0f);
}

TEST(Mixer, BeginsInSilence) {
    Mixer mixer(bank());
    mixer.setVolume(0.0f);
    mixer.play({Sound::soaked, {}});
    EXPECT_EQ(peakOf(pulled(mixer, 4800)), 0.0f);
}

TEST(Mixer, AllocatesNothing) {
    Mixer mixer = readyMixer();
    const std::vector<HeardJet> jets{{'1', {}}, {'2', ahead}};
    Stereo samples(2048);
    const long before = allocations();
    for (int i = 0; i < 200; ++i) {
        mixer.play({Sound::splash, atLeft});
        mixer.setJets(i % 2 == 0 ? std::span(jets) : std::span<const HeardJet>());
        mixer.listenFrom({vec3(1.0f), vec3(1.0f, 0.0f, 0.0f)});
        mixer.pull(samples);
    }
    EXPECT_EQ(allocations(), before);
}
