#pragma once

#include "client/Clock.h"
#include "game/sound/Mixer.h"

#include <SDL_audio.h>
#include <chrono>
#include <future>
#include <memory>
#include <span>
#include <string>

namespace drench::game {

/// What is heard at a moment.
struct Heard {
    Listener listener;

    /// What began since the moment before.
    std::span<const Cue> cues;

    /// What goes on.
    std::span<const HeardJet> jets;

    /// 0 for silence to 1, as players set it: evenly spaced for the ear.
    double volume = 1.0;
};

/// The loudspeakers. Without a device, or when it is lost, the match goes on in silence, and the
/// device is tried again every few seconds.
class SoundDevice {
  public:
    /// Begins to make the sounds, beside the caller.
    SoundDevice();
    ~SoundDevice();
    SoundDevice(const SoundDevice&) = delete;
    SoundDevice& operator=(const SoundDevice&) = delete;

    /// Passes on what is heard, and opens the device when there is need and it is time. What begins
    /// before the sounds are made is not heard. To be called every frame.
    void play(const Heard& heard, client::Time now);

    /// Why nothing is heard, in the system's words; empty while the device plays.
    const std::string& problem() const { return problem_; }

  private:
    /// The bank and its mixer: once made, they stay where they are.
    struct Sounds {
        SoundBank bank;
        Mixer mixer{bank};

        explicit Sounds(std::uint64_t seed) : bank(seed) {}
    };

    static void SDLCALL pull(void* mixer, Uint8* bytes, int length);
    void open();
    void close();

    std::future<std::unique_ptr<Sounds>> making_;

    /// Null until they are made. The device's thread pulls from them while it is open.
    std::unique_ptr<Sounds> sounds_;
    SDL_AudioDeviceID device_ = 0;
    client::Time nextTry_;
    std::chrono::seconds pause_;
    std::string problem_;
};

} // namespace drench::game
