#include "game/sound/SoundBank.h"

#include <cstddef>

namespace drench::game {

namespace {

constexpr int stepVariants = 4;
constexpr int splashVariants = 5;
constexpr int otherVariants = 2;

} // namespace

SoundBank::SoundBank(std::uint64_t seed) {
    Chance chance(seed);
    const auto variantsOf = [this](Sound sound) -> Variants& {
        return sounds_[static_cast<std::size_t>(sound)];
    };
    jet_ = jetLoop(chance.split());
    for (int i = 0; i < splashVariants; ++i)
        variantsOf(Sound::splash).push_back(splash(chance.split()));
    for (int i = 0; i < otherVariants; ++i) {
        variantsOf(Sound::jet).push_back(jetStart(chance.split()));
        variantsOf(Sound::jump).push_back(jump(chance.split()));
        variantsOf(Sound::landing).push_back(landing(chance.split()));
    }
    for (int surface = 0; surface < surfaceCount; ++surface) {
        for (int i = 0; i < stepVariants; ++i)
            steps_[static_cast<std::size_t>(surface)].push_back(
                step(static_cast<Surface>(surface), chance.split()));
    }
    variantsOf(Sound::soaking) = {soakingBlip()};
    variantsOf(Sound::soaked) = {soakedGurgle(chance.split())};
    variantsOf(Sound::spawn) = {spawnChime()};
    variantsOf(Sound::chat) = {chatTick()};
}

const Samples& SoundBank::of(Sound sound, int material, unsigned variant) const {
    const Variants& variants = sound == Sound::step
                                   ? steps_[static_cast<std::size_t>(surfaceOf(material))]
                                   : sounds_[static_cast<std::size_t>(sound)];
    return variants[variant % variants.size()];
}

} // namespace drench::game
