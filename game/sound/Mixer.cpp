#include "game/sound/Mixer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace drench::game {

namespace {

/// World units: three cubes. What is nearer is no louder, what is farther falls with its distance.
constexpr float nearDistance = 192.0f;

/// World units within which a sound moves from its side to the middle of the head.
constexpr float headDistance = 100.0f;

/// The share that reaches an ear below which a sound is not begun.
constexpr float inaudible = 0.003f;

/// A jet beside the other sounds.
constexpr float jetLoudness = 0.6f;
constexpr float ownJetLoudness = 0.35f;

/// Changes a frame. Jets begin within 30 ms and end within 80, voices make way within 5, the volume
/// changes within 20.
constexpr float jetRise = 1.0f / (0.030f * sampleRate);
constexpr float jetFall = 1.0f / (0.080f * sampleRate);
constexpr float wayFall = 1.0f / (0.005f * sampleRate);
constexpr float volumeStep = 1.0f / (0.020f * sampleRate);

float towards(float value, float goal, float step) {
    return value < goal ? std::min(value + step, goal) : std::max(value - step, goal);
}

/// Leaves what is soft as it is, and bends what is loud so that it never reaches 1.
float limited(float sample) {
    constexpr float knee = 0.7f;
    constexpr float room = 0.999f - knee;
    const float size = std::fabs(sample);
    if (size <= knee)
        return sample;
    return std::copysign(knee + room * std::tanh((size - knee) / room), sample);
}

} // namespace

void Mixer::play(const Cue& cue) {
    const Gains gains = gainsFor(cue.place, cue.loudness);
    const float heard = std::hypot(gains.left, gains.right);
    if (!(heard > inaudible))
        return;
    Voice* const voice = voiceFor(heard);
    if (!voice)
        return;
    *voice = Voice();
    voice->samples = &bank_->of(cue.sound, cue.material, begun_++);
    voice->place = cue.place;
    voice->loudness = cue.loudness;
    voice->gains = gains;
}

void Mixer::setJets(std::span<const HeardJet> jets) {
    for (Voice& voice : jets_) {
        voice.goal = 0.0f;
        voice.step = jetFall;
    }
    for (const HeardJet& jet : jets) {
        // The jet's own voice, which may be dying away, or else a free one.
        auto voice = std::find_if(jets_.begin(), jets_.end(), [&](const Voice& each) {
            return each.samples && each.jetOf == jet.whose;
        });
        if (voice == jets_.end()) {
            voice = std::find_if(jets_.begin(), jets_.end(),
                                 [](const Voice& each) { return !each.samples; });
            if (voice == jets_.end())
                continue;
            *voice = Voice();
            voice->samples = &bank_->jet();
            // Two jets that begin together must not sound like one.
            voice->at = bank_->jet().size() / jets_.size() *
                        static_cast<std::size_t>(voice - jets_.begin());
            voice->jetOf = jet.whose;
            voice->loudness = jet.place ? jetLoudness : ownJetLoudness;
            voice->gains = gainsFor(jet.place, voice->loudness);
            voice->level = 0.0f;
        }
        voice->place = jet.place;
        voice->goal = 1.0f;
        voice->step = jetRise;
    }
}

void Mixer::pull(std::span<float> samples) {
    std::fill(samples.begin(), samples.end(), 0.0f);
    for (Voice& voice : voices_)
        add(voice, samples);
    for (Voice& jet : jets_)
        add(jet, samples);
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
        reachedVolume_ = towards(reachedVolume_, volume_, volumeStep);
        samples[i] = limited(samples[i] * reachedVolume_);
        samples[i + 1] = limited(samples[i + 1] * reachedVolume_);
    }
}

std::size_t Mixer::voices() const {
    const auto isBusy = [](const Voice& voice) { return voice.samples != nullptr; };
    return static_cast<std::size_t>(std::count_if(voices_.begin(), voices_.end(), isBusy) +
                                    std::count_if(jets_.begin(), jets_.end(), isBusy));
}

Mixer::Gains Mixer::gainsFor(const std::optional<vec3>& place, float loudness) const {
    constexpr float middle = std::numbers::sqrt2_v<float> / 2.0f;
    if (!place)
        return {middle * loudness, middle * loudness};
    const Bearing bearing = bearingOf(listener_, *place);
    // A distance that is no number makes gains that are none, and so nothing to hear.
    const float heard =
        bearing.distance <= nearDistance ? loudness : loudness * nearDistance / bearing.distance;
    const float side = bearing.right * std::min(1.0f, bearing.distance / headDistance);
    const float angle = (side + 1.0f) * 0.25f * std::numbers::pi_v<float>;
    return {heard * std::cos(angle), heard * std::sin(angle)};
}

Mixer::Voice* Mixer::voiceFor(float loudness) {
    Voice* free = nullptr;
    Voice* softest = nullptr;
    float least = loudness;
    std::size_t busy = 0;
    for (Voice& voice : voices_) {
        if (!voice.samples) {
            free = &voice;
        } else if (voice.goal > 0.0f) {
            ++busy;
            const float heard = std::hypot(voice.gains.left, voice.gains.right);
            if (heard < least) {
                least = heard;
                softest = &voice;
            }
        }
    }
    if (!free || (busy >= mostVoices && !softest))
        return nullptr;
    if (busy >= mostVoices) {
        softest->goal = 0.0f;
        softest->step = wayFall;
    }
    return free;
}

void Mixer::add(Voice& voice, std::span<float> samples) const {
    const std::size_t frames = samples.size() / 2;
    if (!voice.samples || frames == 0)
        return;
    // A listener that turned changes the gains: from frame to frame, or it would click.
    const Gains goal = gainsFor(voice.place, voice.loudness);
    const Gains step{(goal.left - voice.gains.left) / static_cast<float>(frames),
                     (goal.right - voice.gains.right) / static_cast<float>(frames)};
    for (std::size_t i = 0; i < frames; ++i) {
        voice.level = towards(voice.level, voice.goal, voice.step);
        if (voice.jetOf != 0)
            voice.at %= voice.samples->size();
        const bool isOver = voice.at == voice.samples->size();
        if (isOver || (voice.level == 0.0f && voice.goal == 0.0f)) {
            voice.samples = nullptr;
            return;
        }
        voice.gains.left += step.left;
        voice.gains.right += step.right;
        const float sample = voice.level * (*voice.samples)[voice.at++];
        samples[2 * i] += voice.gains.left * sample;
        samples[2 * i + 1] += voice.gains.right * sample;
    }
    voice.gains = goal;
}

} // namespace drench::game
