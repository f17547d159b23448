#pragma once

#include "game/Cues.h"
#include "game/sound/Synthesis.h"

#include <array>
#include <cstdint>
#include <vector>

namespace drench::game {

/// All sounds, made beforehand. What is heard often has several variants, so that it tires nobody.
class SoundBank {
  public:
    /// Makes the sounds, which takes about a tenth of a second. Equal seeds make equal banks.
    explicit SoundBank(std::uint64_t seed);

    /// The samples for a sound; they last as long as the bank.
    /// @param material  of what is trodden on
    /// @param variant  any number; successive ones differ
    const Samples& of(Sound sound, int material, unsigned variant) const;

    /// A jet that goes on; see jetLoop().
    const Samples& jet() const { return jet_; }

  private:
    using Variants = std::vector<Samples>;

    Samples jet_;
    std::array<Variants, 9> sounds_;
    std::array<Variants, surfaceCount> steps_;
};

} // namespace drench::game
