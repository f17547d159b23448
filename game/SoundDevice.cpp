#include "game/SoundDevice.h"

#include "common/Descriptor.h"

#include <SDL.h>
#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <unistd.h>

namespace drench::game {

namespace {

/// Frames that the device asks for at once: 11 ms, less than a frame of the picture. Fewer would
/// stutter on a busy machine, more would be heard late.
constexpr Uint16 framesAtOnce = 512;

/// From one try to open the device to the next, at first and at most: a try that fails may hold up
/// a frame.
constexpr std::chrono::seconds firstPause{3};
constexpr std::chrono::seconds longestPause{300};

/// The seed of all sounds.
constexpr std::uint64_t soundSeed = 1;

/// Keeps what drivers tell nobody in particular from standard error: they write a page where there
/// is no device.
class QuietErrors {
  public:
    QuietErrors() : errors_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
        const Descriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        if (errors_.number >= 0 && nowhere.number >= 0)
            dup2(nowhere.number, STDERR_FILENO);
    }
    ~QuietErrors() {
        if (errors_.number >= 0)
            dup2(errors_.number, STDERR_FILENO);
    }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

  private:
    Descriptor errors_;
};

} // namespace

SoundDevice::SoundDevice()
    : making_(std::async(std::launch::async, [] { return std::make_unique<Sounds>(soundSeed); })),
      pause_(firstPause) {}

SoundDevice::~SoundDevice() {
    close();
}

void SoundDevice::play(const Heard& heard, client::Time now) {
    if (making_.valid()) {
        if (making_.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return;
        sounds_ = making_.get();
    }
    if (device_ != 0 && SDL_GetAudioDeviceStatus(device_) == SDL_AUDIO_STOPPED) {
        close();
        problem_ = "the sound device was lost";
    }
    if (device_ == 0) {
        if (now < nextTry_)
            return;
        open();
        nextTry_ = now + pause_;
        pause_ = std::min(2 * pause_, longestPause);
        if (device_ == 0)
            return;
        pause_ = firstPause;
    }

    SDL_LockAudioDevice(device_);
    Mixer& mixer = sounds_->mixer;
    mixer.listenFrom(heard.listener);
    mixer.setVolume(factorOf(heard.volume));
    mixer.setJets(heard.jets);
    for (const Cue& cue : heard.cues)
        mixer.play(cue);
    SDL_UnlockAudioDevice(device_);
}

void SDLCALL SoundDevice::pull(void* mixer, Uint8* bytes, int length) {
    static_cast<Mixer*>(mixer)->pull(
        {reinterpret_cast<float*>(bytes), static_cast<std::size_t>(length) / sizeof(float)});
}

void SoundDevice::open() {
    SDL_AudioSpec wanted{};
    wanted.freq = sampleRate;
    wanted.format = AUDIO_F32SYS;
    wanted.channels = 2;
    wanted.samples = framesAtOnce;
    wanted.callback = pull;
    wanted.userdata = &sounds_->mixer;
    const QuietErrors quiet;
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) == 0) {
        device_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
        if (device_ != 0) {
            SDL_PauseAudioDevice(device_, 0);
            problem_.clear();
            return;
        }
    }
    problem_ = SDL_GetError();
    // A driver that came up without a device may find one when it starts anew.
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

void SoundDevice::close() {
    if (device_ == 0)
        return;
    SDL_CloseAudioDevice(device_);
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
    device_ = 0;
}

} // namespace drench::game
