#pragma once

#include "game/Listener.h"
#include "game/sound/SoundBank.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>

namespace drench::game {

/// The factor of the samples at a volume as players set it, 0 to 1: its square, evenly spaced for
/// the ear.
constexpr float factorOf(double volume) {
    return static_cast<float>(volume * volume);
}

/// Mixes what is heard into stereo. Farther sounds are softer, and each ear hears its own side, at
/// constant power. Nothing ever clips or clicks. Nothing here allocates, so the thread of a sound
/// device may pull; its owner sees to it that no two threads call at once.
class Mixer {
  public:
    /// The most sounds at once, jets apart. The softest one makes way for a louder one.
    static constexpr std::size_t mostVoices = 24;

    /// The bank must outlive the mixer.
    explicit Mixer(const SoundBank& bank) : bank_(&bank) {}

    void listenFrom(const Listener& listener) { listener_ = listener; }

    /// Begins a sound, unless it is too soft to be heard or all voices are busy with louder ones.
    void play(const Cue& cue);

    /// The jets that go on from now; at most one for each player.
    void setJets(std::span<const HeardJet> jets);

    /// @param volume  0 for silence to 1, a factor of the samples; reached within a fiftieth of a
    /// second
    void setVolume(float volume) { volume_ = volume; }

    /// The next frames: left and right sample in turn, from -1 to 1. The size must be even. While
    /// the listener stands still, the samples do not depend on how many are pulled at once.
    void pull(std::span<float> samples);

    /// The sounds that are under way, jets included.
    std::size_t voices() const;

  private:
    /// The shares that reach the two ears.
    struct Gains {
        float left = 0.0f;
        float right = 0.0f;
    };

    struct Voice {
        /// Null for a free voice.
        const Samples* samples = nullptr;
        std::size_t at = 0;

        /// Whose jet it is, which goes on and on; 0 for another sound.
        char jetOf = 0;
        std::optional<vec3> place;
        float loudness = 0.0f;
        Gains gains;

        /// Moves towards its goal by this step a frame. A voice whose goal is 0 is free once it
        /// gets there.
        float level = 1.0f;
        float goal = 1.0f;
        float step = 0.0f;
    };

    /// Voices that fade out while others have taken their turn.
    static constexpr std::size_t spareVoices = 8;

    Gains gainsFor(const std::optional<vec3>& place, float loudness) const;
    Voice* voiceFor(float loudness);
    void add(Voice& voice, std::span<float> samples) const;

    const SoundBank* bank_;
    Listener listener_;
    std::array<Voice, mostVoices + spareVoices> voices_;
    std::array<Voice, maxPlayers> jets_;
    float volume_ = 1.0f;

    /// The volume on its way there.
    float reachedVolume_ = 0.0f;

    /// Sounds begun so far, for their variants.
    unsigned begun_ = 0;
};

} // namespace drench::game
